#pragma once

#include <platform/Export.h>

#include <string>
#include <string_view>

namespace kiv {

// Tests of paths by their text alone, and matching of names. Any thread.

/// A letter, ":", and nothing more than a "\".
KIV_EXPORT bool IsDrive(std::wstring_view pPath) noexcept;
/// Starts with "\\".
KIV_EXPORT bool IsUNCPath(std::wstring_view pPath) noexcept;
/// Starts with a drive or with "\\".
KIV_EXPORT bool IsAbsolutePath(std::wstring_view pPath) noexcept;
/// Starts with a scheme ("shell:", "search-ms:", "http:"): a letter, at least one more letter, digit, "+", "-" or ".",
/// and ":".
KIV_EXPORT bool IsProtocolPath(std::wstring_view pPath) noexcept;
/// Holds "*" or "?": it isn't the path of one thing. A call that lists a folder takes it for whatever it finds first.
KIV_EXPORT bool HasWildcards(std::wstring_view pPath) noexcept;
/// Starts with "search-ms:" or with the class identifier of search folders, ignoring case.
KIV_EXPORT bool IsSearchFolderPath(std::wstring_view pPath) noexcept;
/// Compares the extension of a name, ignoring case. `pExtension` may have its "." or not; empty, it asks whether the
/// name has none.
KIV_EXPORT bool HasFileExtension(std::wstring_view pName, std::wstring_view pExtension) noexcept;
/// The path without a last "\" or "/", but the root of a drive ("C:\") as it is.
KIV_EXPORT std::wstring ExcludeTrailingDelimiter(std::wstring_view pPath);
/// Compares without delimiters at the end, ignoring case.
KIV_EXPORT bool SamePath(std::wstring_view pFirst, std::wstring_view pSecond) noexcept;

/// The path of the folder that a path lies in, with a delimiter at its end: "C:\a\" of "C:\a\b" and of "C:\a\b\".
KIV_EXPORT std::wstring GetParentPathFromPath(std::wstring_view pPath);
/// True for "." and "..", which a listing may have among its names.
KIV_EXPORT bool IsFolderToIgnore(std::wstring_view pName) noexcept;

/// Where the needle is first found in the text at or behind `pOffset`, ignoring case; counted from 1, as the offset. 0
/// if it isn't there, is empty, or the offset is below 1.
KIV_EXPORT int KivPosEx(std::wstring_view pNeedle, std::wstring_view pText, int pOffset = 1) noexcept;

/// Wildcard match of a whole name, ignoring case, as the platform does it ("PathMatchSpec"): "*" for any text, "?" for
/// one character, several patterns with ";" between them, blanks in front of each skipped. The pattern "*." takes every
/// name without a "." besides. Before a match, a pattern that holds "*.*" goes through ConvertToWindowsPattern.
KIV_EXPORT bool MatchPattern(const std::wstring& pName, const std::wstring& pPattern);
/// Appends ".*" to a pattern whose last three characters are "*.*"; any other stays as it is.
KIV_EXPORT std::wstring ConvertToWindowsPattern(std::wstring_view pPattern);

} // namespace kiv
