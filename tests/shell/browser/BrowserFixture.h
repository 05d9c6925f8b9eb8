#pragma once

#include <doubles/GuiDriver.h>
#include <doubles/ScopedTempFolder.h>
#include <forms/PreTranslate.h>
#include <framework/Application.h>
#include <kivexplorer/ExplorerForm.h>
#include <platform/Lifecycle.h>

#include <gtest/gtest.h>

#include <ole2.h>

#include <memory>
#include <string>
#include <vector>

namespace kiv::test {

using kivexplorer::TExplorerForm;
using kivexplorer::TGlyph;
using sample::TFolderRow;
using sample::TFolderView;

/// The browser, in a loop as its own.
class TBrowserTest : public testing::Test {
protected:
  void SetUp() override {
    OleInitialize(nullptr);
    Application();
    SetPreTranslate([](MSG& message) { return PreTranslateMessage(message); });
    fExplorer = std::make_unique<kivexplorer::TExplorer>();
    fWindow = &fExplorer->OpenWindow();
    fWindow->ShowForm();
    PumpMessages();
  }
  void TearDown() override {
    fExplorer.reset();
    SetPreTranslate({});
    Shutdown();
    OleUninitialize();
  }

  TFolderView& View() { return fWindow->View(); }
  TKivSelectionList& Selection() { return *fExplorer->Link().GetSelectionList(); }
  TFolderRow* Row(const std::wstring& name) { return View().FindRow(name); }

  static bool IsQuiet(TExplorerForm& window, const std::wstring& path) {
    return window.View().GetFolder().path == path && !window.View().IsListing();
  }
  /// Goes there as a user does, and waits for the rows.
  void GoTo(const std::wstring& path) {
    Enter(path);
    ASSERT_TRUE(PumpUntil([&] { return IsQuiet(*fWindow, path); }));
  }
  void Enter(const std::wstring& path) {
    fWindow->PathLine().SetFocus();
    fWindow->PathLine().SetText(path);
    PressKey(VK_RETURN);
    View().SetFocus();
    PumpMessages();
  }
  std::vector<std::wstring> Names(TFolderView& view) {
    std::vector<std::wstring> names;
    for (int i = 0; i < view.GetItems().GetCount(); ++i) names.push_back(view.GetRow(i)->GetCaption());
    return names;
  }
  std::vector<std::wstring> Names() { return Names(View()); }
  /// A list as it should be: consistent in itself, and showing these.
  bool Shows(const std::vector<std::wstring>& names) {
    return PumpUntil([&] { return Names() == names && View().IsConsistent(); });
  }
  void FocusOn(const std::wstring& name) {
    TFolderRow* const row = Row(name);
    ASSERT_NE(row, nullptr) << "no such row";
    View().SetSelected(row);
    View().SetItemFocused(row);
    View().SetFocus();
    PumpMessages();
  }
  std::wstring FocusedName() {
    const TListItem* const row = View().GetItemFocused();
    return row ? row->GetCaption() : std::wstring();
  }
  POINT BoxOf(const std::wstring& name) {
    const TRowRect icon = Row(name)->DisplayRect(TDisplayCode::drIcon);
    return PointOf(View().GetHandle(), icon.left - 8, (icon.top + icon.bottom) / 2);
  }

  std::unique_ptr<kivexplorer::TExplorer> fExplorer;
  TExplorerForm* fWindow = nullptr;
};

} // namespace kiv::test
