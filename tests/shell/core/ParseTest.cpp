// Parsing on the real shell.
#include <core/ItemIdList.h>

#include <core/SpecialFolders.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace kiv {
namespace {

using test::ScopedTempFolder;

class Parse : public testing::Test {
protected:
  static void SetUpTestSuite() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    MainThread::Attach();
  }
  // A path of the names that are shown: "This PC\(C:)\folder" for "C:\folder".
  static std::wstring ByShownNames(const std::wstring& path) {
    const auto drive = TKivItemIdList::Create(path.substr(0, 3));
    return TKivShellFolderHelper::ToString(SF_DRIVES) + L"\\" + drive->DisplayName(dnfInFolder) + path.substr(2);
  }
  static ::testing::AssertionResult LeadsTo(const ComPtr<IItemIdList>& list, const std::wstring& path) {
    if (!list) return ::testing::AssertionFailure() << "nil";
    if (list->IsInvalid()) return ::testing::AssertionFailure() << "invalid";
    if (list->Path() == path && list->Equals(TKivItemIdList::Create(path).Get(), ilcExact)) {
      return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << testing::PrintToString(list->Path());
  }
  static bool IsNothingWithPath(const ComPtr<IItemIdList>& list, const std::wstring& path) {
    return list->IsInvalid() && list->DisplayPath() == path;
  }

  ScopedTempFolder fTemp;
};

TEST_F(Parse, TakesWhatUsersWrite) {
  const std::wstring folder = fTemp.MakeFolder(L"folder");
  const std::wstring file = fTemp.MakeFile(L"folder\\a file.txt");
  EXPECT_EQ(TKivItemIdList::Parse(L""), EmptyIdList());
  EXPECT_EQ(TKivItemIdList::Parse(L"\"\""), EmptyIdList());
  EXPECT_EQ(TKivItemIdList::Parse(LR"(\\*)")->SpecialFolder(), SF_NETWORK);
  for (const std::wstring& text : {file, L'"' + file + L'"', file + L"\\", L'"' + file + L"/\""}) {
    const auto list = TKivItemIdList::Parse(text);
    EXPECT_FALSE(list->IsResolved()) << "an absolute path waits until it is needed";
    EXPECT_TRUE(LeadsTo(list, file)) << testing::PrintToString(text);
  }
  EXPECT_EQ(TKivItemIdList::Parse(LR"(C:\)")->Path(), LR"(C:\)");
  for (const wchar_t* text :
       {L"::{20d04fe0-3aea-1069-a2d8-08002b30309d}", L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\\",
        L"shell:::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"}) {
    EXPECT_EQ(TKivItemIdList::Parse(text)->SpecialFolder(), SF_DRIVES);
  }
  const std::wstring drives = TKivShellFolderHelper::ToString(SF_DRIVES);
  EXPECT_EQ(TKivItemIdList::Parse(drives)->SpecialFolder(), SF_DRIVES);
  EXPECT_TRUE(LeadsTo(TKivItemIdList::Parse(ByShownNames(file)), file));
  EXPECT_TRUE(LeadsTo(TKivItemIdList::Parse(drives + L"\\" + file), file)) << "by the drive's path";
  EXPECT_TRUE(TKivItemIdList::Parse(file, GetDesktopWindow())->IsResolved()) << "with a window it isn't put off";
}

TEST_F(Parse, KeepsTheTextOfWhatIsNotThere) {
  const std::wstring drives = TKivShellFolderHelper::ToString(SF_DRIVES);
  const std::wstring endless(40'000, L'x');
  std::wstring deep = L"no such folder";
  for (int i = 0; i < 5000; ++i) deep += L"\\x";
  for (const std::wstring& text :
       {fTemp.PathOf(L"none"), std::wstring(L"no such name"), std::wstring(L"no such folder\\x"), drives + L"\\no such",
        drives + L"\\\\x", std::wstring(L"::{20D04FE0"), std::wstring(L"::{20D04FE0-3AEA}\\x"), std::wstring(L"/x"),
        std::wstring(L"no such?"), std::wstring(L"\"x"), std::wstring(L"a\0b", 3), std::wstring(L"\xD800\\x"), endless,
        deep, fTemp.PathOf(L"blank "), fTemp.PathOf(L"none \\x")}) {
    for (const bool complete : {false, true}) {
      EXPECT_TRUE(IsNothingWithPath(TKivItemIdList::Parse(text, nullptr, complete), text))
          << testing::PrintToString(text.substr(0, 50));
    }
  }
  for (int i = 0; i < 2000; ++i) {
    const std::wstring name = L"none" + std::to_wstring(i) + L"\\x";
    ASSERT_TRUE(IsNothingWithPath(TKivItemIdList::Parse(name), name)) << i;
  }
}

TEST_F(Parse, FindsNamesThatThePlatformChanges) {
  const std::wstring inside = fTemp.MakeFile(L"dir \\x.txt");
  const std::wstring blank = fTemp.MakeFile(L"blank ");
  for (const std::wstring& path : {inside, blank}) {
    const auto list = TKivItemIdList::Parse(path);
    EXPECT_TRUE(list->IsResolved());
    EXPECT_EQ(list->Path(), path);
    const std::wstring name = path.substr(path.rfind(L'\\') + 1);
    EXPECT_EQ(list->DisplayName(dnfRelativeParsing), name);
  }
}

TEST_F(Parse, LooksThroughDrivesAndDesktopWhenAsked) {
  const std::wstring file = fTemp.MakeFile(L"x");
  const std::wstring shown = ByShownNames(file);
  const std::wstring below_drives = shown.substr(shown.find(L'\\') + 1);
  EXPECT_TRUE(TKivItemIdList::Parse(below_drives)->IsInvalid());
  EXPECT_TRUE(LeadsTo(TKivItemIdList::Parse(below_drives, nullptr, true), file));
}

TEST_F(Parse, RemembersTheFolderOfTheLastPath) {
  const std::wstring a = fTemp.MakeFile(L"dir\\a");
  const std::wstring b = fTemp.MakeFile(L"dir\\b");
  fTemp.MakeFile(L"other\\b");
  const auto remembered = [](const std::wstring& path) {
    return TKivItemIdList::ResolveUsingCache(ByShownNames(path));
  };
  ASSERT_TRUE(LeadsTo(TKivItemIdList::Parse(ByShownNames(a)), a));
  EXPECT_TRUE(LeadsTo(remembered(a), a));
  EXPECT_TRUE(LeadsTo(remembered(b), b));
  EXPECT_TRUE(LeadsTo(remembered(fTemp.PathOf(L"DIR\\")), fTemp.PathOf(L"dir")));
  for (const wchar_t* name : {L"dir\\none", L"other\\b", L"other", L"dir\\b ", L"dir\\x/b", L"dir\\b\\c"}) {
    EXPECT_EQ(remembered(fTemp.PathOf(name)), EmptyIdList()) << testing::PrintToString(std::wstring(name));
  }
  std::thread([&] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    EXPECT_EQ(remembered(b), EmptyIdList()) << "not for other threads";
    EXPECT_TRUE(LeadsTo(TKivItemIdList::Parse(ByShownNames(fTemp.PathOf(L"other\\b"))), fTemp.PathOf(L"other\\b")));
    CoUninitialize();
  }).join();
  EXPECT_TRUE(LeadsTo(remembered(b), b)) << "another thread doesn't replace it";

  // What isn't fit to be remembered leaves the last one where it is.
  const auto list = TKivItemIdList::Create(a);
  TKivItemIdList::CacheLastFolderIdList(nullptr, L"x\\y");
  TKivItemIdList::CacheLastFolderIdList(EmptyIdList().Get(), L"x\\y");
  TKivItemIdList::CacheLastFolderIdList(TKivItemIdList::Create(L"").Get(), L"x\\y");
  for (const wchar_t* path : {L"y", L"\\y", L"x\\y/z"}) TKivItemIdList::CacheLastFolderIdList(list.Get(), path);
  EXPECT_TRUE(LeadsTo(remembered(b), b));
  TKivItemIdList::CacheLastFolderIdList(list.Get(), L"some\\a");
  EXPECT_TRUE(LeadsTo(TKivItemIdList::ResolveUsingCache(L"SOME\\b"), b));
  EXPECT_TRUE(LeadsTo(TKivItemIdList::Parse(L"some\\b"), b)) << "parsing asks for it";
  EXPECT_EQ(remembered(b), EmptyIdList()) << "one is remembered";
}

} // namespace
} // namespace kiv
