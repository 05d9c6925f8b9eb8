#include <platform/ErrorText.h>

#include <memory>

namespace kiv {

std::wstring GetErrorMessageText(DWORD pCode) {
  wchar_t* buffer = nullptr;
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                     nullptr, pCode, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  if (length == 0) return {};
  const std::unique_ptr<wchar_t, decltype(&LocalFree)> owner(buffer, &LocalFree);
  std::wstring text(buffer, length);
  while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r')) text.pop_back();
  return text;
}

std::wstring GetErrorMessageText(HRESULT pCode) {
  std::wstring text = GetErrorMessageText(static_cast<DWORD>(pCode));
  // Not every system knows the HRESULT form of its own error codes.
  if (text.empty() && HRESULT_FACILITY(pCode) == FACILITY_WIN32) {
    text = GetErrorMessageText(static_cast<DWORD>(HRESULT_CODE(pCode)));
  }
  return text;
}

} // namespace kiv
