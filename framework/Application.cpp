#include <framework/Application.h>

#include <framework/Exceptions.h>
#include <platform/DebugOutput.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <platform/Text.h>
#include <platform/Types.h>

#include <memory>
#include <utility>

#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace kiv {

namespace {

// Read without a lock by workers that report an exception; changed on the main thread only.
std::atomic<TApplication*> gApplication{nullptr};

bool IsAbort(const std::exception_ptr& exception) {
  try {
    std::rethrow_exception(exception);
  } catch (const EAbort&) {
    return true;
  } catch (...) {
    return false;
  }
}

void WriteException(const std::exception_ptr& exception) noexcept {
  try {
    WriteDebugLine(L"Exception: " + DescribeException(exception));
  } catch (...) {
    WriteDebugLine({});
  }
}

// Touches no application: it may be shut down meanwhile, and another be there at the closure's turn. The exception is
// moved over, so that it ends on the main thread and not wherever the last of two references happens to go.
void QueueReport(std::exception_ptr exception) noexcept {
  try {
    const auto shared = std::make_shared<std::exception_ptr>(std::move(exception));
    MainThread::Queue([shared] { ReportException(std::exchange(*shared, nullptr)); });
  } catch (...) {
    WriteException(std::current_exception());
  }
}

std::wstring FileTitle(const std::wstring& path) {
  const std::size_t separator = path.find_last_of(L"\\/");
  std::wstring name = separator == std::wstring::npos ? path : path.substr(separator + 1);
  const std::size_t dot = name.rfind(L'.');
  if (dot != std::wstring::npos && dot > 0) name.resize(dot);
  return name;
}

} // namespace

TApplication::TApplication() : fTitle(FileTitle(GetExeName())) {
  MainThread::Attach();
  MainThread::SetExceptionHandler(&ReportException);
}

TApplication::~TApplication() {
  MainThread::SetExceptionHandler(nullptr);
}

TApplication& Application() {
  if (TApplication* const standing = gApplication.load(std::memory_order_acquire)) return *standing;
  auto* const application = new TApplication;
  gApplication.store(application, std::memory_order_release);
  AtShutdown([] { delete gApplication.exchange(nullptr, std::memory_order_acq_rel); });
  return *application;
}

TWindowHandle ApplicationHandle() noexcept {
  const TApplication* const standing = gApplication.load(std::memory_order_acquire);
  return standing ? standing->GetHandle() : TWindowHandle{};
}

void TApplication::HandleException(std::exception_ptr pException) noexcept {
  if (!pException || IsAbort(pException)) return;
  if (MainThread::IsCurrent()) {
    Dispatch(pException);
    return;
  }
  QueueReport(std::move(pException));
}

void TApplication::Dispatch(const std::exception_ptr& pException) noexcept {
  if (!fOnException) {
    ShowException(pException);
    return;
  }
  try {
    static_cast<void>(FireEvent(fAlive, fOnException, pException));
  } catch (...) {
    WriteException(pException);
    WriteException(std::current_exception());
  }
}

void TApplication::ShowException(const std::exception_ptr& pException) noexcept {
  WriteException(pException);
}

void TApplication::SetHint(std::wstring pHint) {
  if (pHint == fHint) return;
  fHint = std::move(pHint);
  static_cast<void>(FireEvent(fAlive, fOnHint));
}

#if defined(_WIN32)

std::wstring TApplication::GetExeName() {
  // "GetModuleFileNameW" cuts the path when the buffer is short; no path is longer than 32,767.
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

#else

std::wstring TApplication::GetExeName() {
  std::string path(256, '\0');
  for (;;) {
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    if (length < 0) return {};
    if (static_cast<std::size_t>(length) < path.size()) {
      path.resize(static_cast<std::size_t>(length));
      return FromUtf8(path);
    }
    path.resize(path.size() * 2);
  }
}

#endif

void ReportException(std::exception_ptr pException) noexcept {
  if (!pException || IsAbort(pException)) return;
  TApplication* const application = gApplication.load(std::memory_order_acquire);
  if (!application) {
    WriteException(pException);
  } else if (MainThread::IsCurrent()) {
    application->HandleException(std::move(pException));
  } else {
    QueueReport(std::move(pException));
  }
}

std::wstring DescribeException(const std::exception_ptr& pException) {
  try {
    std::rethrow_exception(pException);
  } catch (const EException& e) {
    return e.Message();
  } catch (const std::exception& e) {
    return FromUtf8(e.what());
  } catch (...) {
    return L"Unknown exception";
  }
}

} // namespace kiv
