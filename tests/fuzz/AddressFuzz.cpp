#include <core/PathUtils.h>
#include <platform/Text.h>
#include <tests/doubles/AddressPatterns.h>
#include <tests/doubles/PatternEngine.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

// The tests of addresses accept what their patterns match.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize) {
  using kiv::TPathUtils;
  static const kiv::test::TPatternEngine url(kiv::test::UrlPattern, true);
  static const kiv::test::TPatternEngine ipv4(kiv::test::Ipv4Pattern, false);
  static const kiv::test::TPatternEngine ipv6(kiv::test::Ipv6Pattern, true);
  const std::wstring text = kiv::FromUtf8(std::string_view(reinterpret_cast<const char*>(pData), pSize));
  const bool may_be_url = text.size() >= 4 && text[1] != L':' && text[1] != L'\\';
  if (TPathUtils::IsURL(text) != (may_be_url && url.Matches(text).value_or(false))) std::abort();
  if (TPathUtils::IsValidIPv4(text) != ipv4.Matches(text).value_or(false)) std::abort();
  const auto expected = ipv6.Matches(text);
  if (expected.has_value() && TPathUtils::IsValidIPv6(text) != *expected) std::abort();
  return 0;
}
