#include <viewstate/GrowingTextMap.h>

#include <doubles/Barrier.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

TEST(GrowingTextMap, TellsTextsAndNumbersApart) {
  TGrowingTextMap<int> map;
  EXPECT_FALSE(map.Find(0, L""));
  // More than there are buckets.
  for (int i = 0; i < 5000; ++i) EXPECT_EQ(map.Add(static_cast<std::uint32_t>(i % 3), std::to_wstring(i), i), i);
  for (int i = 0; i < 5000; ++i) {
    const int* const found = map.Find(static_cast<std::uint32_t>(i % 3), std::to_wstring(i));
    ASSERT_TRUE(found);
    ASSERT_EQ(*found, i);
    ASSERT_FALSE(map.Find(3, std::to_wstring(i)));
  }
  EXPECT_EQ(map.Add(0, L"0", 99), 0);
  map.Clear();
  EXPECT_FALSE(map.Find(0, L"0"));
}

TEST(GrowingTextMap, GivesAllThreadsTheSameValue) {
  constexpr int threads = 4;
  constexpr int texts = 300;
  TGrowingTextMap<std::wstring> map;
  test::TBarrier start(threads);
  std::vector<std::vector<const std::wstring*>> seen(threads);
  std::vector<std::thread> workers;
  for (int worker = 0; worker < threads; ++worker) {
    workers.emplace_back([&, worker] {
      start.ArriveAndWait();
      for (int i = 0; i < texts; ++i) {
        const std::wstring text = std::to_wstring(i);
        const std::wstring* value = map.Find(1, text);
        if (!value) value = &map.Add(1, text, text + L" of " + std::to_wstring(worker));
        seen[static_cast<std::size_t>(worker)].push_back(value);
      }
    });
  }
  for (std::thread& worker : workers) worker.join();
  for (const auto& values : seen) EXPECT_EQ(values, seen[0]);
  EXPECT_TRUE(seen[0][7]->starts_with(L"7 of "));
}

TEST(GrowingTextMap, IsClearedUnderItsReaders) {
  constexpr int readers = 3;
  TGrowingTextMap<std::wstring> map;
  test::TBarrier start(readers + 1);
  std::atomic<int> reading{readers};
  std::atomic<int> wrong{0};
  std::vector<std::thread> workers;
  for (int worker = 0; worker < readers; ++worker) {
    workers.emplace_back([&] {
      start.ArriveAndWait();
      for (int i = 0; i < 3000; ++i) {
        const std::wstring text = std::to_wstring(i % 50);
        const std::wstring* value = map.Find(1, text);
        if (!value) value = &map.Add(1, text, L"value of " + text);
        if (*value != L"value of " + text) ++wrong;
      }
      --reading;
    });
  }
  start.ArriveAndWait();
  do map.Clear();
  while (reading > 0);
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(wrong, 0);
}

} // namespace
} // namespace kiv
