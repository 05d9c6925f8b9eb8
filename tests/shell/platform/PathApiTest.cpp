#include <platform/PathApi.h>
#include <platform/fill/PathText.h>

#include <doubles/ScopedTempFolder.h>
#include <doubles/WildcardCorpus.h>
#include <platform/Types.h>

#include <shlwapi.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

// Logic that matches by the stand-in elsewhere finds here what it found there.
TEST(PathApi, ThePlatformMatchesWildcardsAsTheStandInDoes) {
  test::TWildcardCorpus corpus;
  int matched = 0;
  constexpr int count = 200'000;
  for (int i = 0; i < count; ++i) {
    const auto [name, pattern] = corpus.Next();
    const bool expected = PathMatchSpecW(name.c_str(), pattern.c_str()) != FALSE;
    matched += expected ? 1 : 0;
    ASSERT_EQ(PathText::MatchSpec(name.c_str(), pattern.c_str()), expected) << name << L" ~ " << pattern;
  }
  EXPECT_GT(matched, count / 5);
  EXPECT_LT(matched, count / 5 * 4);
}

// One letter stands for another in the same way.
TEST(PathApi, ThePlatformFoldsLettersAsTheStandInDoes) {
  for (unsigned code = 1; code < 0x10000; ++code) {
    const auto letter = static_cast<wchar_t>(code);
    if (letter == L'*' || letter == L'?' || letter == L';' || letter == L' ') continue;
    const std::wstring name(1, letter);
    for (const wchar_t* const other : {L"i", L"k", L"s"}) {
      ASSERT_EQ(PathText::MatchSpec(other, name.c_str()), PathMatchSpecW(other, name.c_str()) != FALSE) << code;
    }
    std::wstring upper = name;
    CharUpperBuffW(upper.data(), 1);
    ASSERT_EQ(PathText::MatchSpec(name.c_str(), upper.c_str()), PathMatchSpecW(name.c_str(), upper.c_str()) != FALSE)
        << code;
  }
}

// What it makes of them is the stand-in's table.
TEST(PathApi, CanonicalizesAndCombinesOrLeavesTheResultAlone) {
  std::wstring result = L"kept";
  EXPECT_FALSE(PathApi::Canonicalize(std::wstring(260, L'x'), result));
  EXPECT_FALSE(PathApi::Canonicalize(std::wstring_view(L"a\0b", 3), result));
  EXPECT_FALSE(PathApi::Combine(L"C:\\", std::wstring(260, L'x'), result));
  EXPECT_EQ(result, L"kept");
  EXPECT_TRUE(PathApi::Canonicalize(L"C:\\..a\\b\\.", result)); // which not every platform gets right
  EXPECT_EQ(result, L"C:\\..a\\b");
  EXPECT_TRUE(PathApi::Combine(L"C:\\a", L"..\\b", result));
  EXPECT_EQ(result, L"C:\\b");
}

TEST(PathApi, TheDiskTellsNamesAndAttributes) {
  test::ScopedTempFolder temp;
  const std::wstring file = temp.MakeFile(L"a rather long name.extension");
  wchar_t short_path[MAX_PATH];
  const DWORD length = GetShortPathNameW(file.c_str(), short_path, MAX_PATH);
  ASSERT_TRUE(length > 0 && length < MAX_PATH);
  EXPECT_TRUE(PathApi::LongPathName(short_path).ends_with(L"\\a rather long name.extension"));
  EXPECT_EQ(PathApi::LongPathName(temp.PathOf(L"none~1")), L"");
  EXPECT_EQ(PathApi::FileAttributes(temp.Path()) & FILE_ATTRIBUTE_DIRECTORY, DWORD{FILE_ATTRIBUTE_DIRECTORY});
  EXPECT_EQ(PathApi::FileAttributes(temp.PathOf(L"none")), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(PathApi::ListedAttributes(file) & FILE_ATTRIBUTE_DIRECTORY, 0U);
  EXPECT_EQ(PathApi::ListedAttributes(temp.PathOf(L"none")), INVALID_FILE_ATTRIBUTES);
}

} // namespace
} // namespace kiv
