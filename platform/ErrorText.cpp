#include <platform/ErrorText.h>

#include <cwchar>
#include <iterator>

namespace kiv {

std::wstring DescribeError(HRESULT pCode) {
  std::wstring text = GetErrorMessageText(pCode);
  if (!text.empty()) return text;
  wchar_t number[24];
  std::swprintf(number, std::size(number), L"Error 0x%08X", static_cast<unsigned>(pCode));
  return number;
}

} // namespace kiv
