#pragma once

#include <platform/Export.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace kiv {

/// The names in a block of the clipboard format "FileGroupDescriptorW" ("FILEGROUPDESCRIPTORW"): one for each record,
/// in the records' order, which is what the format "FileContents" counts by. An empty name keeps its place.
///
/// The block is another program's. A count that promises more records than the block holds gives those that are there
/// in full; a name without its end is as long as its field. Names are relative paths, and nothing else is checked of
/// them: they may be empty, hold ".." or what no file system takes. Any thread.
KIV_EXPORT std::vector<std::wstring> DecodeFileDescriptorsW(std::span<const std::byte> pBlock);

/// The same for "FileGroupDescriptor" ("FILEGROUPDESCRIPTORA"), whose names are in the code page of the program that
/// made them.
KIV_EXPORT std::vector<std::string> DecodeFileDescriptorsA(std::span<const std::byte> pBlock);

} // namespace kiv
