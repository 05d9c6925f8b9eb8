#pragma once

#include <framework/Event.h>
#include <framework/Screen.h>
#include <framework/WindowHandle.h>
#include <platform/Export.h>

#include <atomic>
#include <exception>
#include <string>

namespace kiv {

/// Who is told of an exception that reached a boundary of the library. Runs on the main thread.
using TExceptionEvent = TEvent<std::exception_ptr>;

/// The process from the library's point of view: the least that components and hosts need of one another. The message
/// loop stays the host's. One instance, Application(). Main thread only, but for what says otherwise.
class KIV_EXPORT TApplication {
public:
  TApplication(const TApplication&) = delete;
  TApplication& operator=(const TApplication&) = delete;

  /// Any thread; from another than the main thread the exception travels there first. EAbort is dropped. All others go
  /// to OnException, or to ShowException if nobody listens. What OnException itself raises is shown. Never raises.
  void HandleException(std::exception_ptr pException) noexcept;
  /// Writes the exception's message to the debugger's output. Any thread.
  void ShowException(const std::exception_ptr& pException) noexcept;
  const TExceptionEvent& GetOnException() const noexcept { return fOnException; }
  void SetOnException(TExceptionEvent pEvent) { fOnException = std::move(pEvent); }

  /// Any thread. Says that the application is going down: loops and waits of the library end early. Stays set.
  void Terminate() noexcept { fTerminated.store(true, std::memory_order_release); }
  bool IsTerminated() const noexcept { return fTerminated.load(std::memory_order_acquire); }

  /// Full path of the program file; empty if the platform doesn't tell. Any thread.
  static std::wstring GetExeName();

  /// What dialogs carry as their title. At first the program file's name without its extension.
  const std::wstring& GetTitle() const noexcept { return fTitle; }
  void SetTitle(std::wstring pTitle) { fTitle = std::move(pTitle); }

  /// The text that a host shows in its status bar, as controls set it. OnHint follows each change.
  const std::wstring& GetHint() const noexcept { return fHint; }
  void SetHint(std::wstring pHint);
  const TEvent<>& GetOnHint() const noexcept { return fOnHint; }
  void SetOnHint(TEvent<> pEvent) { fOnHint = std::move(pEvent); }

  /// The host's main window: the parent of dialogs and of platform calls that want one. Null until the host sets it.
  /// Any thread may ask.
  TWindowHandle GetHandle() const noexcept { return fHandle.load(std::memory_order_relaxed); }
  void SetHandle(TWindowHandle pHandle) noexcept { fHandle.store(pHandle, std::memory_order_relaxed); }

  TScreen& GetScreen() noexcept { return fScreen; }

private:
  friend KIV_EXPORT TApplication& Application();

  TApplication();
  ~TApplication();
  void Dispatch(const std::exception_ptr& pException) noexcept;

  TExceptionEvent fOnException;
  TEvent<> fOnHint;
  std::atomic<bool> fTerminated{false};
  std::wstring fTitle;
  std::wstring fHint;
  std::atomic<TWindowHandle> fHandle{nullptr};
  TScreen fScreen;
  TAliveToken fAlive;
};

/// The one instance. The first call must be on the host's main thread: it makes that thread the library's main thread
/// (see platform/MainThread.h) and installs HandleException as the handler for what queued closures raise. Raises
/// EException if the main thread can't be reached by messages. Shutdown() ends it; the next call makes a new one.
KIV_EXPORT TApplication& Application();

/// The host's main window; null if it set none, or there is no application. Makes none. Any thread.
KIV_EXPORT TWindowHandle ApplicationHandle() noexcept;

/// For every boundary that no exception may pass. Goes to the application's HandleException if there is an application,
/// else to the debugger's output. Any thread.
KIV_EXPORT void ReportException(std::exception_ptr pException) noexcept;

/// The message of an exception; "Unknown exception" for what isn't a std::exception.
KIV_EXPORT std::wstring DescribeException(const std::exception_ptr& pException);

} // namespace kiv
