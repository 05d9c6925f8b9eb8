#include <core/ShellFolderSource.h>

#include <core/FolderEnumerator.h>
#include <core/IdListFromPath.h>
#include <core/NameInFolder.h>
#include <core/PathUtils.h>
#include <framework/TextCompare.h>
#include <platform/Characters.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>
#include <platform/TakeResult.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

// The folder of the drives ("CLSID_MyComputer").
constexpr wchar_t Computer[] = L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}";

constexpr HRESULT PathNotFound = HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
constexpr HRESULT NotAFolder = HRESULT_FROM_WIN32(ERROR_DIRECTORY);
constexpr HRESULT PathTooLong = HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);

bool IsDrivePath(const std::wstring& path) {
  return path.size() > 1 && IsAsciiLetter(path[0]) && path[1] == L':' && (path.size() == 2 || path[2] == L'\\');
}

bool IsUncPath(const std::wstring& path) {
  return path.starts_with(LR"(\\)") && !path.starts_with(LR"(\\.\)") && path.find(LR"(::{)") == std::wstring::npos;
}

// The form that the shell parses: it knows neither forward slashes nor the long-path prefix, nor a bare "C:".
std::wstring ToShellForm(std::wstring path) {
  if (IsShellName(path)) return path;
  std::replace(path.begin(), path.end(), L'/', L'\\');
  if (path.starts_with(LR"(\\?\UNC\)")) {
    path = LR"(\\)" + path.substr(8);
  } else if (path.starts_with(LR"(\\?\)") && IsDrivePath(path.substr(4))) {
    path.erase(0, 4);
  }
  if (path.size() == 2 && IsDrivePath(path)) path += L'\\';
  if (path.size() > 3 && path.back() == L'\\') path.pop_back();
  return path;
}

// What the disk says of a folder's path, before the shell is asked: some shells list a drive that isn't there as empty.
HRESULT CheckDisk(const std::wstring& path) {
  if (GetFileAttributesW(TPathUtils::GetUnicodeAPICallPath(path).c_str()) != INVALID_FILE_ATTRIBUTES) return S_OK;
  return HRESULT_FROM_WIN32(GetLastError());
}

HRESULT Bind(IShellFolder* parent, PCUIDLIST_RELATIVE list, ComPtr<IShellFolder>& folder) {
  void* found = nullptr;
  const HRESULT hr = GuardedCall([&] { return parent->BindToObject(list, nullptr, IidOf<IShellFolder>(), &found); });
  if (FAILED(hr)) return hr;
  folder.Attach(static_cast<IShellFolder*>(found));
  return folder ? S_OK : E_UNEXPECTED;
}

// Asked of the parent: what a parse says of flags on the side isn't reliable for virtual objects.
bool IsFolder(PCIDLIST_ABSOLUTE list) {
  void* found = nullptr;
  PCUITEMID_CHILD child = nullptr;
  if (FAILED(GuardedCall([&] { return SHBindToParent(list, IidOf<IShellFolder>(), &found, &child); }))) return false;
  ComPtr<IShellFolder> parent;
  parent.Attach(static_cast<IShellFolder*>(found));
  SFGAOF flags = SFGAO_FOLDER;
  const HRESULT hr = GuardedCall([&] { return parent->GetAttributesOf(1, &child, &flags); });
  return SUCCEEDED(hr) && (flags & SFGAO_FOLDER) != 0;
}

HRESULT ParseFromRoot(const std::wstring& path, TUniqueItemIdList& list) {
  if (StartsText(L"shell:", path)) {
    list = GetIdListFromPath(nullptr, path); // some shells make something else of any such name
    return list ? S_OK : PathNotFound;
  }
  const auto parse = ShellApi().SHParseDisplayName;
  if (!parse) return E_NOTIMPL;
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = GuardedCall([&] { return parse(path.c_str(), nullptr, &raw, 0, nullptr); });
  list = TakeItemIdList(hr, raw);
  if (FAILED(hr)) return hr;
  return list ? S_OK : PathNotFound;
}

// Parses in one go from the root of the namespace.
HRESULT OpenFromRoot(const std::wstring& path, ComPtr<IShellFolder>& folder) {
  TUniqueItemIdList list;
  const HRESULT hr = ParseFromRoot(path, list);
  if (FAILED(hr)) return hr;
  const bool is_root = list.Get()->mkid.cb == 0;
  if (is_root) {
    folder = Desktop();
    return S_OK;
  }
  return IsFolder(list.Get()) ? Bind(Desktop().Get(), list.Get(), folder) : NotAFolder;
}

