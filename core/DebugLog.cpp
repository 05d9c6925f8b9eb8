#include <core/DebugLog.h>

#include <core/HasDebugInfo.h>
#include <platform/ComPtr.h>
#include <platform/DebugOutput.h>
#include <platform/ErrorText.h>
#include <platform/Exception.h>
#include <platform/Text.h>

#include <string>

namespace kiv {

namespace {

// Builds the line "Thread n: message" and what follows it, and writes it.
template <typename F>
void Write(std::wstring_view message, IUnknown* object, F&& append) noexcept {
  try {
    std::wstring line = L"Thread " + std::to_wstring(CurrentThreadNumber()) + L": ";
    line += message;
    if (object) {
      if (const auto informant = ComPtr<IUnknown>(object).MaybeAs<IHasDebugInfo>()) {
        line += L" Internal data: " + informant->GetInfo(TItemIdListInfoLevel::Normal);
      }
    }
    append(line);
    WriteDebugLine(line);
  } catch (...) {
    // Out of memory, or an object that can't tell of itself: the log isn't worth a failure.
    WriteDebugLine(L"A log message was lost.");
  }
}

std::wstring MessageOf(const std::exception& exception) {
  if (const auto* const own = dynamic_cast<const EException*>(&exception)) return own->Message();
  return FromUtf8(exception.what());
}

} // namespace

void TDebugLog::LogMessage(std::wstring_view pMessage, IUnknown* pDebugObj) noexcept {
  Write(pMessage, pDebugObj, [](std::wstring&) {});
}

void TDebugLog::LogException(std::wstring_view pMessage, const std::exception& pException,
                             IUnknown* pDebugObj) noexcept {
  Write(pMessage, pDebugObj, [&](std::wstring& line) { line += L": " + MessageOf(pException); });
}

void TDebugLog::LogHResult(std::wstring_view pMessage, HRESULT pResult, IUnknown* pDebugObj) noexcept {
  Write(pMessage, pDebugObj, [&](std::wstring& line) {
    line += L": " + std::to_wstring(pResult) + L" (\"" + GetErrorMessageText(pResult) + L"\")";
  });
}

void TDebugLog::LogDebugMessage(std::wstring_view, IUnknown*) noexcept {}

void TDebugLog::LogDebugVerboseMessage(std::wstring_view, IUnknown*) noexcept {}

} // namespace kiv
