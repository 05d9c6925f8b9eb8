#include <framework/ComponentText.h>

#include <framework/ComponentTextLexer.h>
#include <framework/Exceptions.h>
#include <framework/PropertyRegistry.h>

#include <charconv>
#include <cmath>

namespace kiv {

namespace {

std::wstring FloatText(double value) {
  if (std::isnan(value)) return L"nan";
  if (std::isinf(value)) return value < 0 ? L"-inf" : L"inf";
  char buffer[32];
  // The shortest digits that read back as the same number.
  const auto end = std::to_chars(std::begin(buffer), std::end(buffer), value).ptr;
  return {std::begin(buffer), end};
}

class TComponentWriter {
public:
  explicit TComponentWriter(TComponent& pRoot) : fRoot(pRoot) {}

  std::wstring Write() {
    WriteComponent(fRoot);
    return std::move(fText);
  }

private:
  void WriteComponent(TComponent& component);
  void WriteProperties(TPersistent& object, const std::wstring& where);
  void WriteValue(TPersistent& object, const TProperty& property, const std::wstring& where);
  void WriteObject(TPersistent& object, const TProperty& property, const std::wstring& where);
  void WriteStrings(const TStrings& strings, const TProperty& property);
  void WriteCollection(const TCollection& collection, const TProperty& property, const std::wstring& where);
  std::wstring ValueText(const TPropertyValue& value, const TProperty& property, const std::wstring& where) const;
  std::wstring SetText(TSetValue value, const TProperty& property, const std::wstring& where) const;
  std::wstring ReferenceText(const TComponent* target, const std::wstring& where) const;
  const TPublishedClass& ClassOf(const TPersistent& object, const std::wstring& where) const;

  void Line(const std::wstring& content) {
    fText.append(static_cast<std::size_t>(fDepth) * 2, L' ').append(content).push_back(L'\n');
  }
  void CheckDepth(int depth, const std::wstring& where) const {
    if (depth <= MaxComponentTextDepth) return;
    throw EPropertyError(where + L" is nested more than " + std::to_wstring(MaxComponentTextDepth) + L" deep.");
  }

