#pragma once

#include <framework/Set.h>

namespace kiv {

/// What a row of a list is or shows beside its content.
enum class TItemStateFlag {
  isNone,
  isCut,         ///< drawn faded: it is about to be moved by the clipboard
  isDropHilited, ///< the target of a drag
  isFocused,     ///< where the keyboard is; one row at most
  isSelected,
  isActivating ///< never set; kept for the completeness of the set
};
using TItemStates = TSet<TItemStateFlag>;

/// Where GetNextItem looks from a row.
enum class TSearchDirection {
  sdLeft,
  sdRight,
  sdAbove,
  sdBelow,
  sdAll ///< the rows behind it, in their order
};

/// What of a row changed.
enum class TItemChange { ctText, ctImage, ctState };

/// A part of a row as it stands on the screen.
enum class TDisplayCode { drBounds, drIcon, drLabel, drSelectBounds };

enum class TViewStyle { vsIcon, vsSmallIcon, vsList, vsReport };

/// What lies at a point of a list view.
enum class THitTest { htAbove, htBelow, htNowhere, htOnItem, htOnIcon, htOnLabel, htOnStateIcon, htToLeft, htToRight };
using THitTests = TSet<THitTest>;

/// The side on which the texts of a column stand.
enum class TColumnAlignment { taLeftJustify, taRightJustify, taCenter };

/// The arrow in a column's header.
enum class TSortMark { None, Up, Down };

/// A rectangle in pixels of the list's client area; right and bottom lie outside.
struct TRowRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  friend bool operator==(const TRowRect&, const TRowRect&) = default;
};

} // namespace kiv
