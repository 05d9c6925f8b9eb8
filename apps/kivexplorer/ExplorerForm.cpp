#include "ExplorerForm.h"

#include <core/FileFunctions.h>
#include <framework/Application.h>
#include <graphics/StyleServices.h>
#include <platform/MainThread.h>
#include <viewstate/SystemImageList.h>

#include <algorithm>
#include <utility>

namespace kivexplorer {

using namespace kiv;
using kiv::sample::TFolderView;

namespace {

constexpr wchar_t BusyProperty[] = L"Kiv.Busy";
constexpr int BarHeight = 38;
constexpr int StatusHeight = 24;
constexpr int Gap = 6;

template <typename T>
T* Place(TWinControl& parent, TAlign align, int height) {
  auto* const control = new T(&parent);
  control->SetParent(&parent);
  control->SetHeight(parent.ScaledPixels(height));
  control->SetAlign(align);
  return control;
}

TPanel* PlacePanel(TWinControl& parent, TAlign align, int height) {
  auto* const panel = Place<TPanel>(parent, align, height);
  panel->SetBevelOuter(TBevelCut::bvNone);
  panel->SetShowCaption(false);
  return panel;
}

std::wstring Counted(std::int64_t count, const wchar_t* one, const wchar_t* many) {
  return std::to_wstring(count) + L' ' + (count == 1 ? one : many);
}

} // namespace

// --- what the windows share ------------------------------------------------------------------------------------------

TExplorer::TExplorer() {
  const auto all = [this](void (TExplorerForm::*update)()) {
    const std::vector<TExplorerForm*> windows = fWindows;
    for (TExplorerForm* const window : windows) (window->*update)();
  };
  fLink.SetOnChange([all](TPersistent*, IItemIdList*) { all(&TExplorerForm::UpdateButtons); });
  // Thousands of paths may change at once.
  const auto update = [this, all](TPersistent*) {
    if (std::exchange(fIsUpdating, true)) return;
    MainThread::Queue(
        [this, all] {
          fIsUpdating = false;
          all(&TExplorerForm::UpdateSelection);
        },
        this);
  };
  fLink.GetSelectionList()->SetOnChange(update);
  fLink.GetSelectionList()->SetOnCompletedCalculateFiles(update);
}

TExplorer::~TExplorer() {
  MainThread::RemoveQueuedEvents(this);
  fOnLastWindowGone = nullptr;
  while (!fWindows.empty()) delete fWindows.back();
}

TExplorerForm& TExplorer::OpenWindow() {
  fWindows.push_back(nullptr); // so that a window that fails to open leaves the list as it was
  try {
    fWindows.back() = new TExplorerForm(*this);
  } catch (...) {
    fWindows.pop_back();
    throw;
  }
  return *fWindows.back();
}

void TExplorer::WindowGone(TExplorerForm* pWindow) {
  std::erase(fWindows, pWindow);
  if (fWindows.empty() && fOnLastWindowGone) fOnLastWindowGone();
}

// --- lines -----------------------------------------------------------------------------------------------------------

void TLineEdit::CMWantSpecialKey(TMessage& pMessage) {
  if (pMessage.WParam == VK_RETURN || pMessage.WParam == VK_ESCAPE) pMessage.Result = 1;
}

void TLineEdit::KeyDown(WORD& pKey, TShiftState pShift) {
  const TAliveWatch alive(GetAliveToken());
  TEdit::KeyDown(pKey, pShift);
  if (!alive.IsAlive()) return;
  const std::function<void()> action = pKey == VK_RETURN ? onEnter : pKey == VK_ESCAPE ? onEscape : nullptr;
  if (!action) return;
  pKey = 0;
  action();
}

// The platform beeps at these in a field of one line.
void TLineEdit::KeyPress(wchar_t& pKey) {
  TEdit::KeyPress(pKey);
  if (pKey == L'\r' || pKey == L'\x1b') pKey = 0;
}

// --- the window ------------------------------------------------------------------------------------------------------

TExplorerForm::TExplorerForm(TExplorer& pExplorer) : fExplorer(pExplorer) {
  SetText(L"Pathmere");
  SetBounds(0, 0, ScaledPixels(820), ScaledPixels(540));
  SetPosition(TFormPosition::poDefault);
  SetShowHint(true);
  BuildBar();
  BuildStatus();
  BuildView();
  BuildMenu();
  LayOutBar();
  SetActiveControl(fView);
  if (TExplorerForm* const other = fExplorer.Windows().front()) fView->FilterChanged(other->View().GetFilter());
  UpdateButtons();
  UpdateSelection();
}

TExplorerForm::~TExplorerForm() {
  EndWindow();
  fView->SetShellLink(nullptr);
  fExplorer.WindowGone(this);
}

void TExplorerForm::CreateWnd() {
  TForm::CreateWnd();
  ShowIcon();
  if (fView) ShowBusy();
}

void TExplorerForm::ShowIcon() {
  if (!HandleAllocated()) return;
  const int folder = TKivSystemImageList::GetFolderIconNumber(false);
  const std::pair<WPARAM, int> kinds[] = {{ICON_SMALL, ScaledPixels(16)}, {ICON_BIG, ScaledPixels(32)}};
  for (const auto& [kind, size] : kinds) {
    TUniqueIcon icon = TKivSystemImageList::GetInstance(size)->GetIcon(folder);
    SendMessageW(GetHandle(), WM_SETICON, kind, reinterpret_cast<LPARAM>(icon.Get()));
    fIcons[kind] = std::move(icon);
  }
}

void TExplorerForm::DoClose(TCloseAction& pAction) {
  pAction = TCloseAction::caFree;
  TForm::DoClose(pAction);
}

void TExplorerForm::AddButton(TGlyph pGlyph, const wchar_t* pHint, const wchar_t* pName, std::function<void()> pDo) {
  auto* const button = new TToolButton(fBar, pGlyph);
  button->SetParent(fBar);
  button->SetHint(pHint);
  button->SetAccessibleName(pName);
  button->SetOnClick([action = std::move(pDo)](TPersistent*) { action(); });
  fButtons.push_back(button);
}

void TExplorerForm::BuildBar() {
  fBar = PlacePanel(*this, TAlign::alTop, BarHeight);
  AddButton(TGlyph::Back, L"Back (Alt+Left)", L"Back", [this] { Move(-1); });
  AddButton(TGlyph::Forward, L"Forward (Alt+Right)", L"Forward", [this] { Move(1); });
  AddButton(TGlyph::Up, L"Up (Alt+Up)", L"Up", [this] { fView->GoUp(); });
  AddButton(TGlyph::Refresh, L"Refresh (F5)", L"Refresh", [this] { fView->Reload(); });
  fPath = new TLineEdit(fBar);
  fPath->SetParent(fBar);
  fPath->SetAccessibleName(L"Path");
  fPath->onEnter = [this] { GoTo(fPath->GetText()); };
  fPath->onEscape = [this] {
    fView->WithdrawText();
    fPath->SetModified(false);
    ShowFolder();
    ShowFailure({});
    fView->SetFocus();
  };
  fFilter = new TLineEdit(fBar);
  fFilter->SetParent(fBar);
  fFilter->SetTextHint(L"Filter");
  fFilter->SetAccessibleName(L"Filter");
  fFilter->SetOnChange([this](TPersistent*) { fView->SetFilter(fFilter->GetText()); });
  fFilter->onEnter = [this] { fView->SetFocus(); };
  fFilter->onEscape = [this] {
    fFilter->SetText(L"");
    fView->SetFocus();
  };
  AddButton(TGlyph::NewFolder, L"New folder (Ctrl+Shift+N)", L"New folder", [this] {
    fView->SetFocus();
    fView->MakeNewFolder();
  });
  fButtons.back()->SetText(L"New folder");
  fBar->SetOnResize([this](TPersistent*) { LayOutBar(); });
  fFailureBar = PlacePanel(*this, TAlign::alTop, StatusHeight);
  fFailureBar->SetVisible(false);
  fFailure = new TLabel(fFailureBar);
  fFailure->SetParent(fFailureBar);
  fFailure->SetShowAccelChar(false);
  fFailure->SetVisible(false);
}

void TExplorerForm::LayOutBar() {
  const int gap = ScaledPixels(Gap);
  const int height = ScaledPixels(26);
  const int top = (fBar->GetHeight() - height) / 2;
  int left = gap;
  for (const TGlyph glyph : {TGlyph::Back, TGlyph::Forward, TGlyph::Up, TGlyph::Refresh}) {
    Button(glyph).SetBounds(left, top, ScaledPixels(30), height);
    left += ScaledPixels(32);
  }
  left += gap;
  const int new_width = ScaledPixels(100);
  const int filter_width = ScaledPixels(140);
  int right = fBar->GetWidth() - gap - new_width;
  Button(TGlyph::NewFolder).SetBounds(right, top, new_width, height);
  right -= gap + filter_width;
  const int edit_height = ScaledPixels(21);
  const int edit_top = (fBar->GetHeight() - edit_height) / 2;
  fFilter->SetBounds(right, edit_top, filter_width, edit_height);
  fPath->SetBounds(left, edit_top, std::max(right - gap - left, ScaledPixels(60)), edit_height);
}

void TExplorerForm::BuildStatus() {
  fStatusBar = PlacePanel(*this, TAlign::alBottom, StatusHeight);
  for (TLabel** const label : {&fStatus, &fChecked}) {
    *label = new TLabel(fStatusBar);
    (*label)->SetParent(fStatusBar);
    (*label)->SetShowAccelChar(false);
    (*label)->SetTop(ScaledPixels(4));
  }
  fStatus->SetLeft(ScaledPixels(8));
  fChecked->SetLeft(ScaledPixels(360));
}

void TExplorerForm::BuildView() {
  fView = new TFolderView(this);
  fView->SetAccessibleName(L"Folder");
  fView->SetParent(this);
  fView->SetAlign(TAlign::alClient);
  fView->SetOnFolder([this](TPersistent*) { ShowFolder(); });
  fView->SetOnStatus([this](TPersistent*) { UpdateStatus(); });
  fView->SetOnFailure([this](TPersistent*, const std::wstring& text) { ShowFailure(text); });
  fView->SetShellLink(&fExplorer.Link());
}

void TExplorerForm::BuildMenu() {
  fMenu = new TPopupMenu(this);
  const auto add = [this](const wchar_t* caption, const wchar_t* keys, std::function<void()> action) {
    auto* const item = new TMenuItem;
    item->SetCaption(caption);
    item->SetShortCut(TextToShortCut(keys));
    item->SetOnClick([action = std::move(action)](TPersistent*) { action(); });
    fMenu->GetItems().Add(item);
  };
  add(L"&Back", L"Alt+Left", [this] { Move(-1); });
  add(L"&Forward", L"Alt+Right", [this] { Move(1); });
  add(L"&Up", L"Alt+Up", [this] { fView->GoUp(); });
  add(L"&Refresh", L"F5", [this] { fView->Reload(); });
  fMenu->GetItems().AddSeparator();
  add(L"New f&older", L"Shift+Ctrl+N", [this] {
    fView->SetFocus();
    fView->MakeNewFolder();
  });
  add(L"New &window", L"Ctrl+N", [this] { fExplorer.OpenWindow().ShowForm(); });
  add(L"&Close", L"Ctrl+W", [this] { Close(); });
  fMenu->GetItems().AddSeparator();
  add(L"Edit the &path", L"Alt+D", [this] {
    fPath->SetFocus();
    fPath->SelectAll();
  });
  add(L"F&ilter", L"Ctrl+E", [this] {
    fFilter->SetFocus();
    fFilter->SelectAll();
  });
  SetPopupMenu(fMenu);
}

void TExplorerForm::GoTo(const std::wstring& pPath) {
  fPath->SetText(pPath);
  fPath->SetModified(false);
  ShowFailure({});
  fView->GoToText(pPath);
}

void TExplorerForm::Move(int pSteps) {
  TKivShellLink& link = fExplorer.Link();
  if (!link.IsMovePossible(pSteps)) return;
  if (pSteps < 0)
    link.MoveBack(1);
  else
    link.MoveForward(1);
}

// --- what is shown ---------------------------------------------------------------------------------------------------

void TExplorerForm::ShowFolder() {
  const auto& folder = fView->GetFolder();
  const bool is_typed = fPath->Focused() && fPath->IsModified();
  if (!folder.path.empty() && !is_typed) fPath->SetText(folder.path);
  if (!folder.title.empty()) SetText(folder.title);
  UpdateButtons();
  UpdateStatus();
}

void TExplorerForm::ShowFailure(const std::wstring& pText) {
  fFailure->SetText(pText);
  fFailure->SetLeft(ScaledPixels(8));
  fFailure->SetTop(ScaledPixels(4));
  fFailure->GetFont().SetColor(StyleServices().IsHighContrast() ? clWindowText : TColor{0x2020C0});
  fFailure->SetVisible(!pText.empty());
  fFailureBar->SetVisible(!pText.empty());
}

void TExplorerForm::UpdateButtons() {
  TKivShellLink& link = fExplorer.Link();
  Button(TGlyph::Back).SetEnabled(link.IsMovePossible(-1));
  Button(TGlyph::Forward).SetEnabled(link.IsMovePossible(1));
  Button(TGlyph::NewFolder).SetEnabled(fView->CanMakeFolder());
}

void TExplorerForm::UpdateStatus() {
  if (!fView) return;
  if (fFilter->GetText() != fView->GetFilter()) fFilter->SetText(fView->GetFilter()); // another window's
  const int shown = fView->GetItems().GetCount();
  std::wstring text = Counted(shown, L"object", L"objects");
  if (shown < fView->GetObjectCount()) text += L" of " + std::to_wstring(fView->GetObjectCount());
  if (const int selected = fView->GetSelCount(); selected > 0) {
    std::int64_t size = 0;
    for (int i = 0; i < shown; ++i) {
      const auto& row = *fView->GetRow(i);
      if (row.GetSelected() && row.Entry()->size > 0) size += row.Entry()->size;
    }
    text += L", " + std::to_wstring(selected) + L" selected";
    if (size > 0) text += L" (" + FormatByteSize(size, false) + L")";
  }
  if (fView->IsListing()) text += L", reading\u2026";
  if (fView->IsFinding()) text += L", looking for the path\u2026";
  fStatus->SetText(text);
  ShowBusy();
}

// For who waits from outside until all is there, as screenshots do.
void TExplorerForm::ShowBusy() {
  if (!HandleAllocated()) return;
  if (fView->IsListing() || fView->IsFinding())
    SetPropW(GetHandle(), BusyProperty, GetHandle());
  else
    RemovePropW(GetHandle(), BusyProperty);
}

void TExplorerForm::UpdateSelection() {
  const TKivSelectionList& list = *fExplorer.Link().GetSelectionList();
  if (list.IsEmpty()) {
    fChecked->SetText(L"");
    return;
  }
  std::wstring text = L"Checked: " + Counted(list.GetFileCount(), L"file", L"files");
  if (list.GetFolderCount() > 0) text += L", " + Counted(list.GetFolderCount(), L"folder", L"folders");
  fChecked->SetText(text + L", " + FormatByteSize(list.GetSize(), false));
}

} // namespace kivexplorer
