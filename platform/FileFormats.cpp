#include <platform/FileFormats.h>

#include <platform/FaultGuard.h>
#include <platform/FileDescriptors.h>

#include <shlobj.h>

#include <cstddef>
#include <span>
#include <string_view>

namespace kiv {

namespace {

static_assert(sizeof(FILEDESCRIPTORW) == 592 && offsetof(FILEDESCRIPTORW, cFileName) == 72);
static_assert(sizeof(FILEDESCRIPTORA) == 332 && offsetof(FILEDESCRIPTORA, cFileName) == 72);

constexpr UINT LongestFileName = 32767;

CLIPFORMAT Register(const wchar_t* name) {
  return static_cast<CLIPFORMAT>(RegisterClipboardFormatW(name));
}

// Another program's memory while it is locked.
class TLockedMemory {
public:
  explicit TLockedMemory(HGLOBAL memory) : fMemory(memory), fStart(memory ? GlobalLock(memory) : nullptr) {}
  ~TLockedMemory() {
    if (fStart) GlobalUnlock(fMemory);
  }
  TLockedMemory(const TLockedMemory&) = delete;
  TLockedMemory& operator=(const TLockedMemory&) = delete;

  std::span<const std::byte> Bytes() const {
    if (!fStart) return {};
    return {static_cast<const std::byte*>(fStart), GlobalSize(fMemory)};
  }

private:
  HGLOBAL fMemory;
  void* fStart;
};

std::wstring FromSystemCodePage(std::string_view text) {
  const int size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length > 0 ? length : 0), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), length);
  return wide;
}

// 0 for a handle whose memory isn't what it should be.
UINT QueryFile(HDROP drop, UINT index, wchar_t* buffer, UINT size) {
  UINT answer = 0;
  GuardedCall([&] { answer = DragQueryFileW(drop, index, buffer, size); });
  return answer;
}

} // namespace

CLIPFORMAT CF_FILEDESCRIPTORA() {
  static const CLIPFORMAT format = Register(L"FileGroupDescriptor");
  return format;
}

CLIPFORMAT CF_FILEDESCRIPTORW() {
  static const CLIPFORMAT format = Register(L"FileGroupDescriptorW");
  return format;
}

bool FilesInClipboard() {
  return IsClipboardFormatAvailable(CF_HDROP) || IsClipboardFormatAvailable(CF_FILEDESCRIPTORW()) ||
         IsClipboardFormatAvailable(CF_FILEDESCRIPTORA());
}

std::vector<std::wstring> GetFilenamesFromHandle(HDROP pDrop) {
  std::vector<std::wstring> names;
  constexpr UINT ask_count = 0xFFFFFFFF;
  const UINT count = pDrop ? QueryFile(pDrop, ask_count, nullptr, 0) : 0;
  for (UINT i = 0; i < count; ++i) {
    const UINT length = QueryFile(pDrop, i, nullptr, 0);
    if (length == 0 || length > LongestFileName) continue;
    std::wstring name(length + 1, L'\0');
    name.resize(QueryFile(pDrop, i, name.data(), length + 1));
    if (!name.empty()) names.push_back(std::move(name));
  }
  return names;
}

std::vector<std::wstring> GetFilenamesFromFileDescriptorW(HGLOBAL pMemory) {
  return DecodeFileDescriptorsW(TLockedMemory(pMemory).Bytes());
}

std::vector<std::wstring> GetFilenamesFromFileDescriptorA(HGLOBAL pMemory) {
  std::vector<std::wstring> names;
  for (const std::string& name : DecodeFileDescriptorsA(TLockedMemory(pMemory).Bytes())) {
    names.push_back(FromSystemCodePage(name));
  }
  return names;
}

} // namespace kiv
