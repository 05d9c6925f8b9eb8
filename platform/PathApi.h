#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <string>
#include <string_view>

namespace kiv {

/// What the platform does to paths and what it knows of them. Outside Windows it does what can be done there: text by
/// the stand-ins in fill/PathText.h, files as that system has them, short names never. Any thread.
namespace PathApi {

/// No result of the two text operations is longer ("MAX_PATH", less the NUL at the end).
inline constexpr std::size_t LongestText = 259;

/// True for a text that no call of the platform can take. What stands below refuses it, and doesn't take the part in
/// front of the NUL for the whole.
inline bool HoldsNul(std::wstring_view pText) noexcept {
  return pText.find(L'\0') != std::wstring_view::npos;
}

/// "PathCanonicalizeW". False if the platform refuses the text, which must not be longer than LongestText; the result
/// is then as it was.
bool Canonicalize(std::wstring_view pPath, std::wstring& pResult);
/// "PathCombineW". False as above; neither text may be longer than LongestText.
bool Combine(std::wstring_view pDirectory, std::wstring_view pFile, std::wstring& pResult);
/// "PathMatchSpecW"
bool MatchSpec(const wchar_t* pName, const wchar_t* pSpec) noexcept;

/// "GetLongPathNameW": the path with long names for short ones; empty if there is no such file.
std::wstring LongPathName(const std::wstring& pPath);
/// The process's current folder, without redirection to another system folder.
std::wstring CurrentDirectoryPath();
/// "GetFileAttributesW": INVALID_FILE_ATTRIBUTES if there is nothing.
DWORD FileAttributes(const std::wstring& pPath);
/// The attributes that a folder's listing shows for the path ("FindFirstFileW"), which are those of a link and not of
/// what it leads to; INVALID_FILE_ATTRIBUTES if there is nothing.
DWORD ListedAttributes(const std::wstring& pPath);
/// Whether a drive, by its letter, is on the network ("GetDriveTypeW"). The platform takes milliseconds to tell.
bool IsNetworkDrive(wchar_t pLetter);

} // namespace PathApi

} // namespace kiv
