#include <doubles/FakeItemId.h>

#include <cstring>

namespace kiv::test {

namespace {

constexpr std::uint32_t Magic = 0x4649564B;
constexpr std::size_t LongestName = 255;

// What stands in an item behind its 16-bit size; the name follows, with a final null. Items needn't be aligned: copied.
struct THead {
  std::uint32_t magic;
  std::uint32_t nameLength;
  std::uint64_t id;
};

constexpr std::size_t SizeOf(std::size_t name_length) {
  return sizeof(USHORT) + sizeof(THead) + (name_length + 1) * sizeof(wchar_t);
}

} // namespace

std::optional<std::vector<TFakeItem>> MaybeItemsOf(PCUIDLIST_RELATIVE pList) {
  std::vector<TFakeItem> items;
  if (!pList) return std::nullopt;
  const auto* at = reinterpret_cast<const std::byte*>(pList);
  for (;;) {
    USHORT size = 0;
    std::memcpy(&size, at, sizeof size);
    if (size == 0) return items;
    THead head;
    if (size < SizeOf(0)) return std::nullopt;
    std::memcpy(&head, at + sizeof size, sizeof head);
    if (head.magic != Magic || head.nameLength > LongestName || size != SizeOf(head.nameLength)) {
      return std::nullopt;
    }
    TFakeItem item{head.id, std::wstring(head.nameLength, L'\0')};
    std::memcpy(item.name.data(), at + sizeof size + sizeof head, head.nameLength * sizeof(wchar_t));
    items.push_back(std::move(item));
    at += size;
  }
}

TUniqueItemIdList MakeItemIdList(const std::vector<TFakeItem>& pItems) {
  std::size_t total = sizeof(USHORT);
  for (const auto& item : pItems) total += SizeOf(item.name.size());
  auto* memory = static_cast<std::byte*>(CoTaskMemAlloc(total));
  if (!memory) return {};
  std::byte* at = memory;
  for (const auto& item : pItems) {
    const auto size = static_cast<USHORT>(SizeOf(item.name.size()));
    const THead head{Magic, static_cast<std::uint32_t>(item.name.size()), item.id};
    std::memcpy(at, &size, sizeof size);
    std::memcpy(at + sizeof size, &head, sizeof head);
    std::memcpy(at + sizeof size + sizeof head, item.name.c_str(), (item.name.size() + 1) * sizeof(wchar_t));
    at += size;
  }
  std::memset(at, 0, sizeof(USHORT));
  return TUniqueItemIdList(reinterpret_cast<ITEMIDLIST_RELATIVE*>(memory));
}

} // namespace kiv::test
