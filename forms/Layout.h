#pragma once

#include <framework/Set.h>
#include <platform/Export.h>

#include <span>

namespace kiv {

/// Where a control stands in its parent: at a place of its own, or along an edge of what the others have left.
enum class TAlign {
  alNone,
  alTop,
  alBottom,
  alLeft,
  alRight,
  alClient, ///< all that is left
  alCustom  ///< the parent's affair, in an override
};

/// The edges of the parent that a control without alignment keeps its distance from.
enum class TAnchorKind { akLeft, akTop, akRight, akBottom };
using TAnchors = TSet<TAnchorKind>;

/// Position and size in pixels of the parent's client area. Sizes aren't negative.
struct TLayoutBox {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  int Right() const noexcept { return left + width; }
  int Bottom() const noexcept { return top + height; }
  friend bool operator==(const TLayoutBox&, const TLayoutBox&) = default;
};

/// Bounds of a size in pixels; 0 is none.
struct TSizeConstraints {
  int minWidth = 0;
  int minHeight = 0;
  int maxWidth = 0;
  int maxHeight = 0;
  friend bool operator==(const TSizeConstraints&, const TSizeConstraints&) = default;

  /// The size that comes closest to a wanted one. Where the bounds contradict one another the least size wins.
  KIV_EXPORT void Apply(int& pWidth, int& pHeight) const noexcept;
};

/// Room on the four sides of something, in pixels.
struct TMargins {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  friend bool operator==(const TMargins&, const TMargins&) = default;
};

/// One control for AlignBoxes.
struct TLayoutItem {
  TAlign align = TAlign::alNone;
  TLayoutBox box;
  TSizeConstraints constraints;
  TMargins margins{}; ///< stay free around it
};

/// Lays out what is aligned: first all at the top, then those at the bottom, left, right, and last those that take what
/// is left. Among those of one edge the nearer one to it comes first, and equals keep their order. Others stay as they
/// are. `pArea` shrinks to what is left.
KIV_EXPORT void AlignBoxes(TLayoutBox& pArea, std::span<TLayoutItem> pItems);

/// Where a control was put, and in what size of parent.
struct TAnchorBase {
  TLayoutBox box;
  int parentWidth = 0;
  int parentHeight = 0;
};

/// Where it belongs in another size of parent: it keeps its distance from the edges that it is anchored to, grows if
/// these are two opposite ones, and moves by half if it is neither of them. Computed from where it was put, so that no
/// rounding adds up and a parent that was small for a while does no harm.
KIV_EXPORT TLayoutBox AnchorBox(const TAnchorBase& pBase, TAnchors pAnchors, int pParentWidth,
                                int pParentHeight) noexcept;

} // namespace kiv
