// What the walker tells of the object it stands on, and the properties that it publishes.
#include <walker/Pathmere.h>

#include <core/ItemIdList.h>
#include <core/NetworkObject.h>
#include <core/ObjectNames.h>
#include <core/PathFunctions.h>
#include <core/PathmereError.h>
#include <core/ShellFolderNames.h>
#include <framework/FileNames.h>
#include <framework/PropertyRegistry.h>
#include <platform/FaultGuard.h>

#include <functional>

namespace kiv {

namespace {

bool Publish() {
  // A folder of another kind is found again by its path, or not at all.
  const auto has_special_folder = [](TPathmere& walker) {
    const TKivShellFolder folder = walker.GetSpecialFolder();
    return folder != SF_FILESYSTEMFOLDER && folder != SF_UNKNOWN && folder != SF_INVALID;
  };
  PublishClass<TPathmere>(L"TPathmere", L"Walks one folder of the Shell namespace.")
      .Property(L"Filter", &TPathmere::GetFilter, &TPathmere::SetFilter, L"*",
                L"Patterns of file names, separated by \";\"; folders always pass.")
      .Property(
          L"Folder", &TPathmere::GetDirectory, &TPathmere::SetDirectory, L"",
          L"Path of the active folder. Empty for a folder without one. A special folder is stored as one: its path is "
          L"another one for another user.")
      .StoredIf(std::not_fn(has_special_folder))
      .Property(L"FileSystemOnly", &TPathmere::GetFileSystemOnly, &TPathmere::SetFileSystemOnly, false,
                L"Lists objects of the file system only, and what leads to them.")
      .Property(L"ShowErrorMessages", &TPathmere::GetShowErrorMessages, &TPathmere::SetShowErrorMessages, true,
                L"The platform may show dialogs (logon, critical errors).")
      .Property(L"ShowContextMenuOnTop", &TPathmere::GetShowContextMenuOnTop, &TPathmere::SetShowContextMenuOnTop,
                false, L"Puts the shell's entries above the application's in a menu.")
      .Property(L"ForNavigation", &TPathmere::GetForNavigation, &TPathmere::SetForNavigation, false,
                L"Lists as for a navigation pane.")
      .Property(L"SpecialFolder", &TPathmere::GetSpecialFolder, &TPathmere::SetSpecialFolder,
                L"The active folder as one of those that every system has.")
      .StoredIf(has_special_folder);
  return true;
}
[[maybe_unused]] const bool gPublished = Publish();

} // namespace

bool TPathmere::HasItem() {
  return fItemIDList && !fItemIDList->IsInvalid();
}

// Null also for what lies deeper than in the folder itself, which the folder can't be asked about.
PCUITEMID_CHILD TPathmere::RawItem() {
  const PCIDLIST_ABSOLUTE list = fItemIDList ? fItemIDList->WindowsPointer() : nullptr;
  if (!list || list->mkid.cb == 0) return nullptr;
  const PCUIDLIST_RELATIVE next = ILGetNext(list);
  return !next || next->mkid.cb == 0 ? reinterpret_cast<PCUITEMID_CHILD>(list) : nullptr;
}

bool TPathmere::CheckIfValid(bool pFolderOnly) {
  if (!fFolderIdList || fFolderIdList->IsInvalid()) return false;
  return pFolderOnly || HasItem() || fFolderIdList->Depth() == 0 || HasMultiObjects();
}

bool TPathmere::IsBrowsable() {
  const ComPtr<IItemIdList> absolute = GetAbsoluteItemIdList();
  if (!absolute || !absolute->HasAttributes(SFGAO_BROWSABLE)) return false;
  return !fFileSystemOnly || !absolute->HasAttributes(SFGAO_STREAM);
}

SFGAOF TPathmere::GetAttributes(SFGAOF pAttributes) {
  if (!CheckIfValid(false)) return 0;
  if (pAttributes == SFGAO_BROWSABLE) return IsBrowsable() ? pAttributes : 0;
  const TAliveWatch watch(GetAliveToken());
  const ComPtr<IItemIdList> held = fItemIDList; // the answer may come from code that leads back here
  SFGAOF found = pAttributes;
  PCUITEMID_CHILD item = RawItem();
  const ComPtr<IShellFolder> folder = item ? MaybeShellFolder() : nullptr;
  if (folder && SUCCEEDED(GuardedCall([&] { return folder->GetAttributesOf(1, &item, &found); }))) {
    return found & pAttributes;
  }
  if (!watch.IsAlive()) return 0;
  const ComPtr<IItemIdList> absolute = GetAbsoluteItemIdList();
  const ComPtr<IShellItem> shell_item = absolute ? absolute->ShellItem() : nullptr;
  if (!shell_item) return 0;
  found = 0;
  const HRESULT hr = GuardedCall([&] { return shell_item->GetAttributes(pAttributes, &found); });
  return SUCCEEDED(hr) ? found & pAttributes : 0;
}

bool TPathmere::HasSubFolders() {
  if (!HasItem()) {
    if (!fFolderIdList || fFolderIdList->Depth() != 0) {
      throw EInvalidOperation(L"No valid folder is currently assigned");
    }
    fHasSubFolders = true;
  }
  if (fHasSubFolders) return *fHasSubFolders;
  const TAliveWatch watch(GetAliveToken());
  const ComPtr<IItemIdList> asked = fItemIDList;
  const bool has = AskForSubFolders();
  if (watch.IsAlive() && fItemIDList == asked) fHasSubFolders = has; // the answer may have come back to the walker
  return has;
}

bool TPathmere::AskForSubFolders() {
  if (HasFileExtension(GetObjectName(), L".ZIP")) return !fFileSystemOnly;
  if (!fFileSystemOnly) return GetAttributes(SFGAO_HASSUBFOLDER) != 0;
  constexpr SFGAOF in_file_system = SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR;
  const SFGAOF found = GetAttributes(SFGAO_HASSUBFOLDER | in_file_system);
  return (found & SFGAO_HASSUBFOLDER) != 0 && (found & in_file_system) != 0;
}

bool TPathmere::BrowseObject() {
  try {
    if (!IsFolder()) return false;
    const TAliveWatch watch(GetAliveToken());
    SetFolderIdList(GetAbsoluteItemIdList());
    return watch.IsAlive() && GetShellFolder() != nullptr;
  } catch (const EPathmereError&) {
    return false;
  }
}

// A shell item would bind the folder anew for each object; it is asked only for what the folder doesn't tell.
std::wstring TPathmere::NameInBoundFolder(TItemIdListDisplayNameFormat pFormat) {
  const ComPtr<IItemIdList> held = fItemIDList;
  const PCUITEMID_CHILD item = RawItem();
  const ComPtr<IShellFolder> folder = item ? MaybeShellFolder() : nullptr;
  return folder ? TObjectNames(folder.Get(), item).DisplayName(pFormat) : std::wstring();
}

std::wstring TPathmere::NameOf(TItemIdListDisplayNameFormat pFormat) {
  const std::wstring name = NameInBoundFolder(pFormat);
  if (!name.empty()) return name;
  const ComPtr<IItemIdList> absolute = GetAbsoluteItemIdList();
  return absolute ? absolute->DisplayName(pFormat) : std::wstring();
}

std::wstring TPathmere::GetObjectName() {
  if (!HasItem()) return {};
  std::wstring name = NameInBoundFolder(dnfPhysicalPath);
  if (name.empty()) {
    const ComPtr<IItemIdList> absolute = GetAbsoluteItemIdList();
    if (!absolute || !absolute->ShellItem()) return {};
    name = absolute->DisplayName(dnfPhysicalPath);
  }
  if (!kiv::IsDrive(name)) name = ExtractFileName(name);
  return name.empty() ? GetDomain() : name;
}

std::wstring TPathmere::GetShellObjectName(bool pInFolderName) {
  if (!HasItem()) {
    throw EInvalidOperation(ClassName() + L" cannot return the current object's name if there is no current object.");
  }
  const std::wstring name = NameOf(pInFolderName ? dnfInFolder : dnfNormal);
  return name.empty() ? GetObjectName() : name;
}

std::wstring TPathmere::GetDomain() {
  const ComPtr<IItemIdList> held = fItemIDList;
  return GetDomainFromIdList(MaybeShellFolder().Get(), RawItem());
}

} // namespace kiv
