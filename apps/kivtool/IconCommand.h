#pragma once

#include "Environment.h"

#include <string>
#include <vector>

namespace kivtool {

/// "icon": saves the icon of an object as a PNG file. UsageError, and a complaint in `pComplaint`, for arguments that
/// aren't understood.
int RunIcon(const std::vector<std::wstring>& pArguments, TEnvironment& pEnvironment, std::string& pComplaint);

} // namespace kivtool
