// The browser as a user has it, by keyboard and mouse.
#include "BrowserFixture.h"

#include <core/FileFunctions.h>
#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <platform/ErrorText.h>
#include <platform/MainThread.h>
#include <platform/ShellApi.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <utility>

namespace kiv::test {
namespace {

using enum TShiftStateFlag;

class BrowserUse : public TBrowserTest {
protected:
  void SetUp() override {
    TBrowserTest::SetUp();
    for (const wchar_t* const name : {L"file 10.txt", L"file 2.txt", L"b.doc", L"sub\\inner.txt"})
      fTemp.MakeFile(name, 10);
    fTemp.MakeFile(L"large.txt", 5000);
    GoTo(fTemp.Path());
  }

  // Presses a button of the question that comes next.
  static void AnswerQuestion(int button) {
    static int wanted;
    wanted = button;
    SetTimer(nullptr, 0, 10, [](HWND, UINT, UINT_PTR timer, DWORD) {
      const HWND dialog = FindWindowW(L"#32770", L"Delete");
      if (!dialog || !IsWindowVisible(dialog)) return;
      KillTimer(nullptr, timer);
      PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(wanted), 0);
    });
  }
  // What is edited.
  HWND Edit() { return View().GetEditControl(); }

  ScopedTempFolder fTemp;
  const std::vector<std::wstring> fAll{L"sub", L"b.doc", L"file 2.txt", L"file 10.txt", L"large.txt"};
};

TEST_F(BrowserUse, ListsAFolderThatWasTyped) {
  EXPECT_TRUE(Shows(fAll)) << "folders first, numbers by value";
  EXPECT_EQ(fWindow->GetText(), fTemp.Path().substr(fTemp.Path().find_last_of(L'\\') + 1));
  EXPECT_EQ(fWindow->StatusText(), L"5 objects");
  EXPECT_EQ(Row(L"large.txt")->Text(sample::TFolderColumn::Size), L"5 KB");
  for (const wchar_t* const text : {L"\"%TEMP%\"", L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", L"shell:Desktop"}) {
    const auto former = View().GetFolder().list;
    Enter(text);
    EXPECT_TRUE(PumpUntil([&] { return View().GetFolder().list != former && !View().IsListing(); })) << text;
    EXPECT_FALSE(View().GetFolder().failure) << text;
  }
}

TEST_F(BrowserUse, SaysWhatCannotBeShownAndStays) {
  const std::pair<std::wstring, DWORD> cases[] = {
      {fTemp.PathOf(L"nowhere"), ERROR_FILE_NOT_FOUND},
      {fTemp.PathOf(L"nowhere\\at all"), ERROR_PATH_NOT_FOUND},
      {fTemp.PathOf(L"b.doc"), ERROR_DIRECTORY},
  };
  for (const auto& [path, code] : cases) {
    Enter(path);
    ASSERT_TRUE(PumpUntil([&, &where = path] { return fWindow->Failure().find(where) != std::wstring::npos; }));
    EXPECT_NE(fWindow->Failure().find(DescribeError(HRESULT_FROM_WIN32(code))), std::wstring::npos)
        << code << " in \"" << std::string(fWindow->Failure().begin(), fWindow->Failure().end()) << '"';
    EXPECT_EQ(Names(), fAll);
  }
  fWindow->PathLine().SetFocus();
  PressKey(VK_ESCAPE);
  EXPECT_EQ(fWindow->PathLine().GetText(), fTemp.Path());
  EXPECT_EQ(fWindow->Failure(), L"");
  EXPECT_TRUE(View().Focused());
}

TEST_F(BrowserUse, GoesIntoFoldersUpAndBack) {
  const std::wstring sub = fTemp.PathOf(L"sub");
  FocusOn(L"sub");
  PressKey(VK_RETURN);
  ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, sub); }));
  EXPECT_TRUE(Shows({L"inner.txt"}));
  PressKey(VK_BACK);
  ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.Path()); }));
  EXPECT_EQ(FocusedName(), L"sub") << "where it came from";
  PressKey(VK_LEFT, {ssAlt});
  ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, sub); }));
  ClickMouse(MiddleOf(fWindow->Button(TGlyph::Forward).GetHandle()));
  ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.Path()); }));
  EXPECT_FALSE(fWindow->Button(TGlyph::Forward).IsEnabled());
  const TRowRect rect = Row(L"sub")->DisplayRect(TDisplayCode::drLabel);
  ClickMouse(PointOf(View().GetHandle(), rect.left + 6, rect.top + 6));
  ClickMouse(PointOf(View().GetHandle(), rect.left + 6, rect.top + 6));
  EXPECT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, sub); })) << "by a double click";
}

