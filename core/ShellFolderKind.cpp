#include <core/ShellFolderKind.h>

#include <cstddef>

namespace kiv {

namespace {

constexpr std::wstring_view Names[] = {
    L"SF_FILESYSTEMFOLDER",
    L"SF_BITBUCKET",
    L"SF_CONTROLS",
    L"SF_DESKTOP",
    L"SF_DESKTOPDIRECTORY",
    L"SF_DRIVES",
    L"SF_FONTS",
    L"SF_NETHOOD",
    L"SF_NETWORK",
    L"SF_PERSONAL",
    L"SF_PRINTERS",
    L"SF_PROGRAMS",
    L"SF_RECENT",
    L"SF_SENDTO",
    L"SF_STARTMENU",
    L"SF_STARTUP",
    L"SF_TEMPLATES",
    L"SF_FAVORITES",
    L"SF_COMMON_STARTMENU",
    L"SF_COMMON_STARTUP",
    L"SF_COMMON_DESKTOPDIRECTORY",
    L"SF_APPDATA",
    L"SF_PRINTHOOD",
    L"SF_COMMON_FAVORITES",
    L"SF_INTERNET_CACHE",
    L"SF_COOKIES",
    L"SF_HISTORY",
    L"SF_COMMON_PROGRAMS",
    L"SF_ALTSTARTUP",
    L"SF_COMMON_APPDATA",
    L"SF_COMMON_DOCUMENTS",
    L"SF_INTERNET",
    L"SF_LOCAL_APPDATA",
    L"SF_MYPICTURES",
    L"SF_PROGRAM_FILES",
    L"SF_SYSTEM",
    L"SF_PROGRAM_FILES_COMMON",
    L"SF_WINDOWS",
    L"SF_PROGRAM_FILESX86",
    L"SF_PROGRAM_FILES_COMMONX86",
    L"SF_SYSTEMX86",
    L"SF_MY_MUSIC",
    L"SF_MY_VIDEOS",
    L"SF_LIBRARIES",
    L"SF_LIBRARY_DOCUMENTS",
    L"SF_LIBRARY_PICTURES",
    L"SF_LIBRARY_MUSIC",
    L"SF_LIBRARY_VIDEOS",
    L"SF_LIBRARY_PUBLIC",
    L"SF_PROFILE",
    L"SF_HOME_GROUP",
    L"SF_LINKS",
    L"SF_QUICKACCESS",
    L"SF_DOWNLOADS",
    L"SF_ONEDRIVE",
    L"SF_QUICKLAUNCH",
    L"SF_UNKNOWN",
    L"SF_INVALID",
};
static_assert(std::size(Names) == ShellFolderCount);

} // namespace

std::wstring_view ShellFolderName(TKivShellFolder pFolder) noexcept {
  const auto index = static_cast<std::size_t>(pFolder);
  return index < std::size(Names) ? Names[index] : L"?";
}

} // namespace kiv
