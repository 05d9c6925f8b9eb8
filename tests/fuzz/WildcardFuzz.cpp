#include <platform/Text.h>
#include <platform/fill/PathText.h>
#include <tests/doubles/PlainWildcards.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

// A name and a pattern, with a line end between.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize) {
  std::wstring text = kiv::FromUtf8(std::string_view(reinterpret_cast<const char*>(pData), pSize));
  std::erase(text, L'\0');
  const std::size_t end = std::min(text.find(L'\n'), text.size());
  const std::wstring name = text.substr(0, end);
  const std::wstring pattern = text.substr(std::min(end + 1, text.size()));
  if (name.size() * pattern.size() > 100'000) return 0; // the plain way takes too long
  const bool matches = kiv::PathText::MatchSpec(name.c_str(), pattern.c_str());
  if (matches != kiv::test::ListMatchesPlainly(name, pattern)) std::abort();
  return 0;
}
