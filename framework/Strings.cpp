#include <framework/Strings.h>

#include <framework/Exceptions.h>
#include <framework/TextCompare.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

constexpr wchar_t NameSeparator = L'=';

// What separates entries beside the delimiter when reading isn't strict.
constexpr bool IsBlank(wchar_t c) {
  return static_cast<std::uint32_t>(c) <= 0x20;
}

struct TEntryCopy {
  std::wstring text;
  std::intptr_t object;
};

} // namespace

TStrings::TStrings() = default;
TStrings::~TStrings() = default;

std::wstring TStrings::ClassName() const {
  return L"TStrings";
}

void TStrings::RaiseIndexError(int pIndex) const {
  throw EStringListError(L"List index out of bounds (" + std::to_wstring(pIndex) + L"). " + ClassName() + L" has " +
                         std::to_wstring(GetCount()) + L" entries.");
}

void TStrings::Assign(const TPersistent* pSource) {
  if (pSource == this) return;
  const auto* const source = dynamic_cast<const TStrings*>(pSource);
  if (!source) {
    TPersistent::Assign(pSource);
    return;
  }
  Update([this, source] {
    fFormat = source->fFormat;
    Clear();
    AddStrings(*source);
  });
}

void TStrings::AddStrings(const TStrings& pSource) {
  // Copied first: adding to itself would never end, and a handler may change the source.
  std::vector<TEntryCopy> copies;
  const int count = pSource.GetCount();
  copies.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) copies.push_back({pSource.Get(i), pSource.GetObjectAt(i)});
  Update([this, &copies] {
    for (const TEntryCopy& copy : copies) AddObject(copy.text, copy.object);
  });
}

int TStrings::AddObject(const std::wstring& pText, std::intptr_t pObject) {
  const int index = GetCount();
  InsertObject(index, pText, pObject);
  return index;
}

void TStrings::Exchange(int pFirst, int pSecond) {
  Update([this, pFirst, pSecond] {
    const TEntryCopy first{Get(pFirst), GetObjectAt(pFirst)};
    const TEntryCopy second{Get(pSecond), GetObjectAt(pSecond)};
    Put(pFirst, second.text);
    PutObjectAt(pFirst, second.object);
    Put(pSecond, first.text);
    PutObjectAt(pSecond, first.object);
  });
}

void TStrings::Move(int pFrom, int pTo) {
  if (pFrom < 0 || pFrom >= GetCount()) RaiseIndexError(pFrom);
  if (pTo < 0 || pTo >= GetCount()) RaiseIndexError(pTo);
  if (pFrom == pTo) return;
  Update([this, pFrom, pTo] {
    const TEntryCopy moved{Get(pFrom), GetObjectAt(pFrom)};
    Delete(pFrom);
    InsertObject(pTo, moved.text, moved.object);
  });
}

int TStrings::IndexOf(const std::wstring& pText) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i) {
    if (CompareStrings(Get(i), pText) == 0) return i;
  }
  return -1;
}

int TStrings::IndexOfObject(std::intptr_t pObject) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i) {
    if (GetObjectAt(i) == pObject) return i;
  }
  return -1;
}

bool TStrings::Equals(const TStrings& pOther) const {
  const int count = GetCount();
  if (count != pOther.GetCount()) return false;
  for (int i = 0; i < count; ++i) {
    if (Get(i) != pOther.Get(i)) return false;
  }
  return true;
}

void TStrings::BeginUpdate() {
  // Counted after the report, so that an OnChanging that raises leaves nothing open.
  if (fUpdateCount == 0) SetUpdateState(true);
  ++fUpdateCount;
}

void TStrings::EndUpdate() {
  if (fUpdateCount == 0) throw EInvalidOperation(ClassName() + L".EndUpdate without BeginUpdate.");
  if (--fUpdateCount == 0) SetUpdateState(false);
}

void TStrings::SetUpdateState(bool) {}

int TStrings::CompareStrings(std::wstring_view pFirst, std::wstring_view pSecond) const {
  return CompareText(pFirst, pSecond);
}

void TStrings::AddParsed(std::vector<std::wstring> pTexts) {
  for (const std::wstring& text : pTexts) AddObject(text, 0);
}

void TStrings::SetStrings(std::vector<std::wstring> pTexts) {
  Update([this, &pTexts] {
    Clear();
    AddParsed(std::move(pTexts));
  });
}

std::wstring TStrings::GetText() const {
  std::wstring text;
  const int count = GetCount();
  for (int i = 0; i < count; ++i) text.append(Get(i)).append(L"\r\n");
  return text;
}

void TStrings::SetText(std::wstring_view pText) {
  std::vector<std::wstring> lines;
  while (!pText.empty()) {
    const std::size_t end = std::min(pText.find_first_of(L"\r\n"), pText.size());
    lines.emplace_back(pText.substr(0, end));
    pText.remove_prefix(end);
    const bool isPair = pText.size() > 1 && pText[0] == L'\r' && pText[1] == L'\n';
    pText.remove_prefix(pText.empty() ? 0 : isPair ? 2 : 1);
  }
  SetStrings(std::move(lines));
}

