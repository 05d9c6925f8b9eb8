#pragma once

#include "Harness.h"

#include <vector>

namespace kiv::bench {

std::vector<TFigure> ListFigures();
std::vector<TFigure> WalkFigures();
std::vector<TFigure> MainThreadFigures();
/// Also natively.
std::vector<TFigure> PathFigures();

} // namespace kiv::bench
