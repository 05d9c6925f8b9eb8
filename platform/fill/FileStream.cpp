#include <platform/fill/FileStream.h>

#include <platform/ErrorMode.h>
#include <platform/Handles.h>
#include <platform/InterfacedObject.h>
#include <platform/fill/StorageElements.h>
#include <platform/fill/StorageError.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace kiv {

namespace {

constexpr DWORD AccessBits = 0x3;
constexpr DWORD ShareBits = 0x70;
constexpr ULONG CopyChunk = 1U << 18;

DWORD AccessOf(DWORD mode) {
  switch (mode & AccessBits) {
  case STGM_WRITE:
    return GENERIC_WRITE;
  case STGM_READWRITE:
    return GENERIC_READ | GENERIC_WRITE;
  default:
    return GENERIC_READ;
  }
}

DWORD SharingOf(DWORD mode) {
  switch (mode & ShareBits) {
  case STGM_SHARE_EXCLUSIVE:
    return 0;
  case STGM_SHARE_DENY_WRITE:
    return FILE_SHARE_READ;
  case STGM_SHARE_DENY_READ:
    return FILE_SHARE_WRITE;
  default:
    // Deleting, too: a preview that holds a stream mustn't keep the user from it.
    return FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  }
}

// What a stream and its clones share.
struct TFile {
  TUniqueHandle handle;
  std::wstring name;
  DWORD mode = 0;

  bool CanRead() const { return (mode & AccessBits) != STGM_WRITE; }
  bool CanWrite() const { return (mode & AccessBits) != STGM_READ; }
};

class TFileStream final : public TInterfacedObject<IStream, ISequentialStream> {
public:
  explicit TFileStream(std::shared_ptr<const TFile> pFile, std::uint64_t pPosition = 0)
      : fFile(std::move(pFile)), fPosition(pPosition) {}

  HRESULT STDMETHODCALLTYPE Read(void* pBuffer, ULONG pSize, ULONG* pRead) override;
  HRESULT STDMETHODCALLTYPE Write(const void* pBuffer, ULONG pSize, ULONG* pWritten) override;
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER pMove, DWORD pOrigin, ULARGE_INTEGER* pPosition) override;
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER pSize) override;
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* pTarget, ULARGE_INTEGER pSize, ULARGE_INTEGER* pRead,
                                   ULARGE_INTEGER* pWritten) override;
  HRESULT STDMETHODCALLTYPE Commit(DWORD pFlags) override;
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* pStat, DWORD pFlags) override;
  HRESULT STDMETHODCALLTYPE Clone(IStream** pStream) override;

  HRESULT STDMETHODCALLTYPE Revert() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }

private:
  // Where the next access is. The handle's own position is nobody's, because clones share the handle.
  OVERLAPPED Place() const {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(fPosition);
    place.OffsetHigh = static_cast<DWORD>(fPosition >> 32);
    return place;
  }
  HRESULT ReadHere(void* pBuffer, ULONG pSize, ULONG& pRead);

  std::shared_ptr<const TFile> fFile;
  std::uint64_t fPosition;
};

HRESULT TFileStream::ReadHere(void* pBuffer, ULONG pSize, ULONG& pRead) {
  pRead = 0;
  if (!fFile->CanRead()) return STG_E_ACCESSDENIED;
  OVERLAPPED place = Place();
  DWORD count = 0;
  if (!ReadFile(fFile->handle.Get(), pBuffer, pSize, &count, &place) && GetLastError() != ERROR_HANDLE_EOF) {
    return LastStorageError();
  }
  pRead = count;
  fPosition += count;
  return S_OK;
}

HRESULT TFileStream::Read(void* pBuffer, ULONG pSize, ULONG* pRead) {
  ULONG count = 0;
  if (pRead) *pRead = 0;
  if (!pBuffer) return STG_E_INVALIDPOINTER;
  const HRESULT hr = ReadHere(pBuffer, pSize, count);
  if (pRead) *pRead = count;
  return FAILED(hr) ? hr : count == pSize ? S_OK : S_FALSE;
}

HRESULT TFileStream::Write(const void* pBuffer, ULONG pSize, ULONG* pWritten) {
  if (pWritten) *pWritten = 0;
  if (!pBuffer) return STG_E_INVALIDPOINTER;
  if (!fFile->CanWrite()) return STG_E_ACCESSDENIED;
  OVERLAPPED place = Place();
  DWORD count = 0;
  const bool done = WriteFile(fFile->handle.Get(), pBuffer, pSize, &count, &place) != FALSE;
  const HRESULT hr = done ? S_OK : LastStorageError();
  fPosition += count;
  if (pWritten) *pWritten = count;
  return hr;
}

