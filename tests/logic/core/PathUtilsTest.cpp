#include <core/PathUtils.h>

#include <doubles/ScopedTempFolder.h>
#include <framework/Exceptions.h>
#include <platform/Text.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace kiv {
namespace {

struct TCase {
  std::wstring path, expected;
};

const std::wstring Long(300, L'x');

class TDrivesFolderName {
public:
  TDrivesFolderName() {
    SetDrivesFolderNameSource([]() -> std::wstring { return L"My Drives"; });
  }
  ~TDrivesFolderName() { SetDrivesFolderNameSource(nullptr); }
};

TEST(PathUtils, MakeCanonicPaths) {
  const TDrivesFolderName name;
  const std::wstring volume = L"Volume{01234567-89ab-cdef-0123-456789abcdef}";
  const std::wstring lone = std::wstring(L"C:\\") + static_cast<wchar_t>(0xD800);
  const TCase cases[] = {
      {L"", L""},
      {L"C:", L"C:\\"},
      {L"C:\\", L"C:\\"},
      {L"C:foo", L"C:\\foo"},
      {L"C:/foo", L"C:\\/foo"},
      {L"C:\\a\\..\\b\\.\\c", L"C:\\b\\c"},
      {L"C:\\a\\b\\", L"C:\\a\\b\\"},
      {L"C:\\..\\..\\a", L"C:\\a"},
      {L"C:\\..a\\b...\\.c", L"C:\\..a\\b...\\.c"},
      {L"C:\\\\a\\\\\\b\\\\", L"C:\\a\\b\\"},
      {L"C:\\a b \\\x05D0\\\x00E4", L"C:\\a b \\\x05D0\\\x00E4"},
      {lone, lone},
      {lone + L"\\..\\b", L"C:\\b"},
      {L"C:\\a\\*", L"C:\\a\\"},
      {L"C:\\a\\*.*", L"C:\\a\\*.*"},
      {L"\\\\*", L"\\\\*"},
      {L"\\\\srv\\*", L"\\\\srv\\"},
      {L"\\\\srv\\\\share\\\\a", L"\\\\srv\\share\\a"},
      {L"\\\\\\\\srv", L"\\\\srv"},
      {L"\\\\fe80::1\\share", L"\\\\fe80--1.ipv6-literal.net\\share"},
      {L"\\\\::1", L"\\\\--1.ipv6-literal.net"},
      {L"\\\\10.0.0.1\\share", L"\\\\10.0.0.1\\share"},
      {volume + L"\\a\\..", volume},
      {L"http://host/a/../b", L"http://host/a/../b"},
      {L"my drives\\C:\\\\a", L"my drives\\C:\\a"},
      {std::wstring(L"C:\\a\0\\..\\b", 10), std::wstring(L"C:\\a\0\\..\\b", 10)},
      // Beyond the platform's limit.
      {L"C:\\" + Long + L"\\..\\..\\..\\a", L"C:\\a"},
      {L"C:\\..\\" + Long, L"C:\\" + Long},
      {L"C:\\" + Long + L"\\..", L"C:\\"},
      {L"\\\\srv\\share\\" + Long + L"\\.\\\\a\\*", L"\\\\srv\\share\\" + Long + L"\\a\\"},
      {L"C:\\" + std::wstring(40'000, L'y') + L"\\.\\z", L"C:\\" + std::wstring(40'000, L'y') + L"\\z"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TPathUtils::MakeCanonic(c.path), c.expected) << c.path;
    EXPECT_EQ(TPathUtils::MakeCanonic(c.expected), c.expected) << c.path;
  }
}

// What a text with only good parts becomes is known without any canonicalizing.
TEST(PathUtils, CanonicPathsOfEveryLengthHaveNothingLeftToRemove) {
  std::mt19937 random(7);
  const std::vector<std::wstring> parts = {L".", L"..", L"a", L"..b", L"c.d", L"", std::wstring(60, L'e')};
  for (int i = 0; i < 20'000; ++i) {
    std::wstring path = L"C:\\";
    std::vector<std::wstring> expected;
    for (std::size_t count = random() % 9; count > 0; --count) {
      const std::wstring& part = parts[random() % parts.size()];
      path += part + L"\\";
      // An empty part is one for the ".." behind it, and vanishes at the end.
      if (part == L"..") {
        if (!expected.empty()) expected.pop_back();
      } else if (part != L".") {
        expected.push_back(part);
      }
    }
    std::wstring canonic = L"C:\\";
    for (const auto& part : expected) canonic += part.empty() ? L"" : part + L"\\";
    ASSERT_EQ(TPathUtils::MakeCanonic(path), canonic) << path;
  }
}

TEST(PathUtils, CombinePaths) {
  const struct {
    std::wstring base, relative, expected;
  } cases[] = {
      {L"C:\\a", L"b", L"C:\\a\\b"},
      {L"C:\\a\\", L"..\\b", L"C:\\b"},
      {L"C:\\a", L"\\b", L"C:\\a\\b"},
      {L"C:\\a", L"\\", L"C:\\"},
      {L"C:\\a", L"D:\\b", L"D:\\b"},
      {L"C:\\a", L"", L"C:\\a"},
      {L"\\\\srv\\share", L"\\b", L"\\\\srv\\share\\b"},
      {L"\\\\?\\C:\\a", L"..\\b", L"\\\\?\\C:\\b"},
      {L"\\\\?\\UNC\\srv\\share", L"b", L"\\\\?\\UNC\\srv\\share\\b"},
      // Not rooted: joined as they are.
      {L"a", L"..\\b", L"a\\..\\b"},
      {L"a\\", L".\\b", L"a\\b"},
      {L"a", L"\\b", L"a\\b"},
      {L"a", L".\\\\b", L"a\\b"},
      {L"a", L"", L"a"},
      {L"", L"..\\b", L"..\\b"},
      {L"a", L"C:\\b", L"C:\\b"},
      // Too long for the platform, together or with the delimiter.
      {L"C:\\" + Long, L"..\\b", L"C:\\" + Long + L"\\..\\b"},
      {L"C:\\a", L".\\" + Long, L"C:\\a\\" + Long},
      {L"C:\\" + Long, L"\\\\srv\\b", L"\\\\srv\\b"},
      {L"C:\\" + Long.substr(0, 200), Long.substr(0, 56), L"C:\\" + Long.substr(0, 200) + L"\\" + Long.substr(0, 56)},
  };
  for (const auto& c : cases) EXPECT_EQ(TPathUtils::Combine(c.base, c.relative), c.expected) << c.base << c.relative;
  try {
    TPathUtils::Combine(L"", L"");
    ADD_FAILURE();
  } catch (const EArgumentException& e) {
    EXPECT_EQ(e.Message(), L"Both parameters (BasePath and RelativePath) are empty.");
  }
}

TEST(PathUtils, RemoveRelativePartsAtAnyDelimiter) {
  const TCase cases[] = {
      {L"", L""},
      {L"..", L""},
      {L"../../a", L"a"},
      {L"/../a", L"/a"},
      {L"a/../b", L"b"},
      {L"a/./b/", L"a/b/"},
      {L"C:/..", L"C:/"},
      {L"C:/a/../../b", L"C:/b"},
      {L"CC:/../b", L"b"},
      {L"x:", L"x:/"},
      {L"//srv/share/../../../../a", L"/a"},
      {L"a//../b", L"a/b"},
      {L"/", L"/"},
      {L"/.", L""},
      {L"...", L"..."},
      {L"a\\..\\b", L"a\\..\\b"},
  };
  for (const auto& c : cases) EXPECT_EQ(TPathUtils::RemoveRelativeParts(c.path, L'/'), c.expected) << c.path;
}

TEST(PathUtils, TheLongFormComesWithTheLengthAndGoes) {
  const auto drive = [](std::size_t length) { return L"C:\\" + std::wstring(length - 3, L'x'); };
  const struct {
    std::wstring path;
    bool canonic, force;
    std::wstring expected;
  } cases[] = {
      {L"", false, false, L""},
      {L"C:\\a", false, true, L"\\\\?\\C:\\a"},
      {L"C:\\a\\..\\b", false, true, L"\\\\?\\C:\\b"},
      {L"C:\\a\\..\\b", true, true, L"\\\\?\\C:\\a\\..\\b"},
      {L"\\\\s", true, true, L"\\\\?\\\\\\s"},
      {L"\\\\srv\\share", true, true, L"\\\\?\\UNC\\srv\\share"},
      {drive(247), false, false, drive(247)},
      {drive(248), false, false, L"\\\\?\\" + drive(248)},
      {L"\\\\srv\\" + Long, false, false, L"\\\\?\\UNC\\srv\\" + Long},
      {L"\\\\?\\C:\\" + Long, false, false, L"\\\\?\\C:\\" + Long},
      {L"\\\\?\\UNC\\srv\\" + Long, false, true, L"\\\\?\\UNC\\srv\\" + Long},
      {L"\\\\.\\pipe\\" + Long, false, false, L"\\\\.\\pipe\\" + Long},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TPathUtils::GetUnicodeAPICallPath(c.path, c.canonic, c.force), c.expected) << c.path;
  }
  const TCase back[] = {
      {L"\\\\?\\C:\\a", L"C:\\a"}, {L"\\\\?\\unc\\srv\\a", L"\\\\srv\\a"},
      {L"\\\\?\\UNC", L"UNC"},     {L"\\\\?\\", L""},
      {L"\\\\?", L"\\\\?"},        {L"\\\\.\\a", L"\\\\.\\a"},
      {L"\\\\?\\UNC\\", L"\\\\"},  {L"", L""},
      {L"C:\\a", L"C:\\a"},
  };
  for (const auto& c : back) EXPECT_EQ(TPathUtils::RevertUnicodeAPICallPath(c.path), c.expected) << c.path;
}

