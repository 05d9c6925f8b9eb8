#include <walker/NameFilter.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

TEST(NameFilter, ReadsBackWhatItWasGivenAndMatchesByAnyPattern) {
  const struct {
    const wchar_t *given, *read, *name;
    bool matches;
  } cases[] = {
      {L"", L"*", L"any", true},
      {L"*", L"*", L"any", true},
      {L"*.txt;*.doc", L"*.txt;*.doc", L"b.DOC", true},
      {L"*.txt;*.doc", L"*.txt;*.doc", L"b.docx", false},
      {L"*.txt;", L"*.txt", L"a.txt", true},
      {L"a;;b", L"a;;b", L"b", true},
      {L"a;;b", L"a;;b", L"c", false},
      {L";", L"", L"c", false},
      {L";*", L";*", L"c", true},
      {L"*;*.txt", L"*;*.txt", L"a.exe", true},
      {L"a?", L"a?", L"a", false},
      {L"*.txt", L"*.txt", L"", false},
      {L"\x05D0*", L"\x05D0*", L"\x05D0.txt", true},
  };
  TNameFilter filter; // one for all: nothing of an earlier text stays
  for (const auto& c : cases) {
    filter.SetText(c.given);
    EXPECT_EQ(filter.GetText(), c.read);
    EXPECT_EQ(filter.Matches(c.name), c.matches) << testing::PrintToString(std::wstring(c.given));
    EXPECT_EQ(filter.IsEmpty(), filter.GetText() == L"*");
  }
}

} // namespace
} // namespace kiv
