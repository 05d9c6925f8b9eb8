#include <viewstate/SystemImageList.h>

#include <core/ItemIdList.h>
#include <doubles/Crash.h>
#include <doubles/GdiCount.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/ComponentText.h>
#include <framework/ScaledPixels.h>
#include <platform/Lifecycle.h>
#include <platform/ShellApi.h>
#include <platform/TempPath.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace kiv {
namespace {

using enum TKivImageListSize;
using TList = TKivSystemImageList;

class SystemImageList : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_HRESULT_SUCCEEDED(OleInitialize(nullptr));
    Shutdown(); // what former tests have found out
  }
  void TearDown() override {
    Shutdown();
    OleUninitialize();
  }
};

// Asks of the platform, written down and answered.
struct TAsk {
  std::wstring name;
  DWORD attributes;
  UINT flags;
  bool isQuiet = true; // no dialog of the platform's may come up
  bool operator==(const TAsk&) const = default;
};
std::vector<TAsk> gAsked;
int gAnswer = 7;

DWORD_PTR WINAPI FileInfoFake(LPCWSTR name, DWORD attributes, SHFILEINFOW* info, UINT, UINT flags) {
  const bool is_quiet = (GetThreadErrorMode() & SEM_FAILCRITICALERRORS) != 0;
  gAsked.push_back({(flags & SHGFI_PIDL) != 0 ? L"(list)" : name, attributes, flags, is_quiet});
  info->iIcon = gAnswer;
  wcscpy(info->szTypeName, L"Some Type");
  return gAnswer < 0 ? 0 : 1;
}

class SystemIconIndex : public SystemImageList {
protected:
  void SetUp() override {
    SystemImageList::SetUp();
    fApi = std::make_unique<ScopedShellApi>();
    (*fApi)->SHGetFileInfoW = &FileInfoFake;
    gAsked.clear();
    gAnswer = 7;
  }
  void TearDown() override {
    fApi.reset();
    SystemImageList::TearDown();
  }
  std::unique_ptr<ScopedShellApi> fApi;
};

constexpr UINT Index = SHGFI_SYSICONINDEX;
constexpr UINT Small = Index | SHGFI_SMALLICON;
constexpr UINT ByName = SHGFI_USEFILEATTRIBUTES;

TEST_F(SystemIconIndex, AsksThePlatformForWhatIsWanted) {
  const struct {
    TKivImageListSize size;
    bool opened;
    DWORD attributes;
    TAsk asked;
  } cases[] = {
      {si_Large, false, 0, {L"x", 0, Index}},
      {si_Small, true, 0, {L"x", 0, Small | SHGFI_OPENICON}},
      {si_Jumbo, false, 0x21, {L"x", FILE_ATTRIBUTE_NORMAL, Small | ByName}},
      {si_Large, false, 0x11, {L"x", FILE_ATTRIBUTE_DIRECTORY, Index | ByName}},
  };
  for (const auto& each : cases) {
    gAsked.clear();
    EXPECT_EQ(TList::GetFileInfo(L"x", each.size, each.opened, each.attributes), 7);
    EXPECT_EQ(gAsked, std::vector{each.asked}) << each.attributes;
  }
  EXPECT_EQ(TList::GetFileInfo(std::wstring(L"C:\\Windows\0x", 12), si_Small, false, 0), -1); // another path's icon
  EXPECT_EQ(gAsked.size(), 1U);
  gAnswer = -1;
  EXPECT_EQ(TList::GetFileInfo(L"x", si_Small, false, 0), -1);
  (*fApi)->SHGetFileInfoW = [](LPCWSTR, DWORD, SHFILEINFOW*, UINT, UINT) -> DWORD_PTR {
    test::Crash(); // an icon handler
    return 1;
  };
  EXPECT_EQ(TList::GetFileInfo(L"x", si_Small, false, 0), -1);
}

