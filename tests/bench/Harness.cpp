#include "Harness.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <set>

namespace kiv::bench {

namespace {

constexpr int Rounds = 9;

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

std::string Number(double value, const char* format = "%.4g") {
  char text[40];
  std::snprintf(text, sizeof(text), format, value);
  return text;
}

std::string Measure(const TFigure& figure) {
  std::vector<double> ours;
  std::vector<double> floor;
  for (int round = 0; round <= Rounds; ++round) {
    const double floor_now = figure.floor ? figure.floor() : 0;
    const double ours_now = figure.ours();
    if (round == 0) continue; // warms up
    floor.push_back(floor_now);
    ours.push_back(ours_now);
  }
  const double ours_median = Median(ours);
  const double floor_median = Median(floor);
  const double ratio = floor_median > 0 ? ours_median / floor_median : 0;
  const bool compared = figure.floor && floor_median > 0;
  const char* const verdict = figure.budget == 0 || ratio <= figure.budget ? "ok" : "over";
  return figure.group + "/" + figure.name + "\t" + Number(ours_median) + " " + figure.unit + "\t" +
         (compared ? Number(floor_median) + " " + figure.unit : "-") + "\t" + (compared ? Number(ratio, "%.2f") : "-") +
         "\t" + (figure.budget > 0 ? Number(figure.budget, "%.2f") : "-") + "\t" + verdict;
}

} // namespace

double Seconds(const std::function<void()>& pWork) {
  const auto start = std::chrono::steady_clock::now();
  pWork();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int Run(const std::vector<TFigure>& pFigures, const std::vector<std::string>& pGroups) {
  std::set<std::string> known;
  for (const TFigure& figure : pFigures) known.insert({figure.group, figure.group + "/" + figure.name});
  if (pGroups.size() == 2 && pGroups[0] == "--has") return known.contains(pGroups[1]) ? 0 : 1;
  for (const std::string& group : pGroups) {
    if (known.contains(group)) continue;
    std::fprintf(stderr, "kiv_bench: unknown group \"%s\"; there are:", group.c_str());
    for (const std::string& name : known) {
      if (name.find('/') == std::string::npos) std::fprintf(stderr, " %s", name.c_str());
    }
    std::fputs("\n", stderr);
    return 2;
  }
  for (const TFigure& figure : pFigures) {
    const auto is_chosen = [&](const std::string& text) {
      return text == figure.group || text == figure.group + "/" + figure.name;
    };
    if (!pGroups.empty() && std::none_of(pGroups.begin(), pGroups.end(), is_chosen)) continue;
    std::puts(Measure(figure).c_str());
    std::fflush(stdout);
  }
  return 0;
}

} // namespace kiv::bench
