// How the walker steps through its folder, and what it lets through.
#include <walker/Pathmere.h>

#include <core/DebugLog.h>
#include <core/ItemIdList.h>
#include <core/NameInFolder.h>
#include <core/PathFunctions.h>
#include <core/PathmereError.h>
#include <framework/FileNames.h>
#include <framework/TextCompare.h>
#include <platform/ErrorMode.h>

#include <cstring>
#include <utility>

namespace kiv {

namespace {

constexpr SFGAOF FileSystemFolder = SFGAO_FOLDER | SFGAO_FILESYSANCESTOR | SFGAO_FILESYSTEM | SFGAO_STREAM;
static_assert(FileSystemFolder == 0x70400000);

// What a system error code or an HRESULT that stands for one lies between.
constexpr HRESULT LeastCode = 3;
constexpr HRESULT GreatestCode = 12175;

// A folder that gives one object so often will never end.
constexpr unsigned MostRepeats = 1000;

} // namespace

bool TPathmere::BeginWalk() {
  const TAliveWatch watch(GetAliveToken());
  const ComPtr<IShellFolder> folder = GetShellFolder();
  if (!folder) return false;
  const unsigned walk = fWalk;
  TFolderEnumerator::TOptions options;
  options.showErrorMessages = fShowErrorMessages;
  if (fForNavigation) options.flags |= TFolderEnumerator::ForNavigation;
  options.window = GetWindowHandle(false);
  if (options.window && fFolderIdList) {
    const ScopedErrorMode mode(fShowErrorMessages ? 0 : SEM_FAILCRITICALERRORS);
    if (UnlockIfLocked(GetDirectory(), fFolderIdList.Get())) options.window = nullptr;
    if (!watch.IsAlive() || walk != fWalk) return false;
  }
  fObjects = TFolderEnumerator(folder, options);
  return true;
}

void TPathmere::EndWalk() noexcept {
  ++fWalk;
  fRepeats = 0;
  fObjects = TFolderEnumerator();
}

bool TPathmere::RepeatsItself(const ITEMIDLIST& pItem) {
  const PCIDLIST_ABSOLUTE last = fItemIDList ? fItemIDList->WindowsPointer() : nullptr;
  const bool same = last && last->mkid.cb == pItem.mkid.cb && std::memcmp(last, &pItem, pItem.mkid.cb) == 0;
  fRepeats = same ? fRepeats + 1 : 0;
  return fRepeats >= MostRepeats;
}

bool TPathmere::CheckResult(HRESULT pResult) const {
  if (SUCCEEDED(pResult)) return true;
  const HRESULT code = HRESULT_CODE(pResult);
  if (code < LeastCode || code > GreatestCode) return false;
  throw EPathmereError(static_cast<DWORD>(code), fFolderIdList ? fFolderIdList->DisplayPath() : std::wstring());
}

bool TPathmere::Next() {
  const TAliveWatch watch(GetAliveToken());
  if (!fObjects.IsRunning() && !BeginWalk()) return false;
  const unsigned walk = fWalk;
  for (;;) {
    // Out of reach of what the folder's code may do to the walker meanwhile.
    TFolderEnumerator objects = std::move(fObjects);
    TUniqueItemIdList item;
    const TFolderStep step = objects.Next(item);
    if (!watch.IsAlive() || walk != fWalk) return false;
    if (step == TFolderStep::End || step == TFolderStep::Failed) {
      if (objects.CrashedTwice()) SetItemIdList(nullptr);
      EndWalk();
      return step == TFolderStep::Failed && CheckResult(objects.Status());
    }
    if (RepeatsItself(*item.Get())) {
      EndWalk();
      TDebugLog::LogMessage(L"A folder gives the same object without end", fFolderIdList.Get());
      return false;
    }
    fObjects = std::move(objects);
    SetItemIdList(TKivItemIdList::Create(std::move(item)));
    if (step == TFolderStep::ObjectAfterFault) return true;
    const bool passes = PassesFileSystemOnly() && FilterMatch();
    if (!watch.IsAlive() || walk != fWalk) return false; // the rules ask the folder, too
    if (passes) return true;
  }
}

bool TPathmere::PassesFileSystemOnly() {
  if (!fFileSystemOnly) return true;
  const TAliveWatch watch(GetAliveToken());
  const SFGAOF attributes = GetAttributes(SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR);
  if (!watch.IsAlive()) return false;
  if (attributes != 0) return true;
  const std::wstring name = GetObjectName();
  if (StartsText(L"RECYCLE", name)) return true;
  const TKivShellFolder object = IsSpecialObject();
  const bool in_network = GetSpecialFolder() == SF_NETWORK;
  if (object != SF_DRIVES && object != SF_NETWORK && !in_network) return false;
  return !in_network || !name.empty();
}

bool TPathmere::HasFolderAttributes(SFGAOF pAttributes) const noexcept {
  if ((pAttributes & SFGAO_FOLDER) == 0) return false;
  if (!fFileSystemOnly) return true;
  return (pAttributes & (SFGAO_FILESYSANCESTOR | SFGAO_FILESYSTEM)) != 0 && (pAttributes & SFGAO_STREAM) == 0;
}

bool TPathmere::IsFolder() {
  return HasItem() && HasFolderAttributes(GetAttributes(fFileSystemOnly ? FileSystemFolder : SFGAO_FOLDER));
}

bool TPathmere::FilterMatch() {
  if (fFilter.IsEmpty()) return true;
  const TAliveWatch watch(GetAliveToken());
  const TKivShellFolder folder = GetSpecialFolder();
  if (!watch.IsAlive()) return false;
  if (folder == SF_LINKS) return true;
  // One call for both questions.
  const SFGAOF attributes =
      HasItem() ? GetAttributes(fFileSystemOnly ? FileSystemFolder : SFGAO_FOLDER | SFGAO_FILESYSTEM) : 0;
  if (!watch.IsAlive()) return false;
  if (HasFolderAttributes(attributes)) return true;
  std::wstring name;
  if (folder == SF_RECENT) {
    const ComPtr<IItemIdList> absolute = GetAbsoluteItemIdList();
    const ComPtr<IItemIdList> target = absolute ? absolute->LinkTarget() : nullptr;
    if (target && target->IsFolder()) return true;
    if (target) name = ExtractFileName(target->DisplayName(dnfPreferPhysical));
    if (!watch.IsAlive()) return false;
  }
  if (name.empty()) name = NameToFilter((attributes & SFGAO_FILESYSTEM) != 0);
  if (!watch.IsAlive()) return false;
  return fFilter.Matches(name);
}

std::wstring TPathmere::NameToFilter(bool pIsFile) {
  // Of a file the bound folder knows the path, the same that the absolute list would be asked for at many times the
  // cost.
  const ComPtr<IItemIdList> held = fItemIDList;
  std::wstring name;
  const ComPtr<IShellFolder> folder = pIsFile ? MaybeShellFolder() : nullptr;
  if (folder && SUCCEEDED(GetNameInFolder(folder.Get(), RawItem(), SHGDN_FORPARSING, name)) && IsAbsolutePath(name) &&
      name.find(L"::") == std::wstring::npos) {
    return ExtractFileName(name);
  }
  const ComPtr<IItemIdList> absolute = GetAbsoluteItemIdList();
  return absolute ? ExtractFileName(absolute->DisplayName(dnfPreferPhysical)) : std::wstring();
}

} // namespace kiv
