#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <string>

namespace kiv {

/// The platform's text for a system error code or an HRESULT ("FormatMessage", FORMAT_MESSAGE_FROM_SYSTEM), without
/// the line end behind it; empty if the platform has none. Any thread.
KIV_EXPORT std::wstring GetErrorMessageText(DWORD pCode);
KIV_EXPORT std::wstring GetErrorMessageText(HRESULT pCode);

/// The same for messages to people, never empty: a code without a text reads "Error 0x8000FFFF".
KIV_EXPORT std::wstring DescribeError(HRESULT pCode);

} // namespace kiv
