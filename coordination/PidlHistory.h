#pragma once

#include <coordination/ShellControl.h>
#include <framework/InterfacedObject.h>
#include <platform/Export.h>

#include <string>
#include <vector>

namespace kiv {

/// A history as browsers keep it: a new folder takes the place of all that lies ahead.
///
/// Main thread. What has to be asked of folders is waited for for a moment only (ShellQuestions): meanwhile the new
/// folder is valid and the current one stays, and a late answer puts that right, unless the user is back at the folder
/// by then.
class KIV_EXPORT TPidlHistory final : public TInterfacedObject<IKivShellHistory> {
public:
  TPidlHistory() = default;

  ComPtr<IItemIdList> GetCurrentFolderItemIDList() override;
  int GetCount() override { return static_cast<int>(fPaths.size()); }
  int GetPosition() override { return fPosition; }
  void SetPosition(int pPosition) override;
  /// Nothing for nil and for an invalid list. The current folder leaves if it is the same for display, so that a repeat
  /// doesn't add up, or if it is gone from the disk.
  void Add(IItemIdList* pItemIdList) override;
  void Clear() override;
  bool IsMovePossible(int pDelta) override;
  /// Nothing if there aren't as many.
  void MoveBack(std::uint8_t pSteps) override { Move(-static_cast<int>(pSteps)); }
  void MoveForward(std::uint8_t pSteps) override { Move(pSteps); }

  /// What to show for an entry. Raises EListError for an index that there isn't.
  std::wstring GetPaths(int pIndex);

protected:
  ~TPidlHistory() override = default;

private:
  /// What is asked when a folder is added, and the answers that count until others come.
  struct TQuestion {
    ComPtr<IItemIdList> current;
    ComPtr<IItemIdList> added;
    unsigned currentNumber = 0;
    unsigned addedNumber = 0;
    bool valid = true;
    bool stays = true;
    void Ask();
  };
  struct TEntry {
    ComPtr<IItemIdList> list;
    unsigned number; // a list may be there more than once
  };

  void Move(int pDelta);
  void TakeLate(const TQuestion& pQuestion);
  void TakeOut(unsigned pNumber, bool pAlsoCurrent);

  std::vector<TEntry> fPaths;
  int fPosition = 0;
  unsigned fLastNumber = 0;
};

} // namespace kiv
