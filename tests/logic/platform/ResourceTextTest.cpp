#include <platform/Texts.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>

namespace kiv {
namespace {

TEST(ResourceText, IsEnglishUntilItIsReplaced) {
  EXPECT_EQ(_sNewFolder.Text(), L"New Folder");
  EXPECT_EQ(_sInFolder.Text(), L"In Folder");
  EXPECT_EQ(_sArrangeIconsBy.Text(), L"Arrange Icons By");
  EXPECT_TRUE(ReplaceResourceText(L"NewFolder", L"Neuer Ordner"));
  EXPECT_TRUE(ReplaceResourceText(L"InFolder", L""));
  EXPECT_FALSE(ReplaceResourceText(L"NoSuchText", L"x"));
  const std::wstring shown = _sNewFolder;
  EXPECT_EQ(shown, L"Neuer Ordner");
  EXPECT_EQ(_sNewFolder.English(), L"New Folder");
  EXPECT_EQ(_sInFolder.Text(), L"");
  RestoreResourceTexts();
  EXPECT_EQ(_sNewFolder.Text(), L"New Folder");
  EXPECT_EQ(_sInFolder.Text(), L"In Folder");
}

TEST(ResourceText, AllOfThemCanBeListedAsLongAsTheyLive) {
  const auto names = [] {
    std::vector<std::wstring> all;
    for (const TResourceText* text : ResourceTexts()) all.emplace_back(text->Name());
    return all;
  };
  const auto before = names();
  EXPECT_EQ(std::count(before.begin(), before.end(), L"ArrangeIconsBy"), 1);
  {
    const TResourceText own(L"OfATest", L"English");
    EXPECT_EQ(names().size(), before.size() + 1);
    EXPECT_TRUE(ReplaceResourceText(L"OfATest", L"other"));
    EXPECT_EQ(own.Text(), L"other");
  }
  EXPECT_EQ(names(), before);
  EXPECT_FALSE(ReplaceResourceText(L"OfATest", L"other"));
}

TEST(ResourceText, MayBeReadWhileItIsReplaced) {
  std::thread writer([] {
    for (int i = 0; i < 500; ++i) ReplaceResourceText(L"NewFolder", std::wstring(static_cast<std::size_t>(i), L'x'));
  });
  for (int i = 0; i < 500; ++i) {
    const std::wstring text = _sNewFolder.Text();
    EXPECT_TRUE(text == L"New Folder" || text.find_first_not_of(L'x') == std::wstring::npos);
  }
  writer.join();
  RestoreResourceTexts();
}

} // namespace
} // namespace kiv
