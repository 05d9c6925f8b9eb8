#pragma once

#include "Environment.h"
#include "PathCommands.h"

namespace kivtool {

/// "parse": what the library makes of a text. A line of 1 or 0 for whether it leads anywhere, the depth below the
/// desktop, the path to show, and the special folder, with tabs between them.
TTextCommand ParseCommand(const TEnvironment& pEnvironment);

} // namespace kivtool
