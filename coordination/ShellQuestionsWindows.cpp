#include <coordination/ShellQuestions.h>

#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <threading/Future.h>
#include <threading/WorkerThreadPool.h>

#include <shlobj.h>

#include <atomic>
#include <cstring>

namespace kiv::detail {

namespace {

// One navigation asks two or three, and the window is to answer within a fifth of a second.
constexpr std::uint64_t Patience = 50;    // milliseconds
constexpr std::uint32_t LongestEnd = 200; // milliseconds for what is never answered, when the program ends
constexpr int MostOverdue = 2;            // who waits for so many needn't wait for more

enum class TStage { Asked, Answered, Raised, Late };

// A question that is never answered holds a thread: of a pool that is used for nothing else.
class TTimedQuestions final : public IShellQuestions {
public:
  bool IsPlainlySame(IItemIdList& pFirst, IItemIdList& pSecond) override {
    if (&pFirst == &pSecond) return true;
    if (!pFirst.IsResolved() || !pSecond.IsResolved()) return false;
    const PCIDLIST_ABSOLUTE first = pFirst.WindowsPointer();
    const PCIDLIST_ABSOLUTE second = pSecond.WindowsPointer();
    if (!first || !second) return false;
    const UINT size = ILGetSize(first);
    return size == ILGetSize(second) && std::memcmp(first, second, size) == 0;
  }

  bool Ask(std::function<void()> pQuestion, std::function<void()> pLate) override {
    const bool waits = *Overdue() < MostOverdue;
    if (!waits && !pLate) return false; // nobody would learn the answer
    const auto stage = std::make_shared<std::atomic<TStage>>(TStage::Asked);
    const std::function<bool()> ask = [stage, overdue = fOverdue, question = std::move(pQuestion),
                                       late = std::move(pLate)] {
      TStage end = TStage::Answered;
      try {
        question();
      } catch (...) {
        end = TStage::Raised;
      }
      if (stage->exchange(end) != TStage::Late) return true;
      --*overdue;
      if (late && end == TStage::Answered) MainThread::Queue(late);
      return true;
    };
    ComPtr<IFuture<bool>> future;
    TFuture<bool>::CreateAndQueue(ask, nullptr, future, fPool.Get());
    bool ended = false;
    if (waits) future->TryGetValue(Patience, ended);
    ++*fOverdue; // before the question can learn that it is
    TStage expected = TStage::Asked;
    if (stage->compare_exchange_strong(expected, TStage::Late)) return false;
    --*fOverdue;
    return expected == TStage::Answered;
  }

  void End() {
    if (fPool) fPool->Dispose();
    fPool.Reset();
    fOverdue.reset();
  }

private:
  const std::shared_ptr<std::atomic<int>>& Overdue();

  ComPtr<IWorkerThreadPool> fPool;
  std::shared_ptr<std::atomic<int>> fOverdue; // of that pool's
};

TTimedQuestions& Questions() {
  static auto* const questions = new TTimedQuestions; // the shutdown empties it
  return *questions;
}

const std::shared_ptr<std::atomic<int>>& TTimedQuestions::Overdue() {
  if (fPool) return fOverdue;
  const auto pool = TWorkerThreadPoolRefCounted::Construct();
  // Nobody waits behind a question that is stuck, however busy the processors are.
  pool->SetMaxCpuUsage(100);
  pool->SetMinWorkerThreads(MostOverdue + 2);
  pool->SetMaxTimeUntilHardTerminate(LongestEnd);
  fPool = pool;
  fOverdue = std::make_shared<std::atomic<int>>(0);
  AtShutdown([] { Questions().End(); });
  return fOverdue;
}

} // namespace

IShellQuestions& PlatformShellQuestions() {
  return Questions();
}

} // namespace kiv::detail
