#pragma once

#include "Environment.h"

namespace kivtool {

/// Saves the icon of an object as a PNG file. Raises EException if there is none or it can't be written.
void SaveIcon(const TIconOptions& pOptions);

} // namespace kivtool
