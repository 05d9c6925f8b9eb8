#include <core/SpecialFolderPath.h>

#include <core/FolderPlaceholder.h>
#include <framework/TextCompare.h>
#include <platform/FaultGuard.h>
#include <platform/Handles.h>
#include <platform/ShellApi.h>

#include <knownfolders.h>

#include <vector>

namespace kiv {

namespace {

// Read anew each time: the user may move a folder while the program runs.
std::vector<TNamedFolder> SpecialFolders() {
  const struct {
    const wchar_t* name;
    const KNOWNFOLDERID& id;
  } table[] = {
      {L"shell:Desktop", FOLDERID_Desktop},
      {L"shell:Personal", FOLDERID_Documents},
      {L"shell:My Pictures", FOLDERID_Pictures},
      {L"shell:My Music", FOLDERID_Music},
      {L"shell:My Video", FOLDERID_Videos},
      {L"shell:Downloads", FOLDERID_Downloads},
      {L"shell:Favorites", FOLDERID_Favorites},
      {L"shell:Start Menu", FOLDERID_StartMenu},
      {L"shell:AppData", FOLDERID_RoamingAppData},
      {L"shell:Local AppData", FOLDERID_LocalAppData},
      {L"shell:OneDrive", FOLDERID_SkyDrive},
      {L"shell:Profile", FOLDERID_Profile},
      {L"shell:Common Desktop", FOLDERID_PublicDesktop},
      {L"shell:Common Documents", FOLDERID_PublicDocuments},
      {L"shell:Common Start Menu", FOLDERID_CommonStartMenu},
      {L"shell:Common AppData", FOLDERID_ProgramData},
      {L"shell:Public", FOLDERID_Public},
      {L"shell:ProgramFiles", FOLDERID_ProgramFiles},
      {L"shell:ProgramFilesX86", FOLDERID_ProgramFilesX86},
      {L"shell:System", FOLDERID_System},
      {L"shell:SystemX86", FOLDERID_SystemX86},
      {L"shell:Fonts", FOLDERID_Fonts},
      {L"shell:Windows", FOLDERID_Windows},
  };
  std::vector<TNamedFolder> folders;
  for (const auto& [name, id] : table) {
    wchar_t* raw = nullptr;
    const HRESULT hr = GuardedExport(ShellApi().SHGetKnownFolderPath, id, KF_FLAG_DONT_VERIFY, nullptr, &raw);
    const TUniqueTaskText path(raw);
    if (SUCCEEDED(hr) && path) folders.push_back({name, path.Get()});
  }
  return folders;
}

} // namespace

std::wstring NormalizeSpecialFolderPath(std::wstring_view pPath) {
  return ReplaceFolderByName(pPath, SpecialFolders());
}

std::wstring ExpandSpecialFolderPath(std::wstring_view pPath) {
  return !StartsText(L"shell:", pPath) ? std::wstring(pPath) : ReplaceNameByFolder(pPath, SpecialFolders());
}

} // namespace kiv
