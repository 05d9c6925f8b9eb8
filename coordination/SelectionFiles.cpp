// The file functions that a selection forwards to.
#include <coordination/SelectionList.h>

#include <core/FolderFunctions.h>

namespace kiv {

HANDLE TKivSelectionList::FindFirst(std::wstring_view pPath, WIN32_FIND_DATAW& pFindData) {
  TUniqueFind find = kiv::FindFirst(pPath, pFindData);
  return find ? find.Release() : INVALID_HANDLE_VALUE;
}

bool TKivSelectionList::IsFile(std::wstring_view pPath) {
  return kiv::IsFile(pPath);
}

bool TKivSelectionList::IsFolder(std::wstring_view pPath) {
  return kiv::IsFolder(pPath);
}

bool TKivSelectionList::ForceDirectories(std::wstring_view pFullPath) {
  return kiv::ForceDirectories(pFullPath);
}

bool TKivSelectionList::CreateEmptyFile(std::wstring_view pFullPath) {
  return kiv::CreateEmptyFile(pFullPath);
}

} // namespace kiv
