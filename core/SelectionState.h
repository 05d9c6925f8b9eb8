#pragma once

#include <core/IItemIdList.h>

#include <cstdint>

namespace kiv {

/// Whether an object is selected by check boxes. Also the index of the picture that shows it.
enum class TKivSelectionState : std::uint8_t {
  ssUnused,   ///< not asked yet; no box is shown
  ssDisabled, ///< can't be selected: it isn't there, or isn't a file or folder
  ssChecked,
  ssUnChecked,
  ssGrayed ///< some of what lies below it is selected
};
using enum TKivSelectionState;

/// Who knows the state of objects: what work items ask that fetch states in the background. Shared with them, so that
/// it answers as long as one runs, whatever became of the selection's component meanwhile.
class ISelectionStateSource {
public:
  virtual ~ISelectionStateSource() = default;

  /// The state of an object; ssDisabled for nil. `pIsSubItemOf`: it is selected with a folder that it lies in. Asks the
  /// disk, so it may be slow. Any thread.
  virtual TKivSelectionState IsPIDLSelected(IItemIdList* pItemIdList, bool& pIsSubItemOf) = 0;
};

} // namespace kiv
