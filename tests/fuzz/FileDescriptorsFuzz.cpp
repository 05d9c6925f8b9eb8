#include <platform/FileDescriptors.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

// Whatever a block holds: no more names than records fit into it or its count says, none longer than its field.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize) {
  const std::span<const std::byte> block(reinterpret_cast<const std::byte*>(pData), pSize);
  std::size_t count = 0;
  for (std::size_t i = 0; i < 4 && pSize >= 4; ++i) count |= static_cast<std::size_t>(pData[i]) << (8 * i);
  const auto check = [&](const auto& names, std::size_t record) {
    if (names.size() != std::min(count, pSize < 4 ? 0 : (pSize - 4) / record)) std::abort();
    for (const auto& name : names) {
      if (name.size() > 260 || std::find(name.begin(), name.end(), 0) != name.end()) std::abort();
    }
  };
  check(kiv::DecodeFileDescriptorsW(block), 592);
  check(kiv::DecodeFileDescriptorsA(block), 332);
  return 0;
}
