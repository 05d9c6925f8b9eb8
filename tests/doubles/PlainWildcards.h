#pragma once

#include <platform/LetterCase.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace kiv::test {

/// What a wildcard pattern means, by the plainest means: a table of which part of it matches which part of the name.
inline bool MatchesPlainly(const std::wstring& pName, const std::wstring& pPattern) {
  std::vector<bool> matches(pName.size() + 1, false); // the first characters of the name, by the pattern so far
  matches[0] = true;
  for (const wchar_t p : pPattern) {
    std::vector<bool> next(pName.size() + 1, false);
    for (std::size_t i = 0; i <= pName.size(); ++i) {
      if (p == L'*') {
        next[i] = matches[i] || (i > 0 && next[i - 1]);
      } else {
        next[i] = i > 0 && matches[i - 1] && (p == L'?' || ToUpperCase(p) == ToUpperCase(pName[i - 1]));
      }
    }
    matches = std::move(next);
  }
  return matches[pName.size()];
}

/// The same for a list of patterns.
inline bool ListMatchesPlainly(const std::wstring& pName, std::wstring pList) {
  if (pList == L"*.*") return true;
  while (!pList.empty()) {
    const std::size_t end = std::min(pList.find(L';'), pList.size());
    const std::wstring pattern = pList.substr(0, end);
    if (MatchesPlainly(pName, pattern.substr(std::min(pattern.find_first_not_of(L' '), pattern.size())))) return true;
    pList.erase(0, end + 1);
  }
  return false;
}

} // namespace kiv::test