HRESULT TFileStream::Seek(LARGE_INTEGER pMove, DWORD pOrigin, ULARGE_INTEGER* pPosition) {
  LARGE_INTEGER size{};
  std::uint64_t base = 0;
  switch (pOrigin) {
  case STREAM_SEEK_SET:
    break;
  case STREAM_SEEK_CUR:
    base = fPosition;
    break;
  case STREAM_SEEK_END:
    if (!GetFileSizeEx(fFile->handle.Get(), &size)) return LastStorageError();
    base = static_cast<std::uint64_t>(size.QuadPart);
    break;
  default:
    return STG_E_INVALIDFUNCTION;
  }
  // Neither in front of the file nor behind what a file can have.
  constexpr auto furthest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  const std::uint64_t target = base + static_cast<std::uint64_t>(pMove.QuadPart);
  if (target > furthest) return STG_E_INVALIDFUNCTION;
  fPosition = target;
  if (pPosition) pPosition->QuadPart = target;
  return S_OK;
}

HRESULT TFileStream::SetSize(ULARGE_INTEGER pSize) {
  if (!fFile->CanWrite()) return STG_E_ACCESSDENIED;
  FILE_END_OF_FILE_INFO end{};
  if (pSize.QuadPart > static_cast<ULONGLONG>(std::numeric_limits<LONGLONG>::max())) return STG_E_MEDIUMFULL;
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(pSize.QuadPart);
  const BOOL done = SetFileInformationByHandle(fFile->handle.Get(), FileEndOfFileInfo, &end, sizeof(end));
  return done ? S_OK : LastStorageError();
}

HRESULT TFileStream::CopyTo(IStream* pTarget, ULARGE_INTEGER pSize, ULARGE_INTEGER* pRead, ULARGE_INTEGER* pWritten) {
  if (pRead) pRead->QuadPart = 0;
  if (pWritten) pWritten->QuadPart = 0;
  if (!pTarget) return STG_E_INVALIDPOINTER;
  std::vector<std::byte> buffer(CopyChunk);
  HRESULT hr = S_OK;
  for (std::uint64_t left = pSize.QuadPart; left > 0;) {
    ULONG read = 0;
    hr = ReadHere(buffer.data(), static_cast<ULONG>(std::min<std::uint64_t>(left, CopyChunk)), read);
    if (FAILED(hr) || read == 0) break;
    ULONG written = 0;
    hr = pTarget->Write(buffer.data(), read, &written);
    if (pRead) pRead->QuadPart += read;
    if (pWritten) pWritten->QuadPart += written;
    if (SUCCEEDED(hr) && written != read) hr = STG_E_MEDIUMFULL;
    if (FAILED(hr)) break;
    left -= read;
  }
  return FAILED(hr) ? hr : S_OK;
}

HRESULT TFileStream::Commit(DWORD pFlags) {
  if (!fFile->CanWrite() || (pFlags & STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE) != 0) return S_OK;
  return FlushFileBuffers(fFile->handle.Get()) ? S_OK : LastStorageError();
}

HRESULT TFileStream::Stat(STATSTG* pStat, DWORD pFlags) {
  if (!pStat) return STG_E_INVALIDPOINTER;
  *pStat = {};
  BY_HANDLE_FILE_INFORMATION info{};
  if (!GetFileInformationByHandle(fFile->handle.Get(), &info)) return LastStorageError();
  TStorageElement element{.name = fFile->name};
  element.size = static_cast<std::uint64_t>(info.nFileSizeHigh) << 32 | info.nFileSizeLow;
  element.written = info.ftLastWriteTime;
  element.created = info.ftCreationTime;
  element.accessed = info.ftLastAccessTime;
  const HRESULT hr = FillStat(element, pFlags, *pStat);
  if (SUCCEEDED(hr)) pStat->grfMode = fFile->mode;
  return hr;
}

HRESULT TFileStream::Clone(IStream** pStream) {
  if (!pStream) return STG_E_INVALIDPOINTER;
  *pStream = Make<TFileStream>(fFile, fPosition).Detach();
  return S_OK;
}

} // namespace

HRESULT OpenFileStream(const std::wstring& pStoragePath, DWORD pMode, DWORD pDisposition, ComPtr<IStream>& pStream) {
  pStream.Reset();
  const ScopedErrorMode mode;
  auto file = std::make_shared<TFile>();
  file->handle.Reset(CreateFileW(pStoragePath.c_str(), AccessOf(pMode), SharingOf(pMode), nullptr, pDisposition,
                                 FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file->handle) return LastStorageError();
  file->name = NameOfPath(pStoragePath);
  file->mode = pMode;
  pStream = Make<TFileStream>(std::move(file));
  return S_OK;
}

HRESULT CreateFileStream(const std::wstring& pPath, DWORD pMode, ComPtr<IStream>& pStream) {
  pStream.Reset();
  const std::wstring path = ToStoragePath(pPath);
  if (path.empty()) return STG_E_INVALIDNAME;
  const bool create = (pMode & STGM_CREATE) != 0;
  if (create && (pMode & AccessBits) == STGM_READ) return STG_E_INVALIDFLAG;
  return OpenFileStream(path, pMode, create ? CREATE_ALWAYS : OPEN_EXISTING, pStream);
}

} // namespace kiv
