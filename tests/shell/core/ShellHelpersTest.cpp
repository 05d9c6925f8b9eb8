#include <core/NetworkObject.h>
#include <core/ReparsePoint.h>
#include <core/ShellLibrary.h>
#include <core/SpecialFolderPath.h>

#include <doubles/Crash.h>
#include <doubles/FakeShellFolder.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/InterfacedObject.h>
#include <platform/Handles.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <winnetwk.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

namespace kiv {
namespace {

using test::Crash;
using test::ScopedTempFolder;

TEST(ReparsePoint, MostThingsAreNone) {
  EXPECT_TRUE(IsReparsePoint(DWORD{FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY}));
  EXPECT_FALSE(IsReparsePoint(DWORD{FILE_ATTRIBUTE_DIRECTORY}));
  EXPECT_FALSE(IsReparsePoint(INVALID_FILE_ATTRIBUTES));
  ScopedTempFolder temp;
  const std::wstring file = temp.MakeFile(L"dir\\file");
  for (const std::wstring& path : {file, temp.PathOf(L"dir"), temp.PathOf(L"dir\\"), temp.PathOf(L"none"),
                                   std::wstring(L"C:\\"), std::wstring(L"C:"), std::wstring()}) {
    EXPECT_FALSE(IsReparsePoint(path)) << testing::PrintToString(path);
  }
}

TEST(ReparsePoint, IsTheLinkAndNotItsTarget) {
  ScopedTempFolder temp;
  temp.MakeFile(L"dir\\file");
  const std::wstring link = temp.PathOf(L"link");
  constexpr DWORD flags = SYMBOLIC_LINK_FLAG_DIRECTORY | SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE;
  if (!CreateSymbolicLinkW(link.c_str(), temp.PathOf(L"dir").c_str(), flags)) {
    GTEST_SKIP() << "this user may not make links";
  }
  EXPECT_TRUE(IsReparsePoint(link));
  EXPECT_TRUE(IsReparsePoint(link + L"\\"));
  // Neither the current folder of its drive nor what is first in it counts.
  const std::wstring before = TPathUtils::GetCurrentDir();
  ASSERT_TRUE(SetCurrentDirectoryW(link.c_str()));
  EXPECT_FALSE(IsReparsePoint(link.substr(0, 3)));
  SetCurrentDirectoryW(before.c_str());
  EXPECT_FALSE(IsReparsePoint(link + L"\\*"));
  EXPECT_FALSE(IsReparsePoint(link + L"\\file"));
}

TEST(SpecialFolderPath, ComesBackFromEveryFolderOfThisSystem) {
  wchar_t windows[MAX_PATH];
  GetWindowsDirectoryW(windows, MAX_PATH);
  const std::wstring path = std::wstring(windows) + L"\\explorer.exe";
  EXPECT_EQ(NormalizeSpecialFolderPath(path), L"shell:Windows\\explorer.exe");
  EXPECT_EQ(NormalizeSpecialFolderPath(std::wstring(windows) + L"\\system32\\x"), L"shell:System\\x");
  EXPECT_EQ(NormalizeSpecialFolderPath(std::wstring(windows) + L"x"), std::wstring(windows) + L"x");
  EXPECT_EQ(ExpandSpecialFolderPath(L"shell:windows\\explorer.exe"), path);
  for (const wchar_t* text : {L"shell:Desktop", L"shell:Personal\\a", L"shell:AppData\\b\\c", L"shell:Profile\\x"}) {
    const std::wstring expanded = ExpandSpecialFolderPath(text);
    EXPECT_NE(expanded, text);
    EXPECT_EQ(NormalizeSpecialFolderPath(expanded), text);
  }
  EXPECT_EQ(ExpandSpecialFolderPath(L"shell:NoSuchFolder\\x"), L"shell:NoSuchFolder\\x");
  EXPECT_EQ(NormalizeSpecialFolderPath(L"") + ExpandSpecialFolderPath(L""), L"");
  ScopedShellApi api;
  api->SHGetKnownFolderPath = nullptr;
  EXPECT_EQ(NormalizeSpecialFolderPath(path), path);
  EXPECT_EQ(ExpandSpecialFolderPath(L"shell:Windows"), L"shell:Windows");
}

// What SHGetDataFromIDListW answers of an object.
class NetworkObject : public testing::Test {
protected:
  void SetUp() override {
    fFiles.AddDrive(L'Q');
    fFiles.MakeFolder(L"Q:\\Dir");
    fFiles.MakeFile(L"Q:\\Dir\\doc", 1);
    fApi->SHGetDataFromIDListW = [](IShellFolder*, PCUITEMID_CHILD, int format, void* buffer, int size) -> HRESULT {
      if (format != SHGDFIL_NETRESOURCE) return E_INVALIDARG;
      if (gName == L"crash") Crash();
      auto* const resource = static_cast<NETRESOURCEW*>(buffer);
      resource->dwDisplayType = gType;
      auto* const text = reinterpret_cast<wchar_t*>(resource + 1);
      std::memcpy(text, gName.c_str(), (gName.size() + 1) * sizeof(wchar_t));
      resource->lpRemoteName = gOutside ? reinterpret_cast<wchar_t*>(std::uintptr_t{0x10}) : text;
      if (gEndless) {
        for (auto* at = text; at < static_cast<wchar_t*>(buffer) + size / 2; ++at) *at = L'x';
      }
      return gType == 0 ? E_FAIL : S_OK;
    };
    gName.clear();
    gType = RESOURCEDISPLAYTYPE_SERVER;
    gOutside = gEndless = false;
  }

