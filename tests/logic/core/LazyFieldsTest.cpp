#include <core/LazyPointer.h>
#include <core/PublishedText.h>
#include <doubles/Barrier.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

// A value whose life is counted, so that nothing is freed twice or never.
struct TCounted {
  explicit TCounted(int pNumber) : number(pNumber) { ++Alive(); }
  ~TCounted() {
    number = -1;
    --Alive();
  }
  static std::atomic<int>& Alive() {
    static std::atomic<int> alive{0};
    return alive;
  }
  int number;
};

void Free(TCounted* value) noexcept {
  delete value;
}

using TLazy = TLazyPointer<TCounted, &Free>;

constexpr int ThreadCount = 8;

// Runs the same work on several threads that start together.
template <typename F>
void Together(F&& work) {
  test::TBarrier start(ThreadCount);
  std::vector<std::jthread> threads;
  for (int i = 0; i < ThreadCount; ++i) {
    threads.emplace_back([&, i] {
      start.ArriveAndWait();
      work(i);
    });
  }
}

TEST(LazyPointer, GoesThroughItsStates) {
  {
    TLazy lazy;
    EXPECT_FALSE(lazy.IsResolved());
    EXPECT_EQ(lazy.Get(), nullptr);
    EXPECT_THROW(lazy.Resolve([]() -> TCounted* { throw std::runtime_error("no memory"); }), std::runtime_error);
    EXPECT_FALSE(lazy.IsResolved());

    // Whoever comes back while it is worked out gets nothing, and doesn't spoil the result.
    const TCounted* const made = lazy.Resolve([&] {
      EXPECT_EQ(lazy.Resolve([] { return new TCounted(0); }), nullptr);
      EXPECT_FALSE(lazy.IsResolved());
      return new TCounted(1);
    });
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->number, 1);
    EXPECT_EQ(lazy.Resolve([] { return new TCounted(2); }), made);

    lazy.Replace(new TCounted(3));
    EXPECT_EQ(lazy.Get()->number, 3);
    EXPECT_EQ(made->number, 1) << "borrowed pointers outlive a replacement";
    lazy.Fail();
    EXPECT_EQ(lazy.Get()->number, 3);
  }
  {
    TLazy failed;
    EXPECT_EQ(failed.Resolve([]() -> TCounted* { return nullptr; }), nullptr);
    EXPECT_TRUE(failed.IsResolved());
    EXPECT_EQ(failed.Resolve([] { return new TCounted(4); }), nullptr) << "a failure isn't tried again";
    failed.Replace(new TCounted(5));
    EXPECT_EQ(failed.Get()->number, 5);
  }
  EXPECT_EQ(TCounted::Alive(), 0);
  TCounted foreign(6);
  {
    TLazy lazy(&foreign, true);
    EXPECT_EQ(lazy.Resolve([]() -> TCounted* { return nullptr; }), &foreign);
    lazy.Replace(new TCounted(7));
  }
  EXPECT_EQ(foreign.number, 6);
  EXPECT_EQ(TCounted::Alive(), 1);
}

TEST(LazyPointer, ThreadsThatRaceSeeOneValue) {
  constexpr int Rounds = 200;
  for (int round = 0; round < Rounds; ++round) {
    TLazy lazy;
    std::atomic<const TCounted*> seen[ThreadCount];
    Together([&](int i) {
      seen[i] = lazy.Resolve([&] { return new TCounted(round); });
      // One thread replaces while the others read what they hold.
      if (i == 0) lazy.Replace(new TCounted(round));
      for (int read = 0; read < 50; ++read) {
        EXPECT_EQ(seen[i].load()->number, round);
        EXPECT_EQ(lazy.Get()->number, round);
      }
    });
    // A thread that came late may have found the replacement already.
    const TCounted* const last = lazy.Get();
    const TCounted* first = nullptr;
    for (const auto& value : seen) {
      if (value == last) continue;
      if (!first) first = value;
      EXPECT_EQ(value, first);
    }
  }
  EXPECT_EQ(TCounted::Alive(), 0);
}

TEST(PublishedText, KnowsWhatItWasGivenLast) {
  TPublishedText cell;
  EXPECT_FALSE(cell.Read().known);

  const auto unknown = cell.Read();
  EXPECT_EQ(cell.Publish(unknown, L"C:\\one").text, L"C:\\one");
  EXPECT_EQ(cell.Publish(unknown, L"C:\\two").text, L"C:\\one") << "worked out from what no longer holds";
  const auto one = cell.Read();
  EXPECT_EQ(cell.Publish(one, L"").text, L"");
  EXPECT_TRUE(cell.Read().known) << "none is an answer";
  EXPECT_EQ(one.text, L"C:\\one") << "views outlive a change";

  cell.Forget();
  EXPECT_FALSE(cell.Read().known);
  cell.Set(std::wstring(40'000, L'x'));
  EXPECT_EQ(cell.Read().text.size(), 40'000U);
  // What returns is found again: a cell that swings between two texts doesn't grow.
  cell.Set(L"C:\\one");
  EXPECT_EQ(cell.Read().text.data(), one.text.data());
  EXPECT_EQ(cell.Read().mark, one.mark);
}

TEST(PublishedText, ReadersSeeWholeTexts) {
  TPublishedText cell;
  const std::wstring texts[] = {std::wstring(3, L'a'), std::wstring(300, L'b'), std::wstring()};
  Together([&](int i) {
    for (int round = 0; round < 2'000; ++round) {
      const auto seen = cell.Read();
      if (i < 3) {
        cell.Publish(seen, texts[i]);
      } else if (i == 3 && round % 16 == 0) {
        cell.Forget();
      } else if (seen.known) {
        const bool whole = seen.text == texts[0] || seen.text == texts[1] || seen.text == texts[2];
        EXPECT_TRUE(whole) << seen.text.size();
      }
    }
  });
}

} // namespace
} // namespace kiv
