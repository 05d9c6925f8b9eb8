#include <framework/Exceptions.h>
#include <framework/ReadWriteLock.h>

#include <doubles/Barrier.h>
#include <doubles/Gate.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kiv::test {
namespace {

using TLock = TMultiReadExclusiveWriteSynchronizer;

TEST(ReadWriteLock, AThreadReadsWhileItWritesAndTakesWhatItHas) {
  TLock lock;
  lock.Write([&] {
    lock.Read([&] { lock.Write([&] { lock.Read([] {}); }); });
    lock.Read([] {});
  });
  lock.Read([&] {
    EXPECT_THROW(lock.BeginWrite(), EInvalidOperation);
    TGate reading;
    std::thread other([&] { lock.Read([&] { reading.Pass(); }); });
    reading.AwaitArrivals(); // both read
    reading.Open();
    other.join();
  });
  lock.Write([] {});
}

TEST(ReadWriteLock, WhoReadsReadsAgainThoughAWriterWaits) {
  TLock lock;
  std::vector<std::string> order; // guarded by the lock
  TGate writer_comes;
  lock.BeginRead();
  std::thread writer([&] {
    writer_comes.Pass();
    lock.Write([&] { order.emplace_back("written"); });
  });
  writer_comes.AwaitArrivals();
  writer_comes.Open();
  lock.Read([&] { order.emplace_back("read again"); }); // whether the writer waits already or not
  lock.EndRead();
  writer.join();
  EXPECT_EQ(order, (std::vector<std::string>{"read again", "written"}));
}

// Two numbers that are only ever equal outside of a write.
TEST(ReadWriteLock, ManyReadersNeverSeeHalfAWrite) {
  constexpr int writes = 2000;
  TLock lock;
  int first = 0;
  int second = 0;
  TBarrier start(6);
  std::vector<std::thread> threads;
  for (int writer = 0; writer < 2; ++writer) {
    threads.emplace_back([&] {
      start.ArriveAndWait();
      for (int i = 0; i < writes; ++i) {
        lock.Write([&] {
          ++first;
          lock.Read([&] { ++second; });
        });
      }
    });
  }
  std::atomic<int> torn{0};
  for (int reader = 0; reader < 4; ++reader) {
    threads.emplace_back([&] {
      start.ArriveAndWait();
      for (int last = 0; last < 2 * writes;) {
        lock.Read([&] {
          lock.Read([&] { last = first; });
          torn += first != second ? 1 : 0;
        });
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(first, 2 * writes);
}

TEST(ReadWriteLock, EventsFollowTheOutermostWriteInOrder) {
  auto lock = std::make_unique<TLock>();
  std::string told;
  lock->Write([&] {
    lock->Write([&] { lock->AfterWrite([&] { told += 'a'; }); });
    lock->AfterWrite([&] {
      lock->Write([&] { lock->AfterWrite([&] { told += 'd'; }); });  // behind those that wait already
      std::thread([&] { lock->Read([&] { told += 'b'; }); }).join(); // nothing is locked
    });
    lock->AfterWrite([&] { told += 'c'; });
    EXPECT_EQ(told, "");
  });
  EXPECT_EQ(told, "abcd");
  // One that raises doesn't hold up the others; what the change raises goes before what its events raise.
  const auto raise = [] { throw std::runtime_error("event"); };
  EXPECT_THROW(lock->Write([&] {
    lock->AfterWrite(raise);
    lock->AfterWrite([&] { told += 'e'; });
  }),
               std::runtime_error);
  EXPECT_THROW(lock->Write([&]() -> void {
    lock->AfterWrite([&] { told += 'f'; });
    throw EAbort();
  }),
               EAbort);
  TLock& reference = *lock;
  reference.Write([&] {
    reference.AfterWrite([&] { lock.reset(); });
    reference.AfterWrite([&] { told += 'g'; });
  });
  EXPECT_EQ(told, "abcdefg");
}

} // namespace
} // namespace kiv::test
