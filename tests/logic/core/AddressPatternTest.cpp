#include <core/PathUtils.h>

#include <doubles/AddressCorpus.h>
#include <doubles/AddressPatterns.h>
#include <doubles/PatternEngine.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <optional>
#include <string>

namespace kiv {
namespace {

constexpr int Count = 150'000;

std::string Units(const std::wstring& text) {
  std::string units;
  for (const wchar_t c : text) {
    char unit[16];
    std::snprintf(unit, sizeof(unit), c > 0x20 && c < 0x7F ? "%c" : "<%04X>", static_cast<unsigned>(c));
    units += unit;
  }
  return units;
}

// Runs a test over texts of a kind, and beside it what it stands for.
void Compare(bool (*tested)(std::wstring_view), const std::function<std::optional<bool>(const std::wstring&)>& meaning,
             std::wstring (test::TAddressCorpus::*next)()) {
  test::TAddressCorpus corpus(20240301);
  int accepted = 0;
  for (int i = 0; i < Count; ++i) {
    const std::wstring text = (corpus.*next)();
    const auto expected = meaning(text);
    ASSERT_TRUE(expected.has_value());
    ASSERT_EQ(tested(text), *expected) << Units(text);
    accepted += *expected ? 1 : 0;
  }
  EXPECT_GT(accepted, Count / 10);
  EXPECT_LT(accepted, Count / 10 * 9);
}

TEST(AddressPatterns, AcceptTheSameUrls) {
  const test::TPatternEngine engine(test::UrlPattern, true);
  const auto meaning = [&engine](const std::wstring& text) {
    const bool may_be = text.size() >= 4 && text[1] != L':' && text[1] != L'\\';
    return may_be ? engine.Matches(text) : std::optional(false);
  };
  Compare([](std::wstring_view text) { return TPathUtils::IsURL(text); }, meaning, &test::TAddressCorpus::Url);
}

TEST(AddressPatterns, AcceptTheSameIpv4Addresses) {
  const test::TPatternEngine engine(test::Ipv4Pattern, false);
  Compare([](std::wstring_view text) { return TPathUtils::IsValidIPv4(text); },
          [&engine](const std::wstring& text) { return engine.Matches(text); }, &test::TAddressCorpus::Ipv4);
}

TEST(AddressPatterns, AcceptTheSameIpv6Addresses) {
  const test::TPatternEngine engine(test::Ipv6Pattern, true);
  Compare([](std::wstring_view text) { return TPathUtils::IsValidIPv6(text); },
          [&engine](const std::wstring& text) { return engine.Matches(text); }, &test::TAddressCorpus::Ipv6);
}

} // namespace
} // namespace kiv
