#include <notification/ShellChangeSource.h>

#include <core/FileFunctions.h>
#include <core/ItemIdList.h>
#include <core/PathFunctions.h>
#include <core/PathUtils.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <framework/FileNames.h>
#include <notification/ChangeSourceKind.h>
#include <notification/ReportingProbe.h>
#include <platform/FaultGuard.h>
#include <platform/PathApi.h>
#include <platform/ThisModule.h>
#include <platform/fill/DirectoryWatcher.h>

#include <dbt.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

namespace kiv {

namespace {

constexpr wchar_t ClassName[] = L"TKivShellChangeNotifier";
constexpr UINT ShellMessage = 2011;
constexpr UINT NoticesMessage = 2012;
constexpr UINT_PTR NoticesTimer = 1;
constexpr std::uint32_t LongestBegin = 100; // ms that the main thread waits for a watch
constexpr ULONGLONG LongestTurn = 10;       // ms

// Interrupt level, shell level, new delivery; recursive interrupts.
constexpr int Sources = SHCNRF_InterruptLevel | SHCNRF_ShellLevel | SHCNRF_NewDelivery;
constexpr int RecursiveSources = Sources | SHCNRF_RecursiveInterrupt;
static_assert(Sources == 0x8003 && RecursiveSources == 0x9003);

TChangeSourceKind gKind = TChangeSourceKind::Automatic;

TNotificationEvent EventOf(TDirectoryEvent event) {
  constexpr TNotificationEvent events[] = {neFileCreate,   neFileDelete,   neFileRename,   neFileChange,
                                           neFolderCreate, neFolderDelete, neFolderRename, neFolderUpdate};
  static_assert(std::size(events) == static_cast<std::size_t>(TDirectoryEvent::NoFolder));
  return events[static_cast<std::size_t>(event)];
}

ComPtr<IItemIdList> CopyOf(PCIDLIST_ABSOLUTE list) {
  return TKivItemIdList::Create(list, iloCopyMemory);
}

// In the place of a second list.
ComPtr<IItemIdList> NoList() {
  return TKivItemIdList::Create(nullptr, iloOwnsMemory);
}

// What has gone is nothing that the shell could parse any more. A server that is asked may not answer, so nothing is
// resolved of it but within a time, and of what has gone nobody asks for its folder either.
ComPtr<IItemIdList> ListOf(const std::wstring& path, bool gone, bool on_network) {
  if (!on_network) return TKivItemIdList::CreateOfChange(path, gone);
  return gone ? TKivItemIdList::CreateSimpleIdList(path) : TKivItemIdList::Create(path);
}

// The shell's pair of numbers in the place of a list: the first one says which drives. Nil if it says none.
ComPtr<IItemIdList> DriveOf(PCIDLIST_ABSOLUTE numbers) {
  std::uint32_t drives = 0;
  if (numbers && numbers->mkid.cb >= sizeof(USHORT) + sizeof(drives)) {
    std::memcpy(&drives, reinterpret_cast<const std::byte*>(numbers) + sizeof(USHORT), sizeof(drives));
  }
  for (int i = 0; i < 26; ++i) {
    if ((drives >> i & 1U) == 0) continue;
    const wchar_t root[] = {static_cast<wchar_t>(L'A' + i), L':', L'\\', L'\0'};
    return TKivItemIdList::Create(root);
  }
  return nullptr;
}

// Whether a notice of a folder's watch concerns the only file in it that is watched.
bool Concerns(const TDirectoryNotice& notice, const std::wstring& file) {
  if (notice.event == TDirectoryEvent::FolderUpdate) {
    return SamePath(notice.path1, TPathUtils::UnifyPath(ExtractFileDir(file)));
  }
  return SamePath(notice.path1, file) || SamePath(notice.path2, file);
}

/// The platform's memory of one event, let go at the end of the scope.
class ScopedNotification {
public:
  ScopedNotification(WPARAM wParam, LPARAM lParam) {
    const auto lock = ShellApi().SHChangeNotification_Lock;
    if (lock) {
      fLock = lock(reinterpret_cast<HANDLE>(wParam), static_cast<DWORD>(lParam), &fLists, &fEvent);
    }
  }
  ~ScopedNotification() {
    const auto unlock = ShellApi().SHChangeNotification_Unlock;
    if (fLock && unlock) unlock(fLock);
  }
  ScopedNotification(const ScopedNotification&) = delete;
  ScopedNotification& operator=(const ScopedNotification&) = delete;

