#pragma once

#include "Harness.h"

#include <vector>

namespace kiv::bench {

std::vector<TFigure> WalkFigures();
std::vector<TFigure> MainThreadFigures();

} // namespace kiv::bench
