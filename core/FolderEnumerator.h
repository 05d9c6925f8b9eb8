#pragma once

#include <core/FolderSource.h>
#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/Handles.h>
#include <platform/Types.h>

#include <shobjidl.h>

namespace kiv {

/// The plain stepper through the objects of one bound folder, on which parsing and the walker stand.
///
/// It runs shell extensions' code and survives it: a crash in a step is tried once more, a second one ends the walk. It
/// knows no filters and raises nothing; what the platform answered is in Status. Nothing is asked of the folder before
/// the first step. Used by one thread at a time, the one whose apartment the folder belongs to.
class KIV_EXPORT TFolderEnumerator {
public:
  /// Folders and files, hidden and protected ones too: `SHCONTF_FOLDERS`, `SHCONTF_NONFOLDERS`,
  /// `SHCONTF_INCLUDEHIDDEN`, `SHCONTF_INCLUDESUPERHIDDEN`.
  static constexpr DWORD AllObjects = 0x100E0;
  /// `SHCONTF_NAVIGATION_ENUM`, to be added for a navigation pane.
  static constexpr DWORD ForNavigation = 0x1000;

  struct TOptions {
    DWORD flags = AllObjects;
    /// Parent of dialogs that the folder may show (logon); null for none.
    HWND window = nullptr;
    /// Whether the platform may show dialogs for critical errors ("There is no disk in the drive").
    bool showErrorMessages = false;
  };

  /// Nothing to step through: Next answers End.
  TFolderEnumerator() noexcept = default;
  explicit TFolderEnumerator(ComPtr<IShellFolder> pFolder) noexcept;
  TFolderEnumerator(ComPtr<IShellFolder> pFolder, const TOptions& pOptions) noexcept;
  TFolderEnumerator(TFolderEnumerator&& pOther) noexcept = default;
  TFolderEnumerator& operator=(TFolderEnumerator&& pOther) noexcept;
  ~TFolderEnumerator();

  /// The next object, as an item list relative to the folder, owned by the caller. `pItem` is written only if there is
  /// one. Behind End and Failed the next call starts over with the first object.
  TFolderStep Next(TUniqueItemIdList& pItem);

  /// What the platform answered to the last step. `S_OK`; `S_FALSE` at a true end; `E_FAIL` at an End that a crash
  /// brought about; `E_UNEXPECTED` at one where the folder claimed success and gave nothing; the failure after Failed.
  HRESULT Status() const noexcept { return fStatus; }
  /// Whether the last step was an End that the folder's code brought about by crashing twice in a row.
  bool CrashedTwice() const noexcept { return fCrashedTwice; }
  /// True while a walk runs: between the first step and the end.
  bool IsRunning() const noexcept { return static_cast<bool>(fObjects); }
  /// Ends the walk; the next step starts over.
  void Restart() noexcept;

  const ComPtr<IShellFolder>& Folder() const noexcept { return fFolder; }

private:
  TFolderStep Begin();
  TFolderStep Leave(TFolderStep pStep, HRESULT pStatus) noexcept;

  ComPtr<IShellFolder> fFolder;
  TOptions fOptions;
  ComPtr<IEnumIDList> fObjects;
  HRESULT fStatus = S_OK;
  bool fCrashedTwice = false;
};

} // namespace kiv
