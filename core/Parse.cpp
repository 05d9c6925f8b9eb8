// From what users and applications write to item lists.
#include <core/ItemIdList.h>

#include <core/FindByNames.h>
#include <core/IdListFromPath.h>
#include <core/ObjectNames.h>
#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/PathmereError.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>

#include <cstring>
#include <string>
#include <utility>

namespace kiv {

namespace {

// Where the last path that was parsed led: main thread only. The folder is kept bound, so that the names of one folder
// are parsed one after the other at the cost of the names alone.
struct TLastFolder {
  std::wstring path; // as it was written
  ComPtr<IItemIdList> list;
  ComPtr<IShellFolder> folder;
};

TLastFolder& LastFolder() {
  static auto* const last = new TLastFolder; // never destroyed: Shutdown empties it
  return *last;
}

bool IsDelimiter(wchar_t c) {
  return c == L'\\' || c == L'/';
}

std::wstring_view Unquoted(std::wstring_view path) {
  const bool quoted = path.size() > 1 && path.front() == L'"' && path.back() == L'"';
  return quoted ? path.substr(1, path.size() - 2) : path;
}

// File calls cut blanks at the end of a name, so that they reach something else or nothing.
bool IsMangledByThePlatform(std::wstring_view path) {
  if (TKivPathList::IsUNCPath(path)) return false;
  return path.ends_with(L' ') || path.find(LR"( \)") != std::wstring_view::npos;
}

ComPtr<IItemIdList> Walk(const ComPtr<IItemIdList>& root, std::wstring_view path, HWND window) {
  ComPtr<IShellFolder> folder;
  if (!root || root->IsInvalid() || FAILED(root.As(folder))) return nullptr;
  const TUniqueItemIdList rest = FindByNames(std::move(folder), path, window);
  if (!rest) return nullptr;
  return TKivItemIdList::Create(TUniqueItemIdList(ILCombine(root->WindowsPointer(), rest.Get())));
}

// The roads for what the platform doesn't parse. Nil or an invalid list if none leads anywhere.
ComPtr<IItemIdList> ParseByNames(std::wstring_view path, HWND window, bool complete_scan) {
  if (path.starts_with(L"::{")) {
    const ComPtr<IItemIdList> list = TKivItemIdList::Create(L"shell:" + std::wstring(path), nullptr, window);
    if (!list->IsInvalid()) return list;
  }
  const ComPtr<IItemIdList> cached = TKivItemIdList::ResolveUsingCache(path);
  if (!cached->IsInvalid()) return cached;
  const TPathParts parts = SplitAtFirstDelimiter(path);
  if (parts.head.empty()) return nullptr;
  const ComPtr<IItemIdList> root = TKivItemIdList::CreateForSpecialFolder(parts.head);
  if (root && !root->IsInvalid()) return parts.tail.empty() ? root : Walk(root, parts.tail, window);
  if (!complete_scan) return nullptr;
  ComPtr<IItemIdList> found = Walk(TKivItemIdList::CreateForSpecialFolder(SF_DRIVES, true), path, window);
  if (!found) found = Walk(TKivItemIdList::CreateForSpecialFolder(SF_DESKTOP, true), path, window);
  return found;
}

bool SameBytes(PCIDLIST_ABSOLUTE a, PCIDLIST_ABSOLUTE b) {
  const UINT size = ILGetSize(a);
  return size == ILGetSize(b) && std::memcmp(a, b, size) == 0;
}

} // namespace

ComPtr<IItemIdList> TKivItemIdList::Parse(std::wstring_view pPath, HWND pWindowHandleForLogonDialog,
                                          bool pCompleteScan) {
  std::wstring_view path = Unquoted(pPath);
  if (path.empty()) return EmptyIdList();
  if (path == LR"(\\*)") return CreateForSpecialFolder(SF_NETWORK, true);
  if (path.size() > 3 && IsDelimiter(path.back())) path.remove_suffix(1);
  ComPtr<IItemIdList> list = Create(path, nullptr, pWindowHandleForLogonDialog);
  const bool mangled = IsMangledByThePlatform(path);
  // Resolved when somebody asks: an absolute path is what it is, and its disk may be slow.
  if (!mangled && IsAbsolutePath(path)) return list;
  if (list->IsInvalid()) list = ParseByNames(path, pWindowHandleForLogonDialog, pCompleteScan || mangled);
  if (!list || list->IsInvalid()) return CreateInvalidWithPath(path);
  CacheLastFolderIdList(list.Get(), path);
  return list;
}

ComPtr<IItemIdList> TKivItemIdList::ResolveUsingCache(std::wstring_view pPath) {
  if (!MainThread::IsCurrent()) return EmptyIdList();
  TLastFolder last = LastFolder(); // its code may lead back here
  if (!last.list) return EmptyIdList();
  if (SamePath(last.path, pPath)) return last.list;
  const std::size_t delimiter = pPath.rfind(L'\\');
  if (delimiter == std::wstring_view::npos || !SamePath(last.path, pPath.substr(0, delimiter))) return EmptyIdList();
  const std::wstring_view name = pPath.substr(delimiter + 1);
  if (name.empty() || name.ends_with(L' ') || name.find(L'/') != std::wstring_view::npos) return EmptyIdList();
  if (!last.folder) {
    if (FAILED(last.list.As(last.folder))) return EmptyIdList();
    if (LastFolder().list == last.list) LastFolder().folder = last.folder;
  }
  const TUniqueItemIdList child = GetIdListFromPath(last.folder.Get(), name);
  if (!child) return EmptyIdList();
  ComPtr<IItemIdList> found = Create(TUniqueItemIdList(ILCombine(last.list->WindowsPointer(), child.Get())));
  const bool single = ILGetNext(child.Get())->mkid.cb == 0;
  const auto item = reinterpret_cast<PCUITEMID_CHILD>(child.Get());
  const std::wstring shown =
      single ? TObjectNames(last.folder.Get(), item).DisplayName(dnfInFolder) : found->DisplayName(dnfInFolder);
  return shown.empty() ? EmptyIdList() : found;
}

void TKivItemIdList::CacheLastFolderIdList(IItemIdList* pItemIdList, std::wstring_view pPath) {
  if (!MainThread::IsCurrent() || !pItemIdList || pItemIdList->Depth() < 2) return;
  const std::size_t delimiter = pPath.rfind(L'\\');
  // With a "/" in it, what follows isn't a name in the parent.
  if (delimiter == std::wstring_view::npos || pPath.find(L'/', delimiter) != std::wstring_view::npos) return;
  const std::wstring path = ExcludeTrailingDelimiter(pPath.substr(0, delimiter));
  if (path.empty()) return;
  const ComPtr<IItemIdList> parent = pItemIdList->GetParent();
  TLastFolder& last = LastFolder();
  if (last.list && SamePath(last.path, path) && SameBytes(last.list->WindowsPointer(), parent->WindowsPointer())) {
    return;
  }
  static bool registered = false;
  if (!std::exchange(registered, true)) {
    AtShutdown([] {
      registered = false;
      const TLastFolder gone = std::exchange(LastFolder(), {});
    });
  }
  const TLastFolder old = std::exchange(last, {path, parent, nullptr});
}

} // namespace kiv
