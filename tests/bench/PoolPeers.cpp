#include "PoolPeers.h"

#include "Harness.h"

#include <platform/MainThread.h>
#include <platform/Types.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#if defined(KIV_BENCH_ASIO)
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#endif
#if defined(KIV_BENCH_TBB)
#include <tbb/global_control.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>
#endif

namespace kiv::bench {

namespace {

constexpr int Count = 1'000'000;
constexpr int Threads = 2;

class TBarePool {
public:
  TBarePool() {
    for (int i = 0; i < Threads; ++i) fThreads.emplace_back([this] { Run(); });
  }
  ~TBarePool() {
    {
      const std::lock_guard guard(fLock);
      fEnded = true;
    }
    fChanged.notify_all();
    for (auto& thread : fThreads) thread.join();
  }
  void Add(std::function<void()> pTask) {
    {
      const std::lock_guard guard(fLock);
      fTasks.push_back(std::move(pTask));
    }
    fChanged.notify_one();
  }

private:
  void Run() {
    std::unique_lock guard(fLock);
    for (;;) {
      fChanged.wait(guard, [this] { return fEnded || !fTasks.empty(); });
      if (fTasks.empty()) return;
      const auto task = std::move(fTasks.front());
      fTasks.pop_front();
      guard.unlock();
      task();
      guard.lock();
    }
  }

  std::mutex fLock;
  std::condition_variable fChanged;
  std::deque<std::function<void()>> fTasks;
  bool fEnded = false;
  std::vector<std::thread> fThreads;
};

double RunBare() {
  return Seconds([] {
           TBarePool pool;
           for (int i = 0; i < Count; ++i) pool.Add([] {});
         }) *
         1e6 / Count;
}

#if defined(KIV_BENCH_ASIO)
double RunAsio() {
  return Seconds([] {
           boost::asio::thread_pool pool(Threads);
           for (int i = 0; i < Count; ++i) boost::asio::post(pool, [] {});
           pool.join();
         }) *
         1e6 / Count;
}
#endif

#if defined(KIV_BENCH_TBB)
double RunTbb() {
  const tbb::global_control control(tbb::global_control::max_allowed_parallelism, Threads);
  tbb::task_group group;
  return Seconds([&] {
           for (int i = 0; i < Count; ++i) group.run([] {});
           group.wait();
         }) *
         1e6 / Count;
}
#endif

} // namespace

std::vector<TPoolPeer> PoolPeers() {
  std::vector<TPoolPeer> peers;
#if defined(KIV_BENCH_ASIO)
  peers.push_back({"asio", &RunAsio, 1.0, 0.5});
#endif
#if defined(KIV_BENCH_TBB)
  peers.push_back({"tbb", &RunTbb});
#endif
  peers.push_back({"bare", &RunBare});
  return peers;
}

std::int64_t NowInNanoseconds() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

double Latency(double pQuantile, const std::function<void(std::atomic<std::int64_t>&)>& pAdd) {
  constexpr int rounds = 2000;
  std::vector<double> latencies;
  latencies.reserve(rounds);
  for (int i = 0; i < rounds; ++i) {
    std::atomic<std::int64_t> started{0};
    const std::int64_t added = NowInNanoseconds();
    pAdd(started);
    while (started == 0) std::this_thread::yield();
    latencies.push_back(static_cast<double>(started - added) / 1000);
    // Until the worker waits again.
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  std::sort(latencies.begin(), latencies.end());
  return latencies[static_cast<std::size_t>(pQuantile * (rounds - 1))];
}

double BareLatency(double pQuantile) {
  TBarePool pool;
  return Latency(pQuantile,
                 [&](std::atomic<std::int64_t>& started) { pool.Add([&started] { started = NowInNanoseconds(); }); });
}

void PumpMainThread(const std::function<bool()>& pReached) {
#if defined(_WIN32)
  MSG message;
  while (!pReached() && GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
#else
  while (!pReached()) MainThread::CheckSynchronize(std::chrono::milliseconds(10));
#endif
}

} // namespace kiv::bench
