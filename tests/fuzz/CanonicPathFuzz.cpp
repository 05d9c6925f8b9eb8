#include <core/PathFunctions.h>
#include <core/PathUtils.h>
#include <platform/Text.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using kiv::TPathUtils;

// Nothing is left to remove.
void CheckParts(const std::wstring& canonic) {
  std::size_t start = canonic.find(L'\\', 2);
  while (start != std::wstring::npos && ++start < canonic.size()) {
    const std::size_t end = canonic.find(L'\\', start);
    const std::wstring_view part = std::wstring_view(canonic).substr(start, end - start);
    if (part.empty() || part == L"." || part == L"..") std::abort();
    start = end;
  }
  if (canonic.ends_with(L"\\*") && canonic != L"\\\\*") std::abort();
}

// What gets the long form gives it back as it was.
void CheckLongForm(const std::wstring& path) {
  const std::wstring long_form = TPathUtils::GetUnicodeAPICallPath(path, true, true);
  if (long_form == path) {
    if (!path.starts_with(L"\\\\?\\") && !path.starts_with(L"\\\\.\\")) std::abort();
    return;
  }
  if (!TPathUtils::IsUnicodeAPICallPath(long_form)) std::abort();
  // One that starts with "UNC\" reads as another.
  if (TPathUtils::RevertUnicodeAPICallPath(long_form) != path && kiv::KivPosEx(L"UNC\\", path) != 1) std::abort();
}

} // namespace

// No text grows beyond the little that is stated.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize) {
  static const std::size_t here = TPathUtils::GetCurrentDir().size();
  const std::wstring path = kiv::FromUtf8(std::string_view(reinterpret_cast<const char*>(pData), pSize));
  const std::wstring canonic = TPathUtils::MakeCanonic(path);
  const bool drive = TPathUtils::StartsWithDriveLetter(path);
  const bool unc = kiv::IsUNCPath(path);
  constexpr std::size_t address_suffix = 17;
  if (canonic.size() > path.size() + (drive ? 1 : address_suffix + (unc ? 0 : here + 2))) std::abort();
  const bool text = path.find(L'\0') == std::wstring::npos;
  if (drive && text && (canonic.size() < 3 || canonic[0] != path[0] || !canonic.substr(1).starts_with(L":\\"))) {
    std::abort();
  }
  const bool whole_unc = unc && path.size() < 260;
  if (text && (drive || whole_unc)) CheckParts(canonic);
  // Behind two backslashes further doubled ones may hide a prefix until they have become one.
  const bool for_good = drive || (whole_unc && path.find(L"\\\\", 1) == std::wstring::npos);
  if (text && for_good && TPathUtils::MakeCanonic(canonic) != canonic) std::abort();
  CheckLongForm(path);
  TPathUtils::UnifyPath(path);
  return 0;
}