// Parses a path that is too long for one go: name by name, each in its parent.
HRESULT OpenByParents(const std::wstring& path, ComPtr<IShellFolder>& folder) {
  std::size_t at = path.find(L'\\', IsUncPath(path) ? 2 : 0);
  // The share belongs to the root of a UNC path.
  if (IsUncPath(path) && at != std::wstring::npos) at = path.find(L'\\', at + 1);
  if (at == std::wstring::npos) return PathTooLong;
  HRESULT hr = OpenFromRoot(path.substr(0, at + 1), folder);
  while (SUCCEEDED(hr) && at < path.size()) {
    const std::size_t start = at + 1;
    at = std::min(path.find(L'\\', start), path.size());
    std::wstring name = path.substr(start, at - start);
    if (name.empty()) continue;
    PIDLIST_RELATIVE raw = nullptr;
    hr = GuardedCall([&] { return folder->ParseDisplayName(nullptr, nullptr, name.data(), nullptr, &raw, nullptr); });
    const TUniqueItemIdList item = TakeItemIdList(hr, raw);
    const ComPtr<IShellFolder> parent = std::move(folder);
    if (SUCCEEDED(hr)) hr = item ? Bind(parent.Get(), item.Get(), folder) : PathNotFound;
  }
  return hr;
}

class TShellFolderStepper final : public IFolderStepper {
public:
  TShellFolderStepper(ComPtr<IShellFolder> pFolder, std::wstring pDiskPath, TFactsPrecision pPrecision,
                      bool pForNavigation)
      : fEnumerator(pFolder, OptionsFor(pForNavigation)), fFacts(std::move(pFolder), pDiskPath, pPrecision),
        fDiskPath(std::move(pDiskPath)) {}

  TFolderStep Next(TFolderObject& pObject) override {
    for (;;) {
      const bool first = !fEnumerator.IsRunning();
      if (first) fAny = false;
      const TFolderStep step = fEnumerator.Next(fItem);
      fStatus = fEnumerator.Status();
      if (step == TFolderStep::End && !fAny && SUCCEEDED(fStatus)) return ConfirmEmpty();
      if (step == TFolderStep::End || step == TFolderStep::Failed) return step;
      fAny = true;
      // An object that can't even be named is no use to anybody.
      if (SUCCEEDED(fFacts.Read(fItem.Get(), pObject))) return step;
    }
  }

  HRESULT Status() const override { return fStatus; }

  std::wstring ObjectPath() const override {
    std::wstring path;
    if (fItem) GetNameInFolder(fEnumerator.Folder().Get(), fItem.Get(), SHGDN_FORPARSING, path);
    return path;
  }

private:
  static TFolderEnumerator::TOptions OptionsFor(bool navigation) {
    TFolderEnumerator::TOptions options;
    if (navigation) options.flags |= TFolderEnumerator::ForNavigation;
    return options;
  }

  // Some shells keep a disk's refusal to themselves and list nothing.
  TFolderStep ConfirmEmpty() {
    if (fDiskPath.empty()) return TFolderStep::End;
    const ScopedErrorMode mode;
    WIN32_FIND_DATAW data;
    const std::wstring all = TPathUtils::GetUnicodeAPICallPath(fDiskPath) + (fDiskPath.back() == L'\\' ? L"*" : L"\\*");
    const TUniqueFind find(FindFirstFileW(all.c_str(), &data));
    const DWORD error = find ? ERROR_SUCCESS : GetLastError();
    if (error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND || error == ERROR_DIRECTORY) return TFolderStep::End;
    fStatus = HRESULT_FROM_WIN32(error);
    return TFolderStep::Failed;
  }

  TFolderEnumerator fEnumerator;
  TObjectFacts fFacts;
  std::wstring fDiskPath; // empty for a folder without a path
  TUniqueItemIdList fItem;
  HRESULT fStatus = S_OK;
  bool fAny = false;
};

} // namespace

bool IsShellName(const std::wstring& pPath) {
  return pPath.starts_with(L"::") || StartsText(L"shell:", pPath) || pPath.find(L"://") != std::wstring::npos;
}

TShellFolderSource::TShellFolderSource(TFactsPrecision pPrecision, bool pForNavigation) noexcept
    : fPrecision(pPrecision), fForNavigation(pForNavigation) {}

HRESULT TShellFolderSource::OpenFolder(const std::wstring& pPath, std::unique_ptr<IFolderStepper>& pStepper) {
  pStepper.reset();
  if (pPath.size() > LongestPath) return PathTooLong;
  const std::wstring path = pPath.empty() ? Computer : ToShellForm(pPath);
  const bool on_disk = IsDrivePath(path);
  const ScopedErrorMode mode;
  // What the disk hasn't may still be the shell's, such as a folder in an archive; but not on a drive that isn't there.
  const HRESULT disk = on_disk ? CheckDisk(path) : S_OK;
  if (FAILED(disk) && FAILED(CheckDisk(path.substr(0, 3)))) return disk;
  ComPtr<IShellFolder> folder;
  HRESULT hr = OpenFromRoot(path, folder);
  if (FAILED(hr) && path.size() >= MAX_PATH && (on_disk || IsUncPath(path))) {
    hr = OpenByParents(path, folder);
    // The disk has it, and a shell that keeps to 260 characters says that it can't be found.
    if (FAILED(hr) && on_disk && hr != NotAFolder) hr = PathTooLong;
  }
  if (FAILED(hr)) return FAILED(disk) ? disk : hr;
  pStepper = std::make_unique<TShellFolderStepper>(
      std::move(folder), SUCCEEDED(disk) && (on_disk || IsUncPath(path)) ? path : L"", fPrecision, fForNavigation);
  return S_OK;
}

} // namespace kiv
