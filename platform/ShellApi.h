#pragma once

#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/Types.h>

#include <propsys.h>
#include <shellapi.h>
#include <shellscalingapi.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <uxtheme.h>
#include <winnetwk.h>

#include <functional>
#include <memory>

namespace kiv {

/// The platform calls that the library binds by name at start-up, so that it starts on systems that lack some of them,
/// and that a test can replace one by one.
///
/// An entry stays null when its library or its name is missing, and callers test for that: the feature is then silently
/// off. An entry that is there may still abort when it is called; call it through GuardedCall or GuardedExport. The
/// signatures are the platform's; each function's page in its documentation has the function's name.
struct TShellApi {
  // ntdll
  LONG(WINAPI* RtlGetVersion)(OSVERSIONINFOW*) = nullptr;
  /// File, I/O status block, buffer and its size, class of information.
  LONG(WINAPI* NtQueryInformationFile)(HANDLE, void*, void*, ULONG, int) = nullptr;
  /// Only Wine has it.
  const char*(CDECL* wine_get_version)() = nullptr;

  // propsys
  INT(WINAPI* VariantCompare)(const VARIANT&, const VARIANT&) = nullptr;
  decltype(&::PSGetPropertyDescription) PSGetPropertyDescription = nullptr;
  decltype(&::PSCreatePropertyChangeArray) PSCreatePropertyChangeArray = nullptr;

  // Shell32
  decltype(&::SHQueryRecycleBinA) SHQueryRecycleBinA = nullptr;
  decltype(&::SHDoDragDrop) SHDoDragDrop = nullptr;
  decltype(&::SHGetSetSettings) SHGetSetSettings = nullptr;
  decltype(&::SHCreateItemFromIDList) SHCreateItemFromIDList = nullptr;
  decltype(&::SHGetKnownFolderIDList) SHGetKnownFolderIDList = nullptr;
  decltype(&::SHCreateShellItemArrayFromIDLists) SHCreateShellItemArrayFromIDLists = nullptr;
  decltype(&::SHCreateShellItemArrayFromDataObject) SHCreateShellItemArrayFromDataObject = nullptr;
  decltype(&::SHChangeNotification_Lock) SHChangeNotification_Lock = nullptr;
  decltype(&::SHChangeNotification_Unlock) SHChangeNotification_Unlock = nullptr;
  decltype(&::SHChangeNotifyRegister) SHChangeNotifyRegister = nullptr;
  decltype(&::SHChangeNotifyDeregister) SHChangeNotifyDeregister = nullptr;
  decltype(&::SHGetDesktopFolder) SHGetDesktopFolder = nullptr;
  decltype(&::SHParseDisplayName) SHParseDisplayName = nullptr;
  decltype(&::SHGetDataFromIDListW) SHGetDataFromIDListW = nullptr;
  decltype(&::ILCreateFromPathW) ILCreateFromPathW = nullptr;
  decltype(&::SHSimpleIDListFromPath) SHSimpleIDListFromPath = nullptr;
  decltype(&::SHGetSpecialFolderLocation) SHGetSpecialFolderLocation = nullptr;
  decltype(&::SHGetKnownFolderPath) SHGetKnownFolderPath = nullptr;
  decltype(&::SHGetPathFromIDListEx) SHGetPathFromIDListEx = nullptr;
  decltype(&::SHGetPathFromIDListW) SHGetPathFromIDListW = nullptr;
  decltype(&::SHGetIDListFromObject) SHGetIDListFromObject = nullptr;
  decltype(&::SHCreateShellItem) SHCreateShellItem = nullptr;
  decltype(&::SHBindToParent) SHBindToParent = nullptr;
  decltype(&::ShellExecuteExW) ShellExecuteExW = nullptr;
  decltype(&::SHGetFileInfoW) SHGetFileInfoW = nullptr;
  decltype(&::SHGetImageList) SHGetImageList = nullptr;

  // shlwapi
  decltype(&::StrRetToStrW) StrRetToStrW = nullptr;
  decltype(&::StrFormatByteSizeW) StrFormatByteSizeW = nullptr;
  decltype(&::StrFormatKBSizeW) StrFormatKBSizeW = nullptr;
  decltype(&::SHCreateThreadRef) SHCreateThreadRef = nullptr;
  decltype(&::SHSetThreadRef) SHSetThreadRef = nullptr;
  decltype(&::SHReleaseThreadRef) SHReleaseThreadRef = nullptr;
  decltype(&::IStream_Size) IStream_Size = nullptr;

