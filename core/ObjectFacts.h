#pragma once

#include <core/FolderObject.h>
#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/Types.h>

#include <shobjidl.h>

#include <string>

namespace kiv {

/// How closely sizes and times are read.
enum class TFactsPrecision {
  /// What the folder's own item carries: costs next to nothing. Sizes are exact below 4 GiB, times to 2 seconds.
  Listed,
  /// For objects of the file system also what the disk says: one more call for each object.
  Exact
};

/// Reads what a folder knows of its objects: name, flags, size and dates, through the folder itself, which is kept
/// open. No shell item is made: that would bind the folder anew for each. Survives faults of the folder's code; a fact
/// that can't be had is left unknown. Used by one thread at a time.
class KIV_EXPORT TObjectFacts {
public:
  /// `pFolderPath`: the folder's path, needed for Exact only; empty for a folder without one.
  explicit TObjectFacts(ComPtr<IShellFolder> pFolder, std::wstring pFolderPath = {},
                        TFactsPrecision pPrecision = TFactsPrecision::Listed);

  /// Reads one object of the folder. `S_OK` if its name is known; else the folder's answer, with the object empty.
  HRESULT Read(PCUITEMID_CHILD pItem, TFolderObject& pObject);

private:
  void ReadFlags(PCUITEMID_CHILD pItem, TObjectFlags& pFlags) const;
  void ReadDetails(PCUITEMID_CHILD pItem, TFolderObject& pObject);
  void ReadDisk(TFolderObject& pObject);

  ComPtr<IShellFolder> fFolder;
  ComPtr<IShellFolder2> fFolder2;
  bool fAskedFolder2 = false;
  std::wstring fPath; // of the folder, with what makes a long path acceptable; then of the object
  std::size_t fPathLength = 0;
};

} // namespace kiv
