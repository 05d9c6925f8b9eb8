// The walker on the real shell.
#include <walker/Pathmere.h>

#include <core/ItemIdList.h>
#include <core/PathmereError.h>
#include <core/SpecialFolders.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/Application.h>
#include <framework/ComponentText.h>
#include <platform/MainThread.h>

#include <ole2.h>

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <thread>

namespace kiv {
namespace {

using TNames = std::set<std::wstring>;

class Pathmere : public testing::Test {
protected:
  static void SetUpTestSuite() {
    OleInitialize(nullptr);
    MainThread::Attach();
  }
  static void TearDownTestSuite() { OleUninitialize(); }
  void SetUp() override {
    for (const wchar_t* name : {L"a.txt", L"b.DOC", L"c.exe", L".hidden"}) fTemp.MakeFile(name, 3);
    fTemp.MakeFolder(L"sub.d");
    fTemp.MakeFile(LR"(sub.d\in sub.txt)");
  }
  void TearDown() override {
    SpecialFolders::Clear();
    Application().SetHandle(nullptr);
  }
  std::wstring Folder() const { return fTemp.Path() + L"\\"; }

  static TNames Walk(TPathmere& walker) {
    TNames names;
    while (walker.Next()) EXPECT_TRUE(names.insert(walker.GetObjectName()).second);
    return names;
  }
  template <typename E, typename F>
  static std::wstring MessageOf(F&& call, DWORD code = 0) {
    try {
      call();
    } catch (const E& e) {
      if constexpr (std::is_same_v<E, EPathmereError>) {
        EXPECT_EQ(e.ErrorCode(), code);
      }
      return e.Message();
    }
    return L"nothing was raised";
  }
  void MakeLink(const std::wstring& name, const std::wstring& target) const {
    ComPtr<IShellLinkW> link;
    ASSERT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IidOf<IShellLinkW>(),
                               reinterpret_cast<void**>(&link)),
              S_OK);
    link->SetPath(target.c_str());
    ASSERT_EQ(link.MaybeAs<IPersistFile>()->Save(fTemp.PathOf(name).c_str(), TRUE), S_OK);
  }

  test::ScopedTempFolder fTemp;
};

TEST_F(Pathmere, StandsOnNothingThenOnAFolderThenOnEachObject) {
  const TNames all = {L"a.txt", L"b.DOC", L"c.exe", L".hidden", L"sub.d"};
  TPathmere walker;
  EXPECT_FALSE(walker.Next() || walker.CheckIfValid(true) || walker.IsFolder() || walker.BrowseObject());
  EXPECT_EQ(walker.GetAbsoluteItemIdList(), nullptr);
  EXPECT_EQ(walker.GetShellFolder(), nullptr);
  EXPECT_EQ(walker.GetDirectory() + walker.GetObjectName() + walker.GetFullPath() + walker.GetDomain(), L"");
  EXPECT_EQ(walker.GetSpecialFolder(), SF_INVALID);
  EXPECT_EQ(walker.IsSpecialObject(), SF_INVALID);
  EXPECT_EQ(walker.GetAttributes(SFGAO_FOLDER), 0U);

  walker.SetDirectory(fTemp.Path());
  EXPECT_EQ(walker.GetDirectory(), Folder());
  EXPECT_EQ(walker.GetItemIdList(), EmptyIdList());
  EXPECT_EQ(walker.GetFullPath(), fTemp.Path());
  EXPECT_TRUE(walker.CheckIfValid(true));
  EXPECT_FALSE(walker.CheckIfValid(false));
  EXPECT_EQ(Walk(walker), all);
  EXPECT_TRUE(walker.CheckIfValid(false)) << "the last object stays";
  EXPECT_EQ(Walk(walker), all) << "and the next walk begins anew";

  // The same text goes on; the same list begins again; no folder ends all.
  ASSERT_TRUE(walker.Next());
  const std::wstring first = walker.GetObjectName();
  std::wstring upper = Folder();
  CharUpperW(upper.data());
  walker.SetDirectory(upper);
  ASSERT_TRUE(walker.Next());
  EXPECT_NE(walker.GetObjectName(), first);
  const ComPtr<IShellFolder> bound = walker.GetShellFolder();
  walker.SetFolderIdList(walker.GetFolderIdList());
  EXPECT_EQ(walker.GetItemIdList(), EmptyIdList());
  EXPECT_EQ(walker.GetShellFolder(), bound);
  ASSERT_TRUE(walker.Next());
  EXPECT_EQ(walker.GetObjectName(), first);
  EXPECT_EQ(walker.GetFullPath(), Folder() + first);
  walker.SetFolderIdList(nullptr);
  EXPECT_FALSE(walker.Next() || walker.CheckIfValid(true));
  EXPECT_EQ(walker.GetAbsoluteItemIdList(), nullptr);
  // A bound folder brings its list along.
  walker.SetShellfolder(bound);
  EXPECT_EQ(walker.GetDirectory(), Folder());
  EXPECT_EQ(Walk(walker), all);
}

