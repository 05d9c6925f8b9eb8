#include <platform/fill/ElementName.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

TEST(ElementName, StaysInItsFolder) {
  for (const wchar_t* name : {L"a", L".hidden", L"...", L"two words", L"\xD83D\xDE00", L"\xD800", L"\x05D0\x0301"}) {
    EXPECT_TRUE(IsElementName(name)) << name;
  }
  for (const wchar_t* name : {L"", L".", L"..", L"a\\b", L"a/b", L"..\\a", L"\\a", L"C:", L"a:stream", L"a:b:$DATA",
                              L"*", L"?", L"a\"", L"<", L">", L"|", L"tab\t"}) {
    EXPECT_FALSE(IsElementName(name)) << name;
    EXPECT_FALSE(IsNewElementName(name)) << name;
  }
  EXPECT_FALSE(IsElementName(std::wstring(L"a\0b", 3)));
}

TEST(ElementName, ANewOneIsOneThatCanBeGotRidOf) {
  for (const wchar_t* name : {L"a", L".hidden", L"console", L"COM", L"COM0", L"COM10", L"my nul", L"LPT", L"nul_"}) {
    EXPECT_TRUE(IsNewElementName(name)) << name;
  }
  for (const wchar_t* name : {L"end ", L"end.", L"...", L"NUL", L"nul", L"Con.txt", L"aux .tar.gz", L"COM1", L"lpt9.x",
                              L"COM\x00B2", L"conout$"}) {
    EXPECT_TRUE(IsElementName(name)) << name;
    EXPECT_FALSE(IsNewElementName(name)) << name;
  }
  EXPECT_TRUE(IsNewElementName(std::wstring(255, L'x')));
  EXPECT_FALSE(IsNewElementName(std::wstring(256, L'x')));
}

} // namespace
} // namespace kiv
