#include "Benches.h"

#include <platform/Lifecycle.h>
#include <platform/Types.h>

#include <ole2.h>

int main(int pCount, char** pArguments) {
  OleInitialize(nullptr);
  int result = 0;
  {
    std::vector<kiv::bench::TFigure> figures;
    for (const auto& group : {&kiv::bench::WalkFigures, &kiv::bench::MainThreadFigures}) {
      for (auto& figure : group()) figures.push_back(std::move(figure));
    }
    result = kiv::bench::Run(figures, std::vector<std::string>(pArguments + 1, pArguments + pCount));
  }
  kiv::Shutdown();
  OleUninitialize();
  return result;
}
