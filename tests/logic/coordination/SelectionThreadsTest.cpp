#include "SelectionFixture.h"

#include <doubles/Barrier.h>

#include <atomic>
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

} // namespace
} // namespace kiv::test
