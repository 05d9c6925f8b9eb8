#pragma once

#include <framework/Collection.h>
#include <framework/PropertyValue.h>
#include <platform/Export.h>

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kiv {

/// One published property of a class. Made by TClassPublisher; the functions take objects of that class.
struct TProperty {
  std::wstring name;
  TPropertyKind kind = TPropertyKind::Boolean;
  /// For the reference: what the property means, with units.
  std::wstring documentation;
  /// The names of the values, for Enumeration and Set.
  const TEnumType* enumType = nullptr;
  /// For Integer.
  TIntegerRange range;
  /// A value that equals it isn't saved. Without one the value is always saved. A reference's default is null.
  std::optional<TPropertyValue> defaultValue;
  /// For Strings and Collection: an empty one is saved as well, because the constructor puts something in.
  bool alwaysStored = false;

  /// Says whether the object at hand saves the property at all; empty: by its default alone.
  std::function<bool(TPersistent&)> isStored;

  /// Empty for Object, Strings and Collection.
  std::function<TPropertyValue(TPersistent&)> get;
  /// Empty for a property that is read-only, and for Object, Strings and Collection. Passes on what the setter raises.
  std::function<void(TPersistent&, const TPropertyValue&)> set;
  /// For Object, Strings and Collection: the object itself; may be null.
  std::function<TPersistent*(TPersistent&)> object;

  bool IsReadOnly() const noexcept { return !set && !object; }
};

/// One registered class.
class KIV_EXPORT TPublishedClass {
public:
  const std::wstring& GetName() const noexcept { return fName; }
  const std::wstring& GetDocumentation() const noexcept { return fDocumentation; }
  /// The registered class that this one inherits properties from; null for TPersistent.
  const TPublishedClass* GetBase() const noexcept { return fBase; }
  bool InheritsFrom(const TPublishedClass& pOther) const noexcept;
  /// The class's own properties in the order of registration.
  const std::vector<std::unique_ptr<TProperty>>& GetOwnProperties() const noexcept { return fProperties; }
  /// Own or inherited, null if there is none. Names are exact, case included.
  const TProperty* FindProperty(std::wstring_view pName) const noexcept;
  /// False for abstract classes and for those that aren't components with a constructor that takes the owner.
  bool CanCreate() const noexcept { return static_cast<bool>(fFactory); }
  /// A new component that `pOwner` owns; without one it belongs to the caller. Raises EPropertyError if !CanCreate().
  TComponent* Create(TComponent* pOwner) const;

private:
  friend class TPropertyRegistry;

  std::wstring fName;
  std::wstring fDocumentation;
  const TPublishedClass* fBase = nullptr;
  std::function<TComponent*(TComponent*)> fFactory;
  std::function<bool(const TPersistent&)> fIsInstance;
  std::vector<std::unique_ptr<TProperty>> fProperties;
  std::map<std::wstring, const TProperty*, std::less<>> fByName;
};

/// All registered classes. Main thread only. TPersistent and TComponent (with Tag and Version) are there from the
/// start.
class KIV_EXPORT TPropertyRegistry {
public:
  TPropertyRegistry(const TPropertyRegistry&) = delete;
  TPropertyRegistry& operator=(const TPropertyRegistry&) = delete;

  /// The one of the process. Registrations stay for its life.
  static TPropertyRegistry& Instance();

  const TPublishedClass* FindClass(std::wstring_view pName) const noexcept;
  /// The class that an object has; if its own isn't registered, the registered one that it calls itself by
  /// ClassName. Null if there is none.
  const TPublishedClass* ClassOf(const TPersistent& pObject) const;
  /// All, sorted by name: for a generated reference.
  std::vector<const TPublishedClass*> GetClasses() const;
  /// The properties of a class with the inherited ones, base class first.
  static std::vector<const TProperty*> PropertiesOf(const TPublishedClass& pClass);

  /// What TClassPublisher stands on. A class that is registered again loses its former properties. Raises
  /// EPropertyError if the name is no identifier or another class has it, or if the base class isn't registered.
  TPublishedClass& AddClass(std::type_index pType, const std::type_info* pBase, std::wstring pName,
                            std::wstring pDocumentation, std::function<TComponent*(TComponent*)> pFactory,
                            std::function<bool(const TPersistent&)> pIsInstance);
  /// Raises EPropertyError if the name is no identifier or if the class or a base class has it already, if the name of
  /// an enumeration's value is no identifier, and if a set's value isn't within 0..63.
  static void AddProperty(TPublishedClass& pClass, TProperty pProperty);
  /// The property that was added last. Raises EPropertyError if there is none.
  static TProperty& LastProperty(TPublishedClass& pClass);

private:
  TPropertyRegistry();

  std::map<std::wstring, std::unique_ptr<TPublishedClass>, std::less<>> fClasses;
  // Hashed, not ordered: MinGW's runtime puts a type of internal linkage both before and behind others.
  std::unordered_map<std::type_index, TPublishedClass*> fByType;
};

/// Publishes the properties of class T: made by PublishClass, one call for each property.
///
/// Getters and setters are member functions of T or of a base class, or callables that take a T&. A getter's result
/// says the property's kind: bool, integers up to 64 bits, float and double, std::wstring, enumerations and TSet of
/// enumerations with TEnumNames, pointers to components.
template <typename T>
class TClassPublisher {
public:
  explicit TClassPublisher(TPublishedClass& pClass) : fClass(pClass) {}

  /// A property that is saved when it differs from `pDefault`.
  template <typename G, typename S, typename V>
  TClassPublisher& Property(const wchar_t* pName, G pGetter, S pSetter, V&& pDefault, const wchar_t* pDocumentation) {
    using R = TResult<G>;
    TProperty property = Describe<R>(pName, pGetter, pDocumentation);
    property.set = SetterOf<R>(pSetter);
    property.defaultValue = detail::TPropertyType<R>::Wrap(R(std::forward<V>(pDefault)));
    return Add(std::move(property));
  }

  /// A property that is always saved, or a reference, which is saved unless it is null.
  template <typename G, typename S>
  TClassPublisher& Property(const wchar_t* pName, G pGetter, S pSetter, const wchar_t* pDocumentation) {
    using R = TResult<G>;
    TProperty property = Describe<R>(pName, pGetter, pDocumentation);
    property.set = SetterOf<R>(pSetter);
    if (property.kind == TPropertyKind::Component) property.defaultValue = static_cast<TComponent*>(nullptr);
    return Add(std::move(property));
  }

  /// A property without a setter: never saved, and an error to read.
  template <typename G>
  TClassPublisher& ReadOnly(const wchar_t* pName, G pGetter, const wchar_t* pDocumentation) {
    return Add(Describe<TResult<G>>(pName, pGetter, pDocumentation));
  }

  /// An object, a string list or a collection that belongs to the component. The getter gives a reference or a pointer.
  template <typename G>
  TClassPublisher& Object(const wchar_t* pName, G pGetter, const wchar_t* pDocumentation, bool pAlwaysStored = false) {
    using R = std::remove_reference_t<std::remove_pointer_t<std::invoke_result_t<G, T&>>>;
    static_assert(std::is_base_of_v<TPersistent, R> && !std::is_const_v<R>);
    TProperty property;
    property.name = pName;
    property.kind = std::is_base_of_v<TStrings, R>      ? TPropertyKind::Strings
                    : std::is_base_of_v<TCollection, R> ? TPropertyKind::Collection
                                                        : TPropertyKind::Object;
    property.documentation = pDocumentation;
    property.alwaysStored = pAlwaysStored;
    property.object = [pGetter](TPersistent& object) -> TPersistent* {
      if constexpr (std::is_pointer_v<std::invoke_result_t<G, T&>>) {
        return std::invoke(pGetter, static_cast<T&>(object));
      } else {
        return &std::invoke(pGetter, static_cast<T&>(object));
      }
    };
    return Add(std::move(property));
  }

  /// Makes the last property one that is saved only while `pCondition`, a member function or a callable that takes a
  /// T&, says so.
  template <typename F>
  TClassPublisher& StoredIf(F pCondition) {
    TPropertyRegistry::LastProperty(fClass).isStored = [pCondition](TPersistent& object) -> bool {
      return std::invoke(pCondition, static_cast<T&>(object));
    };
    return *this;
  }

private:
  template <typename G>
  using TResult = std::decay_t<std::invoke_result_t<G, T&>>;

  template <typename R, typename G>
  static TProperty Describe(const wchar_t* pName, G pGetter, const wchar_t* pDocumentation) {
    TProperty property;
    property.name = pName;
    property.kind = detail::TPropertyType<R>::Kind;
    property.documentation = pDocumentation;
    property.enumType = detail::TEnumTypeOf<R>::Get();
    property.range = detail::RangeOf<R>();
    property.get = [pGetter](TPersistent& object) {
      return detail::TPropertyType<R>::Wrap(std::invoke(pGetter, static_cast<T&>(object)));
    };
    return property;
  }

  template <typename R, typename S>
  static std::function<void(TPersistent&, const TPropertyValue&)> SetterOf(S pSetter) {
    return [pSetter](TPersistent& object, const TPropertyValue& value) {
      std::invoke(pSetter, static_cast<T&>(object), detail::TPropertyType<R>::Unwrap(value));
    };
  }

  TClassPublisher& Add(TProperty pProperty) {
    TPropertyRegistry::AddProperty(fClass, std::move(pProperty));
    return *this;
  }

  TPublishedClass& fClass;
};

/// Registers class T, which inherits the properties of the registered class TBase, under the name that its ClassName
/// gives. A component that has a constructor from its owner can be created by name.
template <typename T, typename TBase = TComponent>
TClassPublisher<T> PublishClass(const wchar_t* pName, const wchar_t* pDocumentation) {
  static_assert(std::is_base_of_v<TBase, T> && std::is_base_of_v<TPersistent, T> && !std::is_same_v<TBase, T>);
  std::function<TComponent*(TComponent*)> factory;
  if constexpr (std::is_base_of_v<TComponent, T> && std::is_constructible_v<T, TComponent*> && !std::is_abstract_v<T>) {
    factory = [](TComponent* owner) -> TComponent* { return new T(owner); };
  }
  return TClassPublisher<T>(TPropertyRegistry::Instance().AddClass(
      typeid(T), &typeid(TBase), pName, pDocumentation, std::move(factory),
      [](const TPersistent& object) { return dynamic_cast<const T*>(&object) != nullptr; }));
}

} // namespace kiv
