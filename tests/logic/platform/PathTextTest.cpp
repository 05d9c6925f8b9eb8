#include <platform/fill/PathText.h>

#include <doubles/PlainWildcards.h>
#include <doubles/WildcardCorpus.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

std::wstring Canonicalized(std::wstring_view path) {
  wchar_t buffer[PathText::Longest];
  return {buffer, PathText::Canonicalize(path, buffer)};
}

std::wstring Combined(std::wstring_view directory, std::wstring_view file) {
  wchar_t buffer[PathText::Longest];
  return {buffer, PathText::Combine(directory, file, buffer)};
}

TEST(PathText, CanonicalizesAsThePlatformSays) {
  const struct {
    const wchar_t *path, *expected;
  } cases[] = {
      // The platform's own examples.
      {L"A:\\name_1\\.\\name_2\\..\\name_3", L"A:\\name_1\\name_3"},
      {L"A:\\name_1\\..\\name_2\\.\\name_3", L"A:\\name_2\\name_3"},
      {L"A:\\name_1\\name_2\\.\\name_3\\..\\name_4", L"A:\\name_1\\name_2\\name_4"},
      {L"A:\\name_1\\.\\name_2\\.\\name_3\\..\\name_4\\..", L"A:\\name_1\\name_2"},
      {L"C:\\..", L"C:\\"},
      // Roots.
      {L"", L"\\"},
      {L"C:", L"C:\\"},
      {L"C:\\..\\..\\x", L"C:\\x"},
      {L"C:foo\\..\\bar", L"C:\\bar"},
      {L"C:.\\x", L"C:x"},
      {L"\\..\\x", L"\\x"},
      {L"\\x\\..", L"\\"},
      {L"\\\\srv\\share\\..\\..\\..\\x", L"\\\\srv\\x"},
      {L"\\\\..\\x", L"\\\\x"},
      {L"\\\\08::", L"\\\\08::"},
      {L"\\\\?\\C:\\a\\..\\..\\x", L"\\\\?\\C:\\x"},
      {L"\\\\?\\C:\\..", L"\\\\?\\C:\\"},
      {L"\\\\?\\.\\C:", L"\\\\?\\C:\\"},
      {L"\\\\?\\unc\\srv\\share\\..\\..\\x", L"\\\\?\\unc\\srv\\x"},
      {L"\\\\.\\pipe\\a\\..\\b", L"\\\\.\\pipe\\b"},
      // Relative paths.
      {L"a\\..\\b", L"\\b"},
      {L"..", L"\\"},
      {L".\\x", L"x"},
      {L".", L"\\"},
      // Delimiters stay, and names that only look relative.
      {L"C:\\a\\b\\..\\", L"C:\\a\\"},
      {L"C:\\a\\.\\", L"C:\\a\\"},
      {L"C:\\a\\\\b", L"C:\\a\\\\b"},
      {L"C:\\...\\..a\\.b\\c..\\d.", L"C:\\...\\..a\\.b\\c..\\d."},
      {L"a/../b", L"a/../b"},
  };
  for (const auto& c : cases) EXPECT_EQ(Canonicalized(c.path), c.expected) << c.path;
  const std::wstring longest = L"C:\\" + std::wstring(PathText::Longest - 3, L'x');
  EXPECT_EQ(Canonicalized(longest), longest);
  EXPECT_EQ(Canonicalized(longest + L"x"), L"");
}

TEST(PathText, CombinesAsThePlatformSays) {
  const struct {
    const wchar_t *directory, *file, *expected;
  } cases[] = {
      {L"C:", L"One\\Two\\Three", L"C:\\One\\Two\\Three"},
      {L"C:\\d", L"..\\..\\x", L"C:\\x"},
      {L"C:\\d\\", L".\\x", L"C:\\d\\x"},
      {L"C:\\d\\e", L"\\x", L"C:\\x"},
      {L"\\\\srv\\share\\d", L"\\x", L"\\\\srv\\share\\x"},
      {L"C:\\d", L"D:\\x", L"D:\\x"},
      {L"C:\\d", L"\\\\srv\\x", L"\\\\srv\\x"},
      {L"C:\\d", L"", L"C:\\d"},
      {L"", L"a\\.\\b", L"a\\b"},
      {L"", L"", L"\\"},
  };
  for (const auto& c : cases) EXPECT_EQ(Combined(c.directory, c.file), c.expected) << c.directory << L" + " << c.file;
  const std::wstring half(PathText::Longest / 2 - 1, L'x');
  EXPECT_EQ(Combined(L"C:" + half, half).size(), 2 + 2 * half.size() + 1);
  EXPECT_EQ(Combined(L"C:" + half, half + L"x"), L"");
}

TEST(PathText, MatchesWildcardsAsTheirMeaningIs) {
  test::TWildcardCorpus corpus;
  int matched = 0;
  constexpr int count = 100'000;
  for (int i = 0; i < count; ++i) {
    const auto [name, pattern] = corpus.Next();
    const bool expected = test::ListMatchesPlainly(name, pattern);
    matched += expected ? 1 : 0;
    ASSERT_EQ(PathText::MatchSpec(name.c_str(), pattern.c_str()), expected) << name << L" ~ " << pattern;
  }
  EXPECT_GT(matched, count / 5);
  EXPECT_LT(matched, count / 5 * 4);
  // One that takes for ever if every "*" is tried at every place.
  EXPECT_FALSE(PathText::MatchSpec(std::wstring(2000, L'a').c_str(), L"*a*a*a*a*a*a*a*a*a*a*a*a*b"));
}

} // namespace
} // namespace kiv
