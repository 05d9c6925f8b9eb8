#include "Benches.h"

#include <platform/MainThread.h>
#include <platform/Types.h>

#include <atomic>
#include <memory>
#include <thread>

namespace kiv::bench {

namespace {

constexpr int Count = 10'000;

struct TOutcome {
  double wakes = 0;
  double idles = 0;
  double microseconds = 0; // each closure
};

// A worker queues 10,000 closures while the main thread dispatches messages.
TOutcome Deliver() {
  MainThread::Attach();
  const auto before = MainThread::Statistics();
  int ran = 0;
  const double seconds = Seconds([&] {
    std::thread worker([&] {
      for (int i = 0; i < Count; ++i) MainThread::Queue([&ran] { ++ran; });
    });
    MSG message;
    while (ran < Count && GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
    worker.join();
  });
  const auto after = MainThread::Statistics();
  return {static_cast<double>(after.wakes - before.wakes), static_cast<double>(after.idles - before.idles),
          seconds * 1e6 / Count};
}

// The plain way: one message a closure.
double PostEach() {
  MSG message;
  PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE); // makes the queue
  const DWORD thread = GetCurrentThreadId();
  int ran = 0;
  const double seconds = Seconds([&] {
    std::thread worker([thread] {
      for (int i = 0; i < Count; ++i) {
        while (!PostThreadMessageW(thread, WM_APP, 0, 0)) Sleep(1); // the platform's queue is full
      }
    });
    while (ran < Count && GetMessageW(&message, nullptr, 0, 0) > 0) ran += message.message == WM_APP ? 1 : 0;
    worker.join();
  });
  return seconds * 1e6 / Count;
}

} // namespace

std::vector<TFigure> MainThreadFigures() {
  const auto last = std::make_shared<TOutcome>();
  return {
      // The floor is how often the main thread had gone idle, in the same delivery.
      {"mainthread", "wakes_to_idles", "times", [last] { return last->wakes; },
       [last] {
         *last = Deliver();
         return last->idles;
       },
       1.0},
      {"mainthread", "deliver_closure", "us", [] { return Deliver().microseconds; }, &PostEach, 1.0},
  };
}

} // namespace kiv::bench
