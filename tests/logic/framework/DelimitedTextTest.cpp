#include <framework/StringList.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace kiv {
namespace {

std::vector<std::wstring> Texts(const TStrings& pList) {
  std::vector<std::wstring> texts;
  for (int i = 0; i < pList.GetCount(); ++i) texts.push_back(pList.Get(i));
  return texts;
}

TEST(DelimitedText, WhatIsWrittenReadsBackForEverySetting) {
  std::mt19937 random(5);
  const std::wstring letters(L"ab \t\r\n\0\"',;", 11);
  for (const bool strict : {false, true}) {
    for (const wchar_t delimiter : {L',', L';', L' ', L'\t', L'\0'}) {
      for (const wchar_t quote : {L'"', L'\''}) {
        TStringList list;
        list.SetStrictDelimiter(strict);
        list.SetDelimiter(delimiter);
        list.SetQuoteChar(quote);
        for (int round = 0; round < 300; ++round) {
          std::vector<std::wstring> texts(random() % 5);
          for (std::wstring& text : texts) {
            text.resize(random() % 4);
            for (wchar_t& c : text) c = letters[random() % letters.size()];
          }
          list.SetStrings(texts);
          const std::wstring written = list.GetDelimitedText();
          list.SetDelimitedText(written);
          ASSERT_EQ(Texts(list), texts) << testing::PrintToString(written) << " strict " << strict << " delimiter "
                                        << static_cast<int>(delimiter);
          list.SetCommaText(list.GetCommaText());
          ASSERT_EQ(Texts(list), texts);
        }
      }
    }
  }
}

TEST(DelimitedText, ReadsWhatPeopleWrite) {
  const struct {
    bool strict;
    std::wstring text;
    std::vector<std::wstring> entries;
  } cases[] = {
      {false, L"", {}},
      {false, L"  ", {}},
      {false, L" a , b c ", {L"a", L"b", L"c"}},
      {false, L"a,,b,", {L"a", L"", L"b", L""}},
      {false, L",", {L"", L""}},
      {false, L"\"a \"\"b\"\"\" , c", {L"a \"b\"", L"c"}},
      {false, L"\"a\"b", {L"a", L"b"}},
      {false, L"\"never closed, x", {L"never closed, x"}},
      {false, L"a\"b\"", {L"a\"b\""}},
      {true, L" a , b c ", {L" a ", L" b c "}},
      {true, L"  ", {L"  "}},
      {true, L"\"a,b\",c", {L"a,b", L"c"}},
      {true, L"\"a\"b,c", {L"ab", L"c"}},
      {true, L"a\r\n,b", {L"a\r\n", L"b"}},
      {true, L",,", {L"", L"", L""}},
  };
  for (const auto& c : cases) {
    TStringList list;
    list.SetStrictDelimiter(c.strict);
    list.SetDelimitedText(c.text);
    EXPECT_EQ(Texts(list), c.entries) << testing::PrintToString(c.text) << " strict " << c.strict;
  }
}

} // namespace
} // namespace kiv
