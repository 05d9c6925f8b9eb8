#include <folder_view/FolderEntry.h>

#include <core/FileFunctions.h>
#include <framework/FileNames.h>
#include <framework/TextCompare.h>
#include <platform/ShellApi.h>
#include <viewstate/SystemImageList.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <unordered_map>

namespace kiv::sample {

namespace {

bool IsDigit(wchar_t character) noexcept {
  return character >= L'0' && character <= L'9';
}

std::size_t DigitsFrom(const std::wstring& text, std::size_t start) noexcept {
  std::size_t end = start;
  while (end < text.size() && IsDigit(text[end])) ++end;
  return end - start;
}

// The shell's order of names. Asking the platform costs most of a sort; names that are the same up to a number, as in
// any folder of pictures, need no question.
int CompareNames(const std::wstring& first, const std::wstring& second) {
  std::size_t start = 0;
  const std::size_t shorter = std::min(first.size(), second.size());
  while (start < shorter && first[start] == second[start]) ++start;
  while (start > 0 && IsDigit(first[start - 1])) --start;
  const std::size_t first_digits = DigitsFrom(first, start);
  const std::size_t second_digits = DigitsFrom(second, start);
  const bool plain = first_digits > 0 && second_digits > 0 && first[start] != L'0' && second[start] != L'0';
  if (plain) {
    if (first_digits != second_digits) return first_digits < second_digits ? -1 : 1;
    if (const int order = first.compare(start, first_digits, second, start, second_digits); order != 0) return order;
  }
  return CompareFilenames(first, second);
}

template <typename T>
int Compare(const T& first, const T& second) {
  return first < second ? -1 : second < first ? 1 : 0;
}

int CompareColumn(const TFolderEntry& first, const TFolderEntry& second, TFolderColumn column) {
  if (column == TFolderColumn::Size) return Compare(first.size, second.size);
  return column == TFolderColumn::Changed ? Compare(first.changed, second.changed) : 0;
}

void SortByType(TEntries& entries, bool descending) {
  std::vector<std::tuple<std::wstring, TEntry>> typed;
  typed.reserve(entries.size());
  for (TEntry& entry : entries) typed.emplace_back(TypeOf(*entry), std::move(entry));
  std::stable_sort(typed.begin(), typed.end(), [descending](const auto& a, const auto& b) {
    const TFolderEntry& first = *std::get<1>(a);
    const TFolderEntry& second = *std::get<1>(b);
    if (first.IsFolder() != second.IsFolder()) return first.IsFolder();
    const int order = CompareFilenames(std::get<0>(a), std::get<0>(b));
    if (order != 0) return descending ? order > 0 : order < 0;
    return CompareNames(first.name, second.name) < 0;
  });
  std::transform(typed.begin(), typed.end(), entries.begin(),
                 [](auto& entry) { return std::move(std::get<1>(entry)); });
}

} // namespace

std::wstring KeyOfName(std::wstring_view pName) {
  std::wstring key(pName);
  CharUpperBuffW(key.data(), static_cast<DWORD>(key.size()));
  return key;
}

std::shared_ptr<TFolderEntry> ReadEntry(TObjectFacts& pFacts, ComPtr<IItemIdList> pItem, IItemIdList* pFolder,
                                        TNameUse pNames) {
  const auto* const raw = reinterpret_cast<PCUITEMID_CHILD>(pItem->WindowsPointer());
  TFolderObject object;
  if (!raw || FAILED(pFacts.Read(raw, object))) return nullptr;
  auto entry = std::make_shared<TFolderEntry>();
  entry->item = std::move(pItem);
  entry->name = std::move(object.name);
  entry->flags = object.flags;
  entry->size = object.size;
  entry->changed = object.changed;
  if (pNames == TNameUse::Merged && entry->IsOnDisk()) entry->path = pFolder->Concat(entry->item.Get())->Path();
  if (pNames == TNameUse::Unique && entry->IsOnDisk()) {
    entry->key = KeyOfName(entry->name);
  } else if (!entry->path.empty()) {
    entry->key = KeyOfName(entry->path);
  } else {
    // What is shown of an object may be the same for several: what the folder calls it is its list's bytes.
    const auto* const bytes = reinterpret_cast<const unsigned char*>(raw);
    entry->key.assign(1, L'/');
    entry->key.append(bytes, bytes + raw->mkid.cb);
  }
  return entry;
}

bool IsSameFact(const TFolderEntry& pFirst, const TFolderEntry& pSecond) noexcept {
  return pFirst.name == pSecond.name && pFirst.size == pSecond.size && pFirst.changed == pSecond.changed &&
         pFirst.flags == pSecond.flags;
}

TMerged MergeEntries(const TEntries& pKnown, const std::map<std::wstring, std::wstring>& pMoved, TEntries pListed) {
  std::unordered_map<std::wstring_view, const TEntry*> known;
  known.reserve(pKnown.size());
  for (const TEntry& entry : pKnown) known.emplace(entry->key, &entry);
  for (const auto& [from, to] : pMoved) {
    const auto old = known.find(from);
    if (old != known.end() && !known.contains(to)) known.emplace(to, old->second);
  }
  TMerged merged;
  for (TEntry& entry : pListed) {
    const auto found = known.find(entry->key);
    if (found == known.end()) continue;
    const TEntry& old = *found->second;
    if (IsSameFact(*old, *entry)) {
      entry = old;
    } else {
      merged.changed.emplace_back(old, entry);
    }
    known.erase(found); // two objects share no row
  }
  merged.entries = std::move(pListed);
  return merged;
}

bool StandsBefore(const TFolderEntry& pFirst, const TFolderEntry& pSecond, const TFolderOrder& pOrder) {
  if (pFirst.IsFolder() != pSecond.IsFolder()) return pFirst.IsFolder();
  if (pOrder.column == TFolderColumn::Name) {
    const int order = CompareNames(pFirst.name, pSecond.name);
    return pOrder.descending ? order > 0 : order < 0;
  }
  if (const int order = CompareColumn(pFirst, pSecond, pOrder.column); order != 0) {
    return pOrder.descending ? order > 0 : order < 0;
  }
  return CompareNames(pFirst.name, pSecond.name) < 0;
}

void SortEntries(TEntries& pEntries, const TFolderOrder& pOrder) {
  if (pOrder.column == TFolderColumn::Type) {
    SortByType(pEntries, pOrder.descending);
    return;
  }
  std::stable_sort(pEntries.begin(), pEntries.end(),
                   [&](const TEntry& a, const TEntry& b) { return StandsBefore(*a, *b, pOrder); });
}

bool LooksLikeItsKind(const TFolderEntry& pEntry) {
  static constexpr std::array<const wchar_t*, 10> own{L".exe", L".ico", L".lnk", L".url", L".cur",
                                                      L".ani", L".scr", L".pif", L".msc", L".cpl"};
  if (!pEntry.IsOnDisk()) return false;
  // A folder with a look of its own says so by one of these; a drive has no delimiter to be cut.
  if (pEntry.IsFolder()) {
    return !pEntry.flags.Contains(TObjectFlag::ReadOnly) && !pEntry.flags.Contains(TObjectFlag::System) &&
           pEntry.name.find(L':') == std::wstring::npos;
  }
  const std::wstring extension = ExtractFileExt(pEntry.name);
  return std::none_of(own.begin(), own.end(), [&](const wchar_t* one) { return SameText(one, extension); });
}

int ImageOf(const TFolderEntry& pEntry, IItemIdList* pFolder) {
  constexpr auto size = TKivImageListSize::si_Small;
  if (LooksLikeItsKind(pEntry)) {
    return pEntry.IsFolder() ? TKivSystemImageList::GetFolderIconNumber(false)
                             : TKivSystemImageList::GetIndexFromExtension(ExtractFileExt(pEntry.name), size, false);
  }
  const ComPtr<IItemIdList> object = pFolder->Concat(pEntry.item.Get());
  return TKivSystemImageList::GetIndexFromItemIdList(object.Get(), size, false);
}

std::wstring TypeOf(const TFolderEntry& pEntry) {
  if (!pEntry.type.empty()) return pEntry.type;
  if (!pEntry.IsFolder()) return TKivSystemImageList::GetFileType(ExtractFileExt(pEntry.name));
  static const std::wstring folder_type = [] {
    SHFILEINFOW info{};
    const auto ask = ShellApi().SHGetFileInfoW;
    const bool known = ask && ask(L"folder", FILE_ATTRIBUTE_DIRECTORY, &info, sizeof(info),
                                  SHGFI_USEFILEATTRIBUTES | SHGFI_TYPENAME) != 0;
    return std::wstring(known ? info.szTypeName : L"");
  }();
  return folder_type;
}

std::wstring SizeText(std::int64_t pSize) {
  return pSize < 0 ? std::wstring() : FormatByteSize(pSize, true);
}

std::wstring TimeText(TFileTime pTime) {
  const FILETIME time{static_cast<DWORD>(pTime), static_cast<DWORD>(pTime >> 32)};
  SYSTEMTIME utc;
  SYSTEMTIME local;
  if (pTime == 0 || !FileTimeToSystemTime(&time, &utc) || !SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) {
    return {};
  }
  wchar_t date[80];
  wchar_t clock[80];
  if (GetDateFormatW(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &local, nullptr, date, 80) == 0 ||
      GetTimeFormatW(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &local, nullptr, clock, 80) == 0) {
    return {};
  }
  return std::wstring(date) + L' ' + clock;
}

} // namespace kiv::sample
