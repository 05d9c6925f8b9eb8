#pragma once

// A namespace extension for tests: a COM server in a DLL of its own, which the real shell loads into the test program
// (or into kivtool), so that parsing, walking and all that stands on them meet a third party's code.
//
// Its root stands on the desktop while it is registered: `::{D6B0B3A8-5F0C-4C11-9B5E-3A8F0E7C2D14}`. **A folder's name
// says what the folder does** (Script.h), so any folder can be reached by its path, whether it is listed or not:
// `::{D6B0B3A8-...}\5 objects, crash next 3`. The root lists some of them. Objects are shown under other names than
// they are parsed by: "Shown: object 1".
//
//   Script      what a folder does, from its name
//   Content     what lies in it, and how that is called
//   Enumerator  IEnumIDList
//   Folder      IShellFolder2, IPersistFolder2
//   Server      class factory, registration
//
// Tests register it by ScopedExtension; by hand `regsvr32 kiv_test_extension.dll` does, and `regsvr32 /u` undoes it.

#include <platform/InterfaceId.h>

namespace kiv::test {

inline constexpr CLSID ExtensionClass = ParseGuid("{D6B0B3A8-5F0C-4C11-9B5E-3A8F0E7C2D14}");
/// The path of its root.
inline constexpr wchar_t ExtensionRoot[] = L"::{D6B0B3A8-5F0C-4C11-9B5E-3A8F0E7C2D14}";
inline constexpr wchar_t ExtensionFile[] = L"kiv_test_extension.dll";

// Events for steps that wait ("wait next 2"): the first is set by a step that has come, the second lets
// steps go on. Both are the test's; a step that finds none doesn't wait.
inline constexpr wchar_t ExtensionArrived[] = L"Local\\KivTestExtensionArrived";
inline constexpr wchar_t ExtensionGoOn[] = L"Local\\KivTestExtensionGoOn";

/// Exported: how many of its objects exist.
using TExtensionObjects = long (*)();
inline constexpr char ExtensionObjects[] = "KivTestExtensionObjects";
/// Exported: notes from now on what a thread asks of it; what that was, for that thread.
using TExtensionWatch = void (*)(unsigned long pThread);
using TExtensionAsks = const wchar_t* (*)();
inline constexpr char ExtensionWatch[] = "KivTestExtensionWatch";
inline constexpr char ExtensionAsks[] = "KivTestExtensionAsks";

} // namespace kiv::test
