#pragma once

namespace kiv {

/// The library's version. The build takes the DLL's version resource and the package version from this line.
inline constexpr wchar_t LibraryVersion[] = L"12.4.2.936";

} // namespace kiv