std::wstring TStrings::Join(const TFormat& pFormat) const {
  const auto needsQuotes = [&pFormat](const std::wstring& text) {
    // With a blank for a delimiter nothing at all can't be told from the blanks around it.
    if (text.empty()) return !pFormat.strict && IsBlank(pFormat.delimiter);
    return std::any_of(text.begin(), text.end(), [&pFormat](wchar_t c) {
      return c == pFormat.delimiter || c == pFormat.quote || (!pFormat.strict && IsBlank(c));
    });
  };
  std::wstring joined;
  const int count = GetCount();
  for (int i = 0; i < count; ++i) {
    if (i > 0) joined.push_back(pFormat.delimiter);
    const std::wstring& text = Get(i);
    // A single empty entry differs from no entry by its quotes.
    if (pFormat.quote == 0 || !(needsQuotes(text) || (count == 1 && text.empty()))) {
      joined.append(text);
      continue;
    }
    joined.push_back(pFormat.quote);
    for (const wchar_t c : text) joined.append(c == pFormat.quote ? 2 : 1, c);
    joined.push_back(pFormat.quote);
  }
  return joined;
}

std::vector<std::wstring> TStrings::Split(std::wstring_view pText, const TFormat& pFormat) {
  std::vector<std::wstring> entries;
  std::size_t at = 0;
  const auto skipBlanks = [&] {
    while (!pFormat.strict && at < pText.size() && IsBlank(pText[at]) && pText[at] != pFormat.delimiter) ++at;
  };
  const auto endsEntry = [&](wchar_t c) { return c == pFormat.delimiter || (!pFormat.strict && IsBlank(c)); };
  const bool blankDelimiter = !pFormat.strict && IsBlank(pFormat.delimiter);
  const auto skipDelimiters = [&] {
    // A blank delimiter separates in any number, as blanks do.
    while (blankDelimiter && at < pText.size() && IsBlank(pText[at])) ++at;
  };
  skipBlanks();
  skipDelimiters();
  bool more = at < pText.size();
  while (more) {
    std::wstring entry;
    if (at < pText.size() && pFormat.quote != 0 && pText[at] == pFormat.quote) {
      for (++at; at < pText.size(); ++at) {
        if (pText[at] == pFormat.quote && (++at >= pText.size() || pText[at] != pFormat.quote)) break;
        entry.push_back(pText[at]);
      }
      // Not strict: the closing quote ends the entry, whatever follows.
      if (pFormat.strict) {
        for (; at < pText.size() && pText[at] != pFormat.delimiter; ++at) entry.push_back(pText[at]);
      }
    } else {
      const std::size_t begin = at;
      while (at < pText.size() && !endsEntry(pText[at])) ++at;
      entry.assign(pText.substr(begin, at - begin));
    }
    entries.push_back(std::move(entry));
    skipBlanks();
    skipDelimiters();
    more = at < pText.size();
    if (more && !blankDelimiter && pText[at] == pFormat.delimiter) {
      // What follows a delimiter is an entry, even if it is empty.
      ++at;
      skipBlanks();
    }
  }
  return entries;
}

std::wstring TStrings::GetDelimitedText() const {
  return Join(fFormat);
}

void TStrings::SetDelimitedText(std::wstring_view pText) {
  SetStrings(Split(pText, fFormat));
}

std::wstring TStrings::GetCommaText() const {
  return Join(TFormat{});
}

void TStrings::SetCommaText(std::wstring_view pText) {
  SetStrings(Split(pText, TFormat{}));
}

std::wstring TStrings::GetNameAt(int pIndex) const {
  const std::wstring& entry = Get(pIndex);
  const std::size_t separator = entry.find(NameSeparator);
  return separator == std::wstring::npos ? std::wstring() : entry.substr(0, separator);
}

std::wstring TStrings::GetValueAt(int pIndex) const {
  const std::wstring& entry = Get(pIndex);
  const std::size_t separator = entry.find(NameSeparator);
  return separator == std::wstring::npos ? std::wstring() : entry.substr(separator + 1);
}

int TStrings::IndexOfName(std::wstring_view pName) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i) {
    const std::wstring_view entry = Get(i);
    const std::size_t separator = entry.find(NameSeparator);
    if (separator != std::wstring_view::npos && CompareStrings(entry.substr(0, separator), pName) == 0) return i;
  }
  return -1;
}

std::wstring TStrings::GetValue(std::wstring_view pName) const {
  const int index = IndexOfName(pName);
  return index < 0 ? std::wstring() : GetValueAt(index);
}

void TStrings::SetValue(std::wstring_view pName, std::wstring_view pValue) {
  const int index = IndexOfName(pName);
  if (pValue.empty()) {
    if (index >= 0) Delete(index);
    return;
  }
  std::wstring entry(pName);
  entry.push_back(NameSeparator);
  entry.append(pValue);
  if (index >= 0) {
    Put(index, entry);
  } else {
    Add(entry);
  }
}

} // namespace kiv