TEST_F(BrowserUse, Renames) {
  Selection().AddPathToSelection(fTemp.PathOf(L"b.doc"));
  FocusOn(L"b.doc");
  PressKey(VK_F2);
  ASSERT_TRUE(PumpUntil([&] { return Edit() != nullptr; }));
  TypeText(L"c");
  PressKey(VK_RETURN);
  EXPECT_TRUE(Shows({L"sub", L"c.doc", L"file 2.txt", L"file 10.txt", L"large.txt"})) << "only the name was replaced";
  EXPECT_TRUE(IsFile(fTemp.PathOf(L"c.doc")));
  EXPECT_EQ(FocusedName(), L"c.doc");
  EXPECT_TRUE(PumpUntil([&] { return Row(L"c.doc")->GetState() == ssChecked; }));

  PressKey(VK_F2);
  ASSERT_TRUE(PumpUntil([&] { return Edit() != nullptr; }));
  SetWindowTextW(Edit(), L"large.txt");
  PressKey(VK_RETURN);
  EXPECT_TRUE(PumpUntil([&] { return fWindow->Failure().find(L"c.doc") != std::wstring::npos; }));
  EXPECT_TRUE(IsFile(fTemp.PathOf(L"c.doc")));
  EXPECT_EQ(GetFileSize64(fTemp.PathOf(L"large.txt")), 5000);
}

// What the user has begun goes on, although the folder is left at once: a renaming, a path that is being typed.
TEST_F(BrowserUse, LeavingAFolderEndsNothingElse) {
  const ComPtr<IItemIdList> sub = TKivItemIdList::Create(fTemp.PathOf(L"sub"));
  Selection().AddPathToSelection(fTemp.PathOf(L"b.doc"));
  FocusOn(L"b.doc");
  PressKey(VK_F2);
  ASSERT_TRUE(PumpUntil([&] { return Edit() != nullptr; }));
  SetWindowTextW(Edit(), L"c.doc");
  fWindow->PathLine().SetFocus();
  MainThread::Queue([&] { View().GoTo(sub); }); // right behind the edit's end
  EXPECT_TRUE(PumpUntil([&] { return Selection().GetPaths().Get(0) == fTemp.PathOf(L"c.doc"); }));

  fWindow->PathLine().SelectAll();
  TypeText(L"being typed");
  View().GoTo(sub->GetParent());
  ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.Path()); }));
  EXPECT_EQ(fWindow->PathLine().GetText(), L"being typed");
  PressKey(VK_ESCAPE);
  EXPECT_EQ(fWindow->PathLine().GetText(), fTemp.Path());
}

TEST_F(BrowserUse, ANestedNavigationIsTheOneThatCounts) {
  const ComPtr<IItemIdList> sub = TKivItemIdList::Create(fTemp.PathOf(L"sub"));
  bool nested = false;
  View().SetOnFolder([&](TPersistent*) {
    if (!std::exchange(nested, true)) View().GoTo(sub);
  });
  View().GoTo(sub->GetParent()->GetParent());
  ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, fTemp.PathOf(L"sub")); }));
  EXPECT_EQ(fExplorer->Link().GetCurrentFolder()->Path(), fTemp.PathOf(L"sub"));
}

TEST_F(BrowserUse, MakesFoldersAndLetsThemBeNamed) {
  for (const wchar_t* const name : {L"New folder", L"New folder (2)"}) {
    PressKey(L'N', {ssCtrl, ssShift});
    ASSERT_TRUE(PumpUntil([&] { return Edit() != nullptr && FocusedName() == name; }));
    EXPECT_TRUE(IsFolder(fTemp.PathOf(name)));
    PressKey(VK_ESCAPE);
  }
  ClickMouse(MiddleOf(fWindow->Button(TGlyph::NewFolder).GetHandle()));
  ASSERT_TRUE(PumpUntil([&] { return Edit() != nullptr && FocusedName() == L"New folder (3)"; }));
  TypeText(L"x");
  PressKey(VK_RETURN);
  EXPECT_TRUE(PumpUntil([&] { return Row(L"x") != nullptr; }));
  EXPECT_TRUE(IsFolder(fTemp.PathOf(L"x")));
}

TEST_F(BrowserUse, DeletesBehindAQuestion) {
  FocusOn(L"file 2.txt");
  AnswerQuestion(IDNO);
  PressKey(VK_DELETE);
  EXPECT_TRUE(IsFile(fTemp.PathOf(L"file 2.txt")));
  Row(L"b.doc")->SetSelected(true);
  AnswerQuestion(IDYES);
  PressKey(VK_DELETE);
  EXPECT_TRUE(Shows({L"sub", L"file 10.txt", L"large.txt"}));
  EXPECT_FALSE(FileOrFolderExists(fTemp.PathOf(L"file 2.txt")));
  EXPECT_FALSE(FileOrFolderExists(fTemp.PathOf(L"b.doc")));
  EXPECT_EQ(FocusedName(), L"file 10.txt") << "the next one";
  EXPECT_EQ(fWindow->Failure(), L"");
}

