#include <platform/fill/DirectoryChange.h>

#include <cstring>
#include <utility>

namespace kiv {

namespace {

constexpr std::size_t HeaderSize = 12; // offset of the next record, action, length of the name in bytes

std::uint32_t NumberAt(std::span<const std::byte> buffer, std::size_t offset) {
  std::uint32_t value = 0;
  std::memcpy(&value, buffer.data() + offset, sizeof(value));
  return value;
}

std::wstring NameOf(std::span<const std::byte> bytes) {
  std::wstring name(bytes.size() / 2, L'\0');
  for (std::size_t i = 0; i < name.size(); ++i) {
    char16_t unit = 0;
    std::memcpy(&unit, bytes.data() + 2 * i, sizeof(unit));
    name[i] = static_cast<wchar_t>(unit);
  }
  return name;
}

bool IsKnown(std::uint32_t action) {
  return action >= static_cast<std::uint32_t>(TDirectoryAction::Added) &&
         action <= static_cast<std::uint32_t>(TDirectoryAction::RenamedTo);
}

} // namespace

bool ParseDirectoryRecords(std::span<const std::byte> pBuffer, std::vector<TDirectoryRecord>& pRecords) {
  for (;;) {
    if (pBuffer.size() < HeaderSize) return false;
    const std::size_t next = NumberAt(pBuffer, 0);
    const std::uint32_t action = NumberAt(pBuffer, 4);
    const std::size_t length = NumberAt(pBuffer, 8);
    const bool fits = length % 2 == 0 && length > 0 && length <= pBuffer.size() - HeaderSize;
    if (!fits || (next != 0 && (next < HeaderSize + length || next > pBuffer.size()))) return false;
    if (IsKnown(action)) {
      pRecords.push_back({static_cast<TDirectoryAction>(action), NameOf(pBuffer.subspan(HeaderSize, length))});
    }
    if (next == 0) return true;
    pBuffer = pBuffer.subspan(next);
  }
}

void TRenamePairer::Flush(std::vector<TDirectoryChange>& pChanges) {
  if (fOldName) pChanges.push_back({TDirectoryAction::Removed, std::move(*fOldName), {}});
  fOldName.reset();
}

void TRenamePairer::Add(std::vector<TDirectoryRecord> pRecords, std::vector<TDirectoryChange>& pChanges) {
  for (TDirectoryRecord& record : pRecords) {
    if (record.action == TDirectoryAction::RenamedTo && fOldName) {
      pChanges.push_back({TDirectoryAction::RenamedTo, std::move(*fOldName), std::move(record.name)});
      fOldName.reset();
      continue;
    }
    Flush(pChanges);
    if (record.action == TDirectoryAction::RenamedFrom) {
      fOldName = std::move(record.name);
    } else {
      const bool alone = record.action == TDirectoryAction::RenamedTo;
      pChanges.push_back({alone ? TDirectoryAction::Added : record.action, std::move(record.name), {}});
    }
  }
}

} // namespace kiv