  // kernel32.dll
  decltype(&::Wow64DisableWow64FsRedirection) Wow64DisableWow64FsRedirection = nullptr;
  decltype(&::Wow64RevertWow64FsRedirection) Wow64RevertWow64FsRedirection = nullptr;
  decltype(&::IsWow64Process) IsWow64Process = nullptr;
  decltype(&::GetDriveTypeW) GetDriveTypeW = nullptr;
  decltype(&::GetDiskFreeSpaceExW) GetDiskFreeSpaceExW = nullptr;

  // ole32.dll
  decltype(&::CoCreateInstance) CoCreateInstance = nullptr;

  // mpr.dll
  decltype(&::WNetAddConnection2W) WNetAddConnection2W = nullptr;
  decltype(&::WNetGetConnectionW) WNetGetConnectionW = nullptr;

  // uxtheme.dll; by ordinal where they have no name, from the build of Windows 10 on that has them there
  bool(WINAPI* AllowDarkModeForWindow)(HWND, bool) = nullptr;
  bool(WINAPI* ShouldAppsUseDarkMode)() = nullptr;
  int(WINAPI* SetPreferredAppMode)(int) = nullptr; ///< 0 light, 1 as the user has set it, 2 dark
  void(WINAPI* RefreshImmersiveColorPolicyState)() = nullptr;
  HTHEME(WINAPI* OpenThemeDataForDpi)(HWND, LPCWSTR, UINT) = nullptr;

  // dwmapi.dll
  HRESULT(WINAPI* DwmSetWindowAttribute)(HWND, DWORD, LPCVOID, DWORD) = nullptr;

  // Shcore.dll
  decltype(&::GetProcessDpiAwareness) GetProcessDpiAwareness = nullptr;

  // User32.dll
  decltype(&::GetThreadDpiAwarenessContext) GetThreadDpiAwarenessContext = nullptr;
  decltype(&::GetAwarenessFromDpiAwarenessContext) GetAwarenessFromDpiAwarenessContext = nullptr;
  decltype(&::AreDpiAwarenessContextsEqual) AreDpiAwarenessContextsEqual = nullptr;
  decltype(&::SendInput) SendInput = nullptr;
  decltype(&::RegisterDeviceNotificationW) RegisterDeviceNotificationW = nullptr;
  decltype(&::UnregisterDeviceNotification) UnregisterDeviceNotification = nullptr;
  decltype(&::GetDpiForSystem) GetDpiForSystem = nullptr;
  decltype(&::GetDpiForWindow) GetDpiForWindow = nullptr;
  decltype(&::GetSystemMetricsForDpi) GetSystemMetricsForDpi = nullptr;
  decltype(&::SystemParametersInfoForDpi) SystemParametersInfoForDpi = nullptr;

  // Held loaded: for the texts and pictures in their resources, and because unloading them is costly.
  HMODULE shell32 = nullptr;
  HMODULE explorerFrame = nullptr;
  HMODULE comdlg32 = nullptr;
  HMODULE urlmon = nullptr;
};

/// Binds the table, once. The first use of ShellApi does it; a host that wants to know early whether the library can
/// run here calls it itself. Any thread.
///
/// Raises EException "Pathmere Components: Cannot open SHELL32.DLL!" and the like when a library is missing without
/// which nothing works; all other gaps are silent.
KIV_EXPORT void InitializeShell();

/// The bound table. Any thread. Raises as InitializeShell does.
KIV_EXPORT const TShellApi& ShellApi();

/// The folder at the root of the namespace, kept for the process. Any thread. Raises EException "Pathmere Components:
/// Cannot open Shell!" when the platform doesn't give it.
KIV_EXPORT ComPtr<IShellFolder> Desktop();

/// Where BindShellApi finds libraries and names.
struct TModuleSource {
  /// Loads a library of the system's own; null if it isn't there.
  std::function<HMODULE(const wchar_t* name)> load;
  /// Finds a name, or an ordinal in the form of `MAKEINTRESOURCEA`.
  std::function<FARPROC(HMODULE module, const char* name)> find;
};

/// Fills a table from a source of the caller's: InitializeShell's work, without its memory.
KIV_EXPORT TShellApi BindShellApi(const TModuleSource& pSource);

/// Replaces entries of the bound table for as long as it lives, which must not be beyond a Shutdown. For tests; scopes
/// nest and end in reverse order, and no other thread may be inside the library when they begin or end.
class KIV_EXPORT ScopedShellApi {
public:
  ScopedShellApi();
  ~ScopedShellApi();
  ScopedShellApi(const ScopedShellApi&) = delete;
  ScopedShellApi& operator=(const ScopedShellApi&) = delete;

  TShellApi* operator->() noexcept { return fApi.get(); }

private:
  std::unique_ptr<TShellApi> fApi;
  const TShellApi* fOuter;
};

} // namespace kiv
