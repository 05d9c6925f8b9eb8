#include <coordination/SelectionDisk.h>

#include <core/FileFunctions.h>
#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <platform/PathApi.h>

#include <utility>

namespace kiv::detail {

namespace {

class TFileSearch final : public IDiskSearch {
public:
  TFileSearch(TUniqueFind pFind, const WIN32_FIND_DATAW& pData) : fFind(std::move(pFind)), fData(pData) {}

  bool Next(TDiskEntry& pEntry) override {
    do {
      if (!fHasData && !FindNextFileW(fFind.Get(), &fData)) return false;
      fHasData = false;
    } while (IsFolderToIgnore(fData.cFileName));
    pEntry.name.assign(fData.cFileName);
    pEntry.isFolder = (fData.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    // Other kinds of reparse points, such as files that are kept in a cloud, stand for themselves.
    pEntry.isLink =
        (fData.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsReparseTagNameSurrogate(fData.dwReserved0);
    pEntry.size = pEntry.isFolder ? 0 : GetFileSize64(fData);
    return true;
  }

private:
  TUniqueFind fFind;
  WIN32_FIND_DATAW fData;
  bool fHasData = true;
};

class TWindowsDisk final : public ISelectionDisk {
public:
  bool IsDriveReady(const std::wstring& pPath) override { return kiv::IsDriveReady(pPath); }

  TDiskObject ObjectAt(const std::wstring& pPath) override {
    // What a path means mustn't hang on the current folder; a drive without its delimiter would be that.
    if (!IsAbsolutePath(pPath)) return TDiskObject::Nothing;
    const std::wstring path = IsDrive(pPath) ? pPath.substr(0, 2) + L'\\' : TPathUtils::GetUnicodeAPICallPath(pPath);
    const DWORD attributes = pPath.empty() ? INVALID_FILE_ATTRIBUTES : PathApi::FileAttributes(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) return TDiskObject::Nothing;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? TDiskObject::Folder : TDiskObject::File;
  }

  std::int64_t FileSize(const std::wstring& pPath) override { return GetFileSize64(pPath); }

  std::unique_ptr<IDiskSearch> Search(const std::wstring& pFolder) override {
    WIN32_FIND_DATAW data;
    TUniqueFind find = FindFirst(pFolder + (pFolder.ends_with(L'\\') ? L"*" : L"\\*"), data);
    if (!find) return nullptr;
    return std::make_unique<TFileSearch>(std::move(find), data);
  }

  std::wstring LinkTarget(const std::wstring& pLinkFile) override { return TKivPathList::GetShortcutTarget(pLinkFile); }

  ComPtr<IItemIdList> MakeItemIdList(const std::wstring& pPath) override { return TKivItemIdList::Create(pPath); }
};

} // namespace

ISelectionDisk& PlatformSelectionDisk() {
  static TWindowsDisk disk;
  return disk;
}

} // namespace kiv::detail
