// Parsing and walking through the real shell into a third party's folders.
#include <walker/Pathmere.h>

#include <core/ItemIdList.h>
#include <core/ItemIdListHelper.h>
#include <core/PathmereError.h>
#include <core/SpecialFolders.h>
#include <doubles/ScopedExtension.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>

#include <ole2.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace kiv {
namespace {

class NamespaceExtension : public testing::Test {
protected:
  void SetUp() override {
    OleInitialize(nullptr);
    MainThread::Attach();
  }
  void TearDown() override {
    Shutdown();
    // The shell's own code that a crash goes through doesn't let go of what it holds.
    EXPECT_TRUE(fCrashedBelowTheShell || fExtension.LiveObjects() == fBefore) << "nothing else may leak";
    OleUninitialize();
  }
  std::wstring PathOf(const std::wstring& name) const { return fExtension.PathOf(name); }

  // One walk: the last character of each object's name, "." for the end, "!" and the code for a failure.
  static std::string Walk(TPathmere& walker, int most = 20) {
    std::string trace;
    try {
      while (--most >= 0) {
        if (!walker.Next()) return trace + ".";
        trace += static_cast<char>(walker.GetShellObjectName(true).back());
      }
      return trace + "...";
    } catch (const EPathmereError& e) {
      return trace + "!" + std::to_string(e.ErrorCode());
    }
  }
  std::string Walk(const std::wstring& name) const {
    TPathmere walker;
    walker.SetDirectory(PathOf(name));
    return Walk(walker);
  }

