#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace kiv::test {

/// Pairs of a name and a wildcard pattern, the same for every run and every system: names over few letters, so that
/// many match; patterns that are made of the name, of chance, or of both.
class TWildcardCorpus {
public:
  struct TPair {
    std::wstring name;
    std::wstring pattern;
  };

  TPair Next() {
    TPair pair{Text(L"ab.AB c\x00E4\x00C4;", 8), {}};
    const std::size_t parts = 1 + Below(3) * Below(2);
    for (std::size_t i = 0; i < parts; ++i) {
      if (i > 0) pair.pattern += L';';
      pair.pattern += Below(2) == 0 ? Text(L"ab.AB* ?;\x00E4*", 7) : Blurred(pair.name);
    }
    if (Below(40) == 0) pair.pattern += L"*.*";
    return pair;
  }

private:
  std::size_t Below(std::size_t limit) { return fRandom() % limit; }

  std::wstring Text(const std::wstring& letters, std::size_t most) {
    std::wstring text(Below(most + 1), L' ');
    for (wchar_t& c : text) c = letters[Below(letters.size())];
    return text;
  }
  // The name with some of it replaced by wildcards.
  std::wstring Blurred(const std::wstring& name) {
    std::wstring pattern;
    for (const wchar_t c : name) {
      switch (Below(6)) {
      case 0:
        pattern += L'?';
        break;
      case 1:
        pattern += L'*';
        break;
      case 2:
        pattern += L"*" + std::wstring(1, c);
        break;
      default:
        pattern += c;
      }
    }
    return pattern;
  }

  std::mt19937 fRandom{20240229};
};

} // namespace kiv::test
