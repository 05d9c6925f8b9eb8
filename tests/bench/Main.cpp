#include "Benches.h"

#include <platform/Lifecycle.h>
#include <platform/MainThread.h>

#if defined(_WIN32)
#include <platform/Types.h>

#include <ole2.h>
#endif

int main(int pCount, char** pArguments) {
  using TFigures = std::vector<kiv::bench::TFigure> (*)();
#if defined(_WIN32)
  OleInitialize(nullptr);
  kiv::MainThread::Attach();
  constexpr TFigures all[] = {&kiv::bench::WalkFigures,     &kiv::bench::ListFigures, &kiv::bench::MainThreadFigures,
                              &kiv::bench::PathFigures,     &kiv::bench::PoolFigures, &kiv::bench::IconFigures,
                              &kiv::bench::BrowserFigures,  &kiv::bench::RowFigures,  &kiv::bench::ChangeFigures,
                              &kiv::bench::SelectionFigures};
#else
  constexpr TFigures all[] = {&kiv::bench::PathFigures, &kiv::bench::PoolFigures, &kiv::bench::SelectionFigures};
#endif
  int result = 0;
  {
    std::vector<kiv::bench::TFigure> figures;
    for (const TFigures group : all) {
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