TEST_F(SystemIconIndex, RemembersExtensionsBySizeAndForm) {
  for (const wchar_t* const each : {L"txt", L".txt"}) EXPECT_EQ(TList::GetIndexFromExtension(each, si_Small, false), 7);
  EXPECT_EQ(gAsked, (std::vector<TAsk>{{L"C:\\test1False.txt", FILE_ATTRIBUTE_NORMAL, Small | ByName}}));
  TList::GetIndexFromExtension(L"txt", si_Large, false);
  TList::GetIndexFromExtension(L"txt", si_Small, true);
  TList::GetIndexFromExtension(L"doc", si_Small, false);
  TList::GetIndexFromExtension(L"", si_Small, false);
  EXPECT_EQ(gAsked.size(), 5U);
  EXPECT_EQ(gAsked[4].name, L"C:\\test1False.");
  gAnswer = -1; // a failure isn't remembered
  EXPECT_EQ(TList::GetIndexFromExtension(L"new", si_Small, false), -1);
  gAnswer = 9;
  EXPECT_EQ(TList::GetIndexFromExtension(L"new", si_Small, false), 9);
  EXPECT_EQ(TList::GetIndexFromExtension(L"txt", si_Small, false), 7);
  EXPECT_EQ(TList::GetFileType(L"abc"), L"Some Type");
  const std::size_t asked = gAsked.size();
  EXPECT_EQ(TList::GetFileType(L".abc"), L"Some Type");
  EXPECT_EQ(gAsked.size(), asked);
}

TEST_F(SystemIconIndex, TakesPathsForWhatTheyLookLike) {
  gAnswer = 3;
  ASSERT_EQ(TList::GetFolderIconNumber(true), 3);
  EXPECT_EQ(gAsked, (std::vector<TAsk>{{KivGetTempPath(), 0, Small | SHGFI_OPENICON}}));
  gAnswer = 7;
  EXPECT_EQ(TList::GetFolderIconNumber(false), 3); // the first call has decided
  const struct {
    const wchar_t* path;
    int index;
  } cases[] = {
      {L"C:\\dir\\", 3},       {L"\\\\server", 3}, {L"\\\\server\\share", 3},  {L"\\\\server\\share\\a.txt", 7},
      {L"C:\\dir.d\\name", 7}, {L"a.txt", 7},      {L"\\\\server\\share\\", 3}};
  for (const auto& each : cases) {
    EXPECT_EQ(TList::GetIndexFromPathByExt(each.path, si_Small, false), each.index)
        << testing::PrintToString(each.path);
  }
  EXPECT_EQ(gAsked[1].name, L"C:\\test1False.txt");
  EXPECT_EQ(TList::GetIndexFromPath(L"C:\\here.txt", si_Small, false), 7);
  EXPECT_EQ(gAsked.back(), (TAsk{L"C:\\here.txt", 0, Small}));
  gAnswer = -1; // nothing there any more
  EXPECT_EQ(TList::GetIndexFromPath(L"C:\\gone.txt", si_Small, false), 7);
  EXPECT_EQ(TList::GetIndexFromPath(L"C:\\*.txt", si_Small, false), 3);
  EXPECT_EQ(TList::GetIndexFromPath(L"C:\\gone\\", si_Small, false), 3);
  gAnswer = 11;
  EXPECT_EQ(TList::GetUnknownFileIconNumber(), 11);
  EXPECT_EQ(gAsked.back().name, L"C:\\test1False.lxvbf_unknown_extension");
}

TEST_F(SystemIconIndex, OfAnObjectComesByItsList) {
  EXPECT_EQ(TList::GetIndexFromItemIdList(nullptr, si_Small, false), -1);
  const auto gone = TKivItemIdList::CreateInvalidWithPath(L"C:\\none");
  EXPECT_EQ(TList::GetIndexFromItemIdList(gone.Get(), si_Small, false), -1);
  EXPECT_TRUE(gAsked.empty());
  TList list(si_Large);
  EXPECT_EQ(list.GetSpecialFolderIcon(SF_DESKTOP), 7);
  EXPECT_EQ(gAsked, (std::vector<TAsk>{{L"(list)", 0, Index | SHGFI_PIDL}}));
}

TEST_F(SystemImageList, GivesIconsOfRealObjects) {
  test::ScopedTempFolder folder;
  const std::wstring text = folder.MakeFile(L"a.txt");
  const int file = TList::GetIndexFromPath(text, si_Small, false);
  const int plain = TList::GetIndexFromPath(folder.Path(), si_Small, false);
  EXPECT_GE(file, 0);
  EXPECT_GE(plain, 0);
  EXPECT_NE(file, plain);
  EXPECT_EQ(TList::GetFolderIconNumber(false), plain);
  EXPECT_EQ(TList::GetIndexFromItemIdList(TKivItemIdList::Create(text).Get(), si_Large, false), file);
  EXPECT_EQ(TList::GetIndexFromExtension(L"txt", si_Small, false), file);
  EXPECT_GE(TList::GetInstance(si_Small)->GetSpecialFolderIcon(SF_DRIVES), 0);
  EXPECT_FALSE(TList::GetFileType(L"txt").empty());
}

