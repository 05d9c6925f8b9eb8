#pragma once

#include <platform/Export.h>

#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// Patterns that names are let through by, written with ";" between them: "*.txt;*.doc". One thread at a time.
class KIV_EXPORT TNameFilter {
public:
  /// Empty and "*" mean no patterns. Any other text is cut at each ";"; what stands between two of them is a pattern as
  /// it is, blanks and nothing at all included. A last ";" may be there or not.
  void SetText(std::wstring_view pText);
  /// "*" without patterns.
  std::wstring GetText() const;

  bool IsEmpty() const noexcept { return fPatterns.empty(); }
  /// Whether one of the patterns matches the name (see MatchPattern). Without patterns all names do.
  bool Matches(const std::wstring& pName) const;

private:
  std::vector<std::wstring> fPatterns;
};

} // namespace kiv
