#include <walker/NameFilter.h>

#include <core/PathFunctions.h>

#include <algorithm>

namespace kiv {

namespace {

constexpr wchar_t Delimiter = L';';
constexpr std::wstring_view Everything = L"*";

} // namespace

void TNameFilter::SetText(std::wstring_view pText) {
  fPatterns.clear();
  if (pText == Everything) return;
  while (!pText.empty()) {
    const std::size_t end = std::min(pText.find(Delimiter), pText.size());
    fPatterns.emplace_back(pText.substr(0, end));
    pText.remove_prefix(std::min(end + 1, pText.size()));
  }
}

std::wstring TNameFilter::GetText() const {
  if (IsEmpty()) return std::wstring(Everything);
  std::wstring text = fPatterns.front();
  for (std::size_t i = 1; i < fPatterns.size(); ++i) (text += Delimiter) += fPatterns[i];
  return text;
}

bool TNameFilter::Matches(const std::wstring& pName) const {
  return IsEmpty() || std::any_of(fPatterns.begin(), fPatterns.end(),
                                  [&](const std::wstring& pattern) { return MatchPattern(pName, pattern); });
}

} // namespace kiv
