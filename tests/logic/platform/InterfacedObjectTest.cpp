#include <platform/InterfacedObject.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace kiv {

struct IFirst : IUnknown {
  virtual int First() = 0;
};
struct ISecond : IUnknown {
  virtual int Second() = 0;
};
struct ISecond2 : ISecond {
  virtual int SecondToo() = 0;
};
struct IThird : IUnknown {};
KIV_INTERFACE_ID(IFirst, "{5B0B0D6E-2C30-4B8F-9D83-0E6E2F6F0001}");
KIV_INTERFACE_ID(ISecond, "{5B0B0D6E-2C30-4B8F-9D83-0E6E2F6F0002}");
KIV_INTERFACE_ID(ISecond2, "{5B0B0D6E-2C30-4B8F-9D83-0E6E2F6F0003}");
KIV_INTERFACE_ID(IThird, "{5B0B0D6E-2C30-4B8F-9D83-0E6E2F6F0004}");

namespace {

class TThing : public TInterfacedObject<IFirst, ISecond, ISecond2> {
public:
  TThing() {
    // Somebody is shown the object before it is finished, and lets go again.
    const ComPtr<IFirst> early(this);
    EXPECT_EQ(early->First(), 1);
  }
  int First() override { return 1; }
  int Second() override { return 2; }
  int SecondToo() override { return 3; }

protected:
  ~TThing() override {
    const ComPtr<ISecond> late(static_cast<ISecond*>(this));
    EXPECT_EQ(late->Second(), 2);
  }
};

class InterfacedObject : public testing::Test {
protected:
  void TearDown() override { EXPECT_EQ(LiveObjects(), fBefore); }

private:
  const long fBefore = LiveObjects();
};

TEST_F(InterfacedObject, QueryInterfaceKeepsTheRulesOfIdentity) {
  const ComPtr<TThing> thing = Make<TThing>();
  const ComPtr<IFirst> first(thing);
  const auto second = first.MaybeAs<ISecond>();
  const auto second2 = second.MaybeAs<ISecond2>();
  ASSERT_TRUE(second && second2);
  EXPECT_EQ(second->Second(), 2);
  EXPECT_EQ(second2->SecondToo(), 3);
  EXPECT_EQ(second2.MaybeAs<IFirst>()->First(), 1);
  // One IUnknown and one ISecond from wherever it is asked.
  const auto identity = first.MaybeAs<IUnknown>();
  EXPECT_EQ(second.MaybeAs<IUnknown>(), identity);
  EXPECT_EQ(second2.MaybeAs<IUnknown>(), identity);
  EXPECT_EQ(second2.MaybeAs<ISecond>(), second);

  void* out = this;
  EXPECT_EQ(first->QueryInterface(IidOf<IThird>(), &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(first->QueryInterface(IidOf<IFirst>(), nullptr), E_POINTER);
  EXPECT_EQ(first->AddRef() - 1, first->Release());
}

TEST_F(InterfacedObject, DiesOnceWithTheLastReferenceOfManyThreads) {
  const long before = LiveObjects();
  ComPtr<TThing> thing = Make<TThing>();
  EXPECT_EQ(LiveObjects(), before + 1);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([thing] {
      for (int n = 0; n < 2000; ++n) {
        const ComPtr<IFirst> mine(thing.Get());
        ASSERT_TRUE(mine.MaybeAs<ISecond2>());
      }
    });
  }
  thing.Reset();
  for (auto& thread : threads) thread.join();
  threads.clear();
  EXPECT_EQ(LiveObjects(), before);
}

} // namespace
} // namespace kiv
