#include <core/FolderFunctions.h>

#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/Exceptions.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

TEST(FolderFunctions, MakeAndFindFilesAtAnyDepth) {
  test::ScopedTempFolder temp;
  const std::wstring deep =
      temp.PathOf(std::wstring(100, L'a') + L"\\" + std::wstring(100, L'b') + L"\\" + std::wstring(100, L'c'));
  EXPECT_FALSE(IsFolder(deep));
  EXPECT_TRUE(ForceDirectories(deep + L"\\"));
  EXPECT_TRUE(IsFolder(deep));
  EXPECT_TRUE(ForceDirectories(LR"(\\?\)" + deep)) << "it is there already";
  const std::wstring file = deep + L"\\f";
  EXPECT_TRUE(CreateEmptyFile(file));
  EXPECT_FALSE(CreateEmptyFile(file)) << "what is there stays";
  EXPECT_TRUE(IsFile(file));
  EXPECT_FALSE(IsFile(deep));
  EXPECT_FALSE(IsFolder(file));
  EXPECT_FALSE(ForceDirectories(file + L"\\below a file"));
  EXPECT_FALSE(CreateEmptyFile(deep + L"\\none\\f"));
  EXPECT_THROW(ForceDirectories(L""), EArgumentException);
  for (const std::wstring& bad : {std::wstring(L"C:\\x\0y", 6), std::wstring(L"Q:\\none")}) {
    EXPECT_FALSE(ForceDirectories(bad));
    EXPECT_FALSE(CreateEmptyFile(bad));
    EXPECT_FALSE(IsFile(bad) || IsFolder(bad));
  }

  WIN32_FIND_DATAW data{};
  SetLastError(4711);
  const TUniqueFind listing = FindFirst(deep + L"\\*", data);
  ASSERT_TRUE(listing);
  std::wstring names;
  do {
    if (!IsFolderToIgnore(data.cFileName)) names += data.cFileName;
  } while (FindNextFileW(listing.Get(), &data));
  EXPECT_EQ(names, L"f");
  SetLastError(4711);
  EXPECT_TRUE(FindFirst(deep + L"\\", data));
  EXPECT_EQ(std::wstring(data.cFileName), std::wstring(100, L'c'));
  EXPECT_EQ(GetLastError(), 4711U);
  EXPECT_FALSE(FindFirst(deep + L"\\none", data));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(FolderFunctions, KnowTheParentByItsText) {
  EXPECT_EQ(GetParentPathFromPath(L"C:\\a\\b\\"), L"C:\\a\\");
  EXPECT_EQ(GetParentPathFromPath(L"C:\\a\\*"), L"C:\\a\\");
  EXPECT_EQ(GetParentPathFromPath(L"C:\\"), L"C:");
  EXPECT_EQ(GetParentPathFromPath(L""), L"");
}

// The only test that may reach the programs' folders: they are read once a process.
TEST(FolderFunctions, AdaptPathsOfPrograms) {
  test::ScopedTempFolder temp;
  temp.MakeFile(L"kiv there\\x");
  const std::wstring there = TKivPathList::AdaptPathOnWow64Systems(L"C:\\Program Files\\kiv there\\x");
  EXPECT_EQ(there, L"C:\\Program Files\\kiv there\\x") << "this process is a 64-bit one";
  ScopedShellApi api;
  api->IsWow64Process = [](HANDLE, BOOL* wow) -> BOOL { return *wow = TRUE; };
  SetEnvironmentVariableW(L"ProgramW6432", temp.Path().c_str());
  EXPECT_EQ(TKivPathList::AdaptPathOnWow64Systems(L"c:\\program files\\kiv there\\x"), temp.PathOf(L"kiv there\\x"));
  for (const wchar_t* path : {L"C:\\Program Files\\kiv none", L"C:\\Program Files", L"D:\\kiv there\\x", L""}) {
    EXPECT_EQ(TKivPathList::AdaptPathOnWow64Systems(path), path);
  }
}

} // namespace
} // namespace kiv
