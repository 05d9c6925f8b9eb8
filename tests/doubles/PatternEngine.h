#pragma once

#define PCRE2_CODE_UNIT_WIDTH 32
#include <pcre2.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kiv::test {

/// A regular expression as an engine of long standing understands it, for tests of what is written by hand in its
/// place. Text is a row of code units without more meaning (neither PCRE2_UTF nor PCRE2_UCP): classes and case are
/// ASCII's, any unit can be matched, a lone surrogate too. The line feed alone is a line end: "." doesn't match it, and
/// "$" stands at the end and in front of a line feed there.
class TPatternEngine {
  static_assert(sizeof(wchar_t) == sizeof(PCRE2_UCHAR32));

public:
  TPatternEngine(std::wstring_view pPattern, bool pIgnoreCase) {
    const std::unique_ptr<pcre2_compile_context, decltype(&pcre2_compile_context_free)> context(
        pcre2_compile_context_create(nullptr), &pcre2_compile_context_free);
    pcre2_set_newline(context.get(), PCRE2_NEWLINE_LF);
    int error = 0;
    PCRE2_SIZE where = 0;
    fCode.reset(pcre2_compile(Units(pPattern), pPattern.size(), pIgnoreCase ? PCRE2_CASELESS : 0, &error, &where,
                              context.get()));
    if (!fCode) throw std::runtime_error("The pattern is wrong at " + std::to_string(where));
    fMatch.reset(pcre2_match_data_create(1, nullptr));
  }

  /// Nothing if the engine gave up.
  std::optional<bool> Matches(std::wstring_view pText) const {
    const int result = pcre2_match(fCode.get(), Units(pText), pText.size(), 0, 0, fMatch.get(), nullptr);
    if (result < PCRE2_ERROR_NOMATCH) return std::nullopt;
    return result != PCRE2_ERROR_NOMATCH;
  }

private:
  static PCRE2_SPTR Units(std::wstring_view text) {
    static constexpr wchar_t empty = L'\0';
    return reinterpret_cast<PCRE2_SPTR>(text.data() ? text.data() : &empty);
  }

  std::unique_ptr<pcre2_code, decltype(&pcre2_code_free)> fCode{nullptr, &pcre2_code_free};
  std::unique_ptr<pcre2_match_data, decltype(&pcre2_match_data_free)> fMatch{nullptr, &pcre2_match_data_free};
};

} // namespace kiv::test
