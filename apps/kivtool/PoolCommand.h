#pragma once

#include "Environment.h"

namespace kivtool {

struct TPoolOptions {
  int items = 100'000;
  int workMicroseconds = 0; ///< that each item computes
  int threads = 0;          ///< 0: as many as the pool allows by itself
  int minimum = 1;          ///< threads that are started without asking the processors
  int batch = 1;            ///< items that are added at a time
  int highestPercent = 0;   ///< with priority Highest
  int cancelPercent = 0;    ///< cancelled as soon as they are added
  bool json = false;
};

/// Loads a worker pool, and prints what became of it.
int RunPool(const TPoolOptions& pOptions, TEnvironment& pEnvironment);

} // namespace kivtool
