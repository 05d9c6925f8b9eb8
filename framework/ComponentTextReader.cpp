#include <framework/ComponentTextReader.h>

#include <framework/Application.h>
#include <framework/ComponentText.h>

#include <charconv>
#include <exception>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

namespace kiv {

namespace {

std::wstring Describe(const TToken& token) {
  switch (token.kind) {
  case TTokenKind::End:
    return L"the end of the text";
  case TTokenKind::String:
    return QuoteComponentText(token.text);
  case TTokenKind::Reference:
    return L"@" + token.text;
  default:
    return token.text;
  }
}

// Numbers are ASCII: any other unit makes the text none.
std::string Narrow(const std::wstring& text) {
  std::string narrow;
  for (const wchar_t c : text) narrow.push_back(c > 0 && c < 0x80 ? static_cast<char>(c) : '?');
  return narrow;
}

// What messages call a component. Cut, since it is copied for each of its properties and a text may say anything.
std::wstring LabelOf(const TComponent& component) {
  constexpr std::size_t MaxLabel = 80;
  const std::wstring& name = component.GetName();
  if (name.empty()) return component.ClassName();
  return name.size() <= MaxLabel ? name : name.substr(0, MaxLabel) + L"...";
}

} // namespace

// One level of nesting. What stands in a text must not decide how deep our stack gets.
class TComponentReader::TLevel {
public:
  explicit TLevel(TComponentReader& pReader) : fReader(pReader) {
    if (fReader.fDepth >= MaxComponentTextDepth) {
      throw EParserError(L"Expected at most " + std::to_wstring(MaxComponentTextDepth) + L" levels of nesting.",
                         fReader.fToken.line, fReader.fToken.column);
    }
    ++fReader.fDepth;
  }
  ~TLevel() { --fReader.fDepth; }
  TLevel(const TLevel&) = delete;
  TLevel& operator=(const TLevel&) = delete;

private:
  TComponentReader& fReader;
};

TComponentReader::TComponentReader(std::wstring_view pText) : fLexer(pText) {}

TComponentReader::~TComponentReader() {
  if (!fDone) Undo();
}

void TComponentReader::Read(TComponent* pRoot) {
  Advance();
  ReadComponent(nullptr, pRoot);
  if (fToken.kind != TTokenKind::End) RaiseExpected(L"the end of the text");
  ResolveReferences();
  FinishLoading();
  if (fOwnRoot && !fRootWatch->IsAlive()) {
    throw EComponentError(L"The component was destroyed while it was loaded.");
  }
  fDone = true;
}

bool TComponentReader::Accept(wchar_t pSymbol) {
  if (!fToken.Is(pSymbol)) return false;
  Advance();
  return true;
}

void TComponentReader::Expect(wchar_t pSymbol) {
  if (!Accept(pSymbol)) RaiseExpected(std::wstring(L"'") + pSymbol + L"'");
}

void TComponentReader::RaiseExpected(const std::wstring& pWhat) const {
  throw EParserError(L"Expected " + pWhat + L", found " + Describe(fToken) + L".", fToken.line, fToken.column);
}

void TComponentReader::RaiseProperty(const std::wstring& pWhere, const std::wstring& pMessage, int pLine) const {
  throw EPropertyError(pWhere + L" (line " + std::to_wstring(pLine) + L"): " + pMessage, pLine);
}

template <typename F>
void TComponentReader::Guarded(const std::wstring& pWhere, int pLine, F&& pCall) const {
  try {
    pCall();
  } catch (const EAbort&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    RaiseProperty(pWhere, DescribeException(std::current_exception()), pLine);
  }
}

void TComponentReader::BeginLoading(TComponent& pComponent) {
  fMade.push_back({&pComponent, TAliveWatch(pComponent.GetAliveToken())});
  pComponent.BeginLoading();
}

void TComponentReader::ReadComponent(TComponent* pOwner, TComponent* pExisting) {
  if (!fToken.IsWord(L"component")) RaiseExpected(L"\"component\"");
  const TLevel level(*this);
  Advance();
  if (fToken.kind != TTokenKind::Identifier) RaiseExpected(L"the name of a class");
  const TToken className = std::exchange(fToken, fLexer.Next());
  if (pExisting) CheckExisting(className, *pExisting);
  TComponent* const component = pExisting ? pExisting : CreateComponent(className, pOwner);
  if (!pOwner) {
    if (!pExisting) fOwnRoot.reset(component);
    fRootWatch.emplace(component->GetAliveToken());
    fRoot = component;
  }
  BeginLoading(*component);
  if (fToken.kind == TTokenKind::Identifier) {
    Guarded(fToken.text, fToken.line, [&] { component->SetName(fToken.text); });
    Advance();
  }
  Expect(L'{');
  ReadBody(*component, component, LabelOf(*component));
}

TComponent* TComponentReader::CreateComponent(const TToken& pClass, TComponent* pOwner) {
  const TPublishedClass* const published = TPropertyRegistry::Instance().FindClass(pClass.text);
  if (!published) RaiseProperty(pClass.text, L"the class isn't registered.", pClass.line);
  TComponent* component = nullptr;
  Guarded(pClass.text, pClass.line, [&] { component = published->Create(pOwner); });
  return component;
}

void TComponentReader::CheckExisting(const TToken& pClass, const TComponent& pExisting) const {
  const TPropertyRegistry& registry = TPropertyRegistry::Instance();
  const TPublishedClass* const named = registry.FindClass(pClass.text);
  if (!named) RaiseProperty(pClass.text, L"the class isn't registered.", pClass.line);
  const TPublishedClass* const actual = registry.ClassOf(pExisting);
  if (!actual || !actual->InheritsFrom(*named)) {
    RaiseProperty(LabelOf(pExisting), L"a " + pExisting.ClassName() + L" is no " + pClass.text + L".", pClass.line);
  }
}

// Behind the opening brace, up to and with the closing one. `pComponent` is null in a nested object.
void TComponentReader::ReadBody(TPersistent& pObject, TComponent* pComponent, const std::wstring& pWhere) {
  const TPublishedClass* const published = TPropertyRegistry::Instance().ClassOf(pObject);
  if (!published) RaiseProperty(pWhere, L"the class " + pObject.ClassName() + L" isn't registered.", fToken.line);
  while (!Accept(L'}')) {
    if (pComponent && fToken.IsWord(L"component")) {
      ReadComponent(pComponent, nullptr);
    } else if (fToken.kind == TTokenKind::Identifier) {
      ReadProperty(pObject, *published, pWhere);
    } else {
      RaiseExpected(pComponent ? L"a property, \"component\" or '}'" : L"a property or '}'");
    }
  }
}

void TComponentReader::ReadProperty(TPersistent& pObject, const TPublishedClass& pClass, const std::wstring& pWhere) {
  const std::wstring where = pWhere + L"." + fToken.text;
  const int line = fToken.line;
  const TProperty* const property = pClass.FindProperty(fToken.text);
  if (!property) RaiseProperty(where, L"a " + pClass.GetName() + L" has no such property.", line);
  if (property->IsReadOnly()) RaiseProperty(where, L"the property is read-only.", line);
  Advance();
  Expect(L'=');
  if (property->object) {
    ReadObject(pObject, *property, where);
  } else if (property->kind == TPropertyKind::Component) {
    ReadReference(pObject, *property, where);
  } else {
    const TPropertyValue value = ReadValue(*property, where);
    Guarded(where, line, [&] { property->set(pObject, value); });
  }
}

void TComponentReader::ReadObject(TPersistent& pObject, const TProperty& pProperty, const std::wstring& pWhere) {
  TPersistent* const inner = pProperty.object(pObject);
  if (!inner) RaiseProperty(pWhere, L"there is no object to read into.", fToken.line);
  if (pProperty.kind == TPropertyKind::Strings) {
    ReadStrings(static_cast<TStrings&>(*inner), pWhere);
    return;
  }
  if (pProperty.kind == TPropertyKind::Collection) {
    ReadCollection(static_cast<TCollection&>(*inner), pWhere);
    return;
  }
  if (!fToken.Is(L'{')) RaiseProperty(pWhere, L"expected '{', found " + Describe(fToken) + L".", fToken.line);
  const TLevel level(*this);
  Advance();
  ReadBody(*inner, nullptr, pWhere);
}

void TComponentReader::ReadStrings(TStrings& pStrings, const std::wstring& pWhere) {
  const int line = fToken.line;
  if (!fToken.Is(L'(')) RaiseProperty(pWhere, L"expected '(', found " + Describe(fToken) + L".", line);
  Advance();
  std::vector<std::wstring> texts;
  while (!Accept(L')')) {
    if (!texts.empty()) Expect(L',');
    if (fToken.kind != TTokenKind::String) RaiseExpected(texts.empty() ? L"a string or ')'" : L"a string");
    texts.push_back(std::move(fToken.text));
    Advance();
  }
  Guarded(pWhere, line, [&] { pStrings.SetStrings(std::move(texts)); });
}

// What stood in it goes.
void TComponentReader::ReadCollection(TCollection& pCollection, const std::wstring& pWhere) {
  const int line = fToken.line;
  if (!fToken.Is(L'(')) RaiseProperty(pWhere, L"expected '(', found " + Describe(fToken) + L".", line);
  const TLevel level(*this);
  Advance();
  struct TScope {
    TComponentReader& reader;
    TCollection& collection;
    explicit TScope(TComponentReader& pReader, TCollection& pInner) : reader(pReader), collection(pInner) {
      ++reader.fCollections;
      collection.BeginUpdate();
    }
    ~TScope() {
      --reader.fCollections;
      try {
        collection.EndUpdate();
      } catch (...) {
        ReportException(std::current_exception());
      }
    }
  };
  const TScope scope(*this, pCollection);
  Guarded(pWhere, line, [&] { pCollection.Clear(); });
  for (int index = 0; !Accept(L')'); ++index) {
    if (!fToken.Is(L'{')) RaiseExpected(L"'{' or ')'");
    const TLevel inner(*this);
    const std::wstring where = pWhere + L"[" + std::to_wstring(index) + L"]";
    TPersistent* item = nullptr;
    Guarded(where, fToken.line, [&] { item = pCollection.Add(); });
    if (!item) RaiseProperty(where, L"there is no item to read into.", fToken.line);
    Advance();
    ReadBody(*item, nullptr, where);
  }
}

void TComponentReader::ReadReference(TPersistent& pObject, const TProperty& pProperty, const std::wstring& pWhere) {
  // Items may be gone by the time that references are set.
  if (fCollections > 0) RaiseProperty(pWhere, L"a reference can't stand in a collection.", fToken.line);
  const bool isNil = fToken.IsWord(L"nil");
  if (!isNil && !fToken.IsWord(L"root") && fToken.kind != TTokenKind::Reference) {
    RaiseProperty(pWhere, L"expected a reference (@name, root or nil), found " + Describe(fToken) + L".", fToken.line);
  }
  // The same way for all, so that the last one that the text names counts.
  std::wstring path = fToken.kind == TTokenKind::Reference ? fToken.text : L"@" + fToken.text;
  fReferences.push_back({&pObject, &pProperty, std::move(path), pWhere, fToken.line});
  Advance();
}

TPropertyValue TComponentReader::ReadValue(const TProperty& pProperty, const std::wstring& pWhere) {
  switch (pProperty.kind) {
  case TPropertyKind::Boolean: {
    const bool isTrue = fToken.IsWord(L"true");
    if (!isTrue && !fToken.IsWord(L"false")) {
      RaiseProperty(pWhere, L"expected true or false, found " + Describe(fToken) + L".", fToken.line);
    }
    Advance();
    return isTrue;
  }
  case TPropertyKind::Integer:
    return ReadInteger(pProperty, pWhere);
  case TPropertyKind::Float:
    return ReadFloat(pWhere);
  case TPropertyKind::Set:
    return ReadSet(pProperty, pWhere);
  case TPropertyKind::Enumeration:
    return TEnumValue{ReadEnumName(pProperty, pWhere)};
  default:
    break;
  }
  if (fToken.kind != TTokenKind::String) {
    RaiseProperty(pWhere, L"expected a string, found " + Describe(fToken) + L".", fToken.line);
  }
  std::wstring text = std::move(fToken.text);
  Advance();
  return text;
}

std::int64_t TComponentReader::ReadInteger(const TProperty& pProperty, const std::wstring& pWhere) {
  const std::string digits = Narrow(fToken.text);
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (fToken.kind != TTokenKind::Number || error == std::errc::invalid_argument ||
      end != digits.data() + digits.size()) {
    RaiseProperty(pWhere, L"expected a whole number, found " + Describe(fToken) + L".", fToken.line);
  }
  const TIntegerRange& range = pProperty.range;
  if (error != std::errc() || value < range.least || value > range.greatest) {
    RaiseProperty(pWhere,
                  fToken.text + L" is out of range " + std::to_wstring(range.least) + L".." +
                      std::to_wstring(range.greatest) + L".",
                  fToken.line);
  }
  Advance();
  return value;
}

double TComponentReader::ReadFloat(const std::wstring& pWhere) {
  double value = 0;
  if (fToken.IsWord(L"inf") || (fToken.kind == TTokenKind::Number && fToken.text == L"-inf")) {
    value = std::numeric_limits<double>::infinity() * (fToken.text[0] == L'-' ? -1 : 1);
  } else if (fToken.IsWord(L"nan")) {
    value = std::numeric_limits<double>::quiet_NaN();
  } else {
    const std::string digits = Narrow(fToken.text);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (fToken.kind != TTokenKind::Number || error == std::errc::invalid_argument ||
        end != digits.data() + digits.size() || digits.find_first_of("nN") != std::string::npos) {
      RaiseProperty(pWhere, L"expected a number, found " + Describe(fToken) + L".", fToken.line);
    }
    if (error != std::errc()) RaiseProperty(pWhere, fToken.text + L" is out of range.", fToken.line);
  }
  Advance();
  return value;
}

std::int64_t TComponentReader::ReadEnumName(const TProperty& pProperty, const std::wstring& pWhere) {
  if (fToken.kind == TTokenKind::Identifier) {
    for (const auto& entry : pProperty.enumType->values) {
      if (entry.name != fToken.text) continue;
      Advance();
      return entry.value;
    }
  }
  std::wstring names;
  for (const auto& entry : pProperty.enumType->values) names.append(names.empty() ? L"" : L", ").append(entry.name);
  RaiseProperty(pWhere, L"expected one of " + names + L", found " + Describe(fToken) + L".", fToken.line);
}

TSetValue TComponentReader::ReadSet(const TProperty& pProperty, const std::wstring& pWhere) {
  if (!fToken.Is(L'[')) RaiseProperty(pWhere, L"expected '[', found " + Describe(fToken) + L".", fToken.line);
  Advance();
  TSetValue set;
  for (bool first = true; !Accept(L']'); first = false) {
    if (!first) Expect(L',');
    set.bits |= std::uint64_t{1} << ReadEnumName(pProperty, pWhere);
  }
  return set;
}

TComponent* TComponentReader::FindByPath(std::wstring_view pPath) const {
  TComponent* at = fRoot;
  while (at) {
    const std::size_t dot = pPath.find(L'.');
    at = at->FindComponent(pPath.substr(0, dot));
    if (dot == std::wstring_view::npos) break;
    pPath.remove_prefix(dot + 1);
  }
  return at;
}

void TComponentReader::ResolveReferences() {
  for (const TReference& reference : fReferences) {
    TComponent* target = nullptr;
    if (reference.path == L"@root") {
      target = fRoot;
    } else if (reference.path != L"@nil") {
      target = FindByPath(reference.path);
      if (!target) {
        RaiseProperty(reference.where, L"there is no component @" + reference.path + L".", reference.line);
      }
    }
    Guarded(reference.where, reference.line,
            [&] { reference.property->set(*reference.object, TPropertyValue(target)); });
  }
}

void TComponentReader::FinishLoading() {
  // By watch: a component may destroy others when it is told.
  for (const TMade& made : fMade) {
    if (made.watch.IsAlive()) made.component->EndLoading();
  }
}

void TComponentReader::Undo() noexcept {
  if (fRootWatch && !fRootWatch->IsAlive()) static_cast<void>(fOwnRoot.release());
  fOwnRoot.reset();
  if (!fRoot || !fRootWatch->IsAlive()) return;
  for (std::size_t i = fMade.size(); i-- > 0;) {
    if (!fMade[i].watch.IsAlive()) continue;
    TComponent* const component = fMade[i].component;
    component->CancelLoading();
    if (component->fOwner != fRoot || component == fRoot) continue;
    // As an owner that is destroyed does it; to tell every sibling of every one would cost their product.
    fRoot->Detach(component);
    delete component;
    if (!fRootWatch->IsAlive()) return;
  }
}

std::unique_ptr<TComponent> LoadComponentText(std::wstring_view pText) {
  TComponentReader reader(pText);
  reader.Read(nullptr);
  return reader.TakeRoot();
}

void LoadComponentText(std::wstring_view pText, TComponent& pRoot) {
  TComponentReader(pText).Read(&pRoot);
}

} // namespace kiv
