#pragma once

#include <platform/Export.h>
#include <platform/Handles.h>

#include <shobjidl.h>

#include <string_view>

namespace kiv {

/// The raw item identifier list for a path, or nil. Any thread that is in an apartment.
///
/// `pPath` is what the shell parses: a file system path in any form (`C:`, `\\server\share`, `\\?\Volume{...}\dir`), a
/// name such as `::{...}` or `shell:Personal`, or a name relative to `pShellFolder`. Empty: the folder of the drives.
/// More than 32,767 characters and embedded nulls give nil.
///
/// `pShellFolder` is the folder to parse in, borrowed; the list then is relative to it. Without one it is absolute.
/// `pWindowHandleForLogonDialog` becomes the parent of a logon dialog; null for none.
///
/// Foreign parsers run here: one that crashes counts as one that doesn't know the path. While it works, the platform
/// shows no dialogs about missing disks, and a 32-bit process sees the real system folder. Raises as ShellApi does.
KIV_EXPORT TUniqueItemIdList GetIdListFromPath(IShellFolder* pShellFolder, std::wstring_view pPath,
                                               HWND pWindowHandleForLogonDialog = nullptr);

/// False for a path that is too long for this shell's items. Wine's shell makes items of paths beyond 260 characters,
/// but cuts their names, and damages memory when it is asked about what lies below.
bool ShellTakesPath(std::wstring_view pPath);

} // namespace kiv