TEST(PathUtils, UnifyPathsForLists) {
  const TCase cases[] = {
      {L"", L""},
      {L"\\\\*", L"\\\\*"},
      {L"C:", L"C:\\"},
      {L"c:\\", L"c:\\"},
      {L"C:\\a\\", L"C:\\a"},
      {L"C:\\a/", L"C:\\a"},
      {L"C:\\a\\\\", L"C:\\a\\"},
      {L"http://", L"http://"},
      {L" ftp:// \t", L" ftp:// \t"},
      {L"http://a/", L"http://a"},
      {L"\\", L""},
      {L"1:", L"1:"},
  };
  for (const auto& c : cases) EXPECT_EQ(TPathUtils::UnifyPath(c.path), c.expected) << c.path;
}

TEST(PathUtils, TellWhatIsRooted) {
  const TDrivesFolderName name;
  const std::wstring guid = L"01234567-89ab-cdef-0123-456789abcdef";
  const struct {
    std::wstring path;
    bool rooted;
  } cases[] = {
      {L"", false},
      {L"C:", true},
      {L"C", false},
      {L"C:a", true},
      {L"1:\\", false},
      {L"\\a", false},
      {L"\\\\", true},
      {L"\\\\a", true},
      {L"ab:c", true},
      {L"file:\\a", true},
      {L"a\\b", false},
      {L"My Drives\\C:", false},
      {L"Volume{" + guid + L"}", true},
      {L"Volume{" + guid + L"}\\a", true},
      {L"Volume{" + guid + L"\\", false},
      {L"Volume{" + guid + L"xx", false},
      {L"volume{" + guid + L"}", false},
  };
  for (const auto& c : cases) EXPECT_EQ(TPathUtils::IsRooted(c.path), c.rooted) << c.path;
  EXPECT_EQ(TPathUtils::GetSpecialFolderRoot(L"MY DRIVES\\C:"), L"My Drives");
  EXPECT_EQ(TPathUtils::GetSpecialFolderRoot(L"My Drive"), L"");
  const std::wstring path = L"a\\/b";
  std::wstring delimiters;
  for (const int index : {-2147483647, 0, 1, 2, 3, 4, 5}) {
    delimiters += TPathUtils::IsPathDelimiter(path, index) ? L'1' : L'0';
  }
  EXPECT_EQ(delimiters, L"0001100");
}

