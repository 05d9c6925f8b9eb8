#include <core/ObjectNames.h>

#include <core/NameInFolder.h>
#include <core/NetworkObject.h>
#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <framework/FileNames.h>
#include <framework/TextCompare.h>
#include <platform/FaultGuard.h>

#include <algorithm>

namespace kiv {

namespace {

constexpr DWORD FolderForms = 0xFFFF; // the part of a SIGDN that is a SHGDN

// A path stands for itself only if it is a drive; otherwise its last part is the name.
std::wstring LastName(const std::wstring& path) {
  return IsDrive(path) ? path : ExtractFileName(path);
}

} // namespace

SIGDN NameKind(TItemIdListDisplayNameFormat pFormat) noexcept {
  switch (pFormat) {
  case dnfInFolder:
    return SIGDN_PARENTRELATIVE;
  case dnfPath:
    return SIGDN_DESKTOPABSOLUTEEDITING;
  case dnfPhysicalPath:
    return SIGDN_FILESYSPATH;
  case dnfRelativeForAddressBar:
    return SIGDN_PARENTRELATIVEFORADDRESSBAR;
  case dnfRelativeParsing:
    return SIGDN_PARENTRELATIVEPARSING;
  case dnfAbsoluteParsing:
    return SIGDN_DESKTOPABSOLUTEPARSING;
  default:
    return SIGDN_NORMALDISPLAY;
  }
}

void CutServerDelimiter(std::wstring& pName) {
  // The last character, and no path behind the server.
  if (pName.ends_with(L'/') && std::count(pName.begin(), pName.end(), L'/') == 3) pName.pop_back();
}

std::wstring TObjectNames::Form(DWORD pForm) const {
  std::wstring name;
  GetNameInFolder(fFolder, fItem, pForm, name);
  return name;
}

std::wstring TObjectNames::PhysicalPath() const {
  SFGAOF attributes = SFGAO_FILESYSTEM;
  PCUITEMID_CHILD item = fItem;
  const HRESULT hr = GuardedCall([&] { return fFolder->GetAttributesOf(1, &item, &attributes); });
  if (FAILED(hr) || (attributes & SFGAO_FILESYSTEM) == 0) return {};
  std::wstring path = Form(SHGDN_FORPARSING);
  if (TKivPathList::IsFolderClassId(path)) path.clear();
  return path;
}

std::wstring TObjectNames::Name() const {
  return LastName(PhysicalPath());
}

std::wstring TObjectNames::DisplayName(TItemIdListDisplayNameFormat pFormat) const {
  std::wstring name =
      pFormat == dnfPhysicalPath ? PhysicalPath() : Form(static_cast<DWORD>(NameKind(pFormat)) & FolderForms);
  CutServerDelimiter(name);
  if (name.empty()) name = pFormat == dnfPath ? PhysicalPath() : Name();
  return name;
}

std::wstring TObjectNames::ObjectName() const {
  std::wstring name = Name();
  if (name.empty()) name = GetDomainFromIdList(fFolder, fItem);
  return name;
}

std::wstring TObjectNames::ShellObjectName(bool pInFolderName) const {
  std::wstring name = DisplayName(pInFolderName ? dnfInFolder : dnfNormal);
  return name.empty() ? ObjectName() : name;
}

bool TObjectNames::IsKnownAs(std::wstring_view pName) const {
  if (pName.empty()) return false;
  if (SameText(pName, ShellObjectName(true)) || SameText(pName, ObjectName()) ||
      SameText(pName, ShellObjectName(false))) {
    return true;
  }
  constexpr TItemIdListDisplayNameFormat others[] = {dnfRelativeForAddressBar, dnfRelativeParsing, dnfAbsoluteParsing};
  return std::any_of(std::begin(others), std::end(others),
                     [&](auto format) { return SameText(pName, DisplayName(format)); });
}

} // namespace kiv
