#include <core/ShellFolderSource.h>

#include <core/PathUtils.h>
#include <doubles/Crash.h>
#include <doubles/FakeShellFolder.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/Handles.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {
namespace {

using test::FakeShellNamespace;
using test::ScopedTempFolder;
using test::SimulatedFileSystem;

HRESULT Open(const std::wstring& path, std::unique_ptr<IFolderStepper>& stepper) {
  return TShellFolderSource(TFactsPrecision::Exact).OpenFolder(path, stepper);
}
HRESULT Open(const std::wstring& path) {
  std::unique_ptr<IFolderStepper> stepper;
  return Open(path, stepper);
}

std::set<std::wstring> Names(IFolderStepper& stepper) {
  std::set<std::wstring> names;
  TFolderObject object;
  while (stepper.Next(object) == TFolderStep::Object) {
    EXPECT_TRUE(names.insert(object.name).second) << "listed twice";
  }
  return names;
}
std::set<std::wstring> Names(const std::wstring& path) {
  std::unique_ptr<IFolderStepper> stepper;
  EXPECT_EQ(Open(path, stepper), S_OK);
  return stepper ? Names(*stepper) : std::set<std::wstring>();
}

TEST(ShellFolderSource, OpensEveryFormOfAPath) {
  ScopedTempFolder temp;
  temp.MakeFile(L"Dir\\one");
  temp.MakeFile(L"Dir\\two");
  const std::set<std::wstring> expected{L"one", L"two"};
  const std::wstring plain = temp.PathOf(L"Dir");
  std::wstring turned = plain;
  std::replace(turned.begin(), turned.end(), L'\\', L'/');
  std::wstring upper = plain;
  CharUpperW(upper.data());
  for (const auto& path : {plain, plain + L"\\", turned, turned + L"/", L"\\\\?\\" + plain, upper}) {
    EXPECT_EQ(Names(path), expected) << testing::PrintToString(path);
  }
  EXPECT_EQ(Names(L"C:"), Names(L"C:\\"));
  EXPECT_FALSE(Names(L"").empty());
  wchar_t windows[MAX_PATH];
  ASSERT_NE(GetWindowsDirectoryW(windows, MAX_PATH), 0U);
  EXPECT_EQ(Names(L"shell:Windows"), Names(windows));
  EXPECT_EQ(Names(L""), Names(L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"));
  EXPECT_TRUE(Names(temp.MakeFolder(L"Empty")).empty());
}

TEST(ShellFolderSource, SaysWhatIsWrongWithAPath) {
  ScopedTempFolder temp;
  temp.MakeFile(L"file");
  const auto error = [](DWORD code) { return HRESULT_FROM_WIN32(code); };
  EXPECT_EQ(Open(temp.PathOf(L"none")), error(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(Open(temp.PathOf(L"none\\below")), error(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(Open(temp.PathOf(L"file")), error(ERROR_DIRECTORY));
  EXPECT_EQ(Open(L"C:\\" + std::wstring(33000, L'x')), error(ERROR_FILENAME_EXCED_RANGE));
  EXPECT_TRUE(FAILED(Open(L"C:\\" + std::wstring(300, L'x')))); // a name longer than any
  EXPECT_TRUE(FAILED(Open(L"::{garbage")));
  EXPECT_EQ(Open(L"shell:No such folder"), error(ERROR_PATH_NOT_FOUND));
  EXPECT_TRUE(FAILED(Open(std::wstring(L"C:\\lone") + static_cast<wchar_t>(0xD800))));
  wchar_t free = L'A';
  for (const DWORD drives = GetLogicalDrives(); free <= L'Z' && (drives >> (free - L'A') & 1U) != 0;) ++free;
  ASSERT_LE(free, L'Z');
  EXPECT_EQ(Open(std::wstring(1, free) + L":\\"), error(ERROR_PATH_NOT_FOUND));
}

// A shell either walks a path over 260 characters or can't; nothing else may come of it.
TEST(ShellFolderSource, WalksALongPathOrSaysThatItIsTooLong) {
  ScopedTempFolder temp;
  std::wstring relative = std::wstring(80, L'a');
  for (int i = 0; i < 4; ++i) relative += L'\\' + std::wstring(80, static_cast<wchar_t>(L'b' + i));
  temp.MakeFile(relative + L"\\leaf", 9);
  std::unique_ptr<IFolderStepper> stepper;
  const HRESULT hr = Open(temp.PathOf(relative), stepper);
  if (SUCCEEDED(hr)) {
    EXPECT_EQ(Names(*stepper), (std::set<std::wstring>{L"leaf"}));
  } else {
    EXPECT_EQ(hr, HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE));
  }
  EXPECT_EQ(Open(temp.PathOf(relative + L"\\none")), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
}

TEST(ShellFolderSource, AFolderThatVanishesIsAnErrorAndNotEmpty) {
  ScopedTempFolder temp;
  temp.MakeFile(L"Dir\\one");
  std::unique_ptr<IFolderStepper> stepper;
  ASSERT_EQ(Open(temp.PathOf(L"Dir"), stepper), S_OK);
  DeleteFileW(temp.PathOf(L"Dir\\one").c_str());
  RemoveDirectoryW(temp.PathOf(L"Dir").c_str());
  TFolderObject object;
  EXPECT_EQ(stepper->Next(object), TFolderStep::Failed);
  EXPECT_TRUE(FAILED(stepper->Status()));
  // In the middle of a walk: what was listed may still come, then it ends.
  for (const wchar_t* name : {L"Dir\\one", L"Dir\\two", L"Dir\\three"}) temp.MakeFile(name);
  ASSERT_EQ(Open(temp.PathOf(L"Dir"), stepper), S_OK);
  ASSERT_EQ(stepper->Next(object), TFolderStep::Object);
  for (const wchar_t* name : {L"Dir\\one", L"Dir\\two", L"Dir\\three"}) DeleteFileW(temp.PathOf(name).c_str());
  RemoveDirectoryW(temp.PathOf(L"Dir").c_str());
  int more = 0;
  while (stepper->Next(object) == TFolderStep::Object) ++more;
  EXPECT_LE(more, 2);
}

TEST(ShellFolderSource, ObjectsTellTheirPaths) {
  ScopedTempFolder temp;
  temp.MakeFile(L"Dir\\one");
  std::unique_ptr<IFolderStepper> stepper;
  ASSERT_EQ(Open(temp.PathOf(L"Dir"), stepper), S_OK);
  EXPECT_EQ(stepper->ObjectPath(), L"");
  TFolderObject object;
  ASSERT_EQ(stepper->Next(object), TFolderStep::Object);
  EXPECT_EQ(stepper->ObjectPath(), temp.PathOf(L"Dir\\one"));
}

// What foreign code does while a path is parsed, bound and listed.
class ForeignRoot : public testing::Test {
protected:
  void SetUp() override {
    fFiles.AddDrive(L'Q');
    fFiles.MakeFile(L"Q:\\Dir\\doc", 1);
    gShell = &fShell;
    fApi->SHGetDesktopFolder = [](IShellFolder** folder) -> HRESULT { return gShell->Folder(L"").CopyTo(folder); };
  }
  void TearDown() override { gShell = nullptr; }

  static inline FakeShellNamespace* gShell = nullptr;
  SimulatedFileSystem fFiles;
  FakeShellNamespace fShell{fFiles};
  ScopedShellApi fApi;
};

TEST_F(ForeignRoot, ThatFailsOrCrashesInParsingGivesAnError) {
  fApi->SHParseDisplayName = [](PCWSTR, IBindCtx*, PIDLIST_ABSOLUTE*, SFGAOF, SFGAOF*) -> HRESULT {
    test::Crash();
    return S_OK;
  };
  EXPECT_EQ(Open(L"::{foreign}"), E_FAIL);
  fApi->SHParseDisplayName = [](PCWSTR, IBindCtx*, PIDLIST_ABSOLUTE* list, SFGAOF, SFGAOF*) -> HRESULT {
    *list = nullptr;
    return S_OK;
  };
  EXPECT_EQ(Open(L"::{foreign}"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
  fApi->SHParseDisplayName = nullptr;
  EXPECT_EQ(Open(L"::{foreign}"), E_NOTIMPL);
  // The root itself: an empty list. Its crash in listing is a failed walk.
  fApi->SHParseDisplayName = [](PCWSTR, IBindCtx*, PIDLIST_ABSOLUTE* list, SFGAOF, SFGAOF*) -> HRESULT {
    *list = static_cast<PIDLIST_ABSOLUTE>(CoTaskMemAlloc(2));
    (*list)->mkid.cb = 0;
    return S_OK;
  };
  EXPECT_EQ(Names(L"::{root}"), (std::set<std::wstring>{L"Q:"}));
  fShell.AddFault(L"", {test::TShellFault::TKind::Crash, test::TShellMethod::EnumObjects});
  std::unique_ptr<IFolderStepper> stepper;
  ASSERT_EQ(Open(L"::{root}", stepper), S_OK);
  TFolderObject object;
  EXPECT_EQ(stepper->Next(object), TFolderStep::Failed);
  EXPECT_EQ(stepper->Status(), E_FAIL);
}

// A path too long to be parsed in one go: each name is bound in its parent, under the error mode of the whole.
TEST_F(ForeignRoot, ThatFailsOrCrashesInBindingGivesAnError) {
  fApi->SHParseDisplayName = [](PCWSTR path, IBindCtx*, PIDLIST_ABSOLUTE* list, SFGAOF, SFGAOF*) -> HRESULT {
    if (std::wstring_view(path).size() >= MAX_PATH) return HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);
    *list = static_cast<PIDLIST_ABSOLUTE>(CoTaskMemAlloc(2));
    (*list)->mkid.cb = 0;
    return S_OK;
  };
  const std::wstring path = L"\\\\server\\share\\Q:\\" + std::wstring(250, L'x');
  using TFault = test::TShellFault;
  DWORD inside = 0;
  const struct {
    TFault fault;
    HRESULT expected;
  } cases[] = {
      {{TFault::TKind::Crash, test::TShellMethod::BindToObject}, E_FAIL},
      {{TFault::TKind::NoResult, test::TShellMethod::BindToObject}, E_UNEXPECTED},
      {{TFault::TKind::Fail, test::TShellMethod::BindToObject, 1, TFault::Always, E_ACCESSDENIED}, E_ACCESSDENIED},
      {{TFault::TKind::Slow, test::TShellMethod::BindToObject, 1, TFault::Always, E_FAIL,
        [&] { inside = GetThreadErrorMode(); }},
       HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)},
  };
  for (const auto& c : cases) {
    fShell.ClearFaults();
    fShell.AddFault(L"", c.fault);
    EXPECT_EQ(Open(path), c.expected);
  }
  EXPECT_NE(inside & SEM_FAILCRITICALERRORS, 0U);
}

// A folder inside an archive isn't on the disk: the shell has the last word, and the disk's answer stands if it fails.
TEST_F(ForeignRoot, OpensWhatTheDiskHasNotButNotOnAMissingDrive) {
  static int asked = 0;
  asked = 0;
  fApi->SHParseDisplayName = [](PCWSTR, IBindCtx*, PIDLIST_ABSOLUTE* list, SFGAOF, SFGAOF*) -> HRESULT {
    ++asked;
    *list = static_cast<PIDLIST_ABSOLUTE>(CoTaskMemAlloc(2));
    (*list)->mkid.cb = 0;
    return S_OK;
  };
  EXPECT_EQ(Names(L"C:\\archive.zip\\inner"), (std::set<std::wstring>{L"Q:"}));
  EXPECT_EQ(asked, 1);
  EXPECT_TRUE(FAILED(Open(L"Q:\\Dir")));
  EXPECT_EQ(asked, 1);
  fApi->SHParseDisplayName = [](PCWSTR, IBindCtx*, PIDLIST_ABSOLUTE*, SFGAOF, SFGAOF*) -> HRESULT { return E_FAIL; };
  EXPECT_EQ(Open(L"C:\\archive.zip\\inner"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
}

} // namespace
} // namespace kiv
