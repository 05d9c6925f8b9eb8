#pragma once

#include <platform/Export.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kiv {

/// What a directory handle reports ("FILE_NOTIFY_INFORMATION").
enum class TDirectoryAction : std::uint32_t { Added = 1, Removed = 2, Modified = 3, RenamedFrom = 4, RenamedTo = 5 };

struct TDirectoryRecord {
  TDirectoryAction action{};
  std::wstring name; ///< relative to the directory

  friend bool operator==(const TDirectoryRecord&, const TDirectoryRecord&) = default;
};

/// Takes the records out of a buffer that a directory handle filled. False if the buffer holds anything else than a
/// chain of whole records; what stands in front of that is in `pRecords` then. Records of unknown actions are left out.
KIV_EXPORT bool ParseDirectoryRecords(std::span<const std::byte> pBuffer, std::vector<TDirectoryRecord>& pRecords);

/// A record, or the two of a renaming as one.
struct TDirectoryChange {
  TDirectoryAction action{}; ///< RenamedTo for a renaming, never RenamedFrom
  std::wstring name;
  std::wstring newName; ///< of a renaming

  friend bool operator==(const TDirectoryChange&, const TDirectoryChange&) = default;
};

/// Brings the halves of renamings together, which come in two records, in one buffer or in two. A half that stays alone
/// is a removal, or an addition: the object came from or went to somewhere else.
class KIV_EXPORT TRenamePairer {
public:
  /// Appends what is known by the records.
  void Add(std::vector<TDirectoryRecord> pRecords, std::vector<TDirectoryChange>& pChanges);
  /// Whether a half waits for the other one.
  bool IsPending() const noexcept { return fOldName.has_value(); }
  /// The other one doesn't come.
  void Flush(std::vector<TDirectoryChange>& pChanges);
  /// Forgets what waits.
  void Reset() noexcept { fOldName.reset(); }

private:
  std::optional<std::wstring> fOldName;
};

} // namespace kiv
