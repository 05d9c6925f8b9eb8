#pragma once

#include <framework/Set.h>
#include <platform/Export.h>

#include <cstdint>
#include <string_view>

namespace kiv {

/// Classification of a folder: which of the folders that every system has it is. Not all exist on every system and for
/// every user; "Known Folders" and "CSIDL" in the platform's documentation describe them.
enum class TKivShellFolder : std::uint8_t {
  SF_FILESYSTEMFOLDER, ///< anything on a disk that is none of the others
  SF_BITBUCKET,        ///< the recycle bin
  SF_CONTROLS,         ///< the control panel
  SF_DESKTOP,          ///< the root of the namespace
  SF_DESKTOPDIRECTORY, ///< the folder of the desktop's files
  SF_DRIVES,           ///< the folder of the drives
  SF_FONTS,
  SF_NETHOOD,  ///< network shortcuts
  SF_NETWORK,  ///< the network
  SF_PERSONAL, ///< the user's documents
  SF_PRINTERS,
  SF_PROGRAMS,
  SF_RECENT,
  SF_SENDTO,
  SF_STARTMENU,
  SF_STARTUP,
  SF_TEMPLATES,
  SF_FAVORITES,
  SF_COMMON_STARTMENU,
  SF_COMMON_STARTUP,
  SF_COMMON_DESKTOPDIRECTORY,
  SF_APPDATA,
  SF_PRINTHOOD,
  SF_COMMON_FAVORITES,
  SF_INTERNET_CACHE,
  SF_COOKIES,
  SF_HISTORY,
  SF_COMMON_PROGRAMS,
  SF_ALTSTARTUP,
  SF_COMMON_APPDATA,
  SF_COMMON_DOCUMENTS,
  SF_INTERNET,
  SF_LOCAL_APPDATA,
  SF_MYPICTURES,
  SF_PROGRAM_FILES,
  SF_SYSTEM,
  SF_PROGRAM_FILES_COMMON,
  SF_WINDOWS,
  SF_PROGRAM_FILESX86,
  SF_PROGRAM_FILES_COMMONX86,
  SF_SYSTEMX86,
  SF_MY_MUSIC,
  SF_MY_VIDEOS,
  SF_LIBRARIES,
  SF_LIBRARY_DOCUMENTS,
  SF_LIBRARY_PICTURES,
  SF_LIBRARY_MUSIC,
  SF_LIBRARY_VIDEOS,
  SF_LIBRARY_PUBLIC,
  SF_PROFILE,
  SF_HOME_GROUP,
  SF_LINKS,
  SF_QUICKACCESS,
  SF_DOWNLOADS,
  SF_ONEDRIVE,
  SF_QUICKLAUNCH,
  SF_UNKNOWN, ///< an object without a path that is none of the others
  SF_INVALID  ///< no object; in a list: not determined yet
};
using enum TKivShellFolder;

/// How many values TKivShellFolder has.
inline constexpr int ShellFolderCount = static_cast<int>(SF_INVALID) + 1;

using TKivShellFolders = TSet<TKivShellFolder>;

/// The value as it is written in code, such as "SF_DRIVES".
KIV_EXPORT std::wstring_view ShellFolderName(TKivShellFolder pFolder) noexcept;

} // namespace kiv
