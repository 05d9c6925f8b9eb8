#include <core/PathUtils.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

TEST(Addresses, AreRecognized) {
  enum : unsigned { Url = 1, V4 = 2, V6 = 4 };
  const struct {
    std::wstring text;
    unsigned kinds;
  } cases[] = {
      {L"", 0},
      {L"C:\\a", 0},
      {L"\\\\srv\\a", 0},
      {L"ab:", 0},
      {L"ab:c", Url},
      {L"FILE:\\", Url},
      {L"files:\\", 0},
      {L"search-ms:a", 0},
      {L"http:\nx", Url},
      {L"http:[::1]", 0},
      {L"\x017Fhell:x", 0},
      {L"127.0.0.1", V4},
      {L"001.02.3.255\n", V4},
      {L"1.2.3.4\n\n", 0},
      {L"1.2.3.256", 0},
      {L"1.2.3", 0},
      {L" 1.2.3.4", 0},
      {L"::", V6},
      {L"fe80::1%eth 0", Url | V6},
      {L"fe80::1%", Url},
      {L" \n1:2:3:4:5:6:7:8\r\n", V6},
      {L"1:2:3:4:5:6:7::", V6},
      {L"1::3:4:5:6:7:8", V6},
      {L"1:2:3:4:5:6:7:8:9", 0},
      {L"1::2::3", 0},
      {L"::ffff:1.2.3.4", V6},
      {L"1:2:3:4:5:6:1.2.3.4", V6},
      {L"1:2:3:4:5:6:7:1.2.3.4", 0},
      {L"::01.2.3.4", 0},
      {L"12345::", Url},
      {L":1", 0},
      {L"\x0661::", 0},
  };
  for (const auto& c : cases) {
    const unsigned kinds = (TPathUtils::IsURL(c.text) ? Url : 0U) | (TPathUtils::IsValidIPv4(c.text) ? V4 : 0U) |
                           (TPathUtils::IsValidIPv6(c.text) ? V6 : 0U);
    EXPECT_EQ(kinds, c.kinds) << c.text;
    EXPECT_EQ(TPathUtils::IsValidIP(c.text), (c.kinds & (V4 | V6)) != 0) << c.text;
  }
  // Text of any length is read once, without a stack to run out of.
  const std::wstring much(1'000'000, L'1');
  EXPECT_FALSE(TPathUtils::IsValidIPv6(much + L":"));
  EXPECT_FALSE(TPathUtils::IsValidIPv4(much + L"."));
  EXPECT_TRUE(TPathUtils::IsURL(much + L":x"));
  EXPECT_TRUE(TPathUtils::IsValidIPv6(L"::%" + std::wstring(1'000'000, L'%')));
}

} // namespace
} // namespace kiv
