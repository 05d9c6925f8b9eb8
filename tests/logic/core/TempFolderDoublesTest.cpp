#include <doubles/ScopedTempFolder.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace kiv::test {
namespace {

namespace fs = std::filesystem;

// The platform's own view of a path, long ones included.
fs::path Real(const std::wstring& path) {
#if defined(_WIN32)
  return L"\\\\?\\" + path;
#else
  return path;
#endif
}

void MakeReadOnly(const std::wstring& path) {
#if defined(_WIN32)
  // The standard library's permissions don't reach long paths here, and know no hidden or system files.
  ASSERT_TRUE(
      SetFileAttributesW(Real(path).c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
#else
  fs::permissions(path, fs::perms::none);
#endif
}

TEST(ScopedTempFolder, MakesWhatIsAskedForAndIsUnique) {
  ScopedTempFolder first;
  ScopedTempFolder second;
  EXPECT_NE(first.Path(), second.Path());
  const std::wstring file = first.MakeFile(L"a\\b\\file.txt", 12'345);
  EXPECT_EQ(file, first.PathOf(L"a\\b\\file.txt"));
  EXPECT_EQ(fs::file_size(Real(file)), 12'345U);
  EXPECT_TRUE(fs::is_directory(Real(first.MakeFolder(L"a\\c\\d"))));
  EXPECT_EQ(fs::file_size(Real(first.MakeFile(L"a\\b\\file.txt"))), 0U); // made anew
}

TEST(ScopedTempFolder, LeavesNothingBehind) {
  auto folder = std::make_unique<ScopedTempFolder>();
  const std::wstring path = folder->Path();
  const std::wstring odd[] = {L"plain", L" leading and trailing ", L"dots...", L"e\x0301 combining", L"\x05D0\x202E.x"};
  for (const auto& name : odd) folder->MakeFile(L"odd\\" + name + L"\\" + name, 10);
  std::wstring deep = L"deep";
  for (int i = 0; i < 10; ++i) deep += L"\\" + std::wstring(60, static_cast<wchar_t>(L'a' + i));
  MakeReadOnly(folder->MakeFile(deep + L"\\file", 1));
  MakeReadOnly(folder->MakeFolder(L"locked\\inner"));
  MakeReadOnly(folder->MakeFile(L"locked\\file"));
  MakeReadOnly(folder->PathOf(L"locked"));
  ASSERT_TRUE(fs::exists(Real(path)));
  folder.reset();
  EXPECT_FALSE(fs::exists(Real(path)));
}

TEST(ScopedTempFolder, KeepsLoneSurrogatesApart) {
  auto folder = std::make_unique<ScopedTempFolder>();
  const std::wstring path = folder->Path();
  for (const wchar_t unit : {wchar_t{0xD800}, wchar_t{0xDBFF}, wchar_t{0xDC00}}) {
    folder->MakeFile(std::wstring(L"lone\\") + unit, 1);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(Real(folder->PathOf(L"lone"))), fs::directory_iterator()), 3);
  folder.reset();
  EXPECT_FALSE(fs::exists(Real(path)));
}

#if !defined(_WIN32)
TEST(ScopedTempFolder, RemovesLinksAndNotWhatTheyLeadTo) {
  ScopedTempFolder kept;
  const std::wstring file = kept.MakeFile(L"sub\\file", 1);
  {
    ScopedTempFolder folder;
    fs::create_directory_symlink(Real(kept.Path()), Real(folder.PathOf(L"link")));
  }
  EXPECT_TRUE(fs::exists(Real(file)));
}
#endif

} // namespace
} // namespace kiv::test
