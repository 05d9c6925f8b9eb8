#include <core/PathList.h>

#include <core/PathFunctions.h>
#include <framework/TextCompare.h>

namespace kiv {

namespace {

constexpr std::wstring_view LongPrefix = LR"(\\?\)";
constexpr std::wstring_view LongUncPrefix = LR"(\\?\UNC\)";

constexpr bool IsDelimiter(wchar_t c) {
  return c == L'\\' || c == L'/';
}

} // namespace

bool TKivPathList::IsSubPathOf(std::wstring_view p_SuperiorPath, std::wstring_view p_PossibleSubPath) noexcept {
  if (p_PossibleSubPath.empty() || !StartsText(p_SuperiorPath, p_PossibleSubPath)) return false;
  const bool has_delimiter = !p_SuperiorPath.empty() && IsDelimiter(p_SuperiorPath.back());
  if (!has_delimiter && !p_PossibleSubPath.substr(p_SuperiorPath.size()).starts_with(L'\\')) return false;
  return !SamePath(p_SuperiorPath, p_PossibleSubPath);
}

bool TKivPathList::IsUNCPath(std::wstring_view pFullPath) noexcept {
  if (pFullPath.size() < 3 || !kiv::IsUNCPath(pFullPath)) return false;
  if (pFullPath.starts_with(LongPrefix)) return StartsText(LongUncPrefix, pFullPath);
  return pFullPath.size() > 3 || pFullPath[2] == L'\\';
}

bool TKivPathList::IsUncServer(std::wstring_view pPath) noexcept {
  if (!kiv::IsUNCPath(pPath)) return false;
  std::wstring_view server = pPath.substr(2);
  if (!server.empty() && IsDelimiter(server.back())) server.remove_suffix(1);
  return server.find_first_of(L"\\/*?") == std::wstring_view::npos;
}

bool TKivPathList::IsFolderClassId(std::wstring_view pPath) noexcept {
  return pPath.starts_with(L"::{");
}

bool TKivPathList::IsUSBDevicePath(std::wstring_view pPath) noexcept {
  return StartsText(LR"(\\?\usb#vid)", pPath);
}

} // namespace kiv
