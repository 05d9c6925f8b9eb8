// Paths of one folder, parsed one after the other.
#include <core/IdListFromPath.h>

#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/MainThread.h>
#include <platform/ShellApi.h>
#include <platform/TakeResult.h>
#include <platform/Threads.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

namespace kiv {
namespace {

// The item of a file is the same to the last byte; those of the folders on the way tell when they were last looked
// into.
bool SameFile(PCIDLIST_ABSOLUTE a, PCIDLIST_ABSOLUTE b) {
  if (!a || !b) return a == b;
  const auto* const item = ILFindLastID(a);
  return ILIsEqual(a, b) && std::memcmp(item, ILFindLastID(b), item->mkid.cb) == 0;
}

class ParseInParent : public testing::Test {
protected:
  static void SetUpTestSuite() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    MainThread::Attach();
  }
  void SetUp() override {
    gFromRoot = 0;
    gCreate = fApi->ILCreateFromPathW;
    fApi->ILCreateFromPathW = [](PCWSTR path) { return ++gFromRoot, gCreate(path); };
    for (const wchar_t* name : {L"dir\\a", L"dir\\b", L"dir\\Some Name.text", L"dir\\c.zip", L"dir\\.hidden",
                                L"dir\\sub\\a", L"dir.x\\a", L"other\\a"}) {
      fTemp.MakeFile(name, 3);
    }
  }
  // Whether the path was parsed without the root. What comes out must be what the shell gives for it in any case.
  bool IsQuick(const std::wstring& path) {
    const int before = gFromRoot;
    const TUniqueItemIdList ours = GetIdListFromPath(nullptr, path);
    const bool quick = gFromRoot == before;
    PIDLIST_ABSOLUTE raw = nullptr;
    const HRESULT hr = SHParseDisplayName(path.c_str(), nullptr, &raw, 0, nullptr);
    const TUniqueItemIdList theirs = TakeItemIdList(hr, raw);
    const auto* const list = static_cast<PCIDLIST_ABSOLUTE>(ours.Get());
    const auto* const shells = static_cast<PCIDLIST_ABSOLUTE>(theirs.Get());
    EXPECT_TRUE(quick ? SameFile(list, shells) : !list == !shells && (!list || ILIsEqual(list, shells)))
        << testing::PrintToString(path);
    return quick;
  }
  bool IsQuickInDir(const std::wstring& name) { return IsQuick(fTemp.PathOf(L"dir\\" + name)); }
  TThreadApi Clock() {
    TThreadApi api;
    api.tickCount = [this] { return fNow; };
    return api;
  }
  void OpenDir() {
    for (const wchar_t* name : {L"a", L"b"}) IsQuickInDir(name);
    ASSERT_TRUE(IsQuickInDir(L"a"));
  }

