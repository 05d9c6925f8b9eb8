#include <core/FileFunctions.h>

#include <core/PathUtils.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <shellapi.h>

#include <string>
#include <vector>

namespace kiv {
namespace {

using test::ScopedTempFolder;

wchar_t FreeDriveLetter() {
  wchar_t letter = L'A';
  for (const DWORD drives = GetLogicalDrives(); letter < L'Z' && (drives >> (letter - L'A') & 1U) != 0;) ++letter;
  return letter;
}

// The process's current folder, which relative paths lie in.
class TCurrentFolder {
public:
  explicit TCurrentFolder(const std::wstring& pPath) : fOld(TPathUtils::GetCurrentDir()) {
    SetCurrentDirectoryW(pPath.c_str());
  }
  ~TCurrentFolder() { SetCurrentDirectoryW(fOld.c_str()); }

private:
  std::wstring fOld;
};

TEST(FileFunctions, FilesExistAndHaveSizesAtAnyLength) {
  ScopedTempFolder temp;
  std::wstring deep = std::wstring(100, L'd');
  deep += L"\\" + deep + L"\\" + deep + L"\\leaf";
  const std::wstring leaf = temp.MakeFile(deep, 70'000);
  EXPECT_TRUE(FileOrFolderExists(leaf));
  EXPECT_EQ(GetFileSize64(leaf), 70'000);
  EXPECT_EQ(GetFileSize(leaf), 70'000);
  EXPECT_TRUE(FileOrFolderExists(temp.Path() + L"\\"));
  for (const std::wstring& none : {std::wstring(), leaf + L"x", temp.PathOf(L"none"), std::wstring(40'000, L'x')}) {
    EXPECT_FALSE(FileOrFolderExists(none));
    EXPECT_EQ(GetFileSize64(none), -1);
    EXPECT_EQ(GetFileSize(none), -1);
  }
  EXPECT_EQ(GetFileSize64(temp.PathOf(L"*")), -1) << "not that of any file there";
  const std::wstring nul = leaf + L'\0';
  EXPECT_FALSE(FileOrFolderExists(nul));
  EXPECT_EQ(GetFileSize64(nul), -1);
  WIN32_FIND_DATAW data{};
  data.nFileSizeHigh = 1;
  data.nFileSizeLow = 5;
  EXPECT_EQ(GetFileSize64(data), 0x1'0000'0005);
  EXPECT_EQ(GetFileSize(data), 0x7FFF'FFFF);
  data = {};
  data.nFileSizeLow = 0xFFFF'FFFF;
  EXPECT_EQ(GetFileSize64(data), 0xFFFF'FFFF);
}

TEST(FileFunctions, RelativePathsLieInTheCurrentFolder) {
  ScopedTempFolder temp;
  const TCurrentFolder current(temp.MakeFolder(L"sub"));
  const std::wstring folder = TPathUtils::GetCurrentDir();
  ASSERT_TRUE(folder.ends_with(L"\\sub"));
  EXPECT_EQ(TPathUtils::MakeCanonic(L"a\\..\\b"), folder + L"\\b");
  EXPECT_EQ(TPathUtils::MakeCanonic(L"..\\c"), folder.substr(0, folder.size() - 3) + L"c");
  EXPECT_EQ(TPathUtils::MakeCanonic(L"\\top\\.\\d"), folder.substr(0, 2) + L"\\top\\d");
  EXPECT_EQ(TPathUtils::MakeCanonic(L"\\"), folder.substr(0, 3));
  const std::wstring long_name(300, L'x');
  EXPECT_EQ(TPathUtils::MakeCanonic(L".\\" + long_name), folder + L"\\" + long_name);
  EXPECT_EQ(TPathUtils::GetCurrentDrive(), folder.substr(0, 2));
}

TEST(FileFunctions, DrivesTellTheirStateAndSpace) {
  ScopedTempFolder temp;
  std::int64_t free = -1;
  std::int64_t total = -1;
  EXPECT_TRUE(IsDriveReady(temp.Path()));
  EXPECT_TRUE(IsDriveReady(L"\\\\?\\" + temp.Path()));
  // A volume by its identifier, which need not have a letter.
  wchar_t volume[MAX_PATH] = L"";
  ASSERT_TRUE(GetVolumeNameForVolumeMountPointW(temp.Path().substr(0, 3).c_str(), volume, MAX_PATH));
  const std::wstring in_volume = std::wstring(volume) + L"none\\x";
  EXPECT_TRUE(IsDriveReady(in_volume)) << in_volume;
  EXPECT_TRUE(IsDriveReady(in_volume.substr(4))) << in_volume;
  EXPECT_TRUE(KivGetDiskFreeSpace(in_volume, free, total) && free > 0);
  EXPECT_FALSE(IsNetworkPath(in_volume));
  EXPECT_FALSE(IsDriveReady(L"\\\\?\\Volume{00000000-0000-0000-0000-000000000001}\\"));
  for (const std::wstring& path : {temp.Path(), temp.Path() + L"\\", temp.PathOf(L"none")}) {
    EXPECT_TRUE(KivGetDiskFreeSpace(path, free, total)) << path;
    EXPECT_TRUE(free > 0 && free <= total);
  }
  for (const std::wstring& path :
       {std::wstring(1, FreeDriveLetter()) + L":\\x", std::wstring(L"relative"), std::wstring()}) {
    EXPECT_FALSE(IsDriveReady(path)) << path;
    EXPECT_FALSE(KivGetDiskFreeSpace(path, free, total)) << path;
    EXPECT_TRUE(free == 0 && total == 0);
  }
}

TEST(FileFunctions, NetworkPathsAreKnownByFormOrDrive) {
  ScopedShellApi api;
  api->GetDriveTypeW = [](const wchar_t* root) -> UINT {
    return std::wstring(root) == L"N:\\" ? DRIVE_REMOTE : DRIVE_FIXED;
  };
  EXPECT_TRUE(IsNetworkPath(L"N:\\a\\b"));
  EXPECT_TRUE(IsNetworkPath(L"\\\\?\\N:\\a"));
  EXPECT_TRUE(IsNetworkPath(L"\\\\srv\\share\\a"));
  EXPECT_TRUE(IsNetworkPath(L"\\\\?\\UNC\\srv\\share"));
  EXPECT_FALSE(IsNetworkPath(L"C:\\a"));
  EXPECT_FALSE(IsNetworkPath(L"N"));
  EXPECT_FALSE(IsNetworkPath(L""));
  api->GetDriveTypeW = nullptr;
  EXPECT_FALSE(IsNetworkPath(L"N:\\a"));
}

TEST(FileFunctions, TheEnvironmentIsExpanded) {
  SetEnvironmentVariableW(L"KIV_TEST_LONG", std::wstring(5000, L'v').c_str());
  SetEnvironmentVariableW(L"ProgramFiles", L"C:\\P86");
  SetEnvironmentVariableW(L"ProgramW6432", L"C:\\P64");
  EXPECT_EQ(KIVExpandEnvironmentStrings(L"<%KIV_TEST_LONG%>"), L"<" + std::wstring(5000, L'v') + L">");
  EXPECT_EQ(KIVExpandEnvironmentStrings(L"%KIV_TEST_NONE%\\a"), L"%KIV_TEST_NONE%\\a");
  EXPECT_EQ(KIVExpandEnvironmentStrings(L""), L"");
  const std::wstring nul = L"%KIV_TEST_LONG%" + std::wstring(1, L'\0') + L"x";
  EXPECT_EQ(KIVExpandEnvironmentStrings(nul), nul);
  ScopedShellApi api;
  const std::wstring text = L"%programfiles%\\a;%ProgramFiles%\\b";
  api->IsWow64Process = nullptr;
  EXPECT_FALSE(IsWOW64());
  EXPECT_EQ(KIVExpandEnvironmentStrings(text), L"C:\\P86\\a;C:\\P86\\b");
  api->IsWow64Process = [](HANDLE, BOOL* wow) -> BOOL { return *wow = TRUE; };
  EXPECT_TRUE(IsWOW64());
  EXPECT_EQ(KIVExpandEnvironmentStrings(text), L"C:\\P64\\a;C:\\P64\\b");
  SetEnvironmentVariableW(L"KIV_TEST_LONG", nullptr);
}

TEST(FileFunctions, TheShellNamesAndOrdersThings) {
  ScopedTempFolder temp;
  EXPECT_NE(GetFriendlyName(temp.MakeFile(L"a.txt")).find(L'a'), std::wstring::npos);
  EXPECT_EQ(GetFriendlyName(temp.PathOf(L"none\\x")), temp.PathOf(L"none\\x"));
  EXPECT_TRUE(FileOrFolderExists(GetUserProfilePath()));
  EXPECT_TRUE(FileOrFolderExists(KivGetWindowsPath() + L"\\system32"));
  EXPECT_LT(CompareFilenames(L"a2", L"A10"), 0);
  EXPECT_EQ(CompareFilenames(L"x", L"X"), 0);
  EXPECT_GT(CompareFilenames(L"b", L"a"), 0);
  EXPECT_NE(FormatByteSize(5'000'000, false), FormatByteSize(5'000'000, true));
  EXPECT_NE(FormatByteSize(5'000'000, true).find(L"KB"), std::wstring::npos);
  ScopedShellApi api;
  api->StrFormatKBSizeW = nullptr;
  EXPECT_EQ(FormatByteSize(1, true), L"");
}

std::vector<std::wstring> gDropped;

LRESULT CALLBACK DropWindow(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message != WM_DROPFILES) return DefWindowProcW(window, message, wparam, lparam);
  const auto drop = reinterpret_cast<HDROP>(wparam);
  for (UINT i = 0; i < DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0); ++i) {
    std::wstring name(DragQueryFileW(drop, i, nullptr, 0) + 1, L'\0');
    DragQueryFileW(drop, i, name.data(), static_cast<UINT>(name.size()));
    name.pop_back();
    gDropped.push_back(name);
  }
  DragFinish(drop);
  return 0;
}

TEST(FileFunctions, ADropReachesAWindow) {
  const HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  ASSERT_TRUE(window);
  SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&DropWindow));
  const std::vector<std::wstring> files = {L"C:\\a\x05D0.txt", L"C:\\" + std::wstring(400, L'x')};
  gDropped.clear();
  EXPECT_TRUE(SendDropFiles(window, {files[0], std::wstring(L"C:\\two\0names", 12), L"", files[1]}));
  EXPECT_FALSE(SendDropFiles(window, {L""}));
  MSG message;
  while (PeekMessageW(&message, window, WM_DROPFILES, WM_DROPFILES, PM_REMOVE)) DispatchMessageW(&message);
  EXPECT_EQ(gDropped, files);
  DestroyWindow(window);
  EXPECT_FALSE(SendDropFiles(window, files));
}

} // namespace
} // namespace kiv
