#pragma once

#include "ToolButton.h"

#include <folder_view/FolderSizes.h>
#include <folder_view/FolderView.h>
#include <forms/Form.h>
#include <forms/PopupMenu.h>
#include <forms/StdControls.h>

#include <functional>
#include <string>
#include <vector>

namespace kivexplorer {

class TExplorerForm;

/// What all windows share: one link, and so one folder, one history, one selection.
class TExplorer {
public:
  TExplorer();
  ~TExplorer();
  TExplorer(const TExplorer&) = delete;
  TExplorer& operator=(const TExplorer&) = delete;

  kiv::TKivShellLink& Link() noexcept { return fLink; }
  /// Another window on the same link.
  TExplorerForm& OpenWindow();
  const std::vector<TExplorerForm*>& Windows() const noexcept { return fWindows; }
  /// A window goes; with the last one the program.
  void WindowGone(TExplorerForm* pWindow);
  void SetOnLastWindowGone(std::function<void()> pEvent) { fOnLastWindowGone = std::move(pEvent); }

private:
  kiv::sample::TFolderSizes fSizes;
  kiv::TKivShellLink fLink;
  std::vector<TExplorerForm*> fWindows;
  bool fIsUpdating = false; // is on its way
  std::function<void()> fOnLastWindowGone;
};

/// A line that a user types into: Enter takes it, Esc puts back what it was.
class TLineEdit : public kiv::TEdit {
public:
  explicit TLineEdit(kiv::TComponent* pOwner) : TEdit(pOwner) {}
  ~TLineEdit() override { EndWindow(); }
  std::wstring ClassName() const override { return L"TLineEdit"; }
  std::function<void()> onEnter;
  std::function<void()> onEscape;

protected:
  void CMWantSpecialKey(kiv::TMessage& pMessage) override;
  void KeyDown(WORD& pKey, kiv::TShiftState pShift) override;
  void KeyPress(wchar_t& pKey) override;
};

/// One window: buttons, path, filter, the folder, a line that says what is in it.
class TExplorerForm : public kiv::TForm {
public:
  explicit TExplorerForm(TExplorer& pExplorer);
  ~TExplorerForm() override;
  std::wstring ClassName() const override { return L"TExplorerForm"; }

  kiv::sample::TFolderView& View() noexcept { return *fView; }
  TLineEdit& PathLine() noexcept { return *fPath; }
  TLineEdit& FilterLine() noexcept { return *fFilter; }
  /// What went wrong, as it stands beneath the path; empty if nothing.
  std::wstring Failure() const { return fFailure->IsVisible() ? fFailure->GetText() : std::wstring(); }
  std::wstring StatusText() const { return fStatus->GetText(); }
  std::wstring SelectionText() const { return fChecked->GetText(); }
  /// Back, forward, up, refresh, new folder.
  TToolButton& Button(TGlyph pGlyph) { return *fButtons[static_cast<std::size_t>(pGlyph)]; }

  /// Goes to what could have been typed.
  void GoTo(const std::wstring& pPath);
  void UpdateButtons();
  void UpdateStatus();
  void UpdateSelection();

protected:
  void CreateWnd() override;
  void DoClose(kiv::TCloseAction& pAction) override;

private:
  void BuildBar();
  void BuildMenu();
  void BuildStatus();
  void BuildView();
  void LayOutBar();
  void AddButton(TGlyph pGlyph, const wchar_t* pHint, const wchar_t* pName, std::function<void()> pDo);
  void ShowFolder();
  void ShowFailure(const std::wstring& pText);
  void ShowIcon();
  void ShowBusy();
  void Move(int pSteps);

  TExplorer& fExplorer;
  kiv::TPanel* fBar = nullptr;
  std::vector<TToolButton*> fButtons;
  TLineEdit* fPath = nullptr;
  TLineEdit* fFilter = nullptr;
  kiv::TLabel* fFailure = nullptr;
  kiv::TPanel* fFailureBar = nullptr;
  kiv::TPanel* fStatusBar = nullptr;
  kiv::TLabel* fStatus = nullptr;
  kiv::TLabel* fChecked = nullptr;
  kiv::sample::TFolderView* fView = nullptr;
  kiv::TPopupMenu* fMenu = nullptr;
  kiv::TUniqueIcon fIcons[2];
};

} // namespace kivexplorer