TEST(PathUtils, TheDiskTellsAttributes) {
  const test::ScopedTempFolder temp;
  const std::wstring folder = temp.Path();
  EXPECT_TRUE(TPathUtils::HasFileAttribute(folder, FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT));
  EXPECT_FALSE(TPathUtils::HasFileAttribute(folder, FILE_ATTRIBUTE_REPARSE_POINT));
  EXPECT_FALSE(TPathUtils::HasFileAttribute(folder + L"\\none", 0xFFFFFFFF));
  EXPECT_FALSE(TPathUtils::HasFileAttribute(L"", 0xFFFFFFFF));
  EXPECT_FALSE(TPathUtils::IsReparsePoint(folder + L"\\"));
  EXPECT_FALSE(TPathUtils::IsReparsePoint(folder + L"\\none"));
  EXPECT_FALSE(TPathUtils::HasFileAttribute(folder + L'\0', FILE_ATTRIBUTE_DIRECTORY));
#if !defined(_WIN32)
  const std::string link = kiv::ToUtf8(folder) + "/link";
  std::filesystem::create_directory_symlink(kiv::ToUtf8(folder), link);
  EXPECT_TRUE(TPathUtils::IsReparsePoint(folder + L"/link/"));
  EXPECT_FALSE(TPathUtils::HasFileAttribute(folder + L"\\link", FILE_ATTRIBUTE_REPARSE_POINT)) << "of what it leads to";
#endif
  EXPECT_FALSE(TPathUtils::GetCurrentDir().empty());
  EXPECT_TRUE(TPathUtils::GetCurrentDir().starts_with(TPathUtils::GetCurrentDrive()));
}

} // namespace
} // namespace kiv
