#pragma once

#include <core/SelectionState.h>
#include <folder_view/FolderEntry.h>
#include <listview/ListItem.h>
#include <threading/Cancellation.h>

#include <limits>
#include <string>

namespace kiv::sample {

/// A row of the view. Its texts come from its entry, so painting asks nobody; icon, type and state of the check box
/// come when it is seen, by a work item that goes with the row's token.
class TFolderRow : public TListItem {
public:
  TFolderRow(TListItems* pOwner, TEntry pEntry);
  ~TFolderRow() override;
  std::wstring ClassName() const override { return L"TFolderRow"; }

  const TEntry& Entry() const noexcept { return fEntry; }
  /// The object has changed on the disk: what is known of it is asked anew.
  void SetEntry(TEntry pEntry);

  std::wstring GetCaption() const override { return fEntry->name; }
  /// The name changes on the disk alone.
  void SetCaption(const std::wstring&) override {}
  /// The text of a column; made when it is first painted.
  const std::wstring& Text(TFolderColumn pColumn) const;

  bool GetChecked() const override { return fState == ssChecked; }
  /// The shared selection decides on that.
  void SetChecked(bool) override {}
  TKivSelectionState GetState() const noexcept { return fState; }
  void SetState(TKivSelectionState pState);
  bool IsStateKnown() const noexcept { return fStateKnown; }
  /// Not known: the box stays as it is until it is asked for.
  void SetStateKnown(bool pKnown) noexcept { fStateKnown = pKnown; }

  /// What a worker found out.
  void TakeLook(int pImage, std::wstring pType);
  bool HasLook() const noexcept { return fHasLook; }
  /// Withdrawn with the row, and when another question takes the place of the one that runs.
  CancellationToken& Token() noexcept { return fToken; }

  static constexpr int LeavingRank = std::numeric_limits<int>::max();
  /// Whether it only waits to be deleted: what it stands for isn't shown any more.
  bool IsLeaving() const noexcept { return rank == LeavingRank; }
  int rank = -1; ///< the place that the row is to get

private:
  void Show(int pFormerImage);

  TEntry fEntry;
  CancellationToken fToken;
  mutable std::wstring fTexts[4];
  mutable bool fHasTexts = false;
  bool fHasLook = false;
  bool fStateKnown = false;
  TKivSelectionState fState = ssUnused;
};

} // namespace kiv::sample