TEST_F(BrowserUse, ChecksByMouseAndKeyForAllWindows) {
  PressKey(L'N', {ssCtrl});
  ASSERT_EQ(fExplorer->Windows().size(), 2U);
  TExplorerForm& other = *fExplorer->Windows().back();
  ASSERT_TRUE(PumpUntil([&] { return IsQuiet(other, fTemp.Path()); })) << "a new window is where the first one is";
  fWindow->ShowForm();
  PumpMessages();
  ClickMouse(BoxOf(L"b.doc"));
  EXPECT_EQ(Selection().GetPaths().Get(0), fTemp.PathOf(L"b.doc"));
  EXPECT_TRUE(PumpUntil([&] { return other.View().FindRow(L"b.doc")->GetState() == ssChecked; }));
  EXPECT_TRUE(PumpUntil([&] { return fWindow->SelectionText() == L"Checked: 1 file, 10 bytes"; }));
  FocusOn(L"sub");
  Row(L"large.txt")->SetSelected(true);
  PressKey(VK_SPACE);
  EXPECT_TRUE(PumpUntil([&] { return Row(L"sub")->GetState() == ssChecked && Selection().GetCount() == 3; }));
  EXPECT_TRUE(PumpUntil([&] { return fWindow->SelectionText() == L"Checked: 3 files, 1 folder, 4.90 KB"; }));
  Selection().RemovePathFromSelection(fTemp.PathOf(L"sub"));
  Selection().AddPathToSelection(fTemp.MakeFile(L"sub\\second.txt"));
  EXPECT_TRUE(PumpUntil([&] { return other.View().FindRow(L"sub")->GetState() == ssGrayed; }));

  FocusOn(L"sub");
  PressKey(VK_RETURN);
  ASSERT_TRUE(PumpUntil([&] { return IsQuiet(other, fTemp.PathOf(L"sub")); })) << "and follows it";
  EXPECT_EQ(Names(other.View()), (std::vector<std::wstring>{L"inner.txt", L"second.txt"}));
  other.FilterLine().SetText(L"inner");
  EXPECT_TRUE(Shows({L"inner.txt"}));
  EXPECT_EQ(fWindow->FilterLine().GetText(), L"inner");
  TExplorerForm& third = fExplorer->OpenWindow();
  EXPECT_EQ(third.FilterLine().GetText(), L"inner") << "one that is opened later";
  EXPECT_EQ(third.View().GetFilter(), L"inner");
  third.Close();
  other.Close();
  EXPECT_TRUE(PumpUntil([&] { return fExplorer->Windows().size() == 1; }));
}

TEST_F(BrowserUse, ChecksManyAtOnce) {
  constexpr int many = 500;
  for (int i = 0; i < many; ++i) fTemp.MakeFile(L"sub\\many " + std::to_wstring(i), 1);
  GoTo(fTemp.PathOf(L"sub"));
  PressKey(L'A', {ssCtrl});
  PressKey(VK_SPACE);
  EXPECT_TRUE(PumpUntil([&] { return fWindow->SelectionText().starts_with(L"Checked: 501 files, 1 folder"); }));
  EXPECT_EQ(Selection().GetCount(), 1) << "the folder";
  Row(L"inner.txt")->SetSelected(false);
  View().SetItemFocused(Row(L"many 0"));
  PressKey(VK_SPACE);
  EXPECT_EQ(Selection().GetCount(), 1);
  EXPECT_EQ(Selection().GetPaths().Get(0), fTemp.PathOf(L"sub\\inner.txt"));
  PostMessageW(fWindow->GetHandle(), WM_THEMECHANGED, 0, 0);
  const TCustomImageList* const boxes = View().GetStateImages();
  EXPECT_TRUE(PumpUntil([&] { return View().GetStateImages() != boxes; })) << "they have the theme's look";
}

