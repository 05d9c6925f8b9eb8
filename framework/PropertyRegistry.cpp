#include <framework/PropertyRegistry.h>

#include <framework/Exceptions.h>

#include <algorithm>

namespace kiv {

namespace {

// What couldn't be read back isn't published.
void CheckEnumType(const TEnumType& type, bool isSet, const std::wstring& where) {
  for (const auto& entry : type.values) {
    if (!IsIdentifier(entry.name)) throw EPropertyError(where + L": \"" + entry.name + L"\" is not a valid name.");
    if (isSet && (entry.value < 0 || entry.value > 63)) {
      throw EPropertyError(where + L": " + entry.name + L" doesn't fit into a set.");
    }
  }
}

} // namespace

bool TPublishedClass::InheritsFrom(const TPublishedClass& pOther) const noexcept {
  for (const TPublishedClass* at = this; at; at = at->fBase) {
    if (at == &pOther) return true;
  }
  return false;
}

const TProperty* TPublishedClass::FindProperty(std::wstring_view pName) const noexcept {
  for (const TPublishedClass* at = this; at; at = at->fBase) {
    const auto found = at->fByName.find(pName);
    if (found != at->fByName.end()) return found->second;
  }
  return nullptr;
}

TComponent* TPublishedClass::Create(TComponent* pOwner) const {
  if (!fFactory) throw EPropertyError(L"A " + fName + L" can't be created by its name.");
  return fFactory(pOwner);
}

TPropertyRegistry& TPropertyRegistry::Instance() {
  // Never destroyed: components that go with the process's statics may still ask.
  static auto* const registry = new TPropertyRegistry;
  return *registry;
}

TPropertyRegistry::TPropertyRegistry() {
  AddClass(typeid(TPersistent), nullptr, L"TPersistent", L"Base of all objects with published properties.", nullptr,
           [](const TPersistent&) { return true; });
  TPublishedClass& component = AddClass(
      typeid(TComponent), &typeid(TPersistent), L"TComponent", L"Base of all components.",
      [](TComponent* owner) { return new TComponent(owner); },
      [](const TPersistent& object) { return dynamic_cast<const TComponent*>(&object) != nullptr; });
  TClassPublisher<TComponent>(component)
      .Property(L"Tag", &TComponent::GetTag, &TComponent::SetTag, 0, L"Free for the application.")
      .ReadOnly(L"Version", &TComponent::GetVersion, L"The class's name and the library's version.");
}

const TPublishedClass* TPropertyRegistry::FindClass(std::wstring_view pName) const noexcept {
  const auto found = fClasses.find(pName);
  return found == fClasses.end() ? nullptr : found->second.get();
}

const TPublishedClass* TPropertyRegistry::ClassOf(const TPersistent& pObject) const {
  const auto found = fByType.find(typeid(pObject));
  if (found != fByType.end()) return found->second;
  const TPublishedClass* const named = FindClass(pObject.ClassName());
  return named && named->fIsInstance(pObject) ? named : nullptr;
}

std::vector<const TPublishedClass*> TPropertyRegistry::GetClasses() const {
  std::vector<const TPublishedClass*> classes;
  for (const auto& [name, entry] : fClasses) classes.push_back(entry.get());
  return classes;
}

std::vector<const TProperty*> TPropertyRegistry::PropertiesOf(const TPublishedClass& pClass) {
  std::vector<const TPublishedClass*> line;
  for (const TPublishedClass* at = &pClass; at; at = at->fBase) line.push_back(at);
  std::vector<const TProperty*> properties;
  for (auto at = line.rbegin(); at != line.rend(); ++at) {
    for (const auto& property : (*at)->fProperties) properties.push_back(property.get());
  }
  return properties;
}

TPublishedClass& TPropertyRegistry::AddClass(std::type_index pType, const std::type_info* pBase, std::wstring pName,
                                             std::wstring pDocumentation,
                                             std::function<TComponent*(TComponent*)> pFactory,
                                             std::function<bool(const TPersistent&)> pIsInstance) {
  if (!IsIdentifier(pName)) throw EPropertyError(L"\"" + pName + L"\" is not a valid class name.");
  const TPublishedClass* base = nullptr;
  if (pBase) {
    const auto found = fByType.find(*pBase);
    if (found == fByType.end()) throw EPropertyError(L"The base class of " + pName + L" isn't registered.");
    base = found->second;
  }
  const auto standing = fByType.find(pType);
  const TPublishedClass* const sameName = FindClass(pName);
  if (sameName && (standing == fByType.end() || standing->second != sameName)) {
    throw EPropertyError(L"Another class is registered as " + pName + L".");
  }
  if (standing != fByType.end() && !sameName) {
    throw EPropertyError(L"The class " + pName + L" is registered as " + standing->second->fName + L".");
  }
  if (!sameName) {
    auto& entry = fClasses[pName];
    entry = std::make_unique<TPublishedClass>();
    fByType.emplace(pType, entry.get());
  }
  // In place, since derived classes point here.
  TPublishedClass& published = *fByType.find(pType)->second;
  published.fByName.clear();
  published.fProperties.clear();
  published.fName = std::move(pName);
  published.fDocumentation = std::move(pDocumentation);
  published.fBase = base;
  published.fFactory = std::move(pFactory);
  published.fIsInstance = std::move(pIsInstance);
  return published;
}

void TPropertyRegistry::AddProperty(TPublishedClass& pClass, TProperty pProperty) {
  const std::wstring where = pClass.fName + L"." + pProperty.name;
  // "component" begins a component that is owned.
  if (!IsIdentifier(pProperty.name) || pProperty.name == L"component") {
    throw EPropertyError(L"\"" + pProperty.name + L"\" is not a valid property name.");
  }
  if (pProperty.enumType) CheckEnumType(*pProperty.enumType, pProperty.kind == TPropertyKind::Set, where);
  if (pClass.FindProperty(pProperty.name)) throw EPropertyError(where + L" is registered already.");
  auto property = std::make_unique<TProperty>(std::move(pProperty));
  pClass.fByName.emplace(property->name, property.get());
  pClass.fProperties.push_back(std::move(property));
}

TProperty& TPropertyRegistry::LastProperty(TPublishedClass& pClass) {
  if (pClass.fProperties.empty()) throw EPropertyError(pClass.fName + L" has no property yet.");
  return *pClass.fProperties.back();
}

} // namespace kiv