TEST_F(SystemImageList, HasSizesForPixels) {
  EXPECT_EQ(TList::PixelsToSize(1), si_SysSmall);
  EXPECT_EQ(TList::PixelsToSize(17), si_Large);
  EXPECT_EQ(TList::PixelsToSize(40), si_ExtraLarge);
  EXPECT_EQ(TList::PixelsToSize(100), si_ExtraLarge);
  EXPECT_EQ(TList::PixelsToSize(300), si_Jumbo);
  for (const auto size : {si_SysSmall, si_Large, si_ExtraLarge, si_Jumbo}) {
    EXPECT_EQ(TList::PixelsToSize(TKivImageListSizeHelper::GetSize(size)), size);
  }
  for (const auto size : {si_Large, si_Small, si_ExtraLarge, si_SysSmall, si_Jumbo}) {
    TList list(size);
    const int real = TKivImageListSizeHelper::GetSize(size);
    EXPECT_TRUE(list.GetWidth() == real && list.GetHeight() == real);
    EXPECT_GT(list.GetCount(), 0);
    EXPECT_TRUE(list.GetWidth() == real && list.GetShareImages());
  }
  EXPECT_EQ(TKivImageListSizeHelper::ToInt(si_FreeScaled), -1);
  EXPECT_EQ(TKivImageListSizeHelper::GetSize(si_FreeScaled), -1);
}

TEST_F(SystemImageList, SharesAnInstanceForEachSizeAndWidth) {
  TList* const small = TList::GetInstance(si_Small);
  EXPECT_EQ(TList::GetInstance(si_Small), small);
  EXPECT_NE(TList::GetInstance(si_Large), small);
  EXPECT_TRUE(small->GetBkColor() == clNone && small->GetDrawingStyle() == TDrawingStyle::dsTransparent);
  const int least = ScaledPixels(16);
  EXPECT_EQ(TList::GetInstance(si_FreeScaled), TList::GetInstance(least));
  EXPECT_EQ(TList::GetInstance(least + 3), TList::GetInstance(least));
  EXPECT_NE(TList::GetInstance(least + 4), TList::GetInstance(least));
  EXPECT_EQ(TList::GetInstance(1)->GetWidth(), 16);
  EXPECT_EQ(TList::GetInstance(1000)->GetWidth(), 256);
  small->ChangeScale(2, 1);
  EXPECT_THROW(small->SetSize(si_Jumbo), EInvalidOperation);
  EXPECT_THROW(small->Scale(100), EInvalidOperation);
  EXPECT_THROW(small->SetHandle(TList::GetInstance(si_Large)->GetHandle()), EInvalidOperation);
  EXPECT_EQ(small->GetHeight(), TKivImageListSizeHelper::GetSize(si_Small));
}

TEST_F(SystemImageList, ScalesIntoAListOfItsOwn) {
  const int folder = TList::GetFolderIconNumber(false);
  const ComPtr<IImageList> system = SystemImages(si_Small);
  int before = 0;
  system->GetImageCount(&before);
  TList list(20, nullptr, si_FreeScaled);
  EXPECT_TRUE(list.GetHeight() == 20 && !list.GetShareImages() && list.GetCount() == before);
  const TBitmap picture = list.GetBitmap(folder);
  ASSERT_EQ(picture.GetWidth(), 20);
  EXPECT_TRUE(std::ranges::any_of(picture.Pixels(), [](TPixel pixel) { return pixel >> 24 == 255; }));
  EXPECT_TRUE(list.GetBitmap(before).IsEmpty());
  // A control that draws by the handle, after the list was asked for the image.
  list.Require(folder + 1);
  const TBitmap drawn = ImageOf(*ImageListOf(list.GetHandle()).Get(), folder);
  EXPECT_TRUE(std::ranges::equal(drawn.Pixels(), picture.Pixels()));
  // And before: nothing is seen.
  const int other = folder == 0 ? 1 : folder - 1;
  ASSERT_FALSE(list.IsReady(other));
  const TBitmap early = ImageOf(*ImageListOf(list.GetHandle()).Get(), other);
  EXPECT_TRUE(std::ranges::all_of(early.Pixels(), [](TPixel pixel) { return pixel >> 24 <= 1; }));
  list.Require(other);
  EXPECT_TRUE(list.IsReady(other));
  int width = 0;
  int height = 0;
  system->GetIconSize(&width, &height);
  EXPECT_EQ(height, TKivImageListSizeHelper::GetSize(si_Small));
  EXPECT_THROW(list.Add(TBitmap(20, 20)), EInvalidOperation);
  list.SetShareImages(true);
  EXPECT_FALSE(list.GetShareImages());
  // To a size of the platform's and on.
  int changes = 0;
  list.SetOnChange([&](TPersistent*) { ++changes; });
  list.ChangeScale(TKivImageListSizeHelper::GetSize(si_Large), 20);
  EXPECT_TRUE(list.GetSize() == si_Large && list.GetShareImages() && changes == 1);
  EXPECT_THROW(list.Clear(), EInvalidOperation);
  EXPECT_EQ(list.GetBitmap(folder).GetWidth(), TKivImageListSizeHelper::GetSize(si_Large));
  list.SetSize(si_FreeScaled);
  EXPECT_EQ(list.GetHeight(), TKivImageListSizeHelper::GetSize(si_Large));
  int after = 0;
  system->GetImageCount(&after);
  EXPECT_EQ(after, before);
  const std::unique_ptr<TList> scaled(TList::CreateScaled(si_Large, 144, nullptr));
  EXPECT_EQ(scaled->GetHeight(), 48);
  const std::unique_ptr<TList> free(TList::CreateScaled(si_FreeScaled, 144, nullptr));
  EXPECT_EQ(free->GetHeight(), 24);
}

