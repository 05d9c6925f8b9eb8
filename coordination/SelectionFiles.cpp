// The file functions that a selection forwards to.
#include <coordination/SelectionList.h>

namespace kiv {

TUniqueFind TKivSelectionList::FindFirst(std::wstring_view pPath, WIN32_FIND_DATAW& pFindData) {
  return kiv::FindFirst(pPath, pFindData);
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
