#include "MemoryScreen.h"

#include <graphics/ImageList.h>
#include <graphics/ImageListApi.h>

#include <doubles/GdiCount.h>
#include <framework/ComponentText.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace kiv {
namespace {

using enum TAlphaFormat;
using enum TDrawingStyle;
using enum TImageEffect;
using test::TMemoryScreen;

constexpr TPixel Half = 0x80FF0000; // red

TBitmap Square(int size, TPixel pixel) {
  TBitmap bitmap(size, size, afDefined);
  for (TPixel& each : bitmap.Pixels()) each = pixel;
  return bitmap;
}

TPixel Middle(TBitmap bitmap) {
  return bitmap.IsEmpty() ? 0xBAD : bitmap.ScanLine(bitmap.GetHeight() / 2)[bitmap.GetWidth() / 2];
}

void ExpectNear(TPixel got, TPixel wanted, const char* what) {
  for (int shift = 0; shift < 32; shift += 8) {
    EXPECT_NEAR(static_cast<int>(got >> shift & 0xFF), static_cast<int>(wanted >> shift & 0xFF), 3)
        << what << std::hex << ' ' << got;
  }
}

TEST(ImageList, KeepsPicturesWithTheirAlpha) {
  for (const bool masked : {true, false}) {
    TImageList list;
    list.SetMasked(masked);
    EXPECT_EQ(list.Add(Square(16, Half)), 0);
    TBitmap premultiplied = Square(16, Half);
    premultiplied.SetAlphaFormat(afPremultiplied);
    list.Add(premultiplied);
    TBitmap opaque = Square(16, 0x00123456);
    opaque.DeclareAlphaFormat(afIgnored);
    list.Add(opaque);
    list.Add(Square(16, 0));
    opaque.ScanLine(8)[8] = 0xABCDEF;
    list.AddMasked(opaque, 0x563412);
    list.AddMasked(opaque, clDefault);
    list.AddIcon(Square(32, 0xFF00FF00).ToIcon().Get());
    ASSERT_EQ(list.GetCount(), 7);
    const TPixel wanted[] = {0x80800000, 0x80800000, 0xFF123456, 0, 0xFFABCDEF, 0xFFABCDEF, 0xFF00FF00};
    for (int i = 0; i < 7; ++i) ExpectNear(Middle(list.GetBitmap(i)), wanted[i], "image ");
    EXPECT_EQ(list.GetBitmap(4).Pixels()[0], 0U);
    EXPECT_EQ(list.GetBitmap(3).Pixels()[1], 0U);
    ExpectNear(Middle(TBitmap::FromIcon(list.GetIcon(0).Get())), Half, "icon ");
    list.Replace(1, Square(16, 0xFFFFFFFF));
    list.Delete(0);
    EXPECT_EQ(Middle(list.GetBitmap(0)), 0xFFFFFFFFU);
    EXPECT_TRUE(list.GetBitmap(6).IsEmpty() && list.GetBitmap(-1).IsEmpty() && !list.GetIcon(6));
    // A strip is cut.
    TBitmap strip(48, 16, afDefined);
    for (int y = 0; y < 16; ++y) std::fill_n(strip.ScanLine(y) + 16, 16, 0xFF0000FF);
    EXPECT_EQ(list.Add(strip), 6);
    EXPECT_EQ(list.GetCount(), 9);
    EXPECT_EQ(Middle(list.GetBitmap(7)), 0xFF0000FFU);
    EXPECT_EQ(Middle(list.GetBitmap(8)), 0U);
    EXPECT_THROW(list.Add(Square(17, 0)), EInvalidGraphic);
    EXPECT_THROW(list.Add(TBitmap()), EInvalidGraphic);
    EXPECT_THROW(list.Replace(0, strip), EInvalidGraphic);
    EXPECT_THROW(list.Replace(9, Square(16, 0)), EInvalidGraphic);
    EXPECT_THROW(list.Delete(-1), EInvalidGraphic);
    EXPECT_THROW(list.Overlay(0, 16), EInvalidGraphic);
    list.SetOnChange([&list](TPersistent*) { list.GetHandle(); }); // as a control does
    list.SetSize(20, 20);
    EXPECT_EQ(list.GetCount(), 0);
    list.Add(Square(20, Half));
    ExpectNear(Middle(list.GetBitmap(0)), 0x80800000, "new size ");
  }
}

TEST(ImageList, DrawsByStyleEffectAndOverlay) {
  TImageList list;
  list.Add(Square(16, 0xFFFF0000));
  TBitmap mark(16, 16, afDefined);
  for (int y = 8; y < 16; ++y) std::fill_n(mark.ScanLine(y), 8, 0xFF0000FF);
  list.Add(mark);
  list.Add(Square(16, 0));
  list.Overlay(1, 3);
  const TMemoryScreen screen(16, 16);
  TCanvas canvas(screen.Dc());
  const auto draw = [&](int index, TDrawingStyle style, TImageEffect effect, int overlay) {
    canvas.FillRect({0, 0, 16, 16}, clWhite);
    list.Draw(canvas, 0, 0, index, style, effect, overlay);
    return PixelOf(screen.At(12, 3));
  };
  ExpectNear(draw(0, dsNormal, ieNone, 0), 0xFFFF0000, "plain");
  ExpectNear(draw(0, dsTransparent, ieCut, 0), 0xFFFF7F7F, "cut");
  ExpectNear(draw(0, dsTransparent, ieDisabled, 0), 0xFFA5A5A5, "disabled");
  list.SetBlendColor(clBlue);
  ExpectNear(draw(0, dsSelected, ieNone, 0), 0xFF7F007F, "selected");
  draw(0, dsTransparent, ieNone, 3);
  EXPECT_EQ(screen.At(12, 3), clRed);
  EXPECT_EQ(screen.At(3, 12), clBlue);
  draw(0, dsTransparent, ieCut, 3);
  EXPECT_NEAR(RedOf(screen.At(3, 12)), 127, 2);
  list.SetBkColor(clLime);
  ExpectNear(draw(2, dsNormal, ieNone, 0), 0xFF00FF00, "background");
  ExpectNear(draw(2, dsTransparent, ieNone, 0), 0xFFFFFFFF, "no background");
  ExpectNear(draw(7, dsNormal, ieNone, 0), 0xFFFFFFFF, "none");
}

TEST(ImageList, LeavesASharedListAlone) {
  TImageList own;
  own.Add(Square(16, Half));
  const ComPtr<IImageList> list = ImageListOf(own.GetHandle());
  const auto references = [&list] {
    list->AddRef();
    return list->Release();
  };
  const ULONG before = references();
  for (const bool share : {true, false}) {
    TImageList guest;
    guest.SetShareImages(share);
    if (!share) list->AddRef(); // an owner takes the reference that comes with the handle
    guest.SetHandle(own.GetHandle());
    EXPECT_EQ(guest.GetCount(), 1);
    if (share) {
      EXPECT_THROW(guest.Add(Square(16, 0)), EInvalidOperation);
      EXPECT_THROW(guest.AddIcon(nullptr), EException);
      EXPECT_THROW(guest.Replace(0, Square(16, 0)), EInvalidOperation);
      EXPECT_THROW(guest.Delete(0), EInvalidOperation);
      EXPECT_THROW(guest.Clear(), EInvalidOperation);
      EXPECT_THROW(guest.Overlay(0, 1), EInvalidOperation);
      EXPECT_THROW(guest.SetSize(32, 32), EInvalidOperation);
      EXPECT_THROW(guest.AddImages(own), EInvalidOperation);
      EXPECT_THROW(guest.Assign(&own), EInvalidOperation);
      guest.SetBkColor(clRed);
      guest.ChangeScale(2, 1);
      EXPECT_EQ(guest.GetWidth(), 16);
      ExpectNear(Middle(guest.GetBitmap(0)), 0x80800000, "shared");
    }
  }
  EXPECT_EQ(references(), before);
  COLORREF background = 0;
  list->GetBkColor(&background);
  EXPECT_EQ(background, CLR_NONE);
  EXPECT_EQ(own.GetCount(), 1);
}

TEST(ImageList, ScalesFromWhatWasAdded) {
  TImageList list;
  TBitmap check(16, 16, afDefined);
  for (int i = 0; i < 256; ++i) check.Pixels()[static_cast<std::size_t>(i)] = (i + i / 16) % 2 == 0 ? 0xFFFFFFFF : 0;
  list.Add(check);
  list.Add(Square(16, Half));
  list.Overlay(1, 2);
  const auto pixels = [&] {
    const TBitmap image = list.GetBitmap(0);
    return std::vector<TPixel>(image.Pixels().begin(), image.Pixels().end());
  };
  const auto before = pixels();
  list.ChangeScale(3, 2);
  EXPECT_TRUE(list.GetWidth() == 24 && list.GetHeight() == 24 && list.GetCount() == 2);
  ExpectNear(Middle(list.GetBitmap(1)), 0x80800000, "scaled");
  list.ChangeScale(1, 3);
  ExpectNear(Middle(list.GetBitmap(0, 2)), 0xC0C04040, "overlay on a mean");
  list.ChangeScale(2, 1);
  EXPECT_EQ(pixels(), before);
  list.ChangeScale(1, 2);
  list.Add(Square(8, 0));
  list.ChangeScale(2, 1);
  EXPECT_EQ(list.GetCount(), 3);
  list.Delete(0); // the overlay moves down with its image
  list.Add(Square(16, 0));
  TImageList copy;
  copy.Assign(&list);
  EXPECT_TRUE(copy.GetCount() == 3 && copy.GetWidth() == 16);
  ExpectNear(Middle(copy.GetBitmap(2, 2)), 0x80800000, "copied overlay");
  copy.Delete(0);
  EXPECT_EQ(Middle(copy.GetBitmap(1, 2)), 0U);
}

TEST(ImageList, TellsListenersUntilEitherGoes) {
  auto list = std::make_unique<TImageList>();
  int first = 0;
  int second = 0;
  TChangeLink link;
  auto other = std::make_unique<TChangeLink>();
  link.SetOnChange([&](TPersistent* sender) {
    EXPECT_EQ(sender, list.get());
    ++first;
    other.reset(); // while they are told
  });
  other->SetOnChange([&](TPersistent*) { ++second; });
  list->RegisterChanges(&link);
  list->RegisterChanges(&link);
  list->RegisterChanges(other.get());
  list->BeginUpdate();
  list->Add(Square(16, Half));
  list->SetBkColor(clRed);
  EXPECT_EQ(first, 0);
  list->EndUpdate();
  EXPECT_TRUE(first == 1 && second == 0);
  list->SetBkColor(clRed);
  EXPECT_EQ(first, 1);
  link.SetOnChange([&](TPersistent*) { list.reset(); });
  list->Clear();
  EXPECT_FALSE(list || link.GetSender());
}

TEST(ImageList, GivesBackAllHandles) {
  const auto use = [] {
    TImageList list;
    for (int i = 0; i < 40; ++i) list.Add(Square(16, Half));
    list.ChangeScale(5, 4);
    const TUniqueIcon icon = list.GetIcon(3);
    list.ReplaceIcon(0, icon.Get());
    list.Clear();
    list.Add(Square(20, Half));
    const TMemoryScreen screen(20, 20);
    TCanvas canvas(screen.Dc());
    list.Draw(canvas, 0, 0, 0, false);
  };
  use(); // what the platform makes once
  const int before = test::CountGdiObjects();
  for (int round = 0; round < 5; ++round) use();
  EXPECT_EQ(test::CountGdiObjects(), before);
}

TEST(ImageList, IsSavedByItsProperties) {
  TImageList list;
  list.SetBkColor(clBtnFace);
  list.SetDrawingStyle(dsTransparent);
  list.SetMasked(false);
  list.SetWidth(24);
  const auto read = LoadComponentText(SaveComponentText(list));
  const auto* const loaded = dynamic_cast<TImageList*>(read.get());
  ASSERT_TRUE(loaded);
  EXPECT_TRUE(loaded->GetBkColor() == clBtnFace && loaded->GetDrawingStyle() == dsTransparent && !loaded->GetMasked() &&
              loaded->GetWidth() == 24 && loaded->GetHeight() == 16);
}

} // namespace
} // namespace kiv
