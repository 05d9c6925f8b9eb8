#pragma once

#include "Harness.h"

#include <vector>

namespace kiv::bench {

#if defined(_WIN32)
std::vector<TFigure> BrowserFigures();
std::vector<TFigure> IconFigures();
std::vector<TFigure> ChangeFigures();
std::vector<TFigure> ListFigures();
std::vector<TFigure> WalkFigures();
std::vector<TFigure> MainThreadFigures();
std::vector<TFigure> RowFigures();
#endif
/// Also natively.
std::vector<TFigure> PathFigures();
std::vector<TFigure> PoolFigures();
std::vector<TFigure> SelectionFigures();

} // namespace kiv::bench
