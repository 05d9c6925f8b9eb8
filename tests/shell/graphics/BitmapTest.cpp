#include "MemoryScreen.h"

#include <graphics/Picture.h>

#include <doubles/GdiCount.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/Apartment.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace kiv {
namespace {

using enum TAlphaFormat;
using test::TMemoryScreen;

// Red at the top left, the lower half half transparent, nothing at the bottom right.
TBitmap Sample(int width, int height) {
  TBitmap bitmap(width, height, afDefined);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const TPixel alpha = y < height / 2 ? 0xFF : x < width / 2 ? 0x80 : 0;
      if (alpha != 0) bitmap.ScanLine(y)[x] = alpha << 24 | (x < width / 2 && y < height / 2 ? 0xFF0000U : 0x0040C0U);
    }
  }
  return bitmap;
}

TUniqueBitmap MakeSection(int width, int height, bool top_down, std::vector<TPixel> rows) {
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, top_down ? -height : height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  TUniqueBitmap section(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  std::memcpy(bits, rows.data(), rows.size() * sizeof(TPixel));
  return section;
}

std::vector<TPixel> PixelsOf(const TBitmap& bitmap) {
  return {bitmap.Pixels().begin(), bitmap.Pixels().end()};
}

TEST(Bitmap, TakesOverEitherRowOrderAndKindOfAlpha) {
  const TPixel a = 0x80400000;
  const TPixel b = 0xFF112233;
  const TUniqueBitmap down = MakeSection(1, 2, true, {a, b});
  const TUniqueBitmap up = MakeSection(1, 2, false, {b, a});
  for (const HBITMAP each : {down.Get(), up.Get()}) {
    const TBitmap bitmap = TBitmap::FromHandle(each);
    EXPECT_EQ(PixelsOf(bitmap), (std::vector<TPixel>{a, b}));
    EXPECT_EQ(bitmap.GetAlphaFormat(), afPremultiplied);
  }
  EXPECT_EQ(TBitmap::FromHandle(down.Get(), afDefined).GetAlphaFormat(), afDefined);
  const TUniqueBitmap plain = MakeSection(1, 2, true, {0x00FFFFFF, 0});
  EXPECT_EQ(TBitmap::FromHandle(plain.Get()).GetAlphaFormat(), afIgnored);
  const TUniqueBitmap monochrome(CreateBitmap(16, 1, 1, 1, "\xF0\x00"));
  const TBitmap wide = TBitmap::FromHandle(monochrome.Get());
  EXPECT_EQ(wide.GetAlphaFormat(), afIgnored);
  EXPECT_TRUE(wide.Pixels()[3] == 0xFFFFFF && wide.Pixels()[4] == 0);
  EXPECT_THROW(TBitmap::FromHandle(nullptr), EInvalidGraphic);
  EXPECT_THROW(TBitmap(100'000, 100'000), EInvalidGraphic);
  EXPECT_THROW(TBitmap(-1, 5), EInvalidGraphic);
  EXPECT_TRUE(TBitmap(0, 5).IsEmpty());
}

TEST(Bitmap, DrawsAndIsDrawnWithItsAlpha) {
  TBitmap bitmap = Sample(16, 16);
  for (const auto alpha : {afDefined, afPremultiplied}) {
    bitmap.SetAlphaFormat(alpha);
    const TMemoryScreen screen(40, 40);
    TCanvas canvas(screen.Dc());
    canvas.Draw(2, 3, bitmap);
    EXPECT_EQ(screen.At(2, 3), clRed);
    EXPECT_EQ(screen.At(18, 3), clWhite);
    EXPECT_EQ(screen.At(17, 18), clWhite); // transparent
    EXPECT_NEAR(RedOf(screen.At(2, 18)), 127, 2);
    EXPECT_NEAR(BlueOf(screen.At(2, 18)), 223, 2);
    canvas.Draw({0, 0, 40, 40}, bitmap, 128); // scaled, and faded
    EXPECT_NEAR(GreenOf(screen.At(2, 2)), 127, 2);
  }
  // Drawn on by the platform's functions, and looked at while it is selected.
  TBitmap target(20, 20);
  target.GetCanvas().FillRect({0, 0, 20, 20}, clWhite);
  target.GetCanvas().Draw(0, 0, bitmap);
  EXPECT_EQ(target.ScanLine(0)[0] & 0xFFFFFF, 0xFF0000U);
  EXPECT_EQ(target.ScanLine(19)[19] & 0xFFFFFF, 0xFFFFFFU);
  TBitmap second(20, 20);
  second.GetCanvas().Draw(0, 0, target);
  second.MakeOpaque();
  EXPECT_EQ(second.ScanLine(0)[0], 0xFFFF0000U);
  TCanvas& canvas = target.GetCanvas();
  EXPECT_TRUE(target.GetHandle());
  EXPECT_FALSE(canvas.GetHandle());
  EXPECT_TRUE(&target.GetCanvas() == &canvas && canvas.GetHandle());
  target.SetSize(30, 10, clLime);
  EXPECT_EQ(target.ScanLine(0)[0] & 0xFFFFFF, 0xFF0000U);
  EXPECT_EQ(target.ScanLine(9)[29], 0xFF00FF00U);
  // On a mirrored context.
  const TMemoryScreen mirrored(16, 16);
  SetLayout(mirrored.Dc(), LAYOUT_RTL);
  TCanvas(mirrored.Dc()).Draw(0, 0, bitmap);
  SetLayout(mirrored.Dc(), 0);
  EXPECT_EQ(mirrored.At(3, 3), clRed);
  EXPECT_NE(mirrored.At(12, 3), clRed);
}

TEST(Bitmap, BecomesAnIconAndComesBack) {
  const TBitmap bitmap = Sample(17, 16); // a width that fills no word
  const TUniqueIcon icon = bitmap.ToIcon();
  const TBitmap back = TBitmap::FromIcon(icon.Get());
  EXPECT_EQ(back.GetAlphaFormat(), afDefined);
  EXPECT_EQ(PixelsOf(back), PixelsOf(bitmap));
  const TBitmap scaled = TBitmap::FromIcon(icon.Get(), 32);
  EXPECT_TRUE(scaled.GetWidth() == 32 && scaled.GetHeight() == 32);
  EXPECT_THROW(TBitmap().ToIcon(), EInvalidGraphic);
  EXPECT_THROW(TBitmap::FromIcon(nullptr), EInvalidGraphic);
  // Icons of older kinds have masks, with or without colours.
  const TUniqueBitmap halves(CreateBitmap(16, 2, 1, 1, "\xFF\x00\xFF\x00"));
  const TUniqueBitmap color = MakeSection(16, 2, true, std::vector<TPixel>(32, 0x00123456));
  ICONINFO info{TRUE, 0, 0, halves.Get(), color.Get()};
  const TUniqueIcon masked(CreateIconIndirect(&info));
  const TBitmap read = TBitmap::FromIcon(masked.Get());
  EXPECT_TRUE(read.Pixels()[7] == 0 && read.Pixels()[8] == 0xFF123456);
  const TUniqueBitmap both(CreateBitmap(16, 4, 1, 1, "\xF0\x00\xF0\x00\xCC\x00\xCC\x00"));
  ICONINFO plain{TRUE, 0, 0, both.Get(), nullptr};
  const TUniqueIcon monochrome(CreateIconIndirect(&plain));
  const TBitmap shape = TBitmap::FromIcon(monochrome.Get());
  EXPECT_EQ(shape.GetHeight(), 2);
  EXPECT_EQ((std::vector<TPixel>{shape.Pixels()[0], shape.Pixels()[2], shape.Pixels()[4], shape.Pixels()[6]}),
            (std::vector<TPixel>{0xFF000000, 0, 0xFFFFFFFF, 0xFF000000}));
}

class ImageFile : public testing::Test {
protected:
  void SetUp() override { ASSERT_HRESULT_SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
  void TearDown() override { CoUninitialize(); }
  std::wstring File(const wchar_t* name) const { return fFolder.Path() + L"\\" + name; }

private:
  test::ScopedTempFolder fFolder;
};

TEST_F(ImageFile, KeepsThePixels) {
  TBitmap bitmap = Sample(33, 20);
  const auto straight = PixelsOf(bitmap);
  bitmap.SetAlphaFormat(afPremultiplied);
  bitmap.SaveToFile(File(L"a.png"));
  const TBitmap png = TBitmap::FromFile(File(L"a.png"));
  EXPECT_EQ(png.GetAlphaFormat(), afPremultiplied);
  EXPECT_EQ(PixelsOf(png), PixelsOf(bitmap));
  TBitmap opaque(33, 20);
  opaque.GetCanvas().FillRect({0, 0, 33, 20}, RgbColor(200, 100, 50)); // the alpha stays 0
  for (const auto format : {TImageFileFormat::iffPng, TImageFileFormat::iffBmp, TImageFileFormat::iffJpeg}) {
    opaque.SaveToFile(File(L"b"), format);
    const TBitmap read = TBitmap::FromFile(File(L"b"));
    EXPECT_EQ(read.GetAlphaFormat(), afIgnored);
    ASSERT_EQ(read.Pixels().size(), opaque.Pixels().size());
    EXPECT_NEAR(static_cast<int>(read.Pixels()[100] >> 16 & 0xFF), 200, 3);
  }
  bitmap.SaveToFile(File(L"c"), TImageFileFormat::iffJpeg); // on white, for want of alpha
  EXPECT_NEAR(static_cast<int>(TBitmap::FromFile(File(L"c")).ScanLine(19)[32] & 0xFF), 255, 3);
  TPicture picture;
  int changes = 0;
  picture.SetOnChange([&](TPersistent*) { ++changes; });
  picture.LoadFromFile(File(L"a.png"));
  EXPECT_TRUE(changes == 1 && picture.GetWidth() == 33 && picture.GetHeight() == 20);
  EXPECT_THROW(picture.LoadFromFile(File(L"missing")), EInvalidGraphic);
  EXPECT_EQ(picture.GetWidth(), 33);
}

TEST_F(ImageFile, BrokenOnesAreRefused) {
  Sample(60, 60).SaveToFile(File(L"a.png"));
  ComPtr<IStream> stream;
  ASSERT_HRESULT_SUCCEEDED(SHCreateStreamOnFileEx(File(L"a.png").c_str(), STGM_READ, 0, FALSE, nullptr, &stream));
  std::vector<char> bytes(10'000);
  ULONG size = 0;
  stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &size);
  bytes.resize(size);
  const auto open = [](const std::vector<char>& content) {
    ComPtr<IStream> memory;
    memory.Attach(SHCreateMemStream(reinterpret_cast<const BYTE*>(content.data()), static_cast<UINT>(content.size())));
    return TBitmap::FromStream(memory.Get());
  };
  EXPECT_EQ(open(bytes).GetWidth(), 60);
  EXPECT_THROW(open({bytes.begin(), bytes.begin() + 20}), EInvalidGraphic);
  EXPECT_THROW(open(std::vector<char>(100, 'x')), EInvalidGraphic);
  bytes[18] = 0x7F; // says that it is two thousand million pixels wide
  EXPECT_THROW(open(bytes), EInvalidGraphic);
  EXPECT_THROW(TBitmap().SaveToFile(File(L"never")), EInvalidGraphic);
  EXPECT_EQ(GetFileAttributesW(File(L"never").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(ImageFile, OfIconsGivesTheSizeThatFits) {
  // An icon file: directory, then a PNG for each size.
  std::vector<char> file = {0, 0, 1, 0, 3, 0};
  const int sizes[] = {16, 48, 32};
  std::vector<char> pictures;
  for (const int size : sizes) {
    ComPtr<IStream> memory;
    memory.Attach(SHCreateMemStream(nullptr, 0));
    Sample(size, size).SaveToStream(memory.Get(), TImageFileFormat::iffPng);
    STATSTG stat{};
    memory->Stat(&stat, STATFLAG_NONAME);
    const auto length = stat.cbSize.LowPart;
    const auto offset = static_cast<DWORD>(6 + 3 * 16 + pictures.size());
    const char side = static_cast<char>(size);
    file.insert(file.end(), {side, side, 0, 0, 1, 0, 32, 0});
    for (const DWORD number : {length, offset}) {
      for (int i = 0; i < 4; ++i) file.push_back(static_cast<char>(number >> (8 * i)));
    }
    const auto start = pictures.size();
    pictures.resize(start + length);
    memory->Seek({}, STREAM_SEEK_SET, nullptr);
    memory->Read(pictures.data() + start, length, nullptr);
  }
  file.insert(file.end(), pictures.begin(), pictures.end());
  for (const auto& [wanted, given] : {std::pair(0, 48), {16, 16}, {17, 32}, {32, 32}, {33, 48}, {100, 48}}) {
    ComPtr<IStream> memory;
    memory.Attach(SHCreateMemStream(reinterpret_cast<const BYTE*>(file.data()), static_cast<UINT>(file.size())));
    EXPECT_EQ(TBitmap::FromStream(memory.Get(), wanted).GetWidth(), given) << wanted;
  }
}

TEST_F(ImageFile, AndPicturesLeaveNothingBehind) {
  Sample(16, 16).SaveToFile(File(L"a.png")); // what the platform makes once
  const int before = test::CountGdiObjects();
  for (int round = 0; round < 30; ++round) {
    TBitmap bitmap = TBitmap::FromFile(File(L"a.png"));
    bitmap.GetCanvas().TextAt(0, 0, L"x");
    const TUniqueIcon icon = bitmap.Scaled(32, 32).ToIcon();
    TBitmap other = TBitmap::FromIcon(icon.Get());
    other.GetCanvas().Draw(0, 0, bitmap);
    other = std::move(bitmap);
    other.SetSize(5, 5);
    other.GetCanvas();
    const TUniqueBitmap released = other.Release();
    other.GetCanvas().TextAt(0, 0, L"nowhere");
  }
  EXPECT_EQ(test::CountGdiObjects(), before);
}

} // namespace
} // namespace kiv
