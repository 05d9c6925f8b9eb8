#include <platform/fill/DirectoryHandle.h>

#include <platform/ShellApi.h>
#include <platform/TempPath.h>
#include <platform/fill/LiteralPath.h>

#include <dbt.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <new>
#include <span>
#include <utility>

namespace kiv {

namespace {

constexpr DWORD Changes = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME | FILE_NOTIFY_CHANGE_ATTRIBUTES |
                          FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_LAST_WRITE | FILE_NOTIFY_CHANGE_CREATION;
// Network redirectors refuse more than 64 KB.
constexpr DWORD RootBuffer = 64 * 1024;
constexpr DWORD FolderBuffer = 8 * 1024;
constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD OpenDirectory = FILE_FLAG_BACKUP_SEMANTICS;

TUniqueHandle OpenFolder(const std::wstring& path, DWORD access, DWORD flags) {
  return TUniqueHandle(
      CreateFileW(LiteralPath(path).c_str(), access, ShareAll, nullptr, OPEN_EXISTING, OpenDirectory | flags, nullptr));
}

// Without the volume, which may be asked of another process (Wine) and takes a hundred times as long.
// "FileInternalInformation".
std::uint64_t FileNumberOf(HANDLE file) {
  constexpr int internal_information = 6;
  void* status[2] = {};
  LARGE_INTEGER number{};
  const auto query = ShellApi().NtQueryInformationFile;
  if (query && query(file, status, &number, sizeof(number), internal_information) >= 0) {
    return static_cast<std::uint64_t>(number.QuadPart);
  }
  BY_HANDLE_FILE_INFORMATION info;
  if (!GetFileInformationByHandle(file, &info)) return 0;
  return static_cast<std::uint64_t>(info.nFileIndexHigh) << 32U | info.nFileIndexLow;
}

IWatchedFolders::TKind KindOfAttributes(DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return IWatchedFolders::TKind::File;
  const bool link = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  return link ? IWatchedFolders::TKind::Link : IWatchedFolders::TKind::Folder;
}

bool Arm(TDirectoryHandle& handle) noexcept {
  handle.overlapped = {};
  handle.armed = ReadDirectoryChangesW(handle.file.Get(), handle.buffer.get(), handle.size, handle.subtree, Changes,
                                       nullptr, &handle.overlapped, nullptr) != FALSE;
  return handle.armed;
}

// What there is no memory for is lost, and told as that.
template <typename F>
bool HasRoom(F&& act) {
  try {
    return act();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

} // namespace

DWORD TDirectoryHandle::Volume() const {
  BY_HANDLE_FILE_INFORMATION info;
  return GetFileInformationByHandle(file.Get(), &info) ? info.dwVolumeSerialNumber : 0;
}

std::uint64_t FileNumberAt(const std::wstring& pPath) {
  const TUniqueHandle file = OpenFolder(pPath, 0, 0);
  return file ? FileNumberOf(file.Get()) : 0;
}

TDirectoryHandle::~TDirectoryHandle() {
  Close();
}

void TDirectoryHandle::AskBeforeEject(HWND pWindow) noexcept {
  const auto call = ShellApi().RegisterDeviceNotificationW;
  if (!pWindow || !call) return;
  DEV_BROADCAST_HANDLE filter{};
  filter.dbch_size = sizeof(filter);
  filter.dbch_devicetype = DBT_DEVTYP_HANDLE;
  filter.dbch_handle = file.Get();
  device = call(pWindow, &filter, DEVICE_NOTIFY_WINDOW_HANDLE);
}

void TDirectoryHandle::Close() noexcept {
  const auto call = ShellApi().UnregisterDeviceNotification;
  if (device && call) call(std::exchange(device, nullptr));
  file.Reset();
}

IWatchedFolders::TKind KindOfPath(const std::wstring& pPath) {
  const DWORD attributes = GetFileAttributesW(LiteralPath(pPath).c_str());
  return attributes == INVALID_FILE_ATTRIBUTES ? IWatchedFolders::TKind::None : KindOfAttributes(attributes);
}

namespace {

// Until `take` says that it is enough. By the handle: its path may be another folder's by now. False if the directory
// can't be listed.
template <typename F>
bool ForEachIn(HANDLE directory, F&& take) {
  alignas(FILE_ID_BOTH_DIR_INFO) std::byte buffer[16 * 1024];
  FILE_INFO_BY_HANDLE_CLASS part = FileIdBothDirectoryRestartInfo;
  for (; GetFileInformationByHandleEx(directory, part, buffer, sizeof(buffer)); part = FileIdBothDirectoryInfo) {
    const std::byte* at = buffer;
    for (std::size_t next = 1; next != 0; at += next) {
      const auto* const info = reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(at);
      next = info->NextEntryOffset;
      const std::wstring_view name(info->FileName, info->FileNameLength / sizeof(wchar_t));
      if (name != L"." && name != L".." && !take(name, KindOfAttributes(info->FileAttributes))) return true;
    }
  }
  return GetLastError() == ERROR_NO_MORE_FILES;
}

} // namespace

std::uint64_t ListDirectory(const std::wstring& pPath, bool pFiles, std::vector<IWatchedFolders::TEntry>& pEntries) {
  const TUniqueHandle directory = OpenFolder(pPath, FILE_LIST_DIRECTORY, 0);
  const bool listed = directory && ForEachIn(directory.Get(), [&](std::wstring_view name, IWatchedFolders::TKind kind) {
                        if (pFiles || kind != IWatchedFolders::TKind::File)
                          pEntries.push_back({std::wstring(name), kind});
                        return true;
                      });
  return listed ? FileNumberOf(directory.Get()) : 0;
}

bool IsDirectoryEmpty(const std::wstring& pPath) {
  const TUniqueHandle directory = OpenFolder(pPath, FILE_LIST_DIRECTORY, 0);
  bool empty = true;
  return directory && ForEachIn(directory.Get(), [&](auto&&...) { return empty = false; }) && empty;
}

// --- the port -------------------------------------------------------------------------------------------------------

TDirectoryPort::TDirectoryPort() : fPort(CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, 1)) {}

TDirectoryPort::~TDirectoryPort() {
  // What the platform doesn't let go of stays: it may still write there.
  for (auto& handle : fClosed) static_cast<void>(handle.release());
}

TDirectoryHandle* TDirectoryPort::Open(const std::wstring& pPath, bool pSubtree, TTag pTag) {
  auto handle = std::make_unique<TDirectoryHandle>();
  handle->file = OpenFolder(pPath, FILE_LIST_DIRECTORY, FILE_FLAG_OVERLAPPED);
  handle->tag = pTag;
  handle->subtree = pSubtree;
  handle->size = pTag.folder == TWatchedTree::RootFolder ? RootBuffer : FolderBuffer;
  handle->buffer = std::make_unique_for_overwrite<DWORD[]>(handle->size / sizeof(DWORD));
  if (!handle->file || !CreateIoCompletionPort(handle->file.Get(), fPort.Get(), 0, 0) || !Arm(*handle)) return nullptr;
  handle->number = FileNumberOf(handle->file.Get());
  if (handle->number != 0) return handle.release();
  Close(handle.release());
  return nullptr;
}

void TDirectoryPort::Close(TDirectoryHandle* pHandle) noexcept {
  std::unique_ptr<TDirectoryHandle> handle(pHandle);
  std::erase(fToArm, pHandle);
  if (!pHandle->armed) return;
  pHandle->closed = true;
  fClosed.push_back(std::move(handle));
  CancelIoEx(pHandle->file.Get(), &pHandle->overlapped);
  fClosed.back()->Close();
}

void TDirectoryPort::Dispose(TDirectoryHandle* pHandle) noexcept {
  std::erase_if(fClosed, [pHandle](const auto& handle) { return handle.get() == pHandle; });
}

bool TDirectoryPort::Take(DWORD pLimit, TCompletion& pNext) noexcept {
  ULONG_PTR key = 0;
  OVERLAPPED* overlapped = nullptr;
  const BOOL done = GetQueuedCompletionStatus(fPort.Get(), &pNext.bytes, &key, &overlapped, pLimit);
  pNext.error = done ? ERROR_SUCCESS : GetLastError();
  pNext.handle = overlapped ? CONTAINING_RECORD(overlapped, TDirectoryHandle, overlapped) : nullptr;
  return overlapped || done;
}

TDirectoryPort::TEvent TDirectoryPort::Await(DWORD pLimit, TDirectoryReport& pReport) {
  TCompletion next;
  if (!fKept.empty()) {
    next = fKept.front();
    fKept.pop_front();
  } else if (!Take(pLimit, next)) {
    return TEvent::TimeOut;
  }
  const auto [handle, bytes, error] = next;
  if (!handle) return TEvent::Nothing;
  if (handle->closed) {
    Dispose(handle);
    return TEvent::Nothing;
  }
  fToArm.push_back(handle);
  handle->armed = false;
  pReport = {TDirectoryReport::TKind::Records, handle->tag.owner, handle->tag.folder, {}};
  if (error != ERROR_SUCCESS && error != ERROR_NOTIFY_ENUM_DIR) {
    fToArm.pop_back();
    pReport.kind = TDirectoryReport::TKind::Failed;
    return TEvent::Report;
  }
  const auto buffer = std::as_bytes(std::span(handle->buffer.get(), handle->size / sizeof(DWORD)));
  const auto filled = buffer.first(std::min(bytes, handle->size));
  const auto parse = [&] { return ParseDirectoryRecords(filled, pReport.records); };
  if (error == ERROR_SUCCESS && bytes != 0 && HasRoom(parse)) return TEvent::Report;
  pReport.records.clear();
  pReport.kind = TDirectoryReport::TKind::Overflow;
  return TEvent::Report;
}

void TDirectoryPort::Rearm(TUnreadReports& pFailed) {
  while (!fToArm.empty()) {
    TDirectoryHandle* const handle = fToArm.back();
    if (!handle->armed && !Arm(*handle)) {
      pFailed.Add({TDirectoryReport::TKind::Failed, handle->tag.owner, handle->tag.folder, {}});
    }
    fToArm.pop_back();
  }
}

void TDirectoryPort::Settle() {
  constexpr DWORD limit = 500; // ms
  const ULONGLONG end = GetTickCount64() + limit;
  std::erase_if(fKept, [this](const TCompletion& completion) {
    const bool closed = completion.handle->closed;
    if (closed) Dispose(completion.handle);
    return closed;
  });
  while (!fClosed.empty() && GetTickCount64() < end) {
    TCompletion next;
    if (!Take(limit, next)) return;
    if (next.handle && next.handle->closed) {
      Dispose(next.handle);
    } else if (next.handle) {
      fKept.push_back(next);
    }
  }
}

void TDirectoryPort::Wake() noexcept {
  PostQueuedCompletionStatus(fPort.Get(), 0, 0, nullptr);
}

// --- the probe ------------------------------------------------------------------------------------------------------

namespace {

bool MakeFile(const std::wstring& path) {
  return static_cast<bool>(TUniqueHandle(CreateFileW(LiteralPath(path).c_str(), GENERIC_WRITE, ShareAll, nullptr,
                                                     CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY, nullptr)));
}

// The file below is made first: once the one in the folder itself is reported, the other one should have been.
bool IsReportedFromBelow(const std::wstring& folder) {
  constexpr DWORD limit = 1000; // ms
  TDirectoryPort port;
  TDirectoryHandle* const handle = port.Open(folder, true, {nullptr, TWatchedTree::RootFolder});
  bool below = false;
  TUnreadReports failed;
  if (handle && MakeFile(folder + L"\\below\\x") && MakeFile(folder + L"\\x")) {
    bool over = false;
    while (!over) {
      TDirectoryReport report;
      port.Rearm(failed);
      over = port.Await(limit, report) != TDirectoryPort::TEvent::Report;
      for (const TDirectoryRecord& record : report.records) {
        below = below || record.name == L"below\\x";
        over = over || record.name == L"x";
      }
    }
  }
  if (handle) port.Close(handle);
  port.Settle();
  return below;
}

} // namespace

bool ProbeSubtrees() {
  static std::atomic<std::uint32_t> count{0};
  const std::wstring folder =
      KivGetTempPath() + L"kiv" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
  const std::wstring below = folder + L"\\below";
  if (!CreateDirectoryW(LiteralPath(folder).c_str(), nullptr)) return false;
  const bool reported = CreateDirectoryW(LiteralPath(below).c_str(), nullptr) && IsReportedFromBelow(folder);
  DeleteFileW(LiteralPath(below + L"\\x").c_str());
  DeleteFileW(LiteralPath(folder + L"\\x").c_str());
  RemoveDirectoryW(LiteralPath(below).c_str());
  RemoveDirectoryW(LiteralPath(folder).c_str());
  return reported;
}

} // namespace kiv
