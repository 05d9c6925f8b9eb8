#include <forms/ShortCut.h>

#include <gtest/gtest.h>

namespace kiv {
namespace {

TEST(ShortCut, HasATextThatLeadsBack) {
  const struct {
    TShortCut shortCut;
    const wchar_t* text;
  } cases[] = {
      {0x2E, L"Del"},
      {'C' | scCtrl, L"Ctrl+C"},
      {0x7B | scShift | scAlt, L"Shift+Alt+F12"},
      {0x87, L"F24"},
      {'9' | scCtrl | scShift | scAlt, L"Shift+Ctrl+Alt+9"},
      {0x20 | scCtrl, L"Ctrl+Space"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ShortCutToText(c.shortCut), c.text);
    EXPECT_EQ(TextToShortCut(c.text), c.shortCut);
  }
  EXPECT_EQ(TextToShortCut(L"alt+CTRL+pgup"), 0x21 | scAlt | scCtrl);
  for (const wchar_t* text : {L"", L"Ctrl+", L"Ctrl", L"F25", L"F0", L"Ctrl+AB", L"X+Y"}) {
    EXPECT_EQ(TextToShortCut(text), scNone);
  }
  EXPECT_EQ(ShortCutToText(scNone), L"");
  EXPECT_EQ(ShortCutToText(0x88 | scCtrl), L"");
  EXPECT_EQ(MakeShortCut(0x141, {}), scNone);
}

} // namespace
} // namespace kiv
