#pragma once

#include <functional>
#include <string>
#include <vector>

namespace kiv::bench {

/// One figure: what a piece of ours costs beside the platform's own floor for the same work, measured in one run.
struct TFigure {
  /// Groups are chosen on the command line, or single figures as `group/name`.
  std::string group;
  std::string name;
  std::string unit;
  /// Each returns one measurement in the unit. `floor` may be empty: then there is no ratio.
  std::function<double()> ours;
  std::function<double()> floor;
  /// The greatest ratio that is acceptable; 0 if none is set.
  double budget = 0;
};

/// Seconds that a piece of work takes.
double Seconds(const std::function<void()>& pWork);

/// Measures the chosen figures, `group` or `group/name` (all, if none is named): the medians of interleaved runs,
/// behind one that warms up. Prints one tab-separated line a figure: `group/name  ours  floor  ratio  budget  ok|over`.
/// Returns the program's exit code; a figure that doesn't exist is an error, one over its budget is not. `--has NAME`
/// only says by the exit code whether there is such a group or figure.
int Run(const std::vector<TFigure>& pFigures, const std::vector<std::string>& pWanted);

} // namespace kiv::bench
