#include <platform/ShellApi.h>

#include <platform/Exception.h>
#include <platform/FaultGuard.h>
#include <platform/Lifecycle.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

// A system whose libraries and names the test chooses.
class TSystemFake {
public:
  std::set<std::wstring> missingLibraries;
  std::set<std::string> missingNames;
  DWORD build = 19045;

  TModuleSource Source() {
    return {.load =
                [this](const wchar_t* name) {
                  loaded.emplace_back(name);
                  if (missingLibraries.contains(name)) return HMODULE{};
                  return reinterpret_cast<HMODULE>(loaded.size());
                },
            .find = [this](HMODULE, const char* name) -> FARPROC {
              if (IS_INTRESOURCE(name)) {
                ordinals.insert(LOWORD(name));
                return &Export;
              }
              if (missingNames.contains(name)) return nullptr;
              if (std::string(name) == "RtlGetVersion") {
                gBuild = build;
                return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&RtlGetVersionFake));
              }
              return &Export;
            }};
  }

  std::vector<std::wstring> loaded;
  std::set<WORD> ordinals;

private:
  static inline DWORD gBuild = 0;
  static INT_PTR WINAPI Export() { return 0; }
  static LONG WINAPI RtlGetVersionFake(OSVERSIONINFOW* version) {
    version->dwMajorVersion = 10;
    version->dwBuildNumber = gBuild;
    return 0;
  }
};

std::wstring FailureWithout(const wchar_t* library) {
  TSystemFake system;
  system.missingLibraries.insert(library);
  try {
    BindShellApi(system.Source());
  } catch (const EException& e) {
    return e.Message();
  }
  return L"";
}

TEST(ShellApi, MissingLibrariesAreFatalOrSilentAsEachIsNeeded) {
  EXPECT_EQ(FailureWithout(L"ntdll"), L"Pathmere Components: Cannot open ntdll.dll");
  EXPECT_EQ(FailureWithout(L"Shell32"), L"Pathmere Components: Cannot open SHELL32.DLL!");
  EXPECT_EQ(FailureWithout(L"shlwapi"), L"Pathmere Components: Cannot open SHLWAPI.DLL!");

  TSystemFake bare;
  bare.missingLibraries = {L"propsys",    L"kernel32.dll", L"ExplorerFrame.dll", L"comdlg32.dll", L"uxtheme.dll",
                           L"Shcore.dll", L"User32.dll",   L"urlmon.dll",        L"dwmapi.dll"};
  const TShellApi api = BindShellApi(bare.Source());
  for (const std::wstring& library : bare.missingLibraries) {
    EXPECT_EQ(std::count(bare.loaded.begin(), bare.loaded.end(), library), 1);
  }
  EXPECT_FALSE(api.VariantCompare || api.PSGetPropertyDescription || api.PSCreatePropertyChangeArray);
  EXPECT_FALSE(api.Wow64DisableWow64FsRedirection || api.Wow64RevertWow64FsRedirection || api.IsWow64Process);
  EXPECT_FALSE(api.AllowDarkModeForWindow || api.ShouldAppsUseDarkMode || api.GetProcessDpiAwareness);
  EXPECT_FALSE(api.GetThreadDpiAwarenessContext || api.GetAwarenessFromDpiAwarenessContext);
  EXPECT_FALSE(api.AreDpiAwarenessContextsEqual || api.explorerFrame || api.comdlg32 || api.urlmon);
  EXPECT_TRUE(api.SHDoDragDrop && api.StrRetToStrW);
}

TEST(ShellApi, AMissingNameLeavesItsEntryNull) {
  TSystemFake system;
  system.missingNames = {"SHQueryRecycleBinA", "IStream_Size", "PSGetPropertyDescription"};
  const TShellApi api = BindShellApi(system.Source());
  EXPECT_FALSE(api.SHQueryRecycleBinA || api.IStream_Size || api.PSGetPropertyDescription);
  EXPECT_TRUE(api.SHGetSetSettings && api.SHReleaseThreadRef && api.VariantCompare);
}

