#include <graphics/Pixels.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace kiv {

namespace {

using TParts = std::array<float, 4>; // of a pixel, from the lowest bits up

// The pixels of the source that one of the target is made of.
struct TReach {
  int first;
  int count;
  std::size_t weights; // where theirs begin
};

// How one direction is scaled.
struct TPlan {
  std::vector<TReach> reaches;
  std::vector<float> weights; // those of a reach add up to 1
};

constexpr double Radius = 2; // of the cubic

// Catmull and Rom's: goes through the given values, and keeps edges sharp.
double Cubic(double x) {
  x = std::abs(x);
  if (x < 1) return (1.5 * x - 2.5) * x * x + 1;
  if (x < 2) return ((-0.5 * x + 2.5) * x - 4) * x + 2;
  return 0;
}

TPlan MakePlan(int source, int target) {
  const double step = static_cast<double>(source) / target;
  const double stretch = std::max(step, 1.0);
  TPlan plan;
  plan.reaches.reserve(static_cast<std::size_t>(target));
  std::vector<double> weights;
  for (int i = 0; i < target; ++i) {
    const double center = (i + 0.5) * step - 0.5;
    const int first = std::max(static_cast<int>(std::ceil(center - Radius * stretch)), 0);
    const int last = std::min(static_cast<int>(std::floor(center + Radius * stretch)), source - 1);
    weights.clear();
    double sum = 0;
    for (int j = first; j <= last; ++j) sum += weights.emplace_back(Cubic((j - center) / stretch));
    plan.reaches.push_back({first, last - first + 1, plan.weights.size()});
    for (const double weight : weights) plan.weights.push_back(static_cast<float>(weight / sum));
  }
  return plan;
}

void Add(TParts& sum, const TParts& parts, float weight) {
  for (std::size_t i = 0; i < parts.size(); ++i) sum[i] += parts[i] * weight;
}

TParts Split(TPixel pixel) {
  return {static_cast<float>(pixel & 0xFF), static_cast<float>(pixel >> 8 & 0xFF),
          static_cast<float>(pixel >> 16 & 0xFF), static_cast<float>(pixel >> 24)};
}

TPixel Join(const TParts& parts, bool premultiplied) {
  const auto whole = [](float part, float most) {
    return static_cast<TPixel>(std::lround(std::clamp(part, 0.0F, most)));
  };
  const TPixel alpha = whole(parts[3], 255);
  const float most = premultiplied ? static_cast<float>(alpha) : 255.0F;
  return alpha << 24 | whole(parts[2], most) << 16 | whole(parts[1], most) << 8 | whole(parts[0], most);
}

// A row of the source in the target's width.
void ScaleRow(const TPixel* source, const TPlan& plan, TParts* target, std::vector<TParts>& split) {
  std::transform(source, source + split.size(), split.begin(), &Split);
  for (const TReach& reach : plan.reaches) {
    TParts sum{};
    for (int i = 0; i < reach.count; ++i) {
      Add(sum, split[static_cast<std::size_t>(reach.first + i)],
          plan.weights[reach.weights + static_cast<std::size_t>(i)]);
    }
    *target++ = sum;
  }
}

} // namespace

void ResamplePixels(const TPixel* pSource, int pSourceWidth, int pSourceHeight, TPixel* pTarget, int pTargetWidth,
                    int pTargetHeight, bool pPremultiplied) {
  const TPlan columns = MakePlan(pSourceWidth, pTargetWidth);
  const TPlan rows = MakePlan(pSourceHeight, pTargetHeight);
  const auto width = static_cast<std::size_t>(pTargetWidth);
  // Scaled rows of the source that the present row of the target reaches, in a ring: a large picture is never held a
  // second time.
  int most = 1;
  for (const TReach& reach : rows.reaches) most = std::max(most, reach.count);
  std::vector<TParts> ring(width * static_cast<std::size_t>(most));
  const auto row_at = [&](int row) { return ring.data() + width * static_cast<std::size_t>(row % most); };
  std::vector<TParts> split(static_cast<std::size_t>(pSourceWidth));
  std::vector<TParts> sums(width);
  int ready = 0;
  for (const TReach& reach : rows.reaches) {
    for (ready = std::max(ready, reach.first); ready < reach.first + reach.count; ++ready) {
      ScaleRow(pSource + static_cast<std::size_t>(ready) * static_cast<std::size_t>(pSourceWidth), columns,
               row_at(ready), split);
    }
    std::ranges::fill(sums, TParts{});
    for (int i = 0; i < reach.count; ++i) {
      const TParts* const row = row_at(reach.first + i);
      const float weight = rows.weights[reach.weights + static_cast<std::size_t>(i)];
      for (std::size_t x = 0; x < width; ++x) Add(sums[x], row[x], weight);
    }
    for (const TParts& sum : sums) *pTarget++ = Join(sum, pPremultiplied);
  }
}

} // namespace kiv
