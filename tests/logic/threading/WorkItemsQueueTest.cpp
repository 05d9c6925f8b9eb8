#include "PoolFixture.h"

#include <threading/WorkItemsQueue.h>

#include <algorithm>
#include <iterator>
#include <string>

namespace kiv::test {
namespace {

struct IMarked : IUnknown {};

} // namespace
} // namespace kiv::test

namespace kiv {
KIV_INTERFACE_ID(test::IMarked, "{5B0B0D6E-2C30-4B8F-9D83-0E6E2F6F0011}");
} // namespace kiv

namespace kiv::test {
namespace {

class TMarkedProbe : public TProbe, public IMarked {
public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override {
    if (!pObject || !(pIid == IidOf<IMarked>())) return TProbe::QueryInterface(pIid, pObject);
    *pObject = static_cast<IMarked*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return TProbe::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return TProbe::Release(); }
};

using WorkItemsQueue = PoolTest;
using TWaker = TWorkItemsQueue::TWaker;
using TFound = TWorkItemsQueue::TFound;

ComPtr<TProbe> Tagged(int tag) {
  return Make<TProbe>(nullptr, nullptr, tag);
}

TEST_F(WorkItemsQueue, NormalItemsComeInOrderAndUrgentOnesFirstTheLatestBeforeTheOthers) {
  TWorkItemsQueue queue;
  for (const char c : std::string("ABC")) queue.Add(Tagged(c), false);
  for (const char c : std::string("DE")) queue.Add(Tagged(c), true);
  queue.Add({Tagged('F'), Tagged('G')}, false);
  queue.Add({Tagged('H'), Tagged('I')}, true);
  std::string order;
  EXPECT_EQ(queue.Length(), 9U);
  while (const auto item = queue.Dequeue()) {
    EXPECT_EQ(item->GetStatus(), TTaskStatus::WaitingToRun);
    order += static_cast<char>(item->GetTag());
  }
  EXPECT_EQ(order, "IHEDABCFG");
}

TEST_F(WorkItemsQueue, FindsItemsByTagClassAndInterface) {
  TWorkItemsQueue queue;
  EXPECT_FALSE(queue.ContainsWorkItem(0));
  queue.Add(Tagged(5), false);
  EXPECT_TRUE(queue.ContainsWorkItem(0));
  EXPECT_TRUE(queue.ContainsWorkItem(5));
  EXPECT_FALSE(queue.ContainsWorkItem(6));
  EXPECT_TRUE(queue.ContainsWorkItem(5, &IsOfClass<TBasicWorkItem>)) << "derived classes count";
  EXPECT_FALSE(queue.ContainsWorkItem(0, &IsOfClass<TAsyncProcedure>));
  EXPECT_FALSE(queue.ContainsWorkItem(IidOf<IMarked>()));
  queue.Add(Make<TMarkedProbe>(), false);
  EXPECT_TRUE(queue.ContainsWorkItem(IidOf<IMarked>()));
}

TEST_F(WorkItemsQueue, ClearDropsWithoutAWord) {
  TWorkItemsQueue queue;
  const auto item = Tagged(1);
  queue.Add(item, false);
  queue.Add(Tagged(2), false);
  EXPECT_EQ(queue.Clear(), 2U);
  EXPECT_EQ(item->GetStatus(), TTaskStatus::WaitingToRun);
  EXPECT_EQ(item->terminates, 0);
  EXPECT_EQ(queue.NotDone(), 2U) << "counting is the caller's";
  EXPECT_FALSE(queue.Done());
  EXPECT_TRUE(queue.Done());
}

// Which of the workers have been woken since the last look.
std::string Woken(const std::vector<TWaker>& wakers) {
  std::string woken;
  for (std::size_t i = 0; i < wakers.size(); ++i) {
    if (wakers[i]->WaitFor({})) woken += static_cast<char>('0' + i);
  }
  return woken;
}

TEST_F(WorkItemsQueue, EachItemWakesOneWhoWaitsAndNoWakeUpIsLost) {
  TWorkItemsQueue queue;
  std::vector<TWaker> wakers;
  std::generate_n(std::back_inserter(wakers), 3, [] { return std::make_shared<TSignal>(); });
  ComPtr<IWorkItem> item;
  const auto all_wait = [&] {
    for (const auto& waker : wakers) EXPECT_EQ(queue.TakeOrList(item, waker, TFound::Nothing), TFound::Nothing);
  };
  all_wait();
  // Two adds, two wake-ups; who waits for the shortest time is woken first.
  queue.Add(Tagged(1), false);
  queue.Add(Tagged(2), false);
  EXPECT_EQ(Woken(wakers), "12");
  EXPECT_EQ(queue.TakeOrList(item, wakers[2], TFound::Nothing), TFound::Item);
  EXPECT_EQ(Woken(wakers), "0") << "more remains, so the taker wakes another, whoever else is under way";
  EXPECT_EQ(queue.TakeOrList(item, wakers[1], TFound::Nothing), TFound::Item);
  EXPECT_EQ(queue.TakeOrList(item, wakers[0], TFound::Nothing), TFound::Nothing);
  // A batch wakes one, and each taker the next.
  all_wait();
  queue.Add({Tagged(1), Tagged(2), Tagged(3)}, false);
  EXPECT_EQ(Woken(wakers).size(), 1U);
  EXPECT_EQ(queue.TakeOrList(item, std::make_shared<TSignal>(), TFound::Nothing), TFound::Item);
  EXPECT_EQ(Woken(wakers).size(), 1U);
  EXPECT_EQ(queue.TakeOrList(item, std::make_shared<TSignal>(), TFound::Nothing), TFound::Item);
  EXPECT_EQ(Woken(wakers).size(), 1U);
  EXPECT_EQ(queue.Clear(), 1U);
  // One that was woken and goes hands its wake-up on.
  all_wait();
  queue.Add(Tagged(1), false);
  const std::string woken = Woken(wakers);
  ASSERT_EQ(woken.size(), 1U);
  queue.Leave(wakers[static_cast<std::size_t>(woken[0] - '0')]);
  EXPECT_EQ(Woken(wakers).size(), 1U);
}

TEST_F(WorkItemsQueue, OneStepCountsAnItemAsDoneAndTakesTheNext) {
  TWorkItemsQueue queue;
  const TWaker waker = std::make_shared<TSignal>();
  ComPtr<IWorkItem> item;
  queue.Add(Tagged(1), false);
  queue.Add(Tagged(2), false);
  ASSERT_EQ(queue.TakeOrList(item, waker, TFound::Item), TFound::Item);
  ASSERT_EQ(queue.TakeOrList(item, waker, TFound::Item, true), TFound::Item);
  EXPECT_EQ(item->GetTag(), 2);
  EXPECT_EQ(queue.NotDone(), 1U);
  EXPECT_FALSE(queue.BeginAllDone());
  EXPECT_EQ(queue.TakeOrList(item, waker, TFound::Item, true), TFound::LastDone);
  EXPECT_EQ(queue.NotDone(), 0U);
  EXPECT_TRUE(queue.BeginAllDone());
}

TEST_F(WorkItemsQueue, OneWhoLooksAroundSparesAWakeUpAndHandsOnWhatIsMore) {
  TWorkItemsQueue queue;
  const TWaker sleeper = std::make_shared<TSignal>();
  const TWaker searcher = std::make_shared<TSignal>();
  const TWaker other = std::make_shared<TSignal>();
  ComPtr<IWorkItem> item;
  ASSERT_EQ(queue.TakeOrList(item, sleeper, TFound::Nothing), TFound::Nothing);
  ASSERT_EQ(queue.TakeOrList(item, searcher, TFound::Item), TFound::Search);
  EXPECT_EQ(queue.TakeOrList(item, other, TFound::Item), TFound::Nothing) << "one looks around at a time";
  queue.Leave(other);
  queue.Add(Tagged(1), false);
  queue.Add(Tagged(2), false);
  EXPECT_FALSE(sleeper->WaitFor({}));
  EXPECT_EQ(queue.TakeOrList(item, searcher, TFound::Search), TFound::Item);
  EXPECT_TRUE(sleeper->WaitFor({})) << "more than one came meanwhile";
  // In vain: it sleeps as the others do, and is woken as they are.
  EXPECT_EQ(queue.Clear(), 1U);
  ASSERT_EQ(queue.TakeOrList(item, searcher, TFound::Item), TFound::Search);
  EXPECT_EQ(queue.TakeOrList(item, searcher, TFound::Search), TFound::Nothing);
  queue.Add(Tagged(3), false);
  EXPECT_TRUE(searcher->WaitFor({}));
}

} // namespace
} // namespace kiv::test
