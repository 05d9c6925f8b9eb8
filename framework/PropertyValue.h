#pragma once

#include <framework/Component.h>
#include <framework/Exceptions.h>
#include <framework/Set.h>
#include <framework/Strings.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace kiv {

enum class TPropertyKind {
  Boolean,
  Integer,
  Float,
  String,
  Enumeration, ///< one value of an enumeration, by its name
  Set,         ///< a TSet of an enumeration, by the names of its values
  Component,   ///< a reference to another component; the property's owner doesn't own it
  Object,      ///< a TPersistent that belongs to the property's owner and has properties of its own
  Strings,     ///< a TStrings that belongs to the property's owner
  Collection   ///< a TCollection that belongs to the property's owner
};

/// The names of an enumeration's values. An application specialises it for each enumeration that it publishes:
///
///     template <>
///     struct TEnumNames<TRefreshLevel> {
///       static constexpr TEnumName<TRefreshLevel> Values[] = {{TRefreshLevel::rfFull, L"rfFull"}, ...};
///     };
template <typename E>
struct TEnumNames;

template <typename E>
struct TEnumName {
  E value;
  const wchar_t* name;
};

/// The same without the type. A value outside the list has no name and can't be saved.
struct TEnumType {
  struct TValue {
    std::int64_t value;
    std::wstring name;
  };
  std::vector<TValue> values;
};

/// An enumeration's value or the bits of a TSet, told apart from plain numbers.
struct TEnumValue {
  std::int64_t value = 0;
  friend bool operator==(const TEnumValue&, const TEnumValue&) = default;
};
struct TSetValue {
  std::uint64_t bits = 0;
  friend bool operator==(const TSetValue&, const TSetValue&) = default;
};

/// The value of a property of any kind but Object, Strings and Collection.
using TPropertyValue = std::variant<bool, std::int64_t, double, std::wstring, TEnumValue, TSetValue, TComponent*>;

/// The least and the greatest value that an integer property takes.
struct TIntegerRange {
  std::int64_t least = (std::numeric_limits<std::int64_t>::min)();
  std::int64_t greatest = (std::numeric_limits<std::int64_t>::max)();
};

template <typename E>
const TEnumType& EnumTypeOf() {
  static const TEnumType type = [] {
    TEnumType made;
    for (const auto& entry : TEnumNames<E>::Values) {
      made.values.push_back({static_cast<std::int64_t>(entry.value), entry.name});
    }
    return made;
  }();
  return type;
}

namespace detail {

/// How a C++ type is a property value: `Kind`, `Wrap` and `Unwrap`; the latter raises EPropertyError for a component of
/// the wrong class. Unsigned 64-bit numbers aren't published: half of their range would have no text.
template <typename T>
struct TPropertyType;

template <>
struct TPropertyType<bool> {
  static constexpr TPropertyKind Kind = TPropertyKind::Boolean;
  static TPropertyValue Wrap(bool pValue) { return pValue; }
  static bool Unwrap(const TPropertyValue& pValue) { return std::get<bool>(pValue); }
};

template <std::integral T>
  requires(!std::same_as<T, bool> && (sizeof(T) < 8 || std::is_signed_v<T>))
struct TPropertyType<T> {
  static constexpr TPropertyKind Kind = TPropertyKind::Integer;
  static TPropertyValue Wrap(T pValue) { return static_cast<std::int64_t>(pValue); }
  static T Unwrap(const TPropertyValue& pValue) { return static_cast<T>(std::get<std::int64_t>(pValue)); }
};

template <std::floating_point T>
  requires(sizeof(T) <= sizeof(double))
struct TPropertyType<T> {
  static constexpr TPropertyKind Kind = TPropertyKind::Float;
  static TPropertyValue Wrap(T pValue) { return static_cast<double>(pValue); }
  static T Unwrap(const TPropertyValue& pValue) {
    const double value = std::get<double>(pValue);
    if (std::isfinite(value) && std::abs(value) > static_cast<double>((std::numeric_limits<T>::max)())) {
      throw EPropertyError(L"the number is out of range.");
    }
    return static_cast<T>(value);
  }
};

template <>
struct TPropertyType<std::wstring> {
  static constexpr TPropertyKind Kind = TPropertyKind::String;
  static TPropertyValue Wrap(std::wstring pValue) { return pValue; }
  static const std::wstring& Unwrap(const TPropertyValue& pValue) { return std::get<std::wstring>(pValue); }
};

template <typename E>
  requires std::is_enum_v<E>
struct TPropertyType<E> {
  static constexpr TPropertyKind Kind = TPropertyKind::Enumeration;
  static TPropertyValue Wrap(E pValue) { return TEnumValue{static_cast<std::int64_t>(pValue)}; }
  static E Unwrap(const TPropertyValue& pValue) { return static_cast<E>(std::get<TEnumValue>(pValue).value); }
};

template <typename E>
struct TPropertyType<TSet<E>> {
  static constexpr TPropertyKind Kind = TPropertyKind::Set;
  static TPropertyValue Wrap(TSet<E> pValue) { return TSetValue{pValue.Bits()}; }
  static TSet<E> Unwrap(const TPropertyValue& pValue) { return TSet<E>::FromBits(std::get<TSetValue>(pValue).bits); }
};

template <std::derived_from<TComponent> T>
struct TPropertyType<T*> {
  static constexpr TPropertyKind Kind = TPropertyKind::Component;
  static TPropertyValue Wrap(T* pValue) { return static_cast<TComponent*>(pValue); }
  static T* Unwrap(const TPropertyValue& pValue) {
    auto* const component = std::get<TComponent*>(pValue);
    auto* const cast = dynamic_cast<T*>(component);
    if (component && !cast) throw EPropertyError(L"a " + component->ClassName() + L" doesn't fit here.");
    return cast;
  }
};

template <typename T>
struct TEnumTypeOf {
  static const TEnumType* Get() {
    if constexpr (std::is_enum_v<T>) {
      return &EnumTypeOf<T>();
    } else {
      return nullptr;
    }
  }
};
template <typename E>
struct TEnumTypeOf<TSet<E>> {
  static const TEnumType* Get() { return &EnumTypeOf<E>(); }
};

template <typename T>
constexpr TIntegerRange RangeOf() {
  if constexpr (std::integral<T> && !std::same_as<T, bool>) {
    return {static_cast<std::int64_t>((std::numeric_limits<T>::min)()),
            static_cast<std::int64_t>((std::numeric_limits<T>::max)())};
  } else {
    return {};
  }
}

} // namespace detail

} // namespace kiv
