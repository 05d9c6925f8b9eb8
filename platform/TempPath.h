#pragma once

#include <platform/Export.h>

#include <string>

namespace kiv {

/// The folder for temporary files, with a delimiter at its end, in long form if it exists ("GetTempPathW"). Empty if
/// the platform has none.
KIV_EXPORT std::wstring KivGetTempPath();

} // namespace kiv
