#include <platform/Text.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

using namespace std::string_literals;

std::wstring CodePoint(char32_t c) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (c >= 0x10000) {
      return {static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10U)),
              static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF))};
    }
  }
  return {static_cast<wchar_t>(c)};
}

TEST(Text, EveryScalarValueSurvivesTheWayThroughUtf8) {
  for (char32_t c = 1; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 97) {
    if (c >= 0xD800 && c <= 0xDFFF) continue;
    const std::wstring text = L"a" + CodePoint(c) + L"z";
    EXPECT_TRUE(IsWellFormed(text));
    ASSERT_EQ(FromUtf8(ToUtf8(text)), text) << std::hex << static_cast<unsigned>(c);
  }
  EXPECT_EQ(ToUtf8(CodePoint(0x1F4C1)), "\xF0\x9F\x93\x81");
  EXPECT_EQ(ToUtf8(L"\x00E4\x20AC"), "\xC3\xA4\xE2\x82\xAC");
}

TEST(Text, LoneSurrogatesBecomeTheReplacementCharacter) {
  const std::wstring high(1, static_cast<wchar_t>(0xD800));
  const std::wstring low(1, static_cast<wchar_t>(0xDC00));
  for (const auto& text : {high, low, high + L"x", low + high, high + high}) EXPECT_FALSE(IsWellFormed(text));
  EXPECT_EQ(ToUtf8(L"a" + high + L"b"), "a\xEF\xBF\xBD"
                                        "b");
  EXPECT_EQ(ToUtf8(low + high), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Text, MalformedBytesAreReplacedOneByOneAndNothingIsSwallowed) {
  const std::wstring r(1, static_cast<wchar_t>(0xFFFD));
  const struct {
    std::string bytes;
    std::wstring text;
  } cases[] = {
      {"", L""},
      {"a\x80z", L"a" + r + L"z"},         // a continuation without a lead
      {"\xC0\xAF", r + r},                 // overlong "/"
      {"\xE0\x80\xAF", r + r + r},         // overlong in three bytes
      {"\xED\xA0\x80", r + r + r},         // an encoded surrogate
      {"\xF5\x80\x80\x80", r + r + r + r}, // beyond the last code point
      {"\xF4\x90\x80\x80", r + r + r + r}, // just beyond it
      {"\xE2\x82", r + r},                 // cut off
      {"\xE2\x82"
       "A",
       r + r + L"A"}, // cut off by a letter
      {"\xFFok", r + L"ok"},
      {"nul\0in"s, L"nul\0in"s},
  };
  for (const auto& c : cases) EXPECT_EQ(FromUtf8(c.bytes), c.text) << testing::PrintToString(c.bytes);
}

} // namespace
} // namespace kiv
