#pragma once

#include <cstddef>
#include <string_view>

namespace kiv {

/// What stands in for the platform's operations on the text of paths where there is no such platform, or where it gets
/// them wrong. They do what the platform's documentation says, and need no memory of their own.
namespace PathText {

/// Results are never longer than this ("MAX_PATH", less the NUL at the end).
inline constexpr std::size_t Longest = 259;

/// "PathCanonicalize": "." goes, ".." takes the part before it along, but never a root: a drive, a server, or what a
/// long-path or device prefix stands in front of. A relative path that gives up its first part, and one of which
/// nothing is left, begins with the backslash; a drive gets one. The result, without a NUL, goes into the buffer of at
/// least Longest characters; the answer is its length. Texts longer than Longest are refused: the answer is 0, as for
/// no other text.
std::size_t Canonicalize(std::wstring_view pPath, wchar_t* pBuffer) noexcept;

/// "PathCombine": the file by itself if it starts with a drive or a double backslash, behind the directory's root if it
/// starts with a single one, else behind the directory; made canonical. Buffer and answer as above; it is also 0 if the
/// two together are too long.
std::size_t Combine(std::wstring_view pDirectory, std::wstring_view pFile, wchar_t* pBuffer) noexcept;

/// "PathMatchSpec": ";" separates patterns, blanks in front of one are skipped, "*" stands for any text and "?" for one
/// character, and the pattern "*.*" for every name. Letters compare after simple upper-casing, by the tables of the
/// platform or, elsewhere, of Unicode. Takes time in proportion to the product of the lengths at worst.
bool MatchSpec(const wchar_t* pName, const wchar_t* pSpec) noexcept;

} // namespace PathText

} // namespace kiv
