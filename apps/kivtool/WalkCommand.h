#pragma once

#include "Environment.h"

#include <limits>
#include <string>

namespace kivtool {

struct TWalkOptions {
  static constexpr int AllLevels = std::numeric_limits<int>::max();

  bool json = false;
  /// Patterns with ";" between them that names of files are let through by; folders always pass.
  std::wstring filter;
  bool filesOnly = false;
  bool foldersOnly = false;
  /// Nothing virtual; an archive is a file.
  bool fileSystemOnly = false;
  bool navigation = false;
  /// How many levels to go down into the folders below.
  int depth = 0;
};

/// Lists a folder, and the folders below it as deep as told: each as a whole, then those in it one after the other.
/// Links and other redirections aren't followed. A path that can't be opened, and a walk that broke off, give an error
/// line and `Failed`; what else there is is printed all the same. Whoever stops it gets what was listed up to there,
/// with its totals.
int RunWalk(const std::wstring& pPath, const TWalkOptions& pOptions, TEnvironment& pEnvironment);

} // namespace kivtool
