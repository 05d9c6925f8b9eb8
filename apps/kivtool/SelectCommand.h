#pragma once

#include "Environment.h"

#include <string>
#include <vector>

namespace kivtool {

/// What "select" can be asked to do, for messages.
std::string SelectActionNames();

/// Whether there is such an action, and it takes so many paths.
bool IsSelectAction(const std::wstring& pAction, std::size_t pPaths);

/// One action on the selection that an ini file keeps.
int RunSelect(const std::wstring& pFile, const std::wstring& pAction, const std::vector<std::wstring>& pPaths,
              TEnvironment& pEnvironment);

} // namespace kivtool
