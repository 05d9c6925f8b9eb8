#include <core/PathmereError.h>

#include <core/HasDebugInfo.h>
#include <platform/ComPtr.h>
#include <platform/ErrorText.h>

#include <string>

namespace kiv {

namespace {

std::wstring PlatformText(HRESULT code, std::wstring_view text) {
  std::wstring message = GetErrorMessageText(code);
  if (!text.empty()) (message += L' ') += text;
  return message;
}

std::wstring InternalData(IUnknown* object) {
  if (!object) return {};
  const auto informant = ComPtr<IUnknown>(object).MaybeAs<IHasDebugInfo>();
  if (!informant) return {};
  return L" Internal data: " + informant->GetInfo(TItemIdListInfoLevel::Normal);
}

} // namespace

EPathmereError::EPathmereError(DWORD pErrorCode, std::wstring_view pText)
    : EOSError(pErrorCode, PlatformText(static_cast<HRESULT>(pErrorCode), pText)) {}

EPathmereError::EPathmereError(HRESULT pErrorCode, std::wstring_view pText)
    : EPathmereError(static_cast<DWORD>(pErrorCode), pText) {}

EPathmereError::EPathmereError(std::wstring_view pText, IUnknown* pObject)
    : EOSError(0, std::wstring(pText) + InternalData(pObject)) {}

EPathmereError::EPathmereError(HRESULT pErrorCode, IUnknown* pObject)
    : EPathmereError(pErrorCode, InternalData(pObject)) {}

EPathmereError::~EPathmereError() = default;

} // namespace kiv
