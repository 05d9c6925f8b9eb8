#pragma once

#include "Harness.h"

#include <vector>

namespace kiv::bench {

std::vector<TFigure> PoolFigures();
#if defined(_WIN32)
std::vector<TFigure> WalkFigures();
std::vector<TFigure> MainThreadFigures();
#endif

} // namespace kiv::bench
