#include <framework/IniFile.h>

#include <doubles/ScopedTempFolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace kiv::test {
namespace {

using TKeys = std::vector<std::wstring>;

TEST(IniFile, ReadsWhatPeopleWrite) {
  const struct {
    const wchar_t* text;
    TKeys keys;
  } cases[] = {
      {L"", {}},
      {L"[s]\r\nC:\\a\\*=\r\nC:\\b.txt=\r\n", {L"C:\\a\\*", L"C:\\b.txt"}},
      {L"[s]\nC:\\a=b.txt=\nC:\\x==\r", {L"C:\\a=b.txt", L"C:\\x="}},
      {L"[s]\n  C:\\a = 1 \n\tC:\\b = \n", {L"C:\\a", L"C:\\b"}},
      {L" [ S ] \nk=\n[t]\nother=\n[s]\nl=", {L"k", L"l"}},
      {L"before=\n[s\n]s[\n[]\n[s]\n; comment=\n=\n\n==\ngarbage\n[s]x=1", {L"=", L"[s]x"}},
      {L"[t]\nk=", {}},
  };
  for (const auto& c : cases) EXPECT_EQ(IniSectionKeys(c.text, L"s"), c.keys) << testing::PrintToString(c.text);
}

TEST(IniFile, ReplacesNothingButTheSectionsKeys) {
  const std::wstring text = L"; head\r\n[t]\r\nx=1\r\n[S]\r\nold=2\r\ngarbage\r\n[u]\r\ny=\r\n[s]\r\nolder=\r\n";
  EXPECT_EQ(ReplaceIniSection(text, L"s", {L"n1", L"n2"}),
            L"; head\r\n[t]\r\nx=1\r\n[s]\r\nn1=\r\nn2=\r\ngarbage\r\n[u]\r\ny=\r\n");
  EXPECT_EQ(ReplaceIniSection(L"a=1", L"s", {L"k"}), L"a=1\r\n[s]\r\nk=\r\n");
  EXPECT_EQ(ReplaceIniSection(L"[s]\nk=\n", L"s", {}), L"");
  EXPECT_EQ(ReplaceIniSection(L"", L"s", {L"", L"a\nb", L";c", L" d", L"[e]", L"f "}), L"[s]\r\n[e]=\r\nf =\r\n")
      << "what would read as something else is left out";
  EXPECT_EQ(ReplaceIniSection(L"x", L"a\n[b", {L"k"}), L"x");
}

TEST(IniFile, KeepsEveryNameOnDisk) {
  ScopedTempFolder temp;
  const TIniFile file(temp.PathOf(L"selection.ini"));
  EXPECT_EQ(file.ReadSection(L"s"), TKeys());
  const std::wstring outside_plane =
      sizeof(wchar_t) == 2 ? std::wstring(L"\xD83D\xDE00") : std::wstring(1, static_cast<wchar_t>(0x1F600));
  const TKeys keys = {L"C:\\\x00E4\\*", L"C:\\lone \xD800.txt", L"C:\\" + outside_plane, L"C:\\tail "};
  file.WriteSection(L"other", {L"stays"});
  file.WriteSection(L"s", keys);
  EXPECT_EQ(file.ReadSection(L"S"), keys);
  EXPECT_EQ(file.ReadSection(L"other"), TKeys{L"stays"});
  std::wstring native = file.GetFileName();
#if !defined(_WIN32)
  std::replace(native.begin(), native.end(), L'\\', L'/');
#endif
  using namespace std::string_literals;
  std::vector<std::string> forms = {"[s]\n\xC3\xA4=\n"s, "\xEF\xBB\xBF[s]\r\n\xC3\xA4=\r\n"s,
                                    "\xFE\xFF\0[\0s\0]\0\n\0\xE4\0=\0\n"s};
#if !defined(_WIN32)
  forms.push_back("[s]\n\xE4=\n"); // in the code page, which elsewhere is the machine's own
#endif
  for (const std::string& bytes : forms) {
    std::ofstream(std::filesystem::path(native), std::ios::binary) << bytes;
    EXPECT_EQ(file.ReadSection(L"s"), TKeys{L"\x00E4"});
    file.WriteSection(L"other", {L"k"});
    EXPECT_EQ(file.ReadSection(L"s"), TKeys{L"\x00E4"}) << "nor is it lost in writing";
  }
  EXPECT_THROW(TIniFile(temp.PathOf(L"none\\x.ini")).WriteSection(L"s", keys), EIniFileException);
  // A folder of that name can neither be read nor replaced, and nothing half done stays beside it.
  temp.MakeFolder(L"folder.ini");
  EXPECT_THROW(TIniFile(temp.PathOf(L"folder.ini")).WriteSection(L"s", keys), EIniFileException);
  const std::filesystem::directory_iterator left(std::filesystem::path(native).parent_path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 2);
}

} // namespace
} // namespace kiv::test