  explicit operator bool() const noexcept { return fLock && fLists; }
  PCIDLIST_ABSOLUTE List(int pIndex) const noexcept { return fLists[pIndex]; }
  LONG Event() const noexcept { return fEvent; }

private:
  HANDLE fLock = nullptr;
  PIDLIST_ABSOLUTE* fLists = nullptr;
  LONG fEvent = 0;
};

// A medium is to be ejected, and a watch keeps it there: asked for each handle that was registered for it.
void OnDeviceQueried(LPARAM lParam) {
  const auto* const header = reinterpret_cast<const DEV_BROADCAST_HDR*>(lParam);
  if (!header || header->dbch_devicetype != DBT_DEVTYP_HANDLE) return;
  DirectoryWatcher::ReleaseVolume(reinterpret_cast<const DEV_BROADCAST_HANDLE*>(header)->dbch_handle);
}

} // namespace

void SetChangeSourceKind(TChangeSourceKind pKind) noexcept {
  gKind = pKind;
}

TChangeSourceKind GetChangeSourceKind() noexcept {
  return gKind;
}

// --- the window -----------------------------------------------------------------------------------------------------

// A top-level window, never shown: windows for messages only aren't told of devices.
ShellChangeSource::ShellChangeSource(IChangeSink& pSink) : fSink(pSink) {
  WNDCLASSEXW window_class{};
  window_class.cbSize = sizeof(window_class);
  window_class.lpfnWndProc = &WindowProcedure;
  window_class.hInstance = ThisModule();
  window_class.lpszClassName = ClassName;
  const bool known = RegisterClassExW(&window_class) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
  if (known) {
    fWindow = CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, ClassName, nullptr, WS_POPUP, 0, 0, 0, 0, nullptr,
                              nullptr, ThisModule(), nullptr);
  }
  if (!fWindow) throw EOSError(GetLastError(), L"The window for change notifications can't be made.");
  SetWindowLongPtrW(fWindow, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  fQueue = std::make_shared<TNoticeQueue>(
      [window = fWindow] { return PostMessageW(window, NoticesMessage, 0, 0) != FALSE; });
  ReportingProbe::Add(*this);
}

ShellChangeSource::~ShellChangeSource() {
  Close();
}

void ShellChangeSource::Close() noexcept {
  if (!fWindow) return;
  const HWND window = std::exchange(fWindow, nullptr);
  ReportingProbe::Remove(*this);
  std::map<std::uint32_t, TRegistration> registrations;
  {
    const std::lock_guard guard(fLock);
    registrations.swap(fRegistrations);
  }
  for (const auto& [handle, registration] : registrations) End(registration);
  fQueue->Close();
  SetWindowLongPtrW(window, GWLP_USERDATA, 0);
  DestroyWindow(window);
}

LRESULT CALLBACK ShellChangeSource::WindowProcedure(HWND pWindow, UINT pMessage, WPARAM wParam, LPARAM lParam) {
  auto* const source = reinterpret_cast<ShellChangeSource*>(GetWindowLongPtrW(pWindow, GWLP_USERDATA));
  try {
    if (source && pMessage == ShellMessage) return source->OnShellMessage(wParam, lParam);
    if (source && (pMessage == NoticesMessage || (pMessage == WM_TIMER && wParam == NoticesTimer))) {
      if (pMessage == WM_TIMER) KillTimer(pWindow, NoticesTimer);
      source->OnNotices();
      return 0;
    }
    if (pMessage == WM_DEVICECHANGE && wParam == DBT_DEVICEQUERYREMOVE) OnDeviceQueried(lParam);
  } catch (...) {
    ReportException(std::current_exception());
    return 0;
  }
  return DefWindowProcW(pWindow, pMessage, wParam, lParam);
}

LRESULT ShellChangeSource::OnShellMessage(WPARAM wParam, LPARAM lParam) {
  const auto self = shared_from_this();
  ComPtr<IItemIdList> first;
  ComPtr<IItemIdList> second;
  TNotificationEvent event = neUnknown;
  {
    const ScopedNotification notification(wParam, lParam);
    if (!notification) return 0;
    event = TNotificationEventHelper::FromShellEvent(static_cast<std::uint32_t>(notification.Event()));
    if (!fSink.Accepts(event)) return 0;
    // Copies: the platform's own lists end with the lock.
    const PCIDLIST_ABSOLUTE other = notification.List(1);
    if (event == neDriveSpaceChange) {
      first = DriveOf(notification.List(0));
      second = NoList();
    } else {
      first = CopyOf(notification.List(0));
      second = other ? CopyOf(other) : NoList();
    }
  }
  if (fWindow) fSink.OnChangeArrived(event, std::move(first), std::move(second));
  return 0;
}

// --- registrations --------------------------------------------------------------------------------------------------

ULONG ShellChangeSource::ShellNotifyRegister(IItemIdList* pItemIdList, bool pRecursive, TNotificationEvents pEvents) {
  const auto call = ShellApi().SHChangeNotifyRegister;
  const PCIDLIST_ABSOLUTE list = pItemIdList ? pItemIdList->WindowsPointer() : nullptr;
  if (!call || !list) return 0;
  const SHChangeNotifyEntry entry{list, pRecursive};
  const auto mask = static_cast<LONG>(TNotificationEventHelper::ToShellEvents(pEvents));
  return call(fWindow, pRecursive ? RecursiveSources : Sources, mask, ShellMessage, 1, &entry);
}

// A file is watched by its folder. A server may take its time to tell files from folders: nobody asks it, and a file
// there is no folder that could be watched.
bool ShellChangeSource::WatchDirectory(TRegistration& pRegistration) {
  std::wstring path = pRegistration.list->Path();
  if (!IsAbsolutePath(path)) return false;
  pRegistration.network = IsNetworkPath(path);
  const DWORD attributes = pRegistration.network ? FILE_ATTRIBUTE_DIRECTORY
                                                 : PathApi::FileAttributes(TPathUtils::GetUnicodeAPICallPath(path));
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  bool recursive = pRegistration.recursive;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
    pRegistration.file = path;
    path = ExtractFileDir(path);
    recursive = false;
  }
  pRegistration.directory =
      DirectoryWatcher::Watch(TPathUtils::UnifyPath(path), recursive, fQueue, pRegistration.network ? nullptr : fWindow,
                              LongestBegin, pRegistration.network);
  return pRegistration.directory != 0;
}

