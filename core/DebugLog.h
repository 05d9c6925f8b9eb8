#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <exception>
#include <string_view>

namespace kiv {

/// Leaves a trace of what isn't worth an exception: one line of text to the debugger's output. There are no files, no
/// levels and no state; any thread may call it. `pDebugObj`, if given, is what the message is about: an object that
/// offers IHasDebugInfo adds " Internal data: " and its own text. Nothing here raises.
class KIV_EXPORT TDebugLog {
public:
  TDebugLog() = delete;

  /// "Thread 4711: the message"
  static void LogMessage(std::wstring_view pMessage, IUnknown* pDebugObj = nullptr) noexcept;
  /// "Thread 4711: the message: the exception's message"
  static void LogException(std::wstring_view pMessage, const std::exception& pException,
                           IUnknown* pDebugObj = nullptr) noexcept;
  /// `Thread 4711: the message: -2147024893 ("The system cannot find the path specified.")`
  static void LogHResult(std::wstring_view pMessage, HRESULT pResult, IUnknown* pDebugObj = nullptr) noexcept;
  /// Takes its arguments and prints nothing.
  static void LogDebugMessage(std::wstring_view pMessage, IUnknown* pDebugObj = nullptr) noexcept;
  /// Takes its arguments and prints nothing.
  static void LogDebugVerboseMessage(std::wstring_view pMessage, IUnknown* pDebugObj = nullptr) noexcept;
};

} // namespace kiv
