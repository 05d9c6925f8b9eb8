#include <platform/fill/FileStream.h>

#include <doubles/ScopedTempFolder.h>
#include <platform/Handles.h>
#include <platform/InterfacedObject.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace kiv {
namespace {

using test::ScopedTempFolder;

void WriteText(const std::wstring& path, const std::string& text) {
  const TUniqueHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
  DWORD count = 0;
  WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
}
std::string ReadAll(IStream* stream, HRESULT* result = nullptr) {
  char buffer[256];
  ULONG count = 0;
  const HRESULT hr = stream->Read(buffer, sizeof(buffer), &count);
  if (result) *result = hr;
  return {buffer, count};
}
std::uint64_t SeekTo(IStream* stream, std::int64_t move, DWORD origin, HRESULT expected = S_OK) {
  LARGE_INTEGER distance;
  distance.QuadPart = move;
  ULARGE_INTEGER position;
  position.QuadPart = ~std::uint64_t{0};
  EXPECT_EQ(stream->Seek(distance, origin, &position), expected);
  return position.QuadPart;
}

constexpr DWORD Shared = STGM_READ | STGM_SHARE_DENY_NONE;

TEST(FileStream, ReadsSeeksAndClones) {
  ScopedTempFolder temp;
  const std::wstring path = temp.PathOf(L"f.txt");
  WriteText(path, "0123456789");
  const long before = LiveObjects();
  {
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateFileStream(path, Shared, stream), S_OK);
    char four[4];
    ULONG count = 0;
    EXPECT_EQ(stream->Read(four, 4, &count), S_OK);
    EXPECT_EQ(std::string(four, count), "0123");
    ComPtr<IStream> clone;
    ASSERT_EQ(stream->Clone(&clone), S_OK);
    HRESULT hr = S_OK;
    EXPECT_EQ(ReadAll(stream.Get(), &hr), "456789");
    EXPECT_EQ(hr, S_FALSE); // less than asked for
    EXPECT_EQ(ReadAll(stream.Get(), &hr), "");
    EXPECT_EQ(hr, S_FALSE);
    EXPECT_EQ(ReadAll(clone.Get()), "456789"); // a place of its own
    EXPECT_EQ(SeekTo(stream.Get(), -3, STREAM_SEEK_END), 7U);
    EXPECT_EQ(ReadAll(stream.Get()), "789");
    EXPECT_EQ(SeekTo(stream.Get(), -8, STREAM_SEEK_CUR), 2U);
    SeekTo(stream.Get(), -3, STREAM_SEEK_CUR, STG_E_INVALIDFUNCTION);
    SeekTo(stream.Get(), -1, STREAM_SEEK_SET, STG_E_INVALIDFUNCTION);
    SeekTo(stream.Get(), INT64_MAX, STREAM_SEEK_CUR, STG_E_INVALIDFUNCTION);
    SeekTo(stream.Get(), 0, 7, STG_E_INVALIDFUNCTION);
    EXPECT_EQ(SeekTo(stream.Get(), 0, STREAM_SEEK_CUR), 2U); // where it was
    EXPECT_EQ(stream->Read(nullptr, 1, nullptr), STG_E_INVALIDPOINTER);
    EXPECT_EQ(stream->Write("x", 1, &count), STG_E_ACCESSDENIED);
    // Who reads a file keeps nobody from deleting it.
    EXPECT_TRUE(DeleteFileW(path.c_str()));
  }
  EXPECT_EQ(LiveObjects(), before);
}

TEST(FileStream, TellsItsNameSizeAndTimes) {
  ScopedTempFolder temp;
  const std::wstring path = temp.MakeFile(L"dir\\a name.txt", 5);
  ComPtr<IStream> stream;
  ASSERT_EQ(CreateFileStream(path, Shared, stream), S_OK);
  STATSTG stat;
  ASSERT_EQ(stream->Stat(&stat, STATFLAG_DEFAULT), S_OK);
  const TUniqueTaskText name(stat.pwcsName);
  EXPECT_EQ(std::wstring(name.Get()), L"a name.txt");
  EXPECT_EQ(stat.type, static_cast<DWORD>(STGTY_STREAM));
  EXPECT_EQ(stat.cbSize.QuadPart, 5U);
  EXPECT_EQ(stat.grfMode, Shared);
  WIN32_FILE_ATTRIBUTE_DATA data;
  ASSERT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data));
  EXPECT_EQ(CompareFileTime(&stat.mtime, &data.ftLastWriteTime), 0);
  ASSERT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(stat.pwcsName, nullptr);
  EXPECT_EQ(stream->Stat(nullptr, 0), STG_E_INVALIDPOINTER);
}