  TComponent& fRoot;
  std::wstring fText;
  int fDepth = 0;
  int fCollections = 0; // that are being written, one in the other
};

const TPublishedClass& TComponentWriter::ClassOf(const TPersistent& object, const std::wstring& where) const {
  const TPublishedClass* const published = TPropertyRegistry::Instance().ClassOf(object);
  if (!published) throw EPropertyError(where + L": the class " + object.ClassName() + L" isn't registered.");
  if (!published->CanCreate() && dynamic_cast<const TComponent*>(&object) && &object != &fRoot) {
    throw EPropertyError(where + L": a " + published->GetName() + L" can't be created by its name.");
  }
  return *published;
}

void TComponentWriter::WriteComponent(TComponent& component) {
  const std::wstring& name = component.GetName();
  const std::wstring where = name.empty() ? component.ClassName() : name;
  Line(L"component " + ClassOf(component, where).GetName() + (name.empty() ? L"" : L" ") + name + L" {");
  CheckDepth(++fDepth, where);
  WriteProperties(component, where);
  for (TComponent* owned : component.GetComponents()) {
    if (!owned->IsSubComponent()) WriteComponent(*owned);
  }
  --fDepth;
  Line(L"}");
}

void TComponentWriter::WriteProperties(TPersistent& object, const std::wstring& where) {
  const TPublishedClass* const published = TPropertyRegistry::Instance().ClassOf(object);
  if (!published) throw EPropertyError(where + L": the class " + object.ClassName() + L" isn't registered.");
  for (const TProperty* property : TPropertyRegistry::PropertiesOf(*published)) {
    if (property->IsReadOnly() || (property->isStored && !property->isStored(object))) continue;
    const std::wstring path = where + L"." + property->name;
    if (property->object) {
      WriteObject(object, *property, path);
    } else {
      WriteValue(object, *property, path);
    }
  }
}

void TComponentWriter::WriteValue(TPersistent& object, const TProperty& property, const std::wstring& where) {
  const TPropertyValue value = property.get(object);
  if (property.defaultValue && *property.defaultValue == value) return;
  Line(property.name + L" = " + ValueText(value, property, where));
}

void TComponentWriter::WriteObject(TPersistent& object, const TProperty& property, const std::wstring& where) {
  TPersistent* const inner = property.object(object);
  if (!inner) return;
  if (property.kind == TPropertyKind::Strings) {
    WriteStrings(static_cast<TStrings&>(*inner), property);
    return;
  }
  if (property.kind == TPropertyKind::Collection) {
    WriteCollection(static_cast<TCollection&>(*inner), property, where);
    return;
  }
  const std::size_t before = fText.size();
  Line(property.name + L" = {");
  const std::size_t opened = fText.size();
  // An object that has nothing to save doesn't count as a level; but there has to be an end to looking.
  CheckDepth(++fDepth / 2, where);
  WriteProperties(*inner, where);
  const int depth = fDepth--;
  if (fText.size() == opened) {
    fText.resize(before); // nothing differs from its default
  } else {
    CheckDepth(depth, where);
    Line(L"}");
  }
}

void TComponentWriter::WriteStrings(const TStrings& strings, const TProperty& property) {
  const int count = strings.GetCount();
  if (count == 0 && !property.alwaysStored) return;
  std::wstring line = property.name + L" = (";
  for (int i = 0; i < count; ++i) line.append(i > 0 ? L", " : L"").append(QuoteComponentText(strings.Get(i)));
  Line(line + L")");
}

void TComponentWriter::WriteCollection(const TCollection& collection, const TProperty& property,
                                       const std::wstring& where) {
  const int count = collection.GetCount();
  if (count == 0 && !property.alwaysStored) return;
  Line(property.name + L" = (");
  CheckDepth(++fDepth, where);
  ++fCollections;
  for (int i = 0; i < count; ++i) {
    const std::wstring path = where + L"[" + std::to_wstring(i) + L"]";
    Line(L"{");
    CheckDepth(++fDepth, path);
    WriteProperties(*collection.GetItem(i), path);
    --fDepth;
    Line(L"}");
  }
  --fCollections;
  --fDepth;
  Line(L")");
}

std::wstring TComponentWriter::ValueText(const TPropertyValue& value, const TProperty& property,
                                         const std::wstring& where) const {
  switch (property.kind) {
  case TPropertyKind::Boolean:
    return std::get<bool>(value) ? L"true" : L"false";
  case TPropertyKind::Integer:
    return std::to_wstring(std::get<std::int64_t>(value));
  case TPropertyKind::Float:
    return FloatText(std::get<double>(value));
  case TPropertyKind::String:
    return QuoteComponentText(std::get<std::wstring>(value));
  case TPropertyKind::Set:
    return SetText(std::get<TSetValue>(value), property, where);
  case TPropertyKind::Component:
    return ReferenceText(std::get<TComponent*>(value), where);
  default:
    break;
  }
  const std::int64_t number = std::get<TEnumValue>(value).value;
  for (const auto& entry : property.enumType->values) {
    if (entry.value == number) return entry.name;
  }
  throw EPropertyError(where + L": the value " + std::to_wstring(number) + L" has no name.");
}

std::wstring TComponentWriter::SetText(TSetValue value, const TProperty& property, const std::wstring& where) const {
  std::wstring text = L"[";
  std::uint64_t left = value.bits;
  for (const auto& entry : property.enumType->values) {
    const std::uint64_t bit = std::uint64_t{1} << entry.value;
    if ((left & bit) == 0) continue;
    text.append(left == value.bits ? L"" : L", ").append(entry.name);
    left &= ~bit;
  }
  if (left != 0) throw EPropertyError(where + L": a value of the set has no name.");
  return text + L"]";
}

std::wstring TComponentWriter::ReferenceText(const TComponent* target, const std::wstring& where) const {
  if (fCollections > 0) throw EPropertyError(where + L": a reference can't stand in a collection.");
  if (!target) return L"nil";
  if (target == &fRoot) return L"root";
  std::wstring path;
  for (const TComponent* at = target; at != &fRoot; at = at->GetOwner()) {
    if (!at) throw EPropertyError(where + L": " + target->GetName() + L" isn't part of what is saved.");
    if (at->GetName().empty()) throw EPropertyError(where + L": refers to a component that has no name.");
    path.insert(0, (at->GetOwner() == &fRoot ? L"" : L".") + at->GetName());
  }
  return L"@" + path;
}

} // namespace

std::wstring SaveComponentText(TComponent& pRoot) {
  return TComponentWriter(pRoot).Write();
}

} // namespace kiv