TEST_F(Pathmere, GoesToObjectsByListNameAndPath) {
  TPathmere walker(fTemp.PathOf(LR"(sub.d\in sub.txt)"));
  EXPECT_EQ(walker.GetDirectory(), fTemp.PathOf(LR"(sub.d\)"));
  EXPECT_EQ(walker.GetObjectName(), L"in sub.txt");
  EXPECT_EQ(walker.GetShellObjectName(true), L"in sub.txt");
  EXPECT_FALSE(walker.IsFolder());
  walker.SelectParent();
  EXPECT_EQ(walker.GetDirectory(), Folder());
  EXPECT_EQ(walker.GetObjectName(), L"sub.d");
  EXPECT_TRUE(walker.IsFolder() && walker.CheckIfValid(false));

  walker.SetObjectName(L"B.doc");
  EXPECT_EQ(walker.GetFullPath(), Folder() + L"b.DOC");
  EXPECT_FALSE(walker.BrowseObject());
  walker.SetFullPath(fTemp.PathOf(L"sub.d"));
  EXPECT_EQ(walker.GetDirectory(), Folder());
  const auto object = walker.GetAbsoluteItemIdList();
  EXPECT_TRUE(walker.BrowseObject());
  EXPECT_EQ(walker.GetFolderIdList(), object);
  EXPECT_EQ(Walk(walker), TNames{L"in sub.txt"});

  TPathmere same(object.Get());
  EXPECT_EQ(same.GetAbsoluteItemIdList(), object);
  EXPECT_EQ(same.GetDirectory(), Folder());

  // The desktop is a folder, never an object.
  same.SetAbsoluteItemIdList(TKivItemIdList::CreateForSpecialFolder(SF_DESKTOP, true));
  EXPECT_EQ(same.GetSpecialFolder(), SF_DESKTOP);
  EXPECT_EQ(same.GetItemIdList(), EmptyIdList());
  EXPECT_TRUE(same.GetAbsoluteItemIdList()->IsSpecialFolder(SF_DESKTOP));
  EXPECT_TRUE(same.CheckIfValid(false)) << "the desktop needs no object";
  same.SelectParent();
  EXPECT_EQ(same.GetSpecialFolder(), SF_DESKTOP);
  same.SetSpecialObject(SF_DRIVES);
  EXPECT_EQ(same.GetSpecialFolder(), SF_DESKTOP);
  EXPECT_EQ(same.IsSpecialObject(), SF_DRIVES);
  same.SetDirectory(fTemp.Path());
  same.SetDirectory(L"");
  EXPECT_EQ(same.GetSpecialFolder(), SF_DRIVES);
  ASSERT_TRUE(same.Next());
  same.SetSpecialFolder(SF_DRIVES);
  EXPECT_EQ(same.GetItemIdList(), EmptyIdList());
}

