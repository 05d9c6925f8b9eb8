#include <forms/Layout.h>

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace kiv {

void PrintTo(const TLayoutBox& pBox, std::ostream* pStream) {
  *pStream << '(' << pBox.left << ',' << pBox.top << ' ' << pBox.width << 'x' << pBox.height << ')';
}

namespace {

using enum TAlign;
using enum TAnchorKind;

TEST(Layout, EdgesAreServedInOrderAndTheRestIsTheClients) {
  const struct {
    std::vector<TLayoutItem> items;
    std::vector<TLayoutBox> expected;
    TLayoutBox left;
  } cases[] = {
      // Whatever the order of the controls: top and bottom over the whole width, then the sides.
      {{{alClient, {1, 2, 3, 4}, {}},
        {alLeft, {0, 0, 20, 9}, {}},
        {alTop, {5, 5, 7, 10}, {}},
        {alRight, {0, 0, 15, 9}, {}},
        {alBottom, {0, 0, 7, 5}, {}},
        {alNone, {7, 8, 9, 10}, {}}},
       {{20, 10, 65, 85}, {0, 10, 20, 85}, {0, 0, 100, 10}, {85, 10, 15, 85}, {0, 95, 100, 5}, {7, 8, 9, 10}},
       {20, 10, 65, 85}},
      // Among those of one edge the place decides, and the order only where it doesn't.
      {{{alTop, {0, 50, 1, 10}, {}}, {alTop, {0, 20, 1, 20}, {}}, {alTop, {0, 50, 1, 30}, {}}},
       {{0, 20, 100, 10}, {0, 0, 100, 20}, {0, 30, 100, 30}},
       {0, 60, 100, 40}},
      {{{alRight, {80, 0, 10, 1}, {}}, {alRight, {60, 0, 40, 1}, {}}},
       {{50, 0, 10, 100}, {60, 0, 40, 100}},
       {0, 0, 50, 100}},
      // More than there is room for leaves nothing, not less.
      {{{alLeft, {0, 0, 150, 1}, {}}, {alClient, {0, 0, 5, 5}, {}}},
       {{0, 0, 150, 100}, {100, 0, 0, 100}},
       {100, 0, 0, 100}},
      // Room around a control is taken from the area, and from the control where that decides its size.
      {{{alTop, {0, 0, 1, 10}, {}, {1, 2, 3, 4}},
        {alRight, {0, 0, 20, 1}, {}, {5, 6, 7, 8}},
        {alClient, {}, {}, {9, 9, 9, 9}}},
       {{1, 2, 96, 10}, {73, 22, 20, 70}, {9, 25, 50, 66}},
       {0, 16, 68, 84}},
      // Constraints count against the alignment.
      {{{alTop, {0, 0, 1, 90}, {0, 0, 40, 30}}, {alClient, {0, 0, 1, 1}, {200, 0, 0, 20}}},
       {{0, 0, 40, 30}, {0, 30, 200, 20}},
       {0, 30, 100, 70}},
  };
  for (const auto& c : cases) {
    TLayoutBox area{0, 0, 100, 100};
    std::vector<TLayoutItem> items = c.items;
    AlignBoxes(area, items);
    std::vector<TLayoutBox> boxes;
    for (const TLayoutItem& item : items) boxes.push_back(item.box);
    EXPECT_EQ(boxes, c.expected);
    EXPECT_EQ(area, c.left);
  }
}

TEST(Layout, AnchorsKeepDistances) {
  const TAnchorBase base{{10, 20, 30, 40}, 100, 100};
  const struct {
    TAnchors anchors;
    int width;
    int height;
    TLayoutBox expected;
  } cases[] = {
      {{akLeft, akTop}, 200, 300, {10, 20, 30, 40}},
      {{akRight, akBottom}, 200, 300, {110, 220, 30, 40}},
      {{akLeft, akRight, akTop, akBottom}, 200, 300, {10, 20, 130, 240}},
      {{akLeft, akRight, akTop, akBottom}, 20, 10, {10, 20, 0, 0}}, // no negative size
      {{}, 200, 300, {60, 120, 30, 40}},
  };
  for (const auto& c : cases) EXPECT_EQ(AnchorBox(base, c.anchors, c.width, c.height), c.expected);
}

} // namespace
} // namespace kiv
