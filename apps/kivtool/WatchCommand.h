#pragma once

#include "Environment.h"

#include <string>
#include <vector>

namespace kivtool {

struct TWatchOptions {
  std::vector<std::wstring> paths;
  bool recursive = false;
  bool json = false;
};

/// Prints what changes until the user has had enough, which is how a watch ends well. A path that can't be watched
/// gives an error line and `Failed` at the end; the others are watched all the same.
int RunWatch(const TWatchOptions& pOptions, TEnvironment& pEnvironment);

} // namespace kivtool
