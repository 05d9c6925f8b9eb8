#pragma once

#include "Environment.h"

#include <functional>
#include <string>
#include <vector>

namespace kivtool {

/// TWatchPaths over a change notifier, in a message loop of its own.
std::vector<std::wstring> WatchPaths(const std::vector<std::wstring>& pPaths, bool pRecursive,
                                     const std::function<bool(const TWatchedChange&)>& pTell,
                                     const std::function<bool()>& pIsStopped);

} // namespace kivtool
