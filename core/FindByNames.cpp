#include <core/FindByNames.h>

#include <core/DebugLog.h>
#include <core/FolderEnumerator.h>
#include <core/ObjectNames.h>
#include <core/PathUtils.h>
#include <platform/FaultGuard.h>
#include <platform/InterfaceId.h>

#include <cstring>
#include <string>
#include <utility>

namespace kiv {

namespace {

constexpr std::wstring_view LongPrefix = LR"(\\?\)";
// An enumerator that gives the same item so often in a row never ends.
constexpr int MostRepetitions = 100;

bool SameItem(const TUniqueItemIdList& a, const TUniqueItemIdList& b) {
  return a && b && a.Get()->mkid.cb == b.Get()->mkid.cb && std::memcmp(a.Get(), b.Get(), a.Get()->mkid.cb) == 0;
}

TUniqueItemIdList FindInFolder(const ComPtr<IShellFolder>& folder, std::wstring_view name, HWND window) {
  TFolderEnumerator objects(folder, {.window = window, .showErrorMessages = window != nullptr});
  TUniqueItemIdList item;
  TUniqueItemIdList last;
  int repetitions = 0;
  for (;;) {
    const TFolderStep step = objects.Next(item);
    if (step != TFolderStep::Object && step != TFolderStep::ObjectAfterFault) return {};
    if (SameItem(item, last)) {
      if (++repetitions == MostRepetitions) return {};
      continue;
    }
    repetitions = 0;
    if (TObjectNames(folder.Get(), reinterpret_cast<PCUITEMID_CHILD>(item.Get())).IsKnownAs(name)) return item;
    last = std::move(item);
  }
}

ComPtr<IShellFolder> Bind(const ComPtr<IShellFolder>& folder, const TUniqueItemIdList& item) {
  void* found = nullptr;
  const HRESULT hr =
      GuardedCall([&] { return folder->BindToObject(item.Get(), nullptr, IidOf<IShellFolder>(), &found); });
  ComPtr<IShellFolder> inner;
  if (SUCCEEDED(hr)) inner.Attach(static_cast<IShellFolder*>(found));
  return inner;
}

// Drives are known by their roots.
std::wstring NameOf(std::wstring_view head) {
  std::wstring name(head);
  if (name.size() == 2 && TPathUtils::StartsWithDriveLetter(name)) name += L'\\';
  return name;
}

} // namespace

TPathParts SplitAtFirstDelimiter(std::wstring_view pPath) noexcept {
  if (pPath.starts_with(LongPrefix)) pPath.remove_prefix(LongPrefix.size());
  const std::size_t delimiter = pPath.find_first_of(LR"(\/)");
  if (delimiter == std::wstring_view::npos) return {pPath, {}};
  return {pPath.substr(0, delimiter), pPath.substr(delimiter + 1)};
}

TUniqueItemIdList FindByNames(ComPtr<IShellFolder> pFolder, std::wstring_view pPath, HWND pWindow) {
  TUniqueItemIdList found;
  while (pFolder) {
    const TPathParts parts = SplitAtFirstDelimiter(pPath);
    const TUniqueItemIdList item = FindInFolder(pFolder, NameOf(parts.head), pWindow);
    if (!item) return {};
    TDebugLog::LogDebugVerboseMessage(L"ItemIdList.Parse. Found " + std::wstring(parts.head));
    found.Reset(found ? ILCombine(static_cast<PCIDLIST_ABSOLUTE>(found.Get()), item.Get()) : ILClone(item.Get()));
    if (!found || parts.tail.empty()) return found;
    pFolder = Bind(pFolder, item);
    pPath = parts.tail;
  }
  return {};
}

} // namespace kiv
