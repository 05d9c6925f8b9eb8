#include <platform/Text.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

// Whatever bytes come: the text made of them is well formed, and its UTF-8 reads back as the same text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize) {
  const std::wstring text = kiv::FromUtf8(std::string_view(reinterpret_cast<const char*>(pData), pSize));
  if (!kiv::IsWellFormed(text)) std::abort();
  const std::string bytes = kiv::ToUtf8(text);
  if (kiv::FromUtf8(bytes) != text || kiv::ToUtf8(kiv::FromUtf8(bytes)) != bytes) std::abort();
  return 0;
}
