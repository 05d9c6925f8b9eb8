#pragma once

#include <platform/Export.h>

namespace kiv {

/// Registers the properties of this room's classes, once. Whoever registers a class that derives from one of them calls
/// it before: nothing else says which of two source files is set up first. True.
KIV_EXPORT bool PublishForms();

} // namespace kiv