std::uint32_t ShellChangeSource::Register(IItemIdList* pItemIdList, bool pRecursive, TNotificationEvents pEvents) {
  if (!pItemIdList || !fWindow) return 0;
  const auto self = shared_from_this();
  TRegistration registration;
  registration.list = pItemIdList;
  registration.recursive = pRecursive;
  registration.events = pEvents;
  const bool shell =
      gKind == TChangeSourceKind::Shell || (gKind == TChangeSourceKind::Automatic && ReportingProbe::Result() == true);
  // What isn't a place in the file system has no source but the shell.
  if (shell || !WatchDirectory(registration)) {
    registration.shell = ShellNotifyRegister(pItemIdList, pRecursive, pEvents);
    if (registration.shell == 0) return 0;
  }
  if (!fWindow) {
    End(registration);
    return 0;
  }
  const std::lock_guard guard(fLock);
  fRegistrations.emplace(++fLastHandle, std::move(registration));
  return fLastHandle;
}

void ShellChangeSource::End(const TRegistration& pRegistration) noexcept {
  const auto call = ShellApi().SHChangeNotifyDeregister;
  if (pRegistration.shell != 0 && call) call(pRegistration.shell);
  if (pRegistration.directory != 0) DirectoryWatcher::Unwatch(pRegistration.directory);
}

void ShellChangeSource::Unregister(std::uint32_t pHandle) noexcept {
  TRegistration registration;
  {
    const std::lock_guard guard(fLock);
    const auto found = fRegistrations.find(pHandle);
    if (found == fRegistrations.end()) return;
    registration = std::move(found->second);
    fRegistrations.erase(found);
  }
  if (registration.directory != 0) fQueue->End(registration.directory);
  End(registration);
}

// What a handler throws ends nothing but itself. False if what it did was the end of this source, which the caller
// holds.
bool ShellChangeSource::Tell(const std::function<void()>& pTell) {
  try {
    pTell();
  } catch (...) {
    ReportException(std::current_exception());
  }
  return fWindow != nullptr;
}