TEST(ShellApi, DarkModeGoesByOrdinalOnlyWhereTheBuildHasItThere) {
  const std::pair<DWORD, std::set<WORD>> builds[] = {
      {17134, {}}, {17763, {104, 132, 133}}, {18362, {104, 132, 133, 135}}, {22631, {104, 132, 133, 135}}};
  for (const auto& [build, ordinals] : builds) {
    TSystemFake system;
    system.build = build;
    system.missingNames = {"AllowDarkModeForWindow", "ShouldAppsUseDarkMode", "RefreshImmersiveColorPolicyState",
                           "SetPreferredAppMode"};
    const TShellApi api = BindShellApi(system.Source());
    const bool there = build >= 17763;
    EXPECT_EQ(api.AllowDarkModeForWindow != nullptr, there) << build;
    EXPECT_EQ(api.ShouldAppsUseDarkMode != nullptr, there) << build;
    EXPECT_EQ(api.SetPreferredAppMode != nullptr, build >= 18362) << build;
    EXPECT_EQ(system.ordinals, ordinals);
  }
}

TEST(ShellApi, BindsTheSystemOnceAndComesUpAgainAfterShutdown) {
  const TShellApi* const first = &ShellApi();
  InitializeShell();
  EXPECT_EQ(&ShellApi(), first);
  EXPECT_TRUE(first->SHParseDisplayName && first->StrFormatByteSizeW && first->comdlg32);
  EXPECT_TRUE(Desktop());
  Shutdown();
  PIDLIST_ABSOLUTE list = nullptr;
  EXPECT_EQ(ShellApi().SHParseDisplayName(L"C:\\", nullptr, &list, 0, nullptr), S_OK);
  CoTaskMemFree(list);
}

TEST(ShellApi, OverridesNestAndEnd) {
  const auto original = ShellApi().SHGetDesktopFolder;
  const auto other = ShellApi().StrRetToStrW;
  {
    ScopedShellApi outer;
    outer->SHGetDesktopFolder = nullptr;
    {
      ScopedShellApi inner;
      inner->StrRetToStrW = nullptr;
      EXPECT_FALSE(ShellApi().SHGetDesktopFolder || ShellApi().StrRetToStrW);
    }
    EXPECT_EQ(ShellApi().StrRetToStrW, other);
    EXPECT_FALSE(ShellApi().SHGetDesktopFolder);
  }
  EXPECT_EQ(ShellApi().SHGetDesktopFolder, original);
}

TEST(ShellApi, TheDesktopIsOneForAllThreadsAndItsFailureIsNamed) {
  {
    ScopedShellApi api;
    api->SHGetDesktopFolder = [](IShellFolder** folder) -> HRESULT {
      *folder = nullptr;
      return E_OUTOFMEMORY;
    };
    try {
      Desktop();
      ADD_FAILURE() << "no exception";
    } catch (const EException& e) {
      EXPECT_EQ(e.Message(), L"Pathmere Components: Cannot open Shell!");
    }
  }
  std::vector<IShellFolder*> seen(8);
  std::vector<std::thread> threads;
  for (auto& folder : seen) threads.emplace_back([&folder] { folder = Desktop().Get(); });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(std::set<IShellFolder*>(seen.begin(), seen.end()).size(), 1U);
  EXPECT_EQ(Desktop().Get(), seen[0]);
}

TEST(ShellApi, NoLateBoundPropertyCallEndsTheProcess) {
  const TShellApi& api = ShellApi();
  const PROPERTYKEY key{{0xB725F130, 0x47EF, 0x101A, {0xA5, 0xF1, 0x02, 0x60, 0x8C, 0x9E, 0xEB, 0xAC}}, 10};
  ComPtr<IUnknown> description;
  void* found = nullptr;
  if (SUCCEEDED(GuardedExport(api.PSGetPropertyDescription, key, IidOf<IUnknown>(), &found))) {
    description.Attach(static_cast<IUnknown*>(found));
  }
  EXPECT_EQ(FAILED(GuardedExport(api.PSCreatePropertyChangeArray, nullptr, nullptr, nullptr, 0U, IidOf<IShellFolder>(),
                                 &found)),
            true);
  VARIANT one{};
  VARIANT two{};
  INT order = -2;
  GuardedCall([&] { order = api.VariantCompare(one, two); });
  EXPECT_TRUE(order == 0 || order == -2) << order; // equal, or not to be had
}

} // namespace
} // namespace kiv