TEST_F(BrowserUse, SortsAndFilters) {
  RECT header{};
  GetWindowRect(View().GetHeaderHandle(), &header);
  POINT size{header.left + View().GetColumn(0)->GetWidth() + 20, (header.top + header.bottom) / 2};
  ClickMouse(size);
  EXPECT_TRUE(Shows({L"sub", L"b.doc", L"file 2.txt", L"file 10.txt", L"large.txt"}));
  EXPECT_EQ(View().GetColumn(1)->GetSortMark(), TSortMark::Up);
  size.x += 20; // not a double click
  ClickMouse(size);
  EXPECT_TRUE(Shows({L"sub", L"large.txt", L"b.doc", L"file 2.txt", L"file 10.txt"})) << "folders stay in front";
  View().SetOrder({sample::TFolderColumn::Type, false});
  EXPECT_TRUE(PumpUntil([&] { return Names().front() == L"sub"; }));
  View().SetOrder({sample::TFolderColumn::Name, true});
  EXPECT_TRUE(Shows({L"sub", L"large.txt", L"file 10.txt", L"file 2.txt", L"b.doc"}));

  FocusOn(L"file 2.txt");
  fWindow->FilterLine().SetText(L"file");
  EXPECT_TRUE(Shows({L"file 10.txt", L"file 2.txt"}));
  EXPECT_EQ(fWindow->StatusText(), L"2 objects of 5, 1 selected (10 bytes)");
  fWindow->FilterLine().SetText(L"*.doc;l*");
  EXPECT_TRUE(Shows({L"large.txt", L"b.doc"}));
  fTemp.MakeFile(L"late.doc");
  fTemp.MakeFile(L"other.txt");
  EXPECT_TRUE(Shows({L"late.doc", L"large.txt", L"b.doc"}));
  fWindow->FilterLine().SetFocus();
  PressKey(VK_ESCAPE);
  EXPECT_TRUE(Shows({L"sub", L"other.txt", L"late.doc", L"large.txt", L"file 10.txt", L"file 2.txt", L"b.doc"}));
}

TEST_F(BrowserUse, AWorkerThatRaisesEndsNothingElse) {
  std::atomic<bool> told{false}; // by whatever thread
  Application().SetOnException([&](const std::exception_ptr&) { told = true; });
  {
    ScopedShellApi api;
    api->ShellExecuteExW = [](SHELLEXECUTEINFOW*) -> BOOL { throw std::runtime_error("raised on a worker"); };
    FocusOn(L"b.doc");
    PressKey(VK_RETURN);
    EXPECT_TRUE(PumpUntil([&] { return !fWindow->Failure().empty() && told; }));
  }
  Application().SetOnException({});
  EXPECT_EQ(fWindow->Failure().find(L"That can't be done."), 0U);
  GoTo(fTemp.PathOf(L"sub"));
  EXPECT_TRUE(Shows({L"inner.txt"}));
}

// The view goes inside each of its events; what was under way for it ends without it.
TEST_F(BrowserUse, HandlersMayLetTheViewGo) {
  const THostWindow host;
  const ComPtr<IItemIdList> folder = TKivItemIdList::Create(fTemp.Path());
  for (const wchar_t* const event : {L"folder", L"opened", L"status", L"listed", L"failure"}) {
    const std::wstring name = event;
    auto view = std::make_unique<TFolderView>();
    view->SetParentWindow(host.Get());
    bool gone = false;
    const auto let_go = [&] {
      gone = true;
      view.reset();
    };
    const auto on_folder = [&](TPersistent*) {
      if (name == L"folder" || (name == L"opened" && !view->GetFolder().title.empty())) let_go();
    };
    const auto on_status = [&](TPersistent*) {
      if (name == L"status" || (name == L"listed" && !view->IsListing())) let_go();
    };
    view->SetOnFolder(on_folder);
    view->SetOnStatus(on_status);
    view->SetOnFailure([&](TPersistent*, const std::wstring& text) {
      if (name == L"failure" && !text.empty()) let_go();
    });
    if (name == L"failure")
      view->GoToText(L"C:\\nowhere at all");
    else
      view->GoTo(folder);
    EXPECT_TRUE(PumpUntil([&] { return gone; })) << std::string(name.begin(), name.end());
  }
  GoTo(fTemp.PathOf(L"sub")); // the workers serve others
}

TEST_F(BrowserUse, TabReachesEverything) {
  std::vector<HWND> reached;
  for (int i = 0; i < 8; ++i) {
    PressKey(VK_TAB);
    reached.push_back(GetFocus());
  }
  for (TWinControl* const control :
       {static_cast<TWinControl*>(&fWindow->PathLine()), static_cast<TWinControl*>(&fWindow->FilterLine()),
        static_cast<TWinControl*>(&View()), static_cast<TWinControl*>(&fWindow->Button(TGlyph::Up)),
        static_cast<TWinControl*>(&fWindow->Button(TGlyph::NewFolder))}) {
    EXPECT_NE(std::find(reached.begin(), reached.end(), control->GetHandle()), reached.end())
        << std::string(1, static_cast<char>(control->ClassName()[1])) << " isn't reached";
  }
}

} // namespace
} // namespace kiv::test