TEST_F(SystemImageList, GivesPicturesInAnySizeAndShape) {
  const int folder = TList::GetFolderIconNumber(false);
  for (const int size : {1, 16, 24, 32, 48, 96, 256, 300}) {
    const TBitmap picture = TList::GetAsBitmap(folder, size, size);
    ASSERT_EQ(picture.GetWidth(), size);
    EXPECT_EQ(picture.GetAlphaFormat(), TAlphaFormat::afPremultiplied);
  }
  const TBitmap wide = TList::GetAsBitmap(folder, 60, 32, clLime);
  EXPECT_TRUE(wide.GetWidth() == 60 && wide.GetHeight() == 32);
  EXPECT_EQ(wide.ScanLine(16)[2], 0xFF00FF00U);
  EXPECT_NE(wide.ScanLine(16)[30], 0xFF00FF00U);
  EXPECT_EQ(wide.ScanLine(16)[57], 0xFF00FF00U);
  const TBitmap bare = TList::GetAsBitmap(folder, 60, 32);
  EXPECT_TRUE(bare.ScanLine(16)[2] == 0 && bare.ScanLine(16)[57] == 0 && bare.ScanLine(16)[30] >> 24 == 255);
  EXPECT_TRUE(TList::GetAsBitmap(1'000'000, 16, 16).IsEmpty() && TList::GetAsBitmap(-1, 16, 16).IsEmpty() &&
              TList::GetAsBitmap(folder, 0, 16).IsEmpty());
  TImageList target;
  target.SetSize(20, 24);
  EXPECT_EQ(TList::CopySystemImageTo(folder, target), 0);
  EXPECT_EQ(TList::CopySystemImageTo(-1, target), -1);
  EXPECT_EQ(target.GetCount(), 1);
  TImageList guest;
  guest.SetShareImages(true);
  guest.SetHandle(target.GetHandle());
  TList::ConvertTo32BitImageList(guest);
  EXPECT_TRUE(!guest.GetShareImages() && guest.GetHandle() != target.GetHandle());
  EXPECT_TRUE(guest.GetCount() == 1 && guest.GetWidth() == 20 && guest.GetHeight() == 24);
  const TBitmap moved = guest.GetBitmap(0);
  const TBitmap original = target.GetBitmap(0);
  EXPECT_TRUE(std::ranges::equal(
      moved.Pixels(), original.Pixels(), {}, [](TPixel pixel) { return pixel >> 24; },
      [](TPixel pixel) { return pixel >> 24; }));
}

TEST_F(SystemImageList, IsSavedWithItsSizeAndGivesAllBack) {
  TList list(si_ExtraLarge);
  const auto read = LoadComponentText(SaveComponentText(list));
  const auto* const loaded = dynamic_cast<TList*>(read.get());
  ASSERT_TRUE(loaded);
  EXPECT_EQ(loaded->GetSize(), si_ExtraLarge);
  const int folder = TList::GetFolderIconNumber(false);
  int before = 0;
  for (int round = 0; round < 4; ++round) {
    if (round == 1) before = test::CountGdiObjects(); // what the platform makes once has been made
    TList scaled(37, nullptr, si_FreeScaled);
    scaled.Require(folder);
    TList::GetAsBitmap(folder, 100, 50);
    TList::GetInstance(50)->GetBitmap(folder);
    Shutdown();
  }
  EXPECT_EQ(test::CountGdiObjects(), before);
}

} // namespace
} // namespace kiv