TEST_F(Pathmere, RefusesWhatItCannotStandOnAndStaysWhereItIs) {
  TPathmere walker(fTemp.PathOf(L"a.txt"));
  const auto object = walker.GetAbsoluteItemIdList();
  const auto gone = TKivItemIdList::Create(fTemp.PathOf(L"gone"));
  EXPECT_EQ(MessageOf<EInvalidArgument>([&] { walker.SetAbsoluteItemIdList(nullptr); }),
            L"\"nil\" is not a valid value that can be assigned to TPathmere.AbsoluteItemIdList");
  EXPECT_TRUE(
      MessageOf<EPathmereError>([&] { walker.SetAbsoluteItemIdList(gone); }, 3).ends_with(L"\r\n" + gone->Path()));
  EXPECT_NE(MessageOf<EPathmereError>([&] { walker.SetFolderIdList(gone); }, 3).find(L" Internal data: FPath: "),
            std::wstring::npos);
  MessageOf<EPathmereError>([&] { walker.SetDirectory(gone->Path()); }, 3);
  MessageOf<EPathmereError>([&] { walker.SetObjectName(gone->Path()); }, 3);
  MessageOf<EPathmereError>([&] { TPathmere none(gone->Path()); }, 3);
  EXPECT_EQ(walker.GetAbsoluteItemIdList(), object);
  EXPECT_EQ(walker.GetDirectory(), Folder());

  EXPECT_EQ(MessageOf<EPathmereError>([&] { walker.SetObjectName(L"no such object"); }),
            L"Error: Cannot find Object \"no such object\" in Folder \"" + Folder() + L"\"");
  const std::wstring lone(1, static_cast<wchar_t>(0xD800));
  for (const std::wstring& name : {lone, std::wstring(40'000, L'x'), std::wstring(L"a.txt|")}) {
    EXPECT_THROW(walker.SetObjectName(name), EPathmereError) << testing::PrintToString(name.substr(0, 9));
    MessageOf<EPathmereError>([&] { walker.SetDirectory(LR"(C:\)" + name); }, 3);
  }
  // Not every system has every folder.
  SpecialFolders::Clear();
  SpecialFolders::Share(SF_ONEDRIVE, EmptyIdList());
  MessageOf<EPathmereError>([&] { walker.SetSpecialFolder(SF_ONEDRIVE); }, 3);
  MessageOf<EPathmereError>([&] { walker.SetSpecialObject(SF_ONEDRIVE); }, 3);
  EXPECT_EQ(walker.GetDirectory(), Folder());
  EXPECT_EQ(MessageOf<EPathmereError>([&] { walker.SetObjectName(L""); }), L"Cannot find Object with empty name");
  EXPECT_EQ(walker.GetItemIdList(), nullptr);
  EXPECT_EQ(MessageOf<EInvalidOperation>([&] { walker.GetShellObjectName(true); }),
            L"TPathmere cannot return the current object's name if there is no current object.");
  EXPECT_EQ(Walk(walker).size(), 5U);
  EXPECT_EQ(MessageOf<EPathmereError>([&] { TPathmere().SetObjectName(L"a.txt"); }), L"No active folder was set.");
}

TEST_F(Pathmere, FiltersFilesAndNeverFolders) {
  TPathmere walker;
  walker.SetDirectory(fTemp.Path());
  const struct {
    const wchar_t* filter;
    TNames names;
  } cases[] = {
      {L"*.TXT;*.doc", {L"a.txt", L"b.DOC", L"sub.d"}},
      {L"?.*", {L"a.txt", L"b.DOC", L"c.exe", L"sub.d"}},
      {L"nothing", {L"sub.d"}},
      {L";", {L"sub.d"}},
      {L"*", {L"a.txt", L"b.DOC", L"c.exe", L".hidden", L"sub.d"}},
  };
  for (const auto& c : cases) {
    for (const bool file_system : {false, true}) {
      walker.SetFilter(c.filter);
      walker.SetFileSystemOnly(file_system);
      EXPECT_EQ(Walk(walker), c.names) << testing::PrintToString(std::wstring(c.filter));
    }
  }
}

TEST_F(Pathmere, JudgesShortcutsInTheRecentFolderByWhatTheyLeadTo) {
  MakeLink(L"one.lnk", fTemp.PathOf(L"a.txt"));
  MakeLink(L"two.lnk", fTemp.PathOf(L"c.exe"));
  MakeLink(L"three.lnk", fTemp.PathOf(L"sub.d"));
  TPathmere walker;
  walker.SetFilter(L"*.txt");
  walker.SetDirectory(fTemp.Path());
  EXPECT_EQ(Walk(walker), (TNames{L"a.txt", L"sub.d"}));
  const struct {
    TKivShellFolder folder;
    TNames names;
  } cases[] = {
      {SF_RECENT, {L"a.txt", L"sub.d", L"one.lnk", L"three.lnk"}},
      {SF_LINKS, {L"a.txt", L"b.DOC", L"c.exe", L".hidden", L"sub.d", L"one.lnk", L"two.lnk", L"three.lnk"}},
  };
  for (const auto& c : cases) {
    SpecialFolders::Clear();
    SpecialFolders::Share(c.folder, TKivItemIdList::Create(fTemp.Path()));
    walker.SetFolderIdList(TKivItemIdList::Create(fTemp.Path()));
    ASSERT_EQ(walker.GetSpecialFolder(), c.folder);
    EXPECT_EQ(Walk(walker), c.names);
  }
}

TEST_F(Pathmere, FollowsAFolderThatGoesAwayBetweenTwoSteps) {
  TPathmere walker;
  walker.SetDirectory(fTemp.PathOf(L"sub.d"));
  ASSERT_TRUE(walker.Next());
  DeleteFileW(fTemp.PathOf(LR"(sub.d\in sub.txt)").c_str());
  RemoveDirectoryW(fTemp.PathOf(L"sub.d").c_str());
  EXPECT_FALSE(walker.Next());
  // What the shell says of a folder that isn't there differs; the walker can be used in any case.
  try {
    EXPECT_FALSE(walker.Next());
  } catch (const EPathmereError&) {
  }
  walker.SetDirectory(fTemp.Path());
  EXPECT_EQ(Walk(walker).size(), 4U);
}

TEST_F(Pathmere, IsCopiedSavedAndLoaded) {
  TPathmere walker(fTemp.PathOf(L"a.txt"));
  walker.SetName(L"walker");
  walker.SetFilter(L"*.txt;*.doc");
  walker.SetFileSystemOnly(true);
  walker.SetShowErrorMessages(false);
  walker.SetForNavigation(true);
  walker.SetShowContextMenuOnTop(true);
  walker.SetReadOnly(true);
  walker.SetAsyncContextMenuOperations(false);
  walker.SetAcceptSearchFolderPaths(true);
  int renames = 0;
  walker.SetOnRename([&](TPersistent*) { ++renames; });
  const TPathmere copy(&walker);
  EXPECT_TRUE(copy.GetFileSystemOnly() && copy.GetForNavigation() && copy.GetShowContextMenuOnTop() &&
              copy.GetReadOnly() && copy.GetAcceptSearchFolderPaths());
  EXPECT_FALSE(copy.GetShowErrorMessages() || copy.GetAsyncContextMenuOperations());
  EXPECT_EQ(copy.GetFilter(), L"*.txt;*.doc");
  EXPECT_EQ(copy.GetFolderIdList(), walker.GetFolderIdList());
  EXPECT_EQ(copy.GetItemIdList(), EmptyIdList());
  copy.GetOnRename()(nullptr);
  EXPECT_EQ(renames, 1);
  const TPathmere fresh(static_cast<const TPathmere*>(nullptr));
  EXPECT_TRUE(fresh.GetShowErrorMessages() && fresh.GetAsyncContextMenuOperations());

  const std::unique_ptr<TComponent> loaded = LoadComponentText(SaveComponentText(walker));
  auto& read = dynamic_cast<TPathmere&>(*loaded);
  EXPECT_EQ(read.GetDirectory(), Folder());
  EXPECT_EQ(Walk(read), (TNames{L"a.txt", L"b.DOC", L"sub.d"}));
  EXPECT_TRUE(read.GetForNavigation() && read.GetShowContextMenuOnTop() && !read.GetShowErrorMessages());
  // By its place in the namespace; a disk folder's kind says nothing; none stays none.
  walker.SetSpecialFolder(SF_DRIVES);
  LoadComponentText(SaveComponentText(walker), read);
  EXPECT_EQ(read.GetSpecialFolder(), SF_DRIVES);
  walker.SetSpecialFolder(SF_WINDOWS);
  EXPECT_EQ(SaveComponentText(walker).find(L" Folder ="), std::wstring::npos) << "another path on another computer";
  LoadComponentText(L"component TPathmere { Folder = \"C:\\\\\" SpecialFolder = SF_FILESYSTEMFOLDER }", read);
  EXPECT_EQ(read.GetDirectory(), L"C:\\");
  walker.SetFolderIdList(nullptr);
  EXPECT_EQ(SaveComponentText(walker).find(L"Folder"), std::wstring::npos);
}

class TWindowedOwner : public TComponent, public IWindowOwner {
public:
  TWindowHandle AllocatedHandle() const noexcept override { return window; }
  TWindowHandle window = nullptr;
};

TEST_F(Pathmere, GivesAWindowOnlyWhereADialogIsWanted) {
  const auto main = reinterpret_cast<HWND>(std::intptr_t{0x100});
  const auto own = reinterpret_cast<HWND>(std::intptr_t{0x200});
  TWindowedOwner owner;
  auto& walker = *new TPathmere(&owner);
  EXPECT_EQ(walker.GetWindowHandle(true), nullptr);
  Application().SetHandle(main);
  EXPECT_EQ(walker.GetWindowHandle(false), main);
  owner.window = own;
  EXPECT_EQ(walker.GetWindowHandle(false), own);

  walker.SetShowErrorMessages(false);
  EXPECT_EQ(walker.GetWindowHandle(true), own);
  EXPECT_EQ(walker.GetWindowHandle(false), nullptr) << "there is no folder";
  walker.SetDirectory(LR"(C:\windows)");
  EXPECT_EQ(walker.GetWindowHandle(false), nullptr) << "not in the network";
  SpecialFolders::Clear();
  SpecialFolders::Share(SF_NETWORK, TKivItemIdList::Create(L"")); // what lies below the computer
  EXPECT_EQ(walker.GetWindowHandle(false), own);
  std::thread([&] { EXPECT_EQ(walker.GetWindowHandle(false), nullptr); }).join();
  walker.SetDirectory(LR"(C:\windows\system32)");
  EXPECT_EQ(walker.GetWindowHandle(false), nullptr) << "too deep";
  walker.SetDirectory(LR"(C:\windows)");
  ASSERT_TRUE(walker.Next());
  EXPECT_EQ(walker.GetWindowHandle(false), nullptr) << "a walk runs";
  EXPECT_EQ(walker.GetWindowHandle(true), own);
  Walk(walker);
  EXPECT_EQ(walker.GetWindowHandle(false), own);
}

} // namespace
} // namespace kiv
