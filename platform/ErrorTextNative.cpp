#include <platform/ErrorText.h>

// The texts are the platform's. Where there is no such platform there are none.
namespace kiv {

std::wstring GetErrorMessageText(DWORD) {
  return {};
}

std::wstring GetErrorMessageText(HRESULT) {
  return {};
}

} // namespace kiv
