// The walker as a cursor: its folder and its object.
#include <walker/Pathmere.h>

#include <core/DebugLog.h>
#include <core/ItemIdList.h>
#include <core/PathFunctions.h>
#include <core/PathmereError.h>
#include <core/SpecialFolders.h>
#include <framework/Application.h>
#include <framework/TextCompare.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <platform/MainThread.h>
#include <platform/ShellApi.h>
#include <platform/TakeResult.h>

#include <utility>

namespace kiv {

// Every place that lists a folder makes one.
static_assert(sizeof(TPathmere) < 1024);

namespace {

constexpr auto PathNotFound = static_cast<DWORD>(ERROR_PATH_NOT_FOUND);

[[noreturn]] void RaiseNotFound(IItemIdList* list) {
  throw EPathmereError(static_cast<HRESULT>(PathNotFound), list);
}

ComPtr<IShellFolder> Bind(IItemIdList* list) {
  void* found = nullptr;
  const HRESULT hr = list->QueryInterface(IidOf<IShellFolder>(), &found);
  ComPtr<IShellFolder> folder;
  folder.Attach(static_cast<IShellFolder*>(found));
  if (FAILED(hr) || !folder) throw EPathmereError(FAILED(hr) ? hr : E_NOINTERFACE, list->DisplayPath());
  return folder;
}

// A folder that can't be bound is exchanged for what it links to.
ComPtr<IShellFolder> BindOrFollow(ComPtr<IItemIdList>& list) {
  try {
    return Bind(list.Get());
  } catch (const EPathmereError&) {
    ComPtr<IItemIdList> target = list->LinkTarget();
    ComPtr<IShellFolder> folder;
    if (target && target->IsSpecialFolder(SF_DESKTOP)) {
      target = TKivItemIdList::CreateForSpecialFolder(SF_DESKTOP, true);
      folder = Desktop();
    } else if (target) {
      folder = ComPtr<IUnknown>(target).MaybeAs<IShellFolder>();
    }
    if (!folder) throw;
    list = std::move(target);
    return folder;
  }
}

// The list that a bound folder knows of itself; nil if it doesn't tell.
ComPtr<IItemIdList> ListOf(const ComPtr<IShellFolder>& folder) {
  const auto persistent = folder.MaybeAs<IPersistFolder2>();
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = persistent ? GuardedCall([&] { return persistent->GetCurFolder(&raw); }) : E_NOINTERFACE;
  TUniqueItemIdList list = TakeItemIdList(hr, raw);
  return list ? TKivItemIdList::Create(std::move(list)) : nullptr;
}

} // namespace

TPathmere::TPathmere(TComponent* pOwner) : TComponent(pOwner) {}

TPathmere::TPathmere(const TPathmere* pCopyFrom) {
  if (!pCopyFrom) return;
  fShowErrorMessages = pCopyFrom->fShowErrorMessages;
  fFileSystemOnly = pCopyFrom->fFileSystemOnly;
  fReadOnly = pCopyFrom->fReadOnly;
  fAsyncContextMenuOperations = pCopyFrom->fAsyncContextMenuOperations;
  fShowContextMenuOnTop = pCopyFrom->fShowContextMenuOnTop;
  fForNavigation = pCopyFrom->fForNavigation;
  fAcceptSearchFolderPaths = pCopyFrom->fAcceptSearchFolderPaths;
  fFilter = pCopyFrom->fFilter;
  fOnRename = pCopyFrom->fOnRename;
  fOnContextMenuSelect = pCopyFrom->fOnContextMenuSelect;
  fOnBeforeShellCommand = pCopyFrom->fOnBeforeShellCommand;
  fOnBeforeCommand = pCopyFrom->fOnBeforeCommand;
  SetFolderIdList(pCopyFrom->fFolderIdList);
}

TPathmere::TPathmere(std::wstring_view pObjectPath) {
  SetAbsoluteItemIdList(TKivItemIdList::Parse(pObjectPath));
}

TPathmere::TPathmere(IItemIdList* pAbsoluteItemIdList) {
  SetAbsoluteItemIdList(pAbsoluteItemIdList);
}

TPathmere::~TPathmere() {
  // What is released here may come back.
  BeginDestruction();
}

// --- the folder -----------------------------------------------------------------------------------------------------

void TPathmere::SetFolderIdList(ComPtr<IItemIdList> pFolder) {
  if (!pFolder) {
    SetShellfolder(nullptr);
    fFolderIdList.Reset();
    return;
  }
  if (pFolder->IsInvalid()) RaiseNotFound(pFolder.Get());
  if (!fAcceptSearchFolderPaths && pFolder->Depth() > 1 && IsSearchFolderPath(pFolder->DisplayPath())) {
    RaiseNotFound(pFolder.Get());
  }
  if (pFolder == fFolderIdList) {
    EndWalk();
    SetItemIdList(EmptyIdList());
    return;
  }
  fFolderIdList = pFolder;
  SetShellfolder(nullptr);
  SetItemIdList(EmptyIdList()); // before foreign code runs, which may come back
  try {
    GetShellFolder();
  } catch (const EPathmereError&) {
    TDebugLog::LogMessage(L"Couldn't retrieve IShellFolder", pFolder.Get());
  }
}

ComPtr<IShellFolder> TPathmere::GetShellFolder() {
  if (fShellFolder || !fFolderIdList) return fShellFolder;
  const TAliveWatch watch(GetAliveToken());
  const ComPtr<IItemIdList> asked = fFolderIdList;
  ComPtr<IItemIdList> list = asked;
  ComPtr<IShellFolder> folder = BindOrFollow(list);
  if (!watch.IsAlive()) return nullptr;
  if (fFolderIdList != asked || fShellFolder) return fShellFolder; // what was bound came back to the walker
  if (list != asked) {
    fFolderIdList = std::move(list);
    fAbsoluteIdList.Reset();
  }
  SetShellfolder(folder);
  return folder;
}

ComPtr<IShellFolder> TPathmere::MaybeShellFolder() {
  try {
    return GetShellFolder();
  } catch (const EPathmereError&) {
    return nullptr;
  }
}

void TPathmere::SetShellfolder(ComPtr<IShellFolder> pFolder) {
  fShellFolder = std::move(pFolder);
  fShellFolder2.Reset();
  fTriedIshd = false;
  EndWalk();
  if (!fShellFolder || fFolderIdList) return;
  fFolderIdList = ListOf(fShellFolder);
  SetItemIdList(EmptyIdList());
}

ComPtr<IShellFolder2> TPathmere::GetIShellDetails() {
  if (fShellFolder2 || fTriedIshd) return fShellFolder2;
  const TAliveWatch watch(GetAliveToken());
  const ComPtr<IShellFolder> folder = GetShellFolder();
  if (!watch.IsAlive()) return nullptr;
  fTriedIshd = true;
  void* found = nullptr;
  if (folder && SUCCEEDED(GuardedCall([&] { return folder->QueryInterface(IidOf<IShellFolder2>(), &found); }))) {
    fShellFolder2.Attach(static_cast<IShellFolder2*>(found));
  } else {
    TDebugLog::LogDebugMessage(L"Could not get IShellFolder2 interface for current folder: " + GetDirectory());
  }
  return fShellFolder2;
}

std::wstring TPathmere::GetDirectory() const {
  std::wstring path = fFolderIdList ? fFolderIdList->Path() : std::wstring();
  if (!path.empty() && path.back() != L'\\' && path.back() != L'/') path += L'\\';
  return path;
}

void TPathmere::SetDirectory(const std::wstring& pFolder) {
  if (!pFolder.empty() && SameText(pFolder, GetDirectory())) return;
  SetFolderIdList(TKivItemIdList::Create(pFolder, nullptr, GetWindowHandle(false)));
}

TKivShellFolder TPathmere::GetSpecialFolder() const {
  const ComPtr<IItemIdList> folder = fFolderIdList; // the question may lead back here
  return folder ? folder->SpecialFolder() : SF_INVALID;
}

void TPathmere::SetSpecialFolder(TKivShellFolder pFolder) {
  if (pFolder == GetSpecialFolder()) {
    SetItemIdList(EmptyIdList());
    return;
  }
  // It says no more than the folder's path, which is read as well.
  if (IsLoading() && pFolder == SF_FILESYSTEMFOLDER) return;
  SetFolderIdList(TKivItemIdList::CreateForSpecialFolder(pFolder, true));
}

void TPathmere::SelectParent() {
  const ComPtr<IItemIdList> folder = fFolderIdList;
  if (folder && folder->Depth() > 0) SetAbsoluteItemIdList(folder);
}

// --- the object -----------------------------------------------------------------------------------------------------

void TPathmere::SetItemIdList(ComPtr<IItemIdList> pItem) {
  fAbsoluteIdList.Reset();
  fItemIDList = std::move(pItem);
  InvalidateCaches();
}

ComPtr<IItemIdList> TPathmere::GetAbsoluteItemIdList() {
  if (!fFolderIdList) return nullptr;
  if (!fAbsoluteIdList) fAbsoluteIdList = fItemIDList ? fFolderIdList->Concat(fItemIDList.Get()) : fFolderIdList;
  return fAbsoluteIdList;
}

void TPathmere::SetAbsoluteItemIdList(ComPtr<IItemIdList> pObject) {
  if (!pObject) {
    throw EInvalidArgument(L"\"nil\" is not a valid value that can be assigned to TPathmere.AbsoluteItemIdList");
  }
  const PCIDLIST_ABSOLUTE list = pObject->WindowsPointer();
  if (!list) throw EPathmereError(PathNotFound, L"\r\n" + pObject->Path());
  if (pObject->IsSpecialFolder(SF_DESKTOP)) {
    SetSpecialFolder(SF_DESKTOP);
    return;
  }
  const TAliveWatch watch(GetAliveToken());
  void* found = nullptr;
  PCUITEMID_CHILD child = nullptr;
  const HRESULT hr = GuardedExport(ShellApi().SHBindToParent, list, IidOf<IShellFolder>(), &found, &child);
  ComPtr<IShellFolder> folder;
  folder.Attach(static_cast<IShellFolder*>(found));
  if (hr != S_OK || !folder || !watch.IsAlive()) return;
  fFolderIdList = pObject->GetStartItemIdList(pObject->Depth() - 1);
  SetShellfolder(std::move(folder));
  if (child) {
    // A child's list is one that is relative to its folder.
    SetItemIdList(TKivItemIdList::Create(reinterpret_cast<PCIDLIST_ABSOLUTE>(child), iloCopyMemory));
  } else {
    SetItemIdList(pObject->GetLastPart());
  }
  fAbsoluteIdList = std::move(pObject);
}

void TPathmere::SetObjectName(const std::wstring& pName) {
  if (pName.empty()) {
    SetItemIdList(nullptr);
    throw EPathmereError(L"Cannot find Object with empty name", nullptr);
  }
  if (pName.find(L'\\') != std::wstring::npos) {
    SetAbsoluteItemIdList(TKivItemIdList::Parse(pName));
    return;
  }
  const ComPtr<IShellFolder> folder = GetShellFolder();
  if (!folder) throw EPathmereError(L"No active folder was set.", nullptr);
  ComPtr<IItemIdList> item;
  {
    const ScopedErrorMode mode(fShowErrorMessages ? GetThreadErrorMode() : DWORD{SEM_FAILCRITICALERRORS});
    item = TKivItemIdList::Create(pName, folder.Get(), nullptr);
  }
  SetItemIdList(item);
  if (!item->IsInvalid()) return;
  EndWalk(); // one that runs wouldn't see all objects
  const TAliveWatch watch(GetAliveToken());
  while (Next()) {
    if (!SameText(NameOf(dnfInFolder), pName)) continue;
    EndWalk();
    return;
  }
  if (!watch.IsAlive()) return;
  throw EPathmereError(L"Error: Cannot find Object \"" + pName + L"\" in Folder \"" + GetDirectory() + L"\"", nullptr);
}

std::wstring TPathmere::GetFullPath() {
  const ComPtr<IItemIdList> absolute = GetAbsoluteItemIdList();
  return absolute ? absolute->Path() : std::wstring();
}

TKivShellFolder TPathmere::IsSpecialObject() {
  const ComPtr<IItemIdList> absolute = GetAbsoluteItemIdList();
  return absolute ? absolute->SpecialFolder() : SF_INVALID;
}

void TPathmere::SetSpecialObject(TKivShellFolder pFolder) {
  SetAbsoluteItemIdList(TKivItemIdList::CreateForSpecialFolder(pFolder, true));
}

TWindowHandle TPathmere::GetWindowHandle(bool pForce) {
  if (!pForce && !fShowErrorMessages) {
    const bool may_ask = !fObjects.IsRunning() && MainThread::IsCurrent() && fFolderIdList &&
                         fFolderIdList->Depth() <= 3 && TKivItemIdList::IsNetworkPidl(fFolderIdList.Get());
    if (!may_ask) return {};
  }
  const auto* const owner = dynamic_cast<const IWindowOwner*>(GetOwner());
  const TWindowHandle window = owner ? owner->AllocatedHandle() : TWindowHandle{};
  return window ? window : ApplicationHandle();
}

} // namespace kiv
