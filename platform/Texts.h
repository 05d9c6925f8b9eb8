#pragma once

#include <platform/ResourceText.h>

namespace kiv {

/// "New Folder": the name that a folder gets when none is given.
KIV_EXPORT extern const TResourceText _sNewFolder;
/// "In Folder"
KIV_EXPORT extern const TResourceText _sInFolder;
/// "Arrange Icons By"
KIV_EXPORT extern const TResourceText _sArrangeIconsBy;

} // namespace kiv
