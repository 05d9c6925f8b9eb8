#include "SelectionFixture.h"

#include <doubles/Barrier.h>
#include <framework/Thread.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <threading/WorkProcedures.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <thread>

namespace kiv::test {
namespace {

using SelectionThreads = SelectionTest;

// What is always selected, and what never is, reads as that in the middle of any change.
TEST_F(SelectionThreads, ReadersSeeOnlyWholeChanges) {
  MakeAll(
      {L"C:\\on\\1", L"C:\\on\\2", L"C:\\on\\d\\3", L"C:\\on\\d\\4", L"C:\\off\\1", L"C:\\other\\1", L"C:\\other\\2"});
  auto list = std::make_unique<TKivSelectionList>();
  list->AddPathToSelection(L"C:\\on");
  TBarrier start(5);
  std::atomic<bool> done{false};
  std::atomic<int> wrong{0};
  std::atomic<int> asked{0};
  std::vector<std::thread> readers;
  for (int reader = 0; reader < 4; ++reader) {
    readers.emplace_back([&, source = list->GetStateSource()] {
      start.ArriveAndWait();
      const auto state = [&](const wchar_t* path) {
        bool sub = false;
        return source->IsPIDLSelected(Make<PlainItemIdList>(path).Get(), sub);
      };
      while (!done) {
        wrong += state(L"C:\\on\\1") != ssChecked ? 1 : 0;
        wrong += state(L"C:\\off\\1") != ssUnChecked ? 1 : 0;
        wrong += state(L"C:\\") != ssGrayed ? 1 : 0;
        ++asked;
      }
    });
  }
  start.ArriveAndWait();
  std::mt19937 random(7);
  while (asked < 500) {
    const wchar_t* const paths[] = {L"C:\\on\\d\\3", L"C:\\on\\d", L"C:\\other\\1", L"C:\\other", L"C:\\on\\2"};
    const std::wstring path = paths[random() % std::size(paths)];
    if (random() % 2 == 0) {
      list->AddPathToSelection(path);
    } else {
      list->RemovePathFromSelection(path);
    }
    if (random() % 8 == 0) {
      fFiles.Rename(L"C:\\other", L"moved");
      list->PathWasRenamed(L"C:\\other", L"C:\\moved");
      fFiles.Rename(L"C:\\moved", L"other");
      list->PathWasRenamed(L"C:\\moved", L"C:\\other");
    }
  }
  list.reset(); // and what they ask lives on
  const int before = asked;
  while (asked < before + 8) std::this_thread::yield();
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(wrong, 0);
}

/// Measures on the workers of the global pool.
class TPooledSizes : public IFolderSizeSource {
public:
  explicit TPooledSizes(ISelectionDisk& pDisk) : fDisk(pDisk), fOuter(SetFolderSizeSource(this)) {}
  ~TPooledSizes() override { SetFolderSizeSource(fOuter); }

  void Measure(std::vector<std::wstring> pPaths, bool, ComPtr<ICancellationIndicator> pToken,
               std::function<void(const TFolderSize&)> pDone) override {
    for (const std::wstring& path : pPaths) {
      ++pending;
      TAsyncProcedure::CreateAndQueue([this, path, pToken, pDone] {
        TFolderSize size{0, 0, 1};
        const auto search = fDisk.Search(path);
        for (TDiskEntry entry; search && !pToken->IsCancellationRequested() && search->Next(entry);) {
          size.size += entry.size;
          ++size.fileCount;
        }
        MainThread::Queue([this, size, pToken, pDone] {
          if (!pToken->IsCancellationRequested()) pDone(size);
          --pending;
        });
      });
    }
  }

  int pending = 0; // main thread

private:
  ISelectionDisk& fDisk;
  IFolderSizeSource* const fOuter;
};

// Whatever becomes of the selection while workers measure, what they report of it later counts for nothing.
TEST_F(SelectionThreads, TotalsFollowNoOtherSelectionThanTheirOwn) {
  MainThread::Attach();
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (int i = 0; i < 200; ++i) MakeAll({L"C:\\d" + std::to_wstring(i % 5) + L"\\" + std::to_wstring(i), L"C:\\rest"});
  TPooledSizes sizes(fDisk);
  auto list = std::make_unique<TKivSelectionList>();
  for (int step = 0; step < 400; ++step) {
    const std::wstring path = L"C:\\d" + std::to_wstring(random() % 5);
    switch (random() % 8) {
    case 0:
      list->Clear();
      break;
    case 1:
      fFiles.Rename(path, L"other");
      list->PathWasRenamed(path, L"C:\\other");
      fFiles.Rename(L"C:\\other", path.substr(3));
      list->PathWasRenamed(L"C:\\other", path);
      break;
    case 2:
      list = std::make_unique<TKivSelectionList>();
      break;
    case 3:
      list->RemovePathFromSelection(path);
      break;
    case 4:
      MainThread::CheckSynchronize();
      break;
    default:
      list->AddPathToSelection(path);
    }
  }
  list->Clear();
  list->AddPathToSelection(L"C:\\d3");
  while (sizes.pending > 0) MainThread::CheckSynchronize(std::chrono::milliseconds(1));
  EXPECT_EQ(list->GetSize(), 400);
  EXPECT_EQ(list->GetFileCount(), 40);
  EXPECT_EQ(list->GetFolderCount(), 1);
  Shutdown(); // ends the pool
  EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
}

} // namespace
} // namespace kiv::test
