#include "SelectionFixture.h"

#include <doubles/ManualExecutor.h>

#include <functional>
#include <memory>
#include <utility>

namespace kiv::test {
namespace {

/// Measures when the test says so. Each folder comes to 100 bytes in 3 files and 2 folders, each file to 10 bytes.
class TManualSizes : public IFolderSizeSource {
public:
  explicit TManualSizes(SimulatedDisk& pDisk) : fDisk(pDisk), fOuter(SetFolderSizeSource(this)) {}
  ~TManualSizes() override { SetFolderSizeSource(fOuter); }

  void Measure(std::vector<std::wstring> pPaths, bool, ComPtr<ICancellationIndicator> pToken,
               std::function<void(const TFolderSize&)> pDone) override {
    for (const std::wstring& path : pPaths) {
      asked.push_back(path);
      const bool folder = fDisk.ObjectAt(path) == TDiskObject::Folder;
      const TFolderSize size = folder ? TFolderSize{100, 3, 2} : TFolderSize{10, 1, 0};
      work.Queue([=, this] {
        if (obeys && pToken->IsCancellationRequested()) return;
        pDone(size);
      });
    }
  }

  ManualExecutor work;
  TTexts asked;
  bool obeys = true; // withdrawn work doesn't report

private:
  SimulatedDisk& fDisk;
  IFolderSizeSource* const fOuter;
};

class SelectionTotals : public SelectionTest {
protected:
  SelectionTotals() {
    MakeAll({L"C:\\a\\1", L"C:\\a\\2", L"C:\\b\\x\\y", L"C:\\b\\z", L"C:\\c"});
    fList->SetOnCompletedCalculateFiles([this](TPersistent*) { ++fEnds; });
  }
  std::vector<std::int64_t> Totals() const {
    return {fList->GetSize(), fList->GetFileCount(), fList->GetFolderCount()};
  }
  using TTotals = std::vector<std::int64_t>;

  TManualSizes fSizes{fDisk};
  std::unique_ptr<TKivSelectionList> fList = std::make_unique<TKivSelectionList>();
  int fEnds = 0;
};

TEST_F(SelectionTotals, RunBehindTheChanges) {
  fList->AddPathToSelection(L"C:\\c");
  EXPECT_EQ(Totals(), (TTotals{10, 1, 0})) << "a file at once";
  EXPECT_EQ(fEnds, 1);
  fList->AddPathToSelection(L"C:\\a");
  EXPECT_EQ(Totals(), (TTotals{10, 1, 0}));
  fSizes.work.RunUntilIdle();
  EXPECT_EQ(Totals(), (TTotals{110, 4, 2}));
  EXPECT_EQ(fEnds, 2);
  fList->RemovePathFromSelection(L"C:\\a\\1"); // the folder dissolves, the file is measured
  fSizes.work.RunUntilIdle();
  EXPECT_EQ(Totals(), (TTotals{100, 3, 1}));
  fList->RemovePathFromSelection(L"C:\\c");
  fSizes.work.RunUntilIdle();
  EXPECT_EQ(Totals(), (TTotals{90, 2, 1}));
  EXPECT_EQ(fSizes.asked, (TTexts{L"C:\\a", L"C:\\a\\1", L"C:\\c"}));
  fList->RemovePathFromSelection(L"C:\\a");
  EXPECT_EQ(Totals(), (TTotals{0, 0, 0})) << "nothing is selected";
  fSizes.work.RunUntilIdle();
  EXPECT_EQ(Totals(), (TTotals{0, 0, 0}));
}

TEST_F(SelectionTotals, AreMeasuredForWhatTakesOver) {
  for (const wchar_t* path : {L"C:\\a\\1", L"C:\\a\\2"}) fList->AddPathToSelection(path);
  EXPECT_EQ(fSizes.asked, (TTexts{L"C:\\a", L"C:\\a\\2", L"C:\\a\\1"})) << "the folder in, both files out";
  fSizes.work.RunUntilIdle();
  EXPECT_EQ(Totals(), (TTotals{100, 3, 2}));
  fList->SetCalculateSelectedFiles(false);
  fList->AddPathToSelection(L"C:\\c");
  fList->RemovePathFromSelection(L"C:\\a\\2");
  EXPECT_EQ(fSizes.work.PendingCount(), 0U);
  EXPECT_EQ(Totals(), (TTotals{100, 3, 2}));
}

// Work that is withdrawn, whoever delivers it all the same.
TEST_F(SelectionTotals, FallToNothingWithWhatIsWithdrawn) {
  fSizes.obeys = false;
  fList->AddPathToSelection(L"C:\\a");
  fList->Clear();
  fList->AddPathToSelection(L"C:\\c");
  fSizes.work.RunUntilIdle();
  EXPECT_EQ(Totals(), (TTotals{10, 1, 0})) << "nothing of what ran before";
  fList->AddPathToSelection(L"C:\\b");
  fFiles.Rename(L"C:\\b", L"b2");
  fList->PathWasRenamed(L"C:\\b", L"C:\\b2");
  fSizes.work.RunUntilIdle();
  EXPECT_EQ(Totals(), (TTotals{110, 4, 2})) << "what moves stays measured";
  fList->AddPathToSelection(L"C:\\a"); // the drive takes over
  EXPECT_EQ(fSizes.work.PendingCount(), 5U) << "the folder and the drive in, three entries out";
  fList->AbortSizeCalculation();
  EXPECT_EQ(Totals(), (TTotals{0, 0, 0}));
  fList->RemovePathFromSelection(L"C:\\a\\1");
  fList.reset();
  const int ends = fEnds;
  fSizes.work.RunUntilIdle();
  EXPECT_EQ(fEnds, ends);
}

TEST_F(SelectionTotals, MayBeTheEndOfTheirSelection) {
  fList->SetOnCompletedCalculateFiles([this](TPersistent*) { fList.reset(); });
  fList->AddPathToSelection(L"C:\\a");
  fList->AddPathToSelection(L"C:\\b");
  fSizes.work.RunUntilIdle();
  EXPECT_FALSE(fList);
}

} // namespace
} // namespace kiv::test
