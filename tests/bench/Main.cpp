#include "Benches.h"

#include <platform/Lifecycle.h>
#include <platform/Types.h>

#if defined(_WIN32)
#include <ole2.h>
#endif

int main(int pCount, char** pArguments) {
#if defined(_WIN32)
  OleInitialize(nullptr);
#endif
  int result = 0;
  {
    std::vector<kiv::bench::TFigure> figures;
    for (const auto& group : {
#if defined(_WIN32)
           &kiv::bench::WalkFigures, &kiv::bench::MainThreadFigures,
#endif
               &kiv::bench::PoolFigures
         }) {
      for (auto& figure : group()) figures.push_back(std::move(figure));
    }
    result = kiv::bench::Run(figures, std::vector<std::string>(pArguments + 1, pArguments + pCount));
  }
  kiv::Shutdown();
#if defined(_WIN32)
  OleUninitialize();
#endif
  return result;
}
