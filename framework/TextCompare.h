#pragma once

#include <platform/Export.h>

#include <string_view>

namespace kiv {

/// Compares two texts ignoring case: below 0, 0 or above 0. Ordinal, unit by unit after simple upper-casing
/// ("CompareStringOrdinal"), so the order is total and the same for every user's language. Any thread.
KIV_EXPORT int CompareText(std::wstring_view pFirst, std::wstring_view pSecond) noexcept;

/// True if the texts are the same but for case. Quicker than CompareText.
KIV_EXPORT bool SameText(std::wstring_view pFirst, std::wstring_view pSecond) noexcept;

/// True if the text starts with the prefix, ignoring case.
KIV_EXPORT bool StartsText(std::wstring_view pPrefix, std::wstring_view pText) noexcept;

} // namespace kiv
