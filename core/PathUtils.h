#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <string>
#include <string_view>

namespace kiv {

/// The longest path that the platform takes in any form, in UTF-16 units ("Maximum Path Length Limitation").
inline constexpr std::size_t LongestPath = 32767;
/// From this length on, in UTF-16 units, a plain path isn't sure to work: a folder's path must leave room for a short
/// file name in it ("CreateDirectory").
inline constexpr std::size_t PlainPathLimit = 248;

/// What the library does to the text of paths. The disk is asked only where it is said. Everything is stateless and may
/// be called from any thread; indexes count from 1. A text that a platform call can't take, since it holds a NUL, stays
/// as that call's failure would leave it. docs/paths.md says more about the forms of paths.
class KIV_EXPORT TPathUtils {
public:
  TPathUtils() = delete;

  /// The form that the rest of the library relies on: absolute, without "." and "..", without doubled backslashes but
  /// those of a UNC path, without the "*" of a pattern for all files, with long names instead of short ones (the disk
  /// is asked if there is a "~"), and with a UNC host that is an IPv6 address in the form that the platform accepts.
  /// "C:foo" is taken for "C:\foo". An empty path stays empty.
  static std::wstring MakeCanonic(std::wstring_view pPath);
  /// A path relative to a base, as one. A single backslash in front of the relative path doesn't make it start at the
  /// drive's root. Raises EArgumentException if both are empty.
  static std::wstring Combine(std::wstring_view pBasePath, std::wstring_view pRelativePath);
  /// The path without "." and "..": as the platform does it ("PathCanonicalizeW"), or from 260 characters on by the
  /// other overload.
  static std::wstring RemoveRelativeParts(std::wstring_view pPath);
  /// The same for any delimiter and length. A ".." takes the part before it away, but not a drive's; at the start it
  /// vanishes.
  static std::wstring RemoveRelativeParts(std::wstring_view pPath, wchar_t pPathDelimiter);
  /// The form in which lists compare paths: a drive with its delimiter, anything else without. `\\*` and what ends in
  /// "://" stay.
  static std::wstring UnifyPath(std::wstring_view pPath);
  /// The path without a last "\" or "/".
  static std::wstring ExcludeTrailingPathDelimiter(std::wstring_view pPath);
  /// True for "\" and "/" at the index; false for an index out of range.
  static bool IsPathDelimiter(std::wstring_view pPath, int pIndex) noexcept;
  /// True for URLs, UNC and long-path forms, drive paths, and volume paths ("Volume{...}").
  static bool IsRooted(std::wstring_view pPath) noexcept;
  static bool StartsWithDriveLetter(std::wstring_view pPath) noexcept;
  /// The process's current folder.
  static std::wstring GetCurrentDir();
  /// Its first two characters.
  static std::wstring GetCurrentDrive();
  /// The display name of the folder of the drives if the path starts with it, ignoring case; else empty.
  static std::wstring GetSpecialFolderRoot(std::wstring_view pPath);
  /// The form in which file calls take more than 260 characters: `\\?\C:\...` or `\\?\UNC\server\...`. Without
  /// `pForce` a path below PlainPathLimit stays as it is. The path is made canonical first, unless `pPathIsCanonic`.
  /// Device paths (`\\.\...`) have no such form and stay.
  static std::wstring GetUnicodeAPICallPath(std::wstring_view pPath, bool pPathIsCanonic = false, bool pForce = false);
  /// The plain form of a path in long-path form; any other text stays.
  static std::wstring RevertUnicodeAPICallPath(std::wstring_view pPath);
  static bool IsUnicodeAPICallPath(std::wstring_view pPath) noexcept;
  /// Asks the disk whether the path is that of a link, a junction or another reparse point, itself and not what it
  /// leads to. It asks the folder that lists it, which answers for a file that is locked or may not be opened, too.
  /// False if there is nothing, for a pattern, and for the root of a drive or share, which no folder lists.
  static bool IsReparsePoint(std::wstring_view pPath);
  /// Asks the disk whether any bit of `pFileAttribute` is set ("File Attribute Constants"). False if there is nothing.
  static bool HasFileAttribute(std::wstring_view pPath, DWORD pFileAttribute);

  /// An address with a scheme of at least two letters or digits, or "file:\".
  static bool IsURL(std::wstring_view pUrl) noexcept;
  static bool IsValidIP(std::wstring_view pAddress) noexcept;
  /// Four numbers up to 255, leading zeros included. One line feed behind it is overlooked.
  static bool IsValidIPv4(std::wstring_view pAddress) noexcept;
  /// In full or with "::", with an IPv4 address at its end or not, with a zone ("%eth0") or not. White space around it
  /// is overlooked.
  static bool IsValidIPv6(std::wstring_view pAddress) noexcept;
};

/// Where GetSpecialFolderRoot gets the display name of the folder of the drives from; the folder stands above this
/// room. Null (as at first) for none. The source is called from any thread.
KIV_EXPORT void SetDrivesFolderNameSource(std::wstring (*pSource)()) noexcept;

} // namespace kiv
