#pragma once

#include <platform/Export.h>

namespace kiv {

/// Registers the properties of this room's classes, once, and those of the rooms below. Whoever registers a class that
/// derives from one of them calls it before. True.
KIV_EXPORT bool PublishListView();

} // namespace kiv
