#pragma once

#include <platform/Handles.h>
#include <platform/fill/UnreadReports.h>
#include <platform/fill/WatchedTree.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

// Inside of DirectoryWatcher: what it asks the platform.
namespace kiv {

/// Which folder of its volume stands at a path, whatever it is called; 0 if none does.
std::uint64_t FileNumberAt(const std::wstring& pPath);
IWatchedFolders::TKind KindOfPath(const std::wstring& pPath);
/// What a folder holds, and its number; 0 if it can't be listed.
std::uint64_t ListDirectory(const std::wstring& pPath, bool pFiles, std::vector<IWatchedFolders::TEntry>& pEntries);
bool IsDirectoryEmpty(const std::wstring& pPath);
/// Whether one directory handle reports what happens in the folders below, those included that were there before it.
/// Asks the platform, with files in the temporary folder. False if that can't be done.
bool ProbeSubtrees();

struct TDirectoryHandle;

/// A completion port with directory handles. One thread, but for Wake.
class TDirectoryPort {
public:
  /// Whose handle it is.
  struct TTag {
    void* owner = nullptr;
    std::uint64_t folder = 0;
  };
  enum class TEvent { Report, Nothing, TimeOut };

  TDirectoryPort();
  ~TDirectoryPort();
  TDirectoryPort(const TDirectoryPort&) = delete;
  TDirectoryPort& operator=(const TDirectoryPort&) = delete;

  /// A handle that reports from now on; null if there is no such folder, or it can't be opened. The port's own.
  TDirectoryHandle* Open(const std::wstring& pPath, bool pSubtree, TTag pTag);
  /// Nothing is reported of it any more.
  void Close(TDirectoryHandle* pHandle) noexcept;
  /// The next event, at most `pLimit` milliseconds later. The handle of a report reports nothing more before Rearm;
  /// what happens until then the platform keeps for it.
  TEvent Await(DWORD pLimit, TDirectoryReport& pReport);
  /// Lets handles that reported do so again. A report for each one that can't.
  void Rearm(TUnreadReports& pFailed);
  /// Waits until the platform has let go of all closed handles, half a second at most. What the others report stays for
  /// Await.
  void Settle();
  /// Any thread: ends an Await.
  void Wake() noexcept;

private:
  struct TCompletion {
    TDirectoryHandle* handle = nullptr;
    DWORD bytes = 0;
    DWORD error = ERROR_SUCCESS;
  };

  bool Take(DWORD pLimit, TCompletion& pNext) noexcept;
  void Dispose(TDirectoryHandle* pHandle) noexcept;

  TUniqueHandle fPort;
  std::deque<TCompletion> fKept;                          // came while something else was waited for
  std::vector<std::unique_ptr<TDirectoryHandle>> fClosed; // whose request hasn't ended
  std::vector<TDirectoryHandle*> fToArm;
};

/// One open directory.
struct TDirectoryHandle {
  ~TDirectoryHandle();
  /// Registers the handle for WM_DEVICECHANGE ("RegisterDeviceNotification").
  void AskBeforeEject(HWND pWindow) noexcept;
  void Close() noexcept;
  /// Its serial number; 0 if that can't be had.
  DWORD Volume() const;

  OVERLAPPED overlapped{}; // first
  TUniqueHandle file;
  std::uint64_t number = 0; // of the folder in its volume
  TDirectoryPort::TTag tag;
  HDEVNOTIFY device = nullptr;
  bool subtree = false;
  bool armed = false; // the platform has the buffer, or its answer waits at the port
  bool closed = false;
  DWORD size = 0;
  std::unique_ptr<DWORD[]> buffer;
};

} // namespace kiv
