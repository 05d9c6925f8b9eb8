#include <core/PathFunctions.h>

#include <core/PathUtils.h>
#include <framework/FileNames.h>
#include <framework/TextCompare.h>
#include <platform/Characters.h>
#include <platform/PathApi.h>

#include <algorithm>

namespace kiv {

namespace {

constexpr std::size_t None = std::wstring_view::npos;
// "CLSID_SearchFolder"
constexpr std::wstring_view SearchFolderClass = L"::{04731B67-D933-450A-90E6-4ACD2E9408FE}";
constexpr std::wstring_view AllWithExtension = L"*.*";

std::wstring_view WithoutDelimiters(std::wstring_view path) {
  return path.substr(0, path.find_last_not_of(L"\\/") + 1);
}

bool IsSchemeCharacter(wchar_t c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c) || c == L'+' || c == L'-' || c == L'.';
}

bool MatchConverted(const std::wstring& name, const std::wstring& pattern) {
  constexpr std::wstring_view appended = L".*";
  wchar_t converted[64];
  if (pattern.size() + appended.size() >= std::size(converted)) {
    return PathApi::MatchSpec(name.c_str(), ConvertToWindowsPattern(pattern).c_str());
  }
  // Patterns are short, and this runs once for each name of a folder: no memory is asked for.
  wchar_t* end = std::copy(pattern.begin(), pattern.end(), converted);
  end = std::copy(appended.begin(), appended.end(), end);
  *end = L'\0';
  return PathApi::MatchSpec(name.c_str(), converted);
}

} // namespace

bool IsDrive(std::wstring_view pPath) noexcept {
  return TPathUtils::StartsWithDriveLetter(pPath) && (pPath.size() == 2 || (pPath.size() == 3 && pPath[2] == L'\\'));
}

bool IsUNCPath(std::wstring_view pPath) noexcept {
  return pPath.starts_with(LR"(\\)");
}

bool IsAbsolutePath(std::wstring_view pPath) noexcept {
  return TPathUtils::StartsWithDriveLetter(pPath) || IsUNCPath(pPath);
}

bool IsProtocolPath(std::wstring_view pPath) noexcept {
  const std::size_t colon = pPath.find(L':');
  // A single letter is a drive.
  if (colon == None || colon < 2 || !IsAsciiLetter(pPath[0])) return false;
  const std::wstring_view scheme = pPath.substr(0, colon);
  return std::all_of(scheme.begin(), scheme.end(), &IsSchemeCharacter);
}

bool HasWildcards(std::wstring_view pPath) noexcept {
  // The "?" of a long path's prefix is none.
  return pPath.find_first_of(L"*?", TPathUtils::IsUnicodeAPICallPath(pPath) ? 4 : 0) != None;
}

bool IsSearchFolderPath(std::wstring_view pPath) noexcept {
  return StartsText(L"search-ms:", pPath) || StartsText(SearchFolderClass, pPath);
}

bool HasFileExtension(std::wstring_view pName, std::wstring_view pExtension) noexcept {
  if (pExtension.starts_with(L'.')) pExtension.remove_prefix(1);
  const std::size_t last = pName.find_last_of(L".\\/:");
  if (last == None || pName[last] != L'.') return pExtension.empty();
  return SameText(pName.substr(last + 1), pExtension);
}

std::wstring ExcludeTrailingDelimiter(std::wstring_view pPath) {
  return IsDrive(pPath) ? std::wstring(pPath) : TPathUtils::ExcludeTrailingPathDelimiter(pPath);
}

std::wstring GetParentPathFromPath(std::wstring_view pPath) {
  return ExtractFilePath(TPathUtils::ExcludeTrailingPathDelimiter(pPath));
}

bool IsFolderToIgnore(std::wstring_view pName) noexcept {
  return pName == L"." || pName == L"..";
}

bool SamePath(std::wstring_view pFirst, std::wstring_view pSecond) noexcept {
  return SameText(WithoutDelimiters(pFirst), WithoutDelimiters(pSecond));
}

int KivPosEx(std::wstring_view pNeedle, std::wstring_view pText, int pOffset) noexcept {
  if (pNeedle.empty() || pOffset < 1) return 0;
  for (auto at = static_cast<std::size_t>(pOffset); at - 1 + pNeedle.size() <= pText.size(); ++at) {
    if (SameText(pNeedle, pText.substr(at - 1, pNeedle.size()))) return static_cast<int>(at);
  }
  return 0;
}

bool MatchPattern(const std::wstring& pName, const std::wstring& pPattern) {
  // Hardly any pattern is one of the two, and a look at two characters tells.
  const std::size_t dot = pPattern.size() < 2 ? None : pPattern.find(L'.', pPattern.size() - 2);
  if (dot != None && pPattern == L"*." && pName.find(L'.') == None) return true;
  if (dot != None && pPattern.ends_with(AllWithExtension)) return MatchConverted(pName, pPattern);
  return PathApi::MatchSpec(pName.c_str(), pPattern.c_str());
}

std::wstring ConvertToWindowsPattern(std::wstring_view pPattern) {
  std::wstring pattern(pPattern);
  if (pPattern.ends_with(AllWithExtension)) pattern += L".*";
  return pattern;
}

} // namespace kiv
