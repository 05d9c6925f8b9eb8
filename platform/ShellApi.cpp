#include <platform/ShellApi.h>

#include <platform/Exception.h>
#include <platform/Handles.h>
#include <platform/Lifecycle.h>

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace kiv {

namespace {

// The build of Windows 10 from which on uxtheme has its dark-mode functions at these ordinals (version 1809).
constexpr DWORD DarkModeBuild = 17763;
constexpr WORD RefreshImmersiveColorPolicyStateOrdinal = 104;
constexpr WORD ShouldAppsUseDarkModeOrdinal = 132;
constexpr WORD AllowDarkModeForWindowOrdinal = 133;
// Before this build (version 1903) the ordinal is another function's.
constexpr DWORD PreferredAppModeBuild = 18362;
constexpr WORD SetPreferredAppModeOrdinal = 135;

class TBinder {
public:
  explicit TBinder(const TModuleSource& pSource) : fSource(pSource) {}

  HMODULE Open(const wchar_t* pLibrary) const { return fSource.load(pLibrary); }
  HMODULE Require(const wchar_t* pLibrary, const wchar_t* pMessage) const {
    const HMODULE module = Open(pLibrary);
    if (!module) throw EException(pMessage);
    return module;
  }

  template <typename F>
  void Bind(HMODULE pModule, F& pEntry, const char* pName, WORD pOrdinal = 0) const {
    if (!pModule) return;
    FARPROC found = fSource.find(pModule, pName);
    if (!found && pOrdinal != 0) found = fSource.find(pModule, MAKEINTRESOURCEA(pOrdinal));
    pEntry = reinterpret_cast<F>(reinterpret_cast<void*>(found));
  }

private:
  const TModuleSource& fSource;
};

#define KIV_BIND(module, name) binder.Bind(module, api.name, #name)

void BindShell(const TBinder& binder, TShellApi& api) {
  const HMODULE shell = binder.Require(L"Shell32", L"Pathmere Components: Cannot open SHELL32.DLL!");
  api.shell32 = shell;
  KIV_BIND(shell, SHQueryRecycleBinA);
  KIV_BIND(shell, SHDoDragDrop);
  KIV_BIND(shell, SHGetSetSettings);
  KIV_BIND(shell, SHCreateItemFromIDList);
  KIV_BIND(shell, SHGetKnownFolderIDList);
  KIV_BIND(shell, SHCreateShellItemArrayFromIDLists);
  KIV_BIND(shell, SHCreateShellItemArrayFromDataObject);
  KIV_BIND(shell, SHChangeNotification_Lock);
  KIV_BIND(shell, SHChangeNotification_Unlock);
  KIV_BIND(shell, SHChangeNotifyRegister);
  KIV_BIND(shell, SHChangeNotifyDeregister);
  KIV_BIND(shell, SHGetDesktopFolder);
  KIV_BIND(shell, SHParseDisplayName);
  KIV_BIND(shell, SHGetDataFromIDListW);
  KIV_BIND(shell, ILCreateFromPathW);
  KIV_BIND(shell, SHSimpleIDListFromPath);
  KIV_BIND(shell, SHGetSpecialFolderLocation);
  KIV_BIND(shell, SHGetKnownFolderPath);
  KIV_BIND(shell, SHGetPathFromIDListEx);
  KIV_BIND(shell, SHGetPathFromIDListW);
  KIV_BIND(shell, SHGetIDListFromObject);
  KIV_BIND(shell, SHCreateShellItem);
  KIV_BIND(shell, SHBindToParent);
  KIV_BIND(shell, ShellExecuteExW);
  KIV_BIND(shell, SHGetFileInfoW);
  KIV_BIND(shell, SHGetImageList);

  const HMODULE shlwapi = binder.Require(L"shlwapi", L"Pathmere Components: Cannot open SHLWAPI.DLL!");
  KIV_BIND(shlwapi, StrRetToStrW);
  KIV_BIND(shlwapi, StrFormatByteSizeW);
  KIV_BIND(shlwapi, StrFormatKBSizeW);
  KIV_BIND(shlwapi, SHCreateThreadRef);
  KIV_BIND(shlwapi, SHSetThreadRef);
  KIV_BIND(shlwapi, SHReleaseThreadRef);
  KIV_BIND(shlwapi, IStream_Size);
}

void BindSystem(const TBinder& binder, TShellApi& api) {
  const HMODULE kernel = binder.Open(L"kernel32.dll");
  KIV_BIND(kernel, Wow64DisableWow64FsRedirection);
  KIV_BIND(kernel, Wow64RevertWow64FsRedirection);
  KIV_BIND(kernel, IsWow64Process);
  KIV_BIND(kernel, GetDriveTypeW);
  KIV_BIND(kernel, GetDiskFreeSpaceExW);

  const HMODULE properties = binder.Open(L"propsys");
  KIV_BIND(properties, VariantCompare);
  KIV_BIND(properties, PSGetPropertyDescription);
  KIV_BIND(properties, PSCreatePropertyChangeArray);

  KIV_BIND(binder.Open(L"ole32.dll"), CoCreateInstance);
  const HMODULE network = binder.Open(L"mpr.dll");
  KIV_BIND(network, WNetAddConnection2W);
  KIV_BIND(network, WNetGetConnectionW);
  KIV_BIND(binder.Open(L"Shcore.dll"), GetProcessDpiAwareness);

  const HMODULE user = binder.Open(L"User32.dll");
  KIV_BIND(user, GetThreadDpiAwarenessContext);
  KIV_BIND(user, GetAwarenessFromDpiAwarenessContext);
  KIV_BIND(user, AreDpiAwarenessContextsEqual);
  KIV_BIND(user, SendInput);
  KIV_BIND(user, RegisterDeviceNotificationW);
  KIV_BIND(user, UnregisterDeviceNotification);
  KIV_BIND(user, GetDpiForSystem);
  KIV_BIND(user, GetDpiForWindow);
  KIV_BIND(user, GetSystemMetricsForDpi);
  KIV_BIND(user, SystemParametersInfoForDpi);

  api.explorerFrame = binder.Open(L"ExplorerFrame.dll");
  api.comdlg32 = binder.Open(L"comdlg32.dll");
  api.urlmon = binder.Open(L"urlmon.dll");
}

void BindThemes(const TBinder& binder, TShellApi& api) {
  OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof(version);
  const bool known = api.RtlGetVersion && api.RtlGetVersion(&version) == 0;
  const bool ordinals = known && version.dwMajorVersion >= 10 && version.dwBuildNumber >= DarkModeBuild;
  const HMODULE themes = binder.Open(L"uxtheme.dll");
  binder.Bind(themes, api.AllowDarkModeForWindow, "AllowDarkModeForWindow",
              ordinals ? AllowDarkModeForWindowOrdinal : WORD{0});
  binder.Bind(themes, api.ShouldAppsUseDarkMode, "ShouldAppsUseDarkMode",
              ordinals ? ShouldAppsUseDarkModeOrdinal : WORD{0});
  binder.Bind(themes, api.RefreshImmersiveColorPolicyState, "RefreshImmersiveColorPolicyState",
              ordinals ? RefreshImmersiveColorPolicyStateOrdinal : WORD{0});
  const bool preferred = ordinals && version.dwBuildNumber >= PreferredAppModeBuild;
  binder.Bind(themes, api.SetPreferredAppMode, "SetPreferredAppMode", preferred ? SetPreferredAppModeOrdinal : WORD{0});
  KIV_BIND(themes, OpenThemeDataForDpi);
  KIV_BIND(binder.Open(L"dwmapi.dll"), DwmSetWindowAttribute);
}

// The bound table and what it holds loaded.
struct TBinding {
  std::vector<TUniqueModule> modules;
  TShellApi api;
};

std::mutex gLock; // guards gBinding
// Ends by Shutdown only. A destructor among the statics would free libraries while this one is being unloaded.
TBinding* gBinding = nullptr;
std::atomic<const TShellApi*> gApi{nullptr};
std::atomic<IShellFolder*> gDesktop{nullptr};

void FinalizeShell() {
  if (IShellFolder* const desktop = gDesktop.exchange(nullptr)) desktop->Release();
  const std::lock_guard guard(gLock);
  if (!gBinding) return;
  if (gBinding->api.SHReleaseThreadRef) gBinding->api.SHReleaseThreadRef();
  gApi = nullptr;
  delete std::exchange(gBinding, nullptr);
}

} // namespace

TShellApi BindShellApi(const TModuleSource& pSource) {
  const TBinder binder(pSource);
  TShellApi api;
  const HMODULE ntdll = binder.Require(L"ntdll", L"Pathmere Components: Cannot open ntdll.dll");
  KIV_BIND(ntdll, RtlGetVersion);
  KIV_BIND(ntdll, NtQueryInformationFile);
  KIV_BIND(ntdll, wine_get_version);
  BindShell(binder, api);
  BindSystem(binder, api);
  BindThemes(binder, api);
  return api;
}

void InitializeShell() {
  if (gApi.load(std::memory_order_acquire)) return;
  const std::lock_guard guard(gLock);
  if (gBinding) return;
  auto binding = std::make_unique<TBinding>();
  binding->api = BindShellApi({
      .load =
          [&binding](const wchar_t* name) {
            // Only from the system's own folder: a DLL of that name beside the host is none of ours.
            TUniqueModule module(LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
            const HMODULE handle = module.Get();
            if (module) binding->modules.push_back(std::move(module));
            return handle;
          },
      .find = [](HMODULE module, const char* name) { return GetProcAddress(module, name); },
  });
  gBinding = binding.release();
  gApi.store(&gBinding->api, std::memory_order_release);
  AtShutdown(&FinalizeShell);
}

const TShellApi& ShellApi() {
  if (const TShellApi* const api = gApi.load(std::memory_order_acquire)) return *api;
  InitializeShell();
  return *gApi.load(std::memory_order_acquire);
}

ComPtr<IShellFolder> Desktop() {
  if (IShellFolder* const desktop = gDesktop.load(std::memory_order_acquire)) return desktop;
  ComPtr<IShellFolder> made;
  const auto open = ShellApi().SHGetDesktopFolder;
  if (!open || FAILED(open(&made)) || !made) throw EException(L"Pathmere Components: Cannot open Shell!");
  IShellFolder* standing = nullptr;
  // Two threads may race here: the loser lets its own go.
  if (!gDesktop.compare_exchange_strong(standing, made.Get())) return standing;
  made->AddRef(); // the process's own
  return made;
}

ScopedShellApi::ScopedShellApi() : fApi(std::make_unique<TShellApi>(ShellApi())), fOuter(gApi.exchange(fApi.get())) {
  if (IShellFolder* const desktop = gDesktop.exchange(nullptr)) desktop->Release();
}

ScopedShellApi::~ScopedShellApi() {
  // What the replaced calls made must not outlive them.
  if (IShellFolder* const desktop = gDesktop.exchange(nullptr)) desktop->Release();
  gApi = fOuter;
}

} // namespace kiv
