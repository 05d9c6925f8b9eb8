#pragma once

#include <coordination/SelectionDisk.h>
#include <doubles/PlainItemIdList.h>
#include <doubles/SimulatedFileSystem.h>

#include <framework/TextCompare.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kiv::test {

/// A simulated file system as a selection sees a disk. A drive of it can stand for a network share: `ShareDrive(L'S',
/// L"\\\\server\\share")`.
class SimulatedDisk : public ISelectionDisk {
public:
  explicit SimulatedDisk(SimulatedFileSystem& pFiles) : fFiles(pFiles) {}

  void ShareDrive(wchar_t pLetter, std::wstring pShare) { fShares.emplace_back(std::move(pShare), pLetter); }
  /// Where a link's file leads, which must exist.
  void SetLinkTarget(const std::wstring& pLinkFile, std::wstring pTarget) { fLinks[pLinkFile] = std::move(pTarget); }
  /// How many folders have been listed.
  int Searches() const { return fSearches; }

  bool IsDriveReady(const std::wstring& pPath) override {
    TFolderObject object;
    const HRESULT hr = fFiles.Find(Local(pPath).substr(0, 2) + L"\\?", object);
    return hr != HRESULT_FROM_WIN32(ERROR_NOT_READY) && hr != HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND) &&
           !pPath.empty();
  }

  TDiskObject ObjectAt(const std::wstring& pPath) override {
    TFolderObject object;
    const std::wstring path = Local(pPath);
    if (path.empty() || FAILED(fFiles.Find(path, object))) return TDiskObject::Nothing;
    return object.flags.Contains(TObjectFlag::Folder) ? TDiskObject::Folder : TDiskObject::File;
  }

  std::int64_t FileSize(const std::wstring& pPath) override {
    TFolderObject object;
    return SUCCEEDED(fFiles.Find(Local(pPath), object)) ? object.size : -1;
  }

  std::unique_ptr<IDiskSearch> Search(const std::wstring& pFolder) override {
    auto search = std::make_unique<TSearch>(fFiles);
    SimulatedFileSystem::TNodeId id = 0;
    const std::wstring path = Local(pFolder);
    if (path.empty() || FAILED(fFiles.IdOf(path, id)) || FAILED(fFiles.ChildrenOf(id, search->children)))
      return nullptr;
    ++fSearches;
    return search;
  }

  std::wstring LinkTarget(const std::wstring& pLinkFile) override { return fLinks[pLinkFile]; }
  ComPtr<IItemIdList> MakeItemIdList(const std::wstring& pPath) override { return Make<PlainItemIdList>(pPath); }

private:
  class TSearch : public IDiskSearch {
  public:
    explicit TSearch(SimulatedFileSystem& pFiles) : fFiles(pFiles) {}
    bool Next(TDiskEntry& pEntry) override {
      while (fAt < children.size()) {
        const auto object = fFiles.MaybeObject(children[fAt++].id);
        if (!object) continue;
        pEntry.name = object->name;
        pEntry.isFolder = object->flags.Contains(TObjectFlag::Folder);
        pEntry.isLink = object->flags.Contains(TObjectFlag::ReparsePoint);
        pEntry.size = pEntry.isFolder ? 0 : object->size;
        return true;
      }
      return false;
    }
    std::vector<SimulatedFileSystem::TChild> children;

  private:
    SimulatedFileSystem& fFiles;
    std::size_t fAt = 0;
  };

  // The path of the drive in the place of a share's; empty on the network outside of shares.
  std::wstring Local(const std::wstring& path) const {
    for (const auto& [share, letter] : fShares) {
      if (!StartsText(share, path)) continue;
      const std::wstring rest = path.substr(share.size());
      if (rest.empty() || rest.starts_with(L'\\')) return std::wstring(1, letter) + L':' + rest;
    }
    return path.starts_with(L"\\\\") ? std::wstring() : path;
  }

  SimulatedFileSystem& fFiles;
  std::vector<std::pair<std::wstring, wchar_t>> fShares;
  std::map<std::wstring, std::wstring> fLinks;
  std::atomic<int> fSearches{0};
};

} // namespace kiv::test
