#pragma once

#include <notification/NotifierPlatform.h>
#include <platform/Types.h>
#include <platform/fill/NoticeQueue.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace kiv {

/// The hidden window of a notifier, with its registrations. Each watch has one source: the shell, or the directory
/// watcher. Both bring their events to the window, one message for each of the shell's, one for a burst of the other's,
/// which the window takes in turns of a few milliseconds.
///
/// What it asks of the shell, and whom it tells, may close it: each road through it holds it until its end, and looks
/// whether there still is a window. Main thread, but for Unregister.
class ShellChangeSource final : public IChangeSource, public std::enable_shared_from_this<ShellChangeSource> {
public:
  /// Raises EOSError if the window can't be made.
  explicit ShellChangeSource(IChangeSink& pSink);
  ~ShellChangeSource() override;
  ShellChangeSource(const ShellChangeSource&) = delete;
  ShellChangeSource& operator=(const ShellChangeSource&) = delete;

  std::uint32_t Register(IItemIdList* pItemIdList, bool pRecursive, TNotificationEvents pEvents) override;
  void Unregister(std::uint32_t pHandle) noexcept override;
  void Close() noexcept override;

  /// What the probe found out: watches that the shell does serve go over to it.
  void OnProbed(bool pShellReports);

private:
  struct TRegistration {
    ULONG shell = 0; // one of the two is set
    std::uint32_t directory = 0;
    ComPtr<IItemIdList> list;
    bool recursive = false;
    TNotificationEvents events;
    bool network = false;
    std::wstring file; // the only one wanted, of a watch on its folder
  };

  static LRESULT CALLBACK WindowProcedure(HWND pWindow, UINT pMessage, WPARAM wParam, LPARAM lParam);
  LRESULT OnShellMessage(WPARAM wParam, LPARAM lParam);
  bool Tell(const std::function<void()>& pTell);
  std::uint32_t HandleOf(std::uint32_t pDirectory);
  void GoOverToShell(std::uint32_t pHandle);
  void OnNotices();
  void OnNotice(const TNoticeQueue::TEntry& pEntry);
  ULONG ShellNotifyRegister(IItemIdList* pItemIdList, bool pRecursive, TNotificationEvents pEvents);
  bool WatchDirectory(TRegistration& pRegistration);
  static void End(const TRegistration& pRegistration) noexcept;

  IChangeSink& fSink;
  HWND fWindow = nullptr; // null once it is closed
  std::shared_ptr<TNoticeQueue> fQueue;
  std::mutex fLock;
  std::map<std::uint32_t, TRegistration> fRegistrations; // under fLock
  std::uint32_t fLastHandle = 0;
};

} // namespace kiv
