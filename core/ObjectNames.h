#pragma once

#include <core/ItemIdListTypes.h>
#include <platform/Export.h>
#include <platform/Types.h>

#include <shobjidl.h>

#include <string>
#include <string_view>

namespace kiv {

/// The platform's word for a form of name that one object has; `SIGDN_NORMALDISPLAY` for the two that are put together
/// from several. Its lower half is the same form for the object's folder (`SHGDN_...`).
SIGDN NameKind(TItemIdListDisplayNameFormat pFormat) noexcept;
/// Some shells end the name of a server with a delimiter: "ftp://host/" becomes "ftp://host". Anything else stays.
void CutServerDelimiter(std::wstring& pName);

/// The names of one object of an open folder, asked of the folder itself: the same texts that an absolute list gives
/// for the object, without a shell item that binds the folder anew. Folder and item are borrowed. A name that can't be
/// had, also because the folder's code crashes, is empty. Used by one thread, the folder's.
class KIV_EXPORT TObjectNames {
public:
  TObjectNames(IShellFolder* pFolder, PCUITEMID_CHILD pItem) noexcept : fFolder(pFolder), fItem(pItem) {}

  /// As IItemIdList::DisplayName; dnfForExplorer and dnfPreferPhysical take more than the folder.
  std::wstring DisplayName(TItemIdListDisplayNameFormat pFormat) const;
  /// The file's name; for a drive its path; for a computer in the network its domain; otherwise empty.
  std::wstring ObjectName() const;
  /// The name in the folder, or the normal one; the object's name where there is none.
  std::wstring ShellObjectName(bool pInFolderName) const;
  /// Whether a user may mean this object by a name: any of its names is the same but for case. False for no name.
  bool IsKnownAs(std::wstring_view pName) const;

private:
  std::wstring Form(DWORD pForm) const;
  std::wstring PhysicalPath() const;
  std::wstring Name() const;

  IShellFolder* const fFolder;
  const PCUITEMID_CHILD fItem;
};

} // namespace kiv
