#pragma once

#include "Environment.h"

#include <string>

namespace kivtool {

struct TWalkOptions {
  bool json = false;
};

/// Lists a folder. A path that can't be opened, and a walk that broke off, give an error line and `Failed`; what was
/// listed up to there is printed all the same.
int RunWalk(const std::wstring& pPath, const TWalkOptions& pOptions, TEnvironment& pEnvironment);

} // namespace kivtool
