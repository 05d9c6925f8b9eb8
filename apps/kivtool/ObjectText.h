#pragma once

#include <core/FolderObject.h>

#include <cstdint>
#include <string>

namespace kivtool {

/// "Folder", "File", "Link", "Archive" (a file that can be walked), or "Object" for what is none of these.
std::string KindOf(const kiv::TFolderObject& pObject);

/// "1,234,567"
std::string Grouped(std::uint64_t pNumber);
/// The same for a size; empty if it isn't known.
std::string SizeText(std::int64_t pSize);
/// "2026-11-21 10:28"; empty for an unknown time.
std::string MinuteText(kiv::TFileTime pTime);
/// "2026-11-21T10:28:28.1234567Z"
std::string IsoText(kiv::TFileTime pTime);

/// UTF-8 that a terminal can show on one line: control characters and marks that change the direction of what follows
/// become U+FFFD.
std::string Printable(const std::wstring& pText);
/// A text of any length, for a message: the middle of a long one is left out.
std::wstring Excerpt(const std::wstring& pText);

/// One JSON object on one line. A name that isn't well-formed UTF-16 is given as its code units as well.
std::string JsonOf(const kiv::TFolderObject& pObject, const std::wstring& pPath);

} // namespace kivtool
