#pragma once

#include "Environment.h"

#include <string>
#include <vector>

namespace kivtool {

/// Runs the tool with the arguments behind the program's name, and returns its exit code.
int Run(const std::vector<std::wstring>& pArguments, TEnvironment& pEnvironment);

} // namespace kivtool
