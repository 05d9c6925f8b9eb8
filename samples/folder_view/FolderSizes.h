#pragma once

#include <core/FolderSizeSource.h>

namespace kiv::sample {

/// Measures folders for the totals of a selection, on workers of their own. One stands for the process, while it lives.
/// Main thread.
class TFolderSizes final : public IFolderSizeSource {
public:
  TFolderSizes() : fOuter(SetFolderSizeSource(this)) {}
  ~TFolderSizes() override { SetFolderSizeSource(fOuter); }
  TFolderSizes(const TFolderSizes&) = delete;
  TFolderSizes& operator=(const TFolderSizes&) = delete;

  void Measure(std::vector<std::wstring> pPaths, bool pFollowReparsePoints,
               ComPtr<ICancellationIndicator> pCancellationToken,
               std::function<void(const TFolderSize&)> pDone) override;

private:
  IFolderSizeSource* const fOuter;
};

} // namespace kiv::sample
