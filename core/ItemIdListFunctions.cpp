#include <core/ItemIdListFunctions.h>

#include <core/PathFunctions.h>
#include <core/PathmereError.h>
#include <core/ShellLinkHelper.h>
#include <core/SpecialFolders.h>

namespace kiv {

namespace {

bool IsSearchFolder(IItemIdList* list) {
  if (list->IsInvalid()) return IsSearchFolderPath(list->DisplayPath());
  try {
    return IsSearchFolderPath(list->Path()) || IsSearchFolderPath(list->DisplayName(dnfAbsoluteParsing));
  } catch (const EPathmereError&) {
    return false; // a folder that faults is none
  }
}

} // namespace

std::wstring GetPathFromSpecialFolder(TKivShellFolder pFolder) {
  return TKivShellFolderHelper::ToPath(pFolder);
}

bool IsInSearchFolder(IItemIdList* pItemIdList, bool pAcceptSearchFolder) {
  if (!pItemIdList) return false;
  if (pAcceptSearchFolder && IsSearchFolder(pItemIdList)) return true;
  return pItemIdList->Depth() > 0 && IsSearchFolder(pItemIdList->GetParent().Get());
}

std::wstring GetLinkTarget(std::wstring_view pPath) {
  const auto target = TShellLinkHelper::Resolve(pPath);
  return target ? target->Path() : std::wstring();
}

} // namespace kiv
