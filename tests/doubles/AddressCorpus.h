#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace kiv::test {

/// Texts that are addresses or nearly so, the same for every run: made by their grammar with its bounds overstepped now
/// and then, a part of them then changed at random places.
class TAddressCorpus {
public:
  explicit TAddressCorpus(unsigned pSeed) : fRandom(pSeed) {}

  std::wstring Ipv4() { return Mutated(Quad() + End()); }
  std::wstring Ipv6() {
    std::wstring text = OneIn(8) ? Space() : L"";
    const bool compressed = !OneIn(4);
    const std::size_t before = compressed ? Below(9) : (OneIn(2) ? 7 : 5) + Below(3);
    for (std::size_t i = 0; i < before; ++i) text += (i > 0 ? L":" : L"") + Group();
    if (compressed) {
      text += L"::";
      const std::size_t after = Below(before < 8 ? 9 - before : 2);
      for (std::size_t i = 0; i < after; ++i) text += (i > 0 ? L":" : L"") + Group();
    }
    if (OneIn(3)) text += (text.ends_with(L':') ? L"" : L":") + Quad();
    if (OneIn(4)) text += L"%" + (OneIn(6) ? Space() : Pick({L"eth0", L"1", L"%", L" x ", L"\x00E4", L"a:b"}));
    return Mutated(text + End());
  }
  std::wstring Url() {
    std::wstring text = Pick({L"", L"a", L"http", L"file", L"FILE", L"fILe", L"x1", L"42", L"shell", L"\x017F\x212A",
                              L"a-b", L"file2", L"fil", L"tofile"});
    text += Pick({L":", L":", L":", L":\\", L"::", L"", L":/", L": ", L":\n", L":{", L":[", L":`", L":\""});
    return Mutated(text + Pick({L"", L"x", L"//host", L"\\", L"\\dir\\a", L"\x00E4"}));
  }

private:
  std::size_t Below(std::size_t limit) { return fRandom() % limit; }
  bool OneIn(std::size_t chances) { return Below(chances) == 0; }
  std::wstring Pick(const std::vector<std::wstring>& texts) { return texts[Below(texts.size())]; }

  std::wstring Group() {
    std::wstring group(OneIn(30) ? Below(6) : 1 + Below(4), L'0');
    for (wchar_t& c : group) c = std::wstring(L"0123456789abcdefABCDEF")[Below(22)];
    return group;
  }
  std::wstring Octet() {
    return OneIn(2) ? std::to_wstring(Below(OneIn(20) ? 1100 : 256))
                    : Pick({L"0", L"9", L"00", L"01", L"001", L"099", L"199", L"200", L"249", L"250", L"255", L"256",
                            L"260", L"300", L"", L"1000", L"\x0661"});
  }
  std::wstring Quad() {
    std::wstring text = Octet();
    for (std::size_t i = OneIn(20) ? 2 + Below(3) : 3; i > 0; --i) text += L"." + Octet();
    return text;
  }
  std::wstring Space() {
    return Pick({L" ", L"\t", L"\n", L"\r\n", L"\v\f", L"\x0085", L"\x00A0", L"\x2028", L"\n\n", L" \n"});
  }
  std::wstring End() { return OneIn(6) ? Space() : L""; }
  std::wstring Mutated(std::wstring text) {
    for (std::size_t i = OneIn(3) ? 1 + Below(3) : 0; i > 0; --i) {
      const std::size_t at = Below(text.size() + 1);
      const std::wstring letters = L":.%0159afgKF\\\n \x017F\x212A\x00E4]~" + std::wstring(1, L'\0');
      if (OneIn(2))
        text.insert(at, 1, letters[Below(letters.size())]);
      else if (at < text.size())
        text.erase(at, 1);
    }
    return text;
  }

  std::mt19937 fRandom;
};

} // namespace kiv::test