void ShellChangeSource::OnProbed(bool pShellReports) {
  if (!pShellReports || gKind != TChangeSourceKind::Automatic) return;
  const auto self = shared_from_this();
  std::vector<std::uint32_t> handles;
  {
    const std::lock_guard guard(fLock);
    for (const auto& [handle, registration] : fRegistrations) handles.push_back(handle);
  }
  for (const std::uint32_t handle : handles) {
    if (!Tell([&] { GoOverToShell(handle); })) return;
  }
}

// Any watch may be ended meanwhile, by a handler or on another thread.
void ShellChangeSource::GoOverToShell(std::uint32_t pHandle) {
  TRegistration registration;
  {
    const std::lock_guard guard(fLock);
    const auto found = fRegistrations.find(pHandle);
    if (found == fRegistrations.end() || found->second.directory == 0) return;
    registration = found->second;
  }
  const std::uint32_t directory = std::exchange(registration.directory, 0);
  registration.shell = ShellNotifyRegister(registration.list.Get(), registration.recursive, registration.events);
  if (registration.shell == 0) return;
  bool stands = false;
  {
    const std::lock_guard guard(fLock);
    const auto found = fRegistrations.find(pHandle);
    stands = found != fRegistrations.end();
    if (stands) found->second = registration;
  }
  if (!stands) return End(registration);
  fQueue->End(directory);
  DirectoryWatcher::Unwatch(directory);
  // What fell between the two.
  if (registration.events.Contains(neFolderUpdate)) {
    fSink.OnChangeArrived(neFolderUpdate, registration.list, NoList());
  }
}

// --- the directory watcher's notices --------------------------------------------------------------------------------

void ShellChangeSource::OnNotices() {
  const auto self = shared_from_this();
  const ULONGLONG end = GetTickCount64() + LongestTurn;
  TNoticeQueue::TEntry entry;
  bool more = true;
  bool timer = false;
  while (more && GetTickCount64() < end && (more = fQueue->Pop(entry))) {
    // A handler may be modal: the timer goes on with the rest inside of it.
    if (!timer) timer = SetTimer(fWindow, NoticesTimer, USER_TIMER_MINIMUM, nullptr) != 0;
    if (!Tell([&] { OnNotice(entry); })) return;
  }
  // Posted messages come before input and painting, timers behind them.
  constexpr UINT waiting = QS_INPUT | QS_PAINT;
  const bool others = (HIWORD(GetQueueStatus(waiting)) & waiting) != 0;
  if (more && others && timer) return;
  if (!more || PostMessageW(fWindow, NoticesMessage, 0, 0)) KillTimer(fWindow, NoticesTimer);
}

std::uint32_t ShellChangeSource::HandleOf(std::uint32_t pDirectory) {
  const std::lock_guard guard(fLock);
  const auto found = std::find_if(fRegistrations.begin(), fRegistrations.end(),
                                  [&](const auto& entry) { return entry.second.directory == pDirectory; });
  return found == fRegistrations.end() ? 0 : found->first;
}

void ShellChangeSource::OnNotice(const TNoticeQueue::TEntry& pEntry) {
  const TDirectoryNotice& notice = pEntry.notice;
  if (notice.event == TDirectoryEvent::NoFolder) return GoOverToShell(HandleOf(pEntry.watch));
  const TNotificationEvent event = EventOf(notice.event);
  bool on_network = false;
  {
    const std::lock_guard guard(fLock);
    const auto found = std::find_if(fRegistrations.begin(), fRegistrations.end(),
                                    [&](const auto& entry) { return entry.second.directory == pEntry.watch; });
    if (found == fRegistrations.end() || !found->second.events.Contains(event)) return;
    on_network = found->second.network;
    const std::wstring& file = found->second.file;
    if (!file.empty() && !Concerns(notice, file)) return;
  }
  if (!fSink.Accepts(event)) return;
  constexpr TNotificationEvents gone = {neFileDelete, neFileRename, neFolderDelete, neFolderRename};
  ComPtr<IItemIdList> first = ListOf(notice.path1, gone.Contains(event), on_network);
  ComPtr<IItemIdList> second = notice.path2.empty() ? NoList() : ListOf(notice.path2, false, on_network);
  if (fWindow) fSink.OnChangeArrived(event, std::move(first), std::move(second));
}

} // namespace kiv
