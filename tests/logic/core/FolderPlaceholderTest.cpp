#include <core/FolderPlaceholder.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kiv {
namespace {

const std::vector<TNamedFolder> Folders = {
    {L"shell:Profile", L"C:\\Users\\Ann"},
    {L"shell:Personal", L"C:\\Users\\Ann\\Documents\\"},
    {L"shell:ProgramFiles", L"C:\\Program Files"},
    {L"shell:ProgramFilesX86", L"C:\\Program Files"},
    {L"shell:My Music", L"M:\\"},
    {L"shell:My Video", L"\\\\srv\\share"},
    {L"shell:Missing", L""},
};

TEST(FolderPlaceholder, StandsForTheLongestFolderAndComesBack) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"C:\\Users\\Ann", L"shell:Profile"},
      {L"C:\\Users\\Ann\\", L"shell:Profile\\"},
      {L"C:\\Users\\Ann\\Documents\\a\\b.txt", L"shell:Personal\\a\\b.txt"},
      {L"C:\\Program Files\\x", L"shell:ProgramFiles\\x"},
      {L"M:\\", L"shell:My Music"},
      {L"M:\\a", L"shell:My Music\\a"},
      {L"\\\\srv\\share\\film", L"shell:My Video\\film"},
  };
  for (const auto& [path, text] : cases) {
    EXPECT_EQ(ReplaceFolderByName(path, Folders), text);
    EXPECT_EQ(ReplaceNameByFolder(text, Folders), path);
  }
  EXPECT_EQ(ReplaceFolderByName(L"c:\\USERS\\ann\\documentS\\x", Folders), L"shell:Personal\\x");
  EXPECT_EQ(ReplaceFolderByName(L"C:\\Users\\Ann/x", Folders), L"shell:Profile/x");
  EXPECT_EQ(ReplaceNameByFolder(L"SHELL:personal\\x", Folders), L"C:\\Users\\Ann\\Documents\\x");
  EXPECT_EQ(ReplaceNameByFolder(L"shell:ProgramFilesX86\\x", Folders), L"C:\\Program Files\\x");
}

TEST(FolderPlaceholder, LeavesEverythingElseAlone) {
  for (const wchar_t* path :
       {L"", L"C:", L"C:\\", L"C:\\Users", L"C:\\Users\\Anna", L"C:\\Users\\Anna\\x", L"M:", L"M:a",
        L"\\\\?\\C:\\Users\\Ann", L"\\\\srv\\share2", L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"}) {
    EXPECT_EQ(ReplaceFolderByName(path, Folders), path);
    EXPECT_EQ(ReplaceNameByFolder(path, Folders), path);
  }
  for (const wchar_t* text : {L"shell:", L"shell:Profiles", L"shell:Pro", L"shell:Missing\\x", L"shell:My Music2"}) {
    EXPECT_EQ(ReplaceNameByFolder(text, Folders), text);
  }
}

} // namespace
} // namespace kiv
