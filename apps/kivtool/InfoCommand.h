#pragma once

#include "Environment.h"

#include <string>
#include <vector>

namespace kivtool {

/// "info": all that an item list tells of each path. Failed if one of them leads nowhere.
int RunInfo(const std::vector<std::wstring>& pPaths, TEnvironment& pEnvironment);

} // namespace kivtool
