#include <platform/FileFormats.h>

#include <gtest/gtest.h>

#include <shlobj.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace kiv {
namespace {

// Memory as another program hands it over.
class TMemory {
public:
  explicit TMemory(std::size_t size) : fHandle(GlobalAlloc(GHND, size)) {}
  ~TMemory() {
    if (fHandle) GlobalFree(fHandle);
  }
  TMemory(TMemory&& other) noexcept : fHandle(other.Release()) {}

  void Put(std::size_t at, const void* bytes, std::size_t size) {
    std::memcpy(static_cast<char*>(GlobalLock(fHandle)) + at, bytes, size);
    GlobalUnlock(fHandle);
  }
  HGLOBAL Get() const { return fHandle; }
  HGLOBAL Release() { return std::exchange(fHandle, nullptr); }

private:
  HGLOBAL fHandle;
};

// `names`: each with its end, and one end more.
TMemory DropMemory(std::wstring_view names) {
  TMemory memory(sizeof(DROPFILES) + names.size() * sizeof(wchar_t));
  DROPFILES head{};
  head.pFiles = sizeof(head);
  head.fWide = TRUE;
  memory.Put(0, &head, sizeof(head));
  memory.Put(sizeof(head), names.data(), names.size() * sizeof(wchar_t));
  return memory;
}

using TNames = std::vector<std::wstring>;

TEST(FileFormats, NamesOfADropHandle) {
  const std::wstring longest(32000, L'x');
  const std::wstring names = L"C:\\a file" + std::wstring(1, L'\0') + L"\\\\srv\\share\\\xD83D\xDE00" +
                             std::wstring(1, L'\0') + longest + std::wstring(2, L'\0');
  const TMemory memory = DropMemory(names);
  EXPECT_EQ(GetFilenamesFromHandle(static_cast<HDROP>(memory.Get())),
            (TNames{L"C:\\a file", L"\\\\srv\\share\\\xD83D\xDE00", longest}));
  EXPECT_TRUE(GetFilenamesFromHandle(static_cast<HDROP>(DropMemory(std::wstring(2, L'\0')).Get())).empty());
  EXPECT_TRUE(GetFilenamesFromHandle(nullptr).empty());
  EXPECT_TRUE(GetFilenamesFromHandle(reinterpret_cast<HDROP>(std::uintptr_t{0x1234})).empty());
}

TEST(FileFormats, NamesOfDescriptorsStayInTheirMemory) {
  FILEGROUPDESCRIPTORW wide{};
  wide.cItems = 1000;
  std::wcscpy(wide.fgd[0].cFileName, L"sub\\\x00E4.txt");
  TMemory memory(sizeof(wide));
  memory.Put(0, &wide, sizeof(wide));
  EXPECT_EQ(GetFilenamesFromFileDescriptorW(memory.Get()), (TNames{L"sub\\\x00E4.txt"}));
  EXPECT_TRUE(GetFilenamesFromFileDescriptorW(nullptr).empty());
  EXPECT_TRUE(GetFilenamesFromFileDescriptorW(TMemory(2).Get()).empty());

  FILEGROUPDESCRIPTORA narrow{};
  narrow.cItems = 1;
  std::strcpy(narrow.fgd[0].cFileName, "sub\\a.txt");
  TMemory narrow_memory(sizeof(narrow));
  narrow_memory.Put(0, &narrow, sizeof(narrow));
  EXPECT_EQ(GetFilenamesFromFileDescriptorA(narrow_memory.Get()), (TNames{L"sub\\a.txt"}));
  EXPECT_TRUE(GetFilenamesFromFileDescriptorA(nullptr).empty());
}

TEST(FileFormats, TheClipboardHoldsFilesOrDoesnt) {
  EXPECT_NE(CF_FILEDESCRIPTORA(), CF_FILEDESCRIPTORW());
  EXPECT_EQ(CF_FILEDESCRIPTORW(), RegisterClipboardFormatW(CFSTR_FILEDESCRIPTORW));
  const HWND owner = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  const auto put = [&](UINT format) {
    ASSERT_TRUE(OpenClipboard(owner));
    EmptyClipboard();
    if (format != 0) SetClipboardData(format, DropMemory(std::wstring(2, L'\0')).Release());
    CloseClipboard();
  };
  const std::pair<UINT, bool> cases[] = {{0, false},
                                         {CF_HDROP, true},
                                         {CF_UNICODETEXT, false},
                                         {CF_FILEDESCRIPTORW(), true},
                                         {CF_FILEDESCRIPTORA(), true}};
  for (const auto& [format, files] : cases) {
    put(format);
    EXPECT_EQ(FilesInClipboard(), files) << format;
  }
  put(0);
  DestroyWindow(owner);
}

} // namespace
} // namespace kiv
