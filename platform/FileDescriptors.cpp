#include <platform/FileDescriptors.h>

#include <algorithm>
#include <cstdint>

namespace kiv {

namespace {

// "FILEDESCRIPTORW" and "FILEDESCRIPTORA": fixed fields, then the name in a field of 260 units.
constexpr std::size_t CountSize = 4;
constexpr std::size_t NameOffset = 72;
constexpr std::size_t NameLength = 260;

// A little-endian number at the start of a range that is long enough.
template <std::size_t Size>
std::uint32_t ReadNumber(std::span<const std::byte> bytes) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < Size; ++i) value |= std::to_integer<std::uint32_t>(bytes[i]) << (8 * i);
  return value;
}

template <typename TText, std::size_t UnitSize>
std::vector<TText> Decode(std::span<const std::byte> block) {
  constexpr std::size_t record_size = NameOffset + NameLength * UnitSize;
  if (block.size() < CountSize) return {};
  const std::size_t promised = ReadNumber<CountSize>(block);
  std::span<const std::byte> records = block.subspan(CountSize);
  std::vector<TText> names(std::min(promised, records.size() / record_size));
  for (TText& name : names) {
    const std::span<const std::byte> field = records.subspan(NameOffset, NameLength * UnitSize);
    for (std::size_t at = 0; at < field.size(); at += UnitSize) {
      const auto unit = static_cast<typename TText::value_type>(ReadNumber<UnitSize>(field.subspan(at)));
      if (unit == 0) break;
      name += unit;
    }
    records = records.subspan(record_size);
  }
  return names;
}

} // namespace

std::vector<std::wstring> DecodeFileDescriptorsW(std::span<const std::byte> pBlock) {
  return Decode<std::wstring, 2>(pBlock);
}

std::vector<std::string> DecodeFileDescriptorsA(std::span<const std::byte> pBlock) {
  return Decode<std::string, 1>(pBlock);
}

} // namespace kiv