  std::wstring Domain() {
    const auto folder = fShell.Folder(L"Q:\\Dir");
    const auto item = fShell.ItemIdList(L"Q:\\Dir\\doc", true);
    EXPECT_TRUE(folder && item);
    return GetDomainFromIdList(folder.Get(), static_cast<PCUITEMID_CHILD>(item.Get()));
  }

  static inline std::wstring gName;
  static inline DWORD gType;
  static inline bool gOutside;
  static inline bool gEndless;
  test::SimulatedFileSystem fFiles;
  test::FakeShellNamespace fShell{fFiles};
  ScopedShellApi fApi;
};

TEST_F(NetworkObject, HasTheDomainOfItsName) {
  gName = L"\\\\srv.corp.example";
  EXPECT_EQ(Domain(), L"corp.example");
  gType = RESOURCEDISPLAYTYPE_DOMAIN;
  gName = L"WORKGROUP";
  EXPECT_EQ(Domain(), L"WORKGROUP");
  EXPECT_EQ(GetDomainFromIdList(nullptr, nullptr), L"");
}

TEST_F(NetworkObject, GarbageAndCrashesGiveNoDomain) {
  EXPECT_EQ(Domain(), L""); // no name there: the object's own, which is no network name
  gOutside = true;
  gType = RESOURCEDISPLAYTYPE_DOMAIN;
  EXPECT_EQ(Domain(), L"");
  gOutside = false;
  gEndless = true;
  EXPECT_EQ(Domain(), L"");
  gName = L"crash";
  EXPECT_EQ(Domain(), L"");
  fApi->SHGetDataFromIDListW = nullptr;
  EXPECT_EQ(Domain(), L"");
  EXPECT_EQ(fShell.LiveObjects(), 0);
}

class TLibraryFake final : public TInterfacedObject<IShellLibrary> {
public:
  explicit TLibraryFake(std::wstring pSaveFolder) : fSaveFolder(std::move(pSaveFolder)) {}

  HRESULT STDMETHODCALLTYPE LoadLibraryFromItem(IShellItem* item, DWORD mode) override {
    if (mode != STGM_READ) return E_INVALIDARG;
    wchar_t* name = nullptr;
    if (FAILED(item->GetDisplayName(SIGDN_FILESYSPATH, &name))) return E_FAIL;
    const TUniqueTaskText owner(name);
    return std::wstring(name) == L"C:\\" ? S_OK : E_INVALIDARG;
  }
  HRESULT STDMETHODCALLTYPE GetDefaultSaveFolder(DEFAULTSAVEFOLDERTYPE type, REFIID riid, void** item) override {
    if (type != DSFT_DETECT) return E_INVALIDARG;
    if (fSaveFolder == L"crash") Crash();
    return SHCreateItemFromParsingName(fSaveFolder.c_str(), nullptr, riid, item);
  }
  HRESULT STDMETHODCALLTYPE LoadLibraryFromKnownFolder(REFKNOWNFOLDERID, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE AddFolder(IShellItem*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RemoveFolder(IShellItem*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolders(LIBRARYFOLDERFILTER, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ResolveFolder(IShellItem*, DWORD, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetDefaultSaveFolder(DEFAULTSAVEFOLDERTYPE, IShellItem*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetOptions(LIBRARYOPTIONFLAGS*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetOptions(LIBRARYOPTIONFLAGS, LIBRARYOPTIONFLAGS) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolderType(FOLDERTYPEID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetFolderType(REFFOLDERTYPEID) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIcon(LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetIcon(LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Commit() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Save(IShellItem*, LPCWSTR, LIBRARYSAVEFLAGS, IShellItem**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SaveInKnownFolder(REFKNOWNFOLDERID, LPCWSTR, LIBRARYSAVEFLAGS, IShellItem**) override {
    return E_NOTIMPL;
  }

private:
  std::wstring fSaveFolder;
};

TEST(ShellLibrary, GivesThePathThatNewFilesGoTo) {
  static std::wstring save;
  static std::wstring asked;
  ScopedShellApi api;
  api->CoCreateInstance = [](REFCLSID id, IUnknown*, DWORD, REFIID riid, void** object) -> HRESULT {
    wchar_t text[40];
    StringFromGUID2(id, text, 40);
    asked = text;
    return Make<TLibraryFake>(save)->QueryInterface(riid, object);
  };
  const auto path_of = [](const wchar_t* path) {
    PIDLIST_ABSOLUTE raw = nullptr;
    EXPECT_EQ(SHParseDisplayName(path, nullptr, &raw, 0, nullptr), S_OK);
    const TUniqueItemIdList list(raw);
    return GetDefaultSavePathFromLibrary(raw);
  };
  const long before = LiveObjects();
  save = L"C:\\windows";
  EXPECT_EQ(path_of(L"C:\\"), L"C:\\windows");
  EXPECT_EQ(asked, L"{D9B3211D-E57F-4426-AAEF-30A806ADD397}");
  EXPECT_EQ(path_of(L"C:\\windows"), L""); // no library
  save = L"C:\\no such folder";
  EXPECT_EQ(path_of(L"C:\\"), L"");
  save = L"crash";
  EXPECT_EQ(path_of(L"C:\\"), L"");
  EXPECT_EQ(LiveObjects(), before);
  EXPECT_EQ(GetDefaultSavePathFromLibrary(nullptr), L"");
  api->CoCreateInstance = [](REFCLSID, IUnknown*, DWORD, REFIID, void**) -> HRESULT { return REGDB_E_CLASSNOTREG; };
  EXPECT_EQ(path_of(L"C:\\"), L"");
}

} // namespace
} // namespace kiv