TEST(FileStream, ReachesBeyondFourGigabytes) {
  ScopedTempFolder temp;
  ComPtr<IStream> stream;
  ASSERT_EQ(CreateFileStream(temp.PathOf(L"big"), STGM_READWRITE | STGM_CREATE, stream), S_OK);
  constexpr std::uint64_t far_away = 0x1'4000'0005;
  ULARGE_INTEGER size;
  size.QuadPart = far_away + 3;
  if (stream->SetSize(size) != S_OK) GTEST_SKIP() << "no room, or no files without all of their blocks";
  EXPECT_EQ(SeekTo(stream.Get(), -3, STREAM_SEEK_END), far_away);
  EXPECT_EQ(stream->Write("end", 3, nullptr), S_OK);
  EXPECT_EQ(SeekTo(stream.Get(), static_cast<std::int64_t>(far_away) + 1, STREAM_SEEK_SET), far_away + 1);
  EXPECT_EQ(ReadAll(stream.Get()), "nd");
  STATSTG stat;
  ASSERT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(stat.cbSize.QuadPart, far_away + 3);
}

TEST(FileStream, CopiesToAnotherFromWhereItIs) {
  ScopedTempFolder temp;
  const std::string text(600'000, 'x'); // more than one piece
  WriteText(temp.PathOf(L"from"), "ab" + text);
  ComPtr<IStream> from;
  ComPtr<IStream> to;
  ASSERT_EQ(CreateFileStream(temp.PathOf(L"from"), Shared, from), S_OK);
  ASSERT_EQ(CreateFileStream(temp.PathOf(L"to"), STGM_READWRITE | STGM_CREATE, to), S_OK);
  SeekTo(from.Get(), 1, STREAM_SEEK_SET);
  ULARGE_INTEGER count;
  ULARGE_INTEGER read;
  ULARGE_INTEGER written;
  count.QuadPart = 1;
  EXPECT_EQ(from->CopyTo(to.Get(), count, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 1U);
  count.QuadPart = ~std::uint64_t{0};
  EXPECT_EQ(from->CopyTo(to.Get(), count, &read, &written), S_OK);
  EXPECT_EQ(written.QuadPart, text.size());
  SeekTo(to.Get(), 0, STREAM_SEEK_SET);
  EXPECT_EQ(ReadAll(to.Get()).substr(0, 3), "bxx");
  // Into one that can't be written to.
  SeekTo(from.Get(), 0, STREAM_SEEK_SET);
  ComPtr<IStream> closed;
  ASSERT_EQ(from->Clone(&closed), S_OK);
  EXPECT_EQ(from->CopyTo(closed.Get(), count, &read, &written), STG_E_ACCESSDENIED);
  EXPECT_EQ(written.QuadPart, 0U);
}

TEST(FileStream, SaysWhatIsWrong) {
  ScopedTempFolder temp;
  temp.MakeFile(L"file");
  temp.MakeFile(L"locked");
  const TUniqueHandle lock(
      CreateFileW(temp.PathOf(L"locked").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  std::wstring deep = std::wstring(100, L'a');
  for (int i = 0; i < 3; ++i) deep += L'\\' + std::wstring(100, L'b');
  temp.MakeFile(deep);
  const struct {
    std::wstring path;
    DWORD mode;
    HRESULT result;
  } cases[] = {
      {temp.PathOf(L"none"), Shared, STG_E_FILENOTFOUND},
      {temp.PathOf(L"none\\below"), Shared, STG_E_PATHNOTFOUND},
      {temp.Path(), Shared, STG_E_ACCESSDENIED},
      {temp.PathOf(L"locked"), Shared, STG_E_SHAREVIOLATION},
      {temp.PathOf(L"file"), STGM_READ | STGM_CREATE, STG_E_INVALIDFLAG},
      {L"", Shared, STG_E_INVALIDNAME},
      {L"C:\\" + std::wstring(33000, L'x'), Shared, STG_E_INVALIDNAME},
      {std::wstring(L"C:\\a\0b", 6), Shared, STG_E_INVALIDNAME},
      {L"\\\\.\\PhysicalDrive0", Shared, STG_E_INVALIDNAME},
      {temp.PathOf(deep), Shared, S_OK},
      {L"\\\\?\\" + temp.PathOf(deep), Shared, S_OK},
  };
  for (const auto& c : cases) {
    ComPtr<IStream> stream;
    EXPECT_EQ(CreateFileStream(c.path, c.mode, stream), c.result) << testing::PrintToString(c.path.substr(0, 80));
    EXPECT_EQ(static_cast<bool>(stream), c.result == S_OK);
  }
  // An exclusive one keeps others out as long as it lives.
  ComPtr<IStream> mine;
  ComPtr<IStream> other;
  ASSERT_EQ(CreateFileStream(temp.PathOf(L"file"), STGM_READWRITE | STGM_SHARE_EXCLUSIVE, mine), S_OK);
  EXPECT_EQ(CreateFileStream(temp.PathOf(L"file"), Shared, other), STG_E_SHAREVIOLATION);
  mine.Reset();
  EXPECT_EQ(CreateFileStream(temp.PathOf(L"file"), Shared, other), S_OK);
}

} // namespace
} // namespace kiv
