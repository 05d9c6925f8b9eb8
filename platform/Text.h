#pragma once

#include <platform/Export.h>

#include <string>
#include <string_view>

namespace kiv {

/// UTF-8 of a text. A surrogate without its other half becomes U+FFFD.
KIV_EXPORT std::string ToUtf8(std::wstring_view pText);

/// Text from UTF-8. Each byte that doesn't belong to a well-formed sequence becomes U+FFFD.
KIV_EXPORT std::wstring FromUtf8(std::string_view pText);

/// True if the text has no surrogate without its other half, so that it survives a way through UTF-8.
KIV_EXPORT bool IsWellFormed(std::wstring_view pText);

} // namespace kiv
