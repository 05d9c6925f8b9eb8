#pragma once

#include <framework/Exceptions.h>
#include <platform/Types.h>

#include <string_view>

namespace kiv {

/// The library's exception: the platform couldn't do something, or an object isn't fit for it.
///
/// `pObject`, if given, is what it happened to; an object that offers IHasDebugInfo adds its own text to the message.
class KIV_EXPORT EPathmereError : public EOSError {
public:
  /// The message is the platform's text for the code ("System Error Codes", or an HRESULT), then a blank and `pText`
  /// if there is any.
  EPathmereError(DWORD pErrorCode, std::wstring_view pText);
  EPathmereError(HRESULT pErrorCode, std::wstring_view pText);
  /// The message is `pText`, then " Internal data: " and what the object tells of itself. The code is 0.
  EPathmereError(std::wstring_view pText, IUnknown* pObject);
  /// The message is the platform's text for the code, then " Internal data: " and what the object tells of itself.
  EPathmereError(HRESULT pErrorCode, IUnknown* pObject);
  ~EPathmereError() override;
};

} // namespace kiv