  test::ScopedExtension fExtension;
  const long fBefore = fExtension.LiveObjects();
  bool fCrashedBelowTheShell = false;
};

TEST_F(NamespaceExtension, ObjectsAreParsedByAllTheirNames) {
  const std::wstring path = PathOf(L"3 objects\\object 2");
  const auto object = TKivItemIdList::Parse(path);
  ASSERT_FALSE(object->IsInvalid());
  EXPECT_EQ(object->Depth(), 3);
  EXPECT_EQ(object->DisplayName(dnfInFolder), L"Shown: object 2");
  EXPECT_EQ(object->DisplayName(dnfRelativeParsing), L"object 2");
  EXPECT_TRUE(TKivItemIdList::Parse(object->DisplayName(dnfAbsoluteParsing))->Equals(object.Get(), ilcExact));
  EXPECT_EQ(object->Path(), L"");
  EXPECT_EQ(object->SpecialFolder(), SF_UNKNOWN);
  EXPECT_FALSE(object->IsFolder());
  EXPECT_TRUE(object->GetParent()->IsFolder());
  // As they are shown: from the desktop, name by name.
  for (const wchar_t* shown :
       {LR"(Extension for tests\Shown: 3 objects\Shown: object 2)", LR"(extension for tests\3 OBJECTS\shown: Object 2)",
        LR"(Extension for tests\Shown: 3 objects\object 2)"}) {
    EXPECT_TRUE(TKivItemIdList::Parse(shown, nullptr, true)->Equals(object.Get(), ilcExact))
        << testing::PrintToString(std::wstring(shown));
  }
  EXPECT_TRUE(TKivItemIdList::Parse(L"shell:" + path)->Equals(object.Get(), ilcExact));
  const std::wstring levels[] = {L"40 levels\\39 levels\\38 levels\\37 levels", L"2 levels\\1 levels"};
  for (const auto& level : levels) EXPECT_FALSE(TKivItemIdList::Parse(PathOf(level))->IsInvalid());
}

TEST_F(NamespaceExtension, WhatItRefusesIsInvalidAndKeepsItsText) {
  for (const std::wstring& path :
       {PathOf(L"no such script"), PathOf(L"3 objects\\object 4"), PathOf(L"3 objects\\object 1\\x"),
        PathOf(L"fail parse, 3 objects\\object 1"), PathOf(L"fail bind, 3 objects\\object 1"),
        std::wstring(L"Extension for tests\\Shown: fail bind\\object 1"),
        std::wstring(L"Extension for tests\\Shown: crash enum\\object 1"),
        std::wstring(L"Extension for tests\\Shown: fail enum\\x")}) {
    const auto list = TKivItemIdList::Parse(path, nullptr, true);
    EXPECT_TRUE(list->IsInvalid()) << testing::PrintToString(path);
    EXPECT_EQ(list->DisplayPath(), path);
  }
}

TEST_F(NamespaceExtension, EachMisbehaviourHasItsOutcome) {
  const struct {
    const wchar_t* folder;
    const char* trace;
  } cases[] = {
      {L"3 objects", "123."},
      {L"3 objects, no folder2", "123."},
      {L"5 objects, crash next 3", "12345."},
      {L"5 objects, crash next 3 twice", "12."},
      {L"5 objects, own next 2, own names, own attributes", "12345."},
      {L"5 objects, fail next 3", "12!5"},
      {L"5 objects, empty next 3", "12."},
      {L"3 objects, slow next 1", "123."},
      {L"5 objects, repeat next 3", "12222222222222222222..."},
      {L"3 objects, fail enum", "!5"},
      {L"3 objects, empty enum", "."},
      {L"3 objects, crash enum", "."},
      {L"3 objects, fail bind", "!2147942405"},
  };
  for (const auto& c : cases) EXPECT_EQ(Walk(c.folder), c.trace) << testing::PrintToString(std::wstring(c.folder));
}

TEST_F(NamespaceExtension, CrashesBelowTheShellAreSurvived) {
  fCrashedBelowTheShell = true;
  EXPECT_EQ(Walk(L"3 objects, crash attributes"), "123.");
  EXPECT_EQ(Walk(L"3 objects, crash names"), "!0") << "a name that can't be had";
  const auto bound = TKivItemIdList::Parse(PathOf(L"crash bind, 2 levels"));
  EXPECT_FALSE(bound->IsInvalid());
  EXPECT_TRUE(TKivItemIdList::Parse(PathOf(L"crash bind, 2 levels\\none"))->IsInvalid());
  EXPECT_TRUE(TKivItemIdList::Parse(PathOf(L"crash parse, 3 objects\\object 1"))->IsInvalid());
  TPathmere walker;
  walker.SetFolderIdList(bound);
  EXPECT_THROW(walker.Next(), EPathmereError);
  EXPECT_FALSE(TItemIdListHelper::HasSubFolders(TKivItemIdList::Parse(PathOf(L"crash attributes")).Get(), false));
}

TEST_F(NamespaceExtension, IsWalkedLikeAnyFolder) {
  TPathmere walker;
  walker.SetDirectory(PathOf(L"3 objects, 2 levels"));
  EXPECT_EQ(walker.GetDirectory(), L"") << "it has no path";
  walker.SetFilter(L"*2;*7");
  EXPECT_EQ(Walk(walker), "2s.") << "folders pass";
  walker.SetFileSystemOnly(true);
  EXPECT_EQ(Walk(walker), ".");
  walker.SetFileSystemOnly(false);
  walker.SetFilter(L"");
  walker.SetObjectName(L"Shown: object 3");
  EXPECT_EQ(walker.GetShellObjectName(true), L"Shown: object 3");
  walker.SetFullPath(PathOf(L"50 levels"));
  int levels = 0;
  while (walker.BrowseObject() && walker.Next()) ++levels;
  EXPECT_EQ(levels, 49);
  EXPECT_EQ(walker.GetFolderIdList()->Depth(), 51);

  walker.SetFolderIdList(TKivItemIdList::Parse(PathOf(L"100000 objects")));
  int objects = 0;
  while (walker.Next()) ++objects;
  EXPECT_EQ(objects, 100'000);
  // Its columns.
  const auto details = walker.GetIShellDetails();
  EXPECT_TRUE(details && details == walker.GetIShellDetails());
  walker.SetDirectory(PathOf(L"2 levels, no folder2"));
  EXPECT_FALSE(walker.GetIShellDetails());
  // From the desktop on.
  walker.SetSpecialFolder(SF_DESKTOP);
  walker.SetObjectName(L"Extension for tests");
  EXPECT_TRUE(walker.BrowseObject());
  EXPECT_TRUE(walker.Next());
}

TEST_F(NamespaceExtension, AWalkerMayEndInTheMiddleOfAWalk) {
  auto walker = std::make_unique<TPathmere>();
  walker->SetDirectory(PathOf(L"5 objects, crash next 3"));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(walker->Next());
  EXPECT_GT(fExtension.LiveObjects(), 0);
  walker.reset();
}

TEST_F(NamespaceExtension, AFolderThatHangsHoldsNobodyUpWhoSaysHowLong) {
  const test::ScopedExtensionWait wait;
  const auto folder = TKivItemIdList::Parse(PathOf(L"2 levels, wait attributes"));
  bool finished = true;
  EXPECT_FALSE(TItemIdListHelper::TryHasSubFolders(folder.Get(), 1, false, finished));
  EXPECT_FALSE(finished);
  wait.AwaitArrival();
  wait.GoOn();
  EXPECT_TRUE(TItemIdListHelper::TryHasSubFolders(folder.Get(), 100'000, false, finished) && finished);
  EXPECT_FALSE(TItemIdListHelper::TryHasSubFolders(folder.Get(), 100'000, true, finished)) << "not of the file system";
  EXPECT_TRUE(TItemIdListHelper::SupportsIShellFolder2(folder.Get()));
  EXPECT_FALSE(TItemIdListHelper::SupportsIShellFolder2(TKivItemIdList::Parse(PathOf(L"no folder2")).Get()));
}

TEST_F(NamespaceExtension, AFolderOnTheDiskMayLeadThere) {
  test::ScopedTempFolder temp;
  const std::wstring place = temp.MakeFolder(L"place");
  const std::wstring class_id = test::ExtensionRoot + 2;
  ASSERT_TRUE(
      WritePrivateProfileStringW(L".ShellClassInfo", L"CLSID", class_id.c_str(), (place + L"\\desktop.ini").c_str()));
  SetFileAttributesW(place.c_str(), FILE_ATTRIBUTE_SYSTEM);
  TPathmere walker;
  walker.SetDirectory(place);
  ASSERT_TRUE(walker.Next());
  EXPECT_EQ(walker.GetShellObjectName(true), L"Shown: 3 objects");
  const auto inside = TKivItemIdList::Create(place + L"\\3 objects\\object 1");
  EXPECT_EQ(inside->DisplayName(dnfInFolder), L"Shown: object 1");
}

} // namespace
} // namespace kiv
