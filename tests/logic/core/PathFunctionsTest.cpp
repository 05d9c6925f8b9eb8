#include <core/PathFunctions.h>
#include <core/PathList.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

TEST(PathFunctions, TellTheFormOfAPath) {
  enum : unsigned {
    Drive = 1,
    Unc = 2,
    Absolute = 4,
    Protocol = 8,
    Search = 16,
    ListUnc = 32,
    Server = 64,
    Class = 128,
    Usb = 256
  };
  const struct {
    const wchar_t* path;
    unsigned forms;
  } cases[] = {
      {L"", 0},
      {L"C", 0},
      {L":", 0},
      {L"C:", Drive | Absolute},
      {L"c:\\", Drive | Absolute},
      {L"C:/", Absolute},
      {L"C:\\x", Absolute},
      {L"C:x", Absolute},
      {L"1:\\", 0},
      {L"\x00C4:\\", 0},
      {L"\\", 0},
      {L"\\x", 0},
      {L"\\\\", Unc | Absolute | Server},
      {L"\\\\x", Unc | Absolute | Server},
      {L"\\\\\\", Unc | Absolute | ListUnc | Server},
      {L"\\\\ab", Unc | Absolute | ListUnc | Server},
      {L"\\\\ab\\", Unc | Absolute | ListUnc | Server},
      {L"\\\\ab\\c", Unc | Absolute | ListUnc},
      {L"\\\\a*", Unc | Absolute | ListUnc},
      {L"\\\\a?b", Unc | Absolute | ListUnc},
      {L"\\\\?\\", Unc | Absolute},
      {L"\\\\?\\C:\\x", Unc | Absolute},
      {L"\\\\?\\UNC", Unc | Absolute},
      {L"\\\\?\\unc\\s\\d", Unc | Absolute | ListUnc},
      {L"\\\\?\\USB#VID_1", Unc | Absolute | Usb},
      {L"shell:x", Protocol},
      {L"ms-x.y+1:", Protocol},
      {L"1a:x", 0},
      {L"dir\\a:b", 0},
      {L"search-MS:q", Protocol | Search},
      {L"search-m", 0},
      {L"::{04731b67-d933-450a-90e6-4acd2e9408fe}\\x", Search | Class},
      {L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", Class},
      {L"::{", Class},
      {L"::", 0},
  };
  for (const auto& c : cases) {
    const unsigned forms =
        (IsDrive(c.path) ? Drive : 0U) | (IsUNCPath(c.path) ? Unc : 0U) | (IsAbsolutePath(c.path) ? Absolute : 0U) |
        (IsProtocolPath(c.path) ? Protocol : 0U) | (IsSearchFolderPath(c.path) ? Search : 0U) |
        (TKivPathList::IsUNCPath(c.path) ? ListUnc : 0U) | (TKivPathList::IsUncServer(c.path) ? Server : 0U) |
        (TKivPathList::IsFolderClassId(c.path) ? Class : 0U) | (TKivPathList::IsUSBDevicePath(c.path) ? Usb : 0U);
    EXPECT_EQ(forms, c.forms) << c.path;
  }
}

TEST(PathFunctions, ComparePathsAndPlaces) {
  const struct {
    const wchar_t *first, *second;
    bool same, below;
  } cases[] = {
      {L"", L"", true, false},
      {L"C:\\a", L"c:\\A\\", true, false},
      {L"C:\\a", L"C:\\a\\\\", true, false},
      {L"C:\\a", L"C:\\ab", false, false},
      {L"C:\\a", L"c:\\A\\b", false, true},
      {L"C:\\a\\", L"C:\\a\\b\\c", false, true},
      {L"C:", L"C:\\", true, false},
      {L"C:\\", L"C:\\x", false, true},
      {L"C:\\a\\b", L"C:\\a", false, false},
      {L"C:\\a", L"", false, false},
      {L"\\\\s", L"\\\\S\\share", false, true},
      {L"C:\\\x00E4", L"C:\\\x00C4\\x", false, true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(SamePath(c.first, c.second), c.same) << c.first << L", " << c.second;
    EXPECT_EQ(TKivPathList::IsSubPathOf(c.first, c.second), c.below) << c.first << L", " << c.second;
  }
  EXPECT_EQ(ExcludeTrailingDelimiter(L"C:\\"), L"C:\\");
  EXPECT_EQ(ExcludeTrailingDelimiter(L"C:\\a/"), L"C:\\a");
  EXPECT_EQ(ExcludeTrailingDelimiter(L""), L"");
}

TEST(PathFunctions, CompareExtensions) {
  const struct {
    const wchar_t *name, *extension;
    bool has;
  } cases[] = {
      {L"a.TXT", L"txt", true},
      {L"a.TXT", L".txt", true},
      {L"a.tar.gz", L"gz", true},
      {L"a.tar.gz", L"tar", false},
      {L"C:\\d.txt\\a", L"txt", false},
      {L"a", L"", true},
      {L"a.", L".", true},
      {L"a.b", L"", false},
      {L"", L"x", false},
  };
  for (const auto& c : cases) EXPECT_EQ(HasFileExtension(c.name, c.extension), c.has) << c.name << L" " << c.extension;
}

TEST(PathFunctions, FindTextIgnoringCase) {
  const std::wstring text = L"abcABC\x00E4";
  const struct {
    const wchar_t* needle;
    int offset, expected;
  } cases[] = {
      {L"B", 1, 2}, {L"b", 3, 5},  {L"bc", 6, 0}, {L"\x00C4", 1, 7},     {L"", 1, 0},
      {L"a", 0, 0}, {L"a", -1, 0}, {L"c", 7, 0},  {L"a", 2147483647, 0}, {L"abcabc\x00E4x", 1, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(KivPosEx(c.needle, text, c.offset), c.expected) << c.needle << c.offset;
}

TEST(PathFunctions, MatchNamesWithPatterns) {
  const struct {
    const wchar_t *name, *pattern;
    bool matches;
  } cases[] = {
      {L"a", L"*.", true},        {L"a.b", L"*.", false},
      {L"a.", L"*.", true},       {L"", L"*.", true},
      {L"a.txt", L"*.TXT", true}, {L"a.txt", L"*.doc; *.txt", true},
      {L"a.b.c", L"*.*", true},   {L"a.b.c", L"x;*.*", true},
      {L"a.b", L"x*.*", false},   {L"a", L"*.*;x", false},
      {L"a", L"", false},         {L"a", L"?", true},
      {L"", L"*", true},          {L"\x05D0.x", L"\x05D0*", true},
  };
  for (const auto& c : cases) EXPECT_EQ(MatchPattern(c.name, c.pattern), c.matches) << c.name << L" ~ " << c.pattern;
  EXPECT_EQ(ConvertToWindowsPattern(L"*.*"), L"*.*.*");
  EXPECT_EQ(ConvertToWindowsPattern(L"*.*;x"), L"*.*;x");
  EXPECT_EQ(ConvertToWindowsPattern(L""), L"");
  // Of any length.
  const std::wstring name(40'000, L'x');
  EXPECT_TRUE(MatchPattern(name + L".y.z", name + L"*.*"));
  EXPECT_FALSE(MatchPattern(name + L".y.z", L"y" + name + L"*.*"));
}

} // namespace
} // namespace kiv
