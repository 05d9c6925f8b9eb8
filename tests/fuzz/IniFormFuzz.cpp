#include <coordination/SelectionList.h>
#include <framework/IniFile.h>
#include <framework/TextCompare.h>
#include <platform/Text.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t MaxPaths = 16; // more only take longer

void Check(bool pHolds) {
  if (!pHolds) std::abort();
}

// What is read can be written, and reads as the same; other sections stay as they are.
std::vector<std::wstring> CheckText(const std::wstring& pText) {
  std::vector<std::wstring> keys = kiv::IniSectionKeys(pText, L"s");
  std::erase_if(keys, [](const std::wstring& key) { return key.find(L'\0') != std::wstring::npos; });
  const std::wstring written = kiv::ReplaceIniSection(pText, L"S", keys);
  Check(kiv::IniSectionKeys(written, L"s") == keys);
  Check(kiv::IniSectionKeys(written, L"t") == kiv::IniSectionKeys(pText, L"t"));
  Check(kiv::IniSectionKeys(kiv::ReplaceIniSection(written, L"s", {}), L"s").empty());
  return keys;
}

/// Whatever is asked for is there. Each folder has a file and a folder.
class TEndlessDisk : public kiv::ISelectionDisk {
public:
  bool IsDriveReady(const std::wstring&) override { return true; }
  kiv::TDiskObject ObjectAt(const std::wstring& pPath) override {
    if (pPath.ends_with(L"target.lnk") || pPath.empty()) return kiv::TDiskObject::Nothing;
    return pPath.ends_with(L'f') || pPath.ends_with(L'F') ? kiv::TDiskObject::File : kiv::TDiskObject::Folder;
  }
  std::int64_t FileSize(const std::wstring&) override { return 1; }
  std::unique_ptr<kiv::IDiskSearch> Search(const std::wstring&) override { return std::make_unique<TSearch>(); }
  std::wstring LinkTarget(const std::wstring&) override { return {}; }
  kiv::ComPtr<kiv::IItemIdList> MakeItemIdList(const std::wstring&) override { return {}; }

private:
  class TSearch : public kiv::IDiskSearch {
  public:
    bool Next(kiv::TDiskEntry& pEntry) override {
      pEntry = {fStep == 0 ? L"d" : L"f", fStep == 0};
      return fStep++ < 2;
    }

  private:
    int fStep = 0;
  };
};

std::vector<std::wstring> EntriesOf(const kiv::TKivSelectionList& pList) {
  std::vector<std::wstring> entries;
  for (int i = 0; i < pList.GetCount(); ++i) entries.push_back(pList.GetListItem(i));
  return entries;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize) {
  const std::wstring text = kiv::FromUtf8(std::string_view(reinterpret_cast<const char*>(pData), pSize));
  std::vector<std::wstring> keys = CheckText(text);
  if (keys.size() > MaxPaths) keys.resize(MaxPaths);
  TEndlessDisk disk;
  const kiv::ScopedSelectionDisk scope(disk);
  kiv::TKivSelectionList list;
  list.SetPaths(keys);
  for (const std::wstring& key : keys) list.RemovePathFromSelection(key.substr(0, key.size() / 2));
  for (const std::wstring& key : keys) list.AddPathToSelection(key);
  const std::vector<std::wstring> entries = EntriesOf(list);
  Check(std::is_sorted(entries.begin(), entries.end(),
                       [](const std::wstring& a, const std::wstring& b) { return kiv::CompareText(a, b) < 0; }));
  for (const std::wstring& entry : entries) Check(list.IsPathSelected(entry) != kiv::ssUnChecked);
  list.SetPaths(entries);
  for (const std::wstring& key : keys) list.RemovePathFromSelection(key);
  return 0;
}