  static inline int gFromRoot = 0;
  static inline decltype(TShellApi::ILCreateFromPathW) gCreate = nullptr;
  test::ScopedTempFolder fTemp;
  ScopedShellApi fApi;
  std::uint64_t fNow = 1'000'000;
  ScopedThreadApi fClock{Clock()};
};

TEST_F(ParseInParent, ServesFilesOfTheLastFolderAndNothingElse) {
  EXPECT_FALSE(IsQuickInDir(L"a"));
  EXPECT_FALSE(IsQuickInDir(L"b")) << "the second path of a folder opens it";
  const struct {
    const wchar_t* name;
    bool quick;
  } cases[] = {{L"a", true},       {L"A", true},    {L"some name.TEXT", true}, {L"c.zip", true},
               {L".hidden", true}, {L"sub", false}, {L"sub\\a", false},        {L"none", false},
               {L"a.", false},     {L"a ", false},  {L"a:stream", false},      {L"nul", false},
               {L"sub/a", false},  {L".", false}};
  for (const auto& c : cases) {
    OpenDir();
    EXPECT_EQ(IsQuickInDir(c.name), c.quick) << testing::PrintToString(std::wstring(c.name));
  }
  OpenDir();
  EXPECT_FALSE(IsQuickInDir(L"sub"));
  EXPECT_TRUE(IsQuickInDir(L"b")) << "a folder in between doesn't matter";
  EXPECT_FALSE(GetIdListFromPath(nullptr, fTemp.PathOf(L"dir\\*")));
  EXPECT_FALSE(IsQuick(fTemp.PathOf(L"dir.x\\a")));
  EXPECT_FALSE(IsQuick(fTemp.PathOf(L"DIR\\a"))) << "a file system may tell letter cases apart";
  OpenDir();
  EXPECT_FALSE(IsQuick(fTemp.PathOf(L"other\\a")));
  EXPECT_FALSE(IsQuickInDir(L"a")) << "one folder is kept";
}

TEST_F(ParseInParent, LetsGoOfAFolderThatChanges) {
  OpenDir();
  fNow += 999;
  EXPECT_TRUE(IsQuickInDir(L"b"));
  fNow += 1;
  EXPECT_FALSE(IsQuickInDir(L"b")) << "not for ever";
  EXPECT_TRUE(IsQuickInDir(L"b"));

  const std::wstring dir = fTemp.PathOf(L"dir");
  fTemp.MakeFile(L"dir\\new");
  for (const wchar_t* name : {L"new", L"a"}) IsQuickInDir(name);
  OpenDir();
  // In two steps: some platforms take one for nothing. The dates that are shown don't tell of it.
  ASSERT_TRUE(MoveFileW(dir.c_str(), fTemp.PathOf(L"moved").c_str()));
  ASSERT_TRUE(MoveFileW(fTemp.PathOf(L"moved").c_str(), fTemp.PathOf(L"DIR").c_str()));
  EXPECT_FALSE(IsQuickInDir(L"a")) << "the folder's new name is in the list";

  OpenDir();
  ASSERT_TRUE(MoveFileW(dir.c_str(), fTemp.PathOf(L"moved").c_str()));
  EXPECT_FALSE(IsQuickInDir(L"a"));
  ASSERT_TRUE(MoveFileW(fTemp.PathOf(L"other").c_str(), dir.c_str()));
  EXPECT_FALSE(IsQuickInDir(L"a")) << "another folder of that name";
  EXPECT_FALSE(IsQuickInDir(L"b"));
}

TEST_F(ParseInParent, KeepsNothingWhereNobodySaysWhenItEnds) {
  std::thread([&] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(IsQuickInDir(L"a"));
    CoUninitialize();
  }).join();
  std::thread([&] {
    ASSERT_TRUE(EnterApartment(false));
    OpenDir();
    LeaveApartment();
    ASSERT_TRUE(EnterApartment(false));
    EXPECT_FALSE(IsQuickInDir(L"a")) << "what it kept belonged to the apartment";
    LeaveApartment();
  }).join();
  EXPECT_FALSE(IsQuickInDir(L"a")) << "each thread keeps its own";
}

// What was reported to have changed may be there or not.
TEST_F(ParseInParent, MakesListsOfWhatChanges) {
  const wchar_t* names[] = {L"dir\\a",    L"dir\\c.zip",  L"dir\\sub",   L"dir\\sub\\a", L"dir\\Some Name.text",
                            L"dir\\none", L"dir\\none~1", L"none\\x\\y", L"other\\a",    L"dir\\a.",
                            L"dir\\nul",  L"other"};
  static int root_parses = 0;
  static decltype(TShellApi::SHParseDisplayName) parse = nullptr;
  parse = fApi->SHParseDisplayName;
  fApi->SHParseDisplayName = [](PCWSTR path, IBindCtx* context, PIDLIST_ABSOLUTE* list, SFGAOF in, SFGAOF* out) {
    return ++root_parses, parse(path, context, list, in, out);
  };
  for (const wchar_t* name : names) {
    const std::wstring path = fTemp.PathOf(name);
    PIDLIST_ABSOLUTE raw = nullptr;
    const HRESULT hr = SHParseDisplayName(path.c_str(), nullptr, &raw, 0, nullptr);
    const TUniqueItemIdList there = TakeItemIdList(hr, raw);
    const TUniqueItemIdList simple(SHSimpleIDListFromPath(path.c_str()));
    for (const bool gone : {false, true}) {
      const auto list = TKivItemIdList::CreateOfChange(path, gone);
      const auto& expected = there && !gone ? there : simple;
      EXPECT_EQ(list->IsSimple(), gone);
      EXPECT_TRUE(ILIsEqual(list->WindowsPointer(), expected.Get())) << testing::PrintToString(path) << gone;
      EXPECT_EQ(list->Path(), path);
    }
    const bool file = there && IsFile(path);
    EXPECT_TRUE(!file || SameFile(TKivItemIdList::CreateOfChange(path, false)->WindowsPointer(), there.Get()));
  }
  const int before = root_parses + gFromRoot;
  for (const wchar_t* name : {L"dir\\b", L"dir\\.hidden", L"dir\\gone", L"dir.x\\a", L"gone\\a"}) {
    EXPECT_FALSE(TKivItemIdList::CreateOfChange(fTemp.PathOf(name), false)->IsInvalid());
  }
  EXPECT_EQ(root_parses + gFromRoot, before) << "the folders were open, or could be opened in one that was";
}

} // namespace
} // namespace kiv
