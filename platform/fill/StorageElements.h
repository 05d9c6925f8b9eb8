#pragma once

#include <platform/ComPtr.h>
#include <platform/Types.h>

#include <objidl.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kiv {

/// What a storage tells of one element: a file is a stream, a folder a storage.
struct TStorageElement {
  std::wstring name;
  DWORD attributes = 0;
  std::uint64_t size = 0; ///< of a file, in bytes
  FILETIME written{};
  FILETIME created{};
  FILETIME accessed{};

  bool IsStorage() const { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
  /// A folder that is only a way to another one.
  bool IsLinkToStorage() const { return IsStorage() && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0; }
};

using TStorageElements = std::vector<TStorageElement>;

/// All below take paths in storage form.

/// Everything that stands in a folder.
HRESULT ReadElements(const std::wstring& pFolder, TStorageElements& pElements);
/// One file or folder, not what it links to.
HRESULT ReadElement(const std::wstring& pPath, TStorageElement& pElement);

/// `pFlags`: `STATFLAG_NONAME` leaves the name out. Otherwise it is the caller's to free.
HRESULT FillStat(const TStorageElement& pElement, DWORD pFlags, STATSTG& pStat);

/// Steps through a list as it was when it was read.
ComPtr<IEnumSTATSTG> EnumerateElements(std::shared_ptr<const TStorageElements> pElements);

/// Removes a file, or a folder with all that is in it, read-only ones too. Links are removed, not followed. Ends at the
/// first thing that can't be removed, with its error.
HRESULT DestroyFileOrFolder(const std::wstring& pPath);

} // namespace kiv
