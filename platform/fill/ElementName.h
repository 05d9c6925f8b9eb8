#pragma once

#include <platform/Export.h>

#include <string_view>

namespace kiv {

/// True if the text can be the name of something that stands in a folder: one component of a path, so that nothing
/// outside the folder is reached by it. Not empty, neither "." nor "..", without a delimiter, a colon (it would name a
/// stream inside a file), a wildcard or another character that no file system takes ("Naming Files, Paths, and
/// Namespaces").
KIV_EXPORT bool IsElementName(std::wstring_view pName);

/// True if something may be given that name: besides IsElementName it isn't a device's name ("NUL", "com1.txt"),
/// doesn't end in a blank or a dot, and has at most 255 characters. What has such a name all the same is hard to get
/// rid of.
KIV_EXPORT bool IsNewElementName(std::wstring_view pName);

} // namespace kiv
