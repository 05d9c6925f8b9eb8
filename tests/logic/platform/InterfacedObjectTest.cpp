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
KIV_INTERFACE_ID(IFirst, "{5B0B0D6E-2C30-4B8F-9D83-0E6E2F6F00aB}"); // digits of either case
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

ULONG References(const ComPtr<IFirst>& object) {
  object->AddRef();
  return object->Release();
}

using ComPointer = InterfacedObject;

TEST_F(ComPointer, CountsThroughEveryWayOfPassingItOn) {
  ComPtr<IFirst> a = Make<TThing>();
  ComPtr<IFirst> b = a;
  EXPECT_EQ(References(a), 2U);
  ComPtr<IUnknown> base = b;
  EXPECT_EQ(References(a), 3U);
  base = std::move(b);
  EXPECT_FALSE(b);
  EXPECT_EQ(References(a), 2U);
  a = ComPtr<IFirst>(a.Get()); // assigned its own object
  EXPECT_EQ(References(a), 2U);
  IFirst* raw = nullptr;
  EXPECT_EQ(a.CopyTo(&raw), S_OK);
  EXPECT_EQ(References(a), 3U);
  b.Attach(raw);
  EXPECT_EQ(References(a), 3U);
  raw = b.Detach();
  b.Attach(raw);
  b.Swap(a);
  EXPECT_EQ(a, b);
}

TEST_F(ComPointer, AsksForInterfacesByTheirIdentifiers) {
  const ComPtr<IUnknown> object = ComPtr<IFirst>(Make<TThing>());
  ComPtr<IFirst> first;
  EXPECT_EQ(object.As(first), S_OK);
  EXPECT_EQ(References(first), 2U);
  ComPtr<IThird> missing;
  EXPECT_EQ(object.As(missing), E_NOINTERFACE);
  EXPECT_FALSE(object.MaybeAs<IThird>());
  EXPECT_EQ(ComPtr<IUnknown>().As(first), E_POINTER);
  EXPECT_FALSE(first) << "a failure leaves nothing of what was held";
  const IID& id = IidOf<IFirst>();
  EXPECT_EQ(id.Data1, 0x5B0B0D6EU);
  EXPECT_EQ(id.Data3, 0x4B8F);
  EXPECT_EQ(id.Data4[1], 0x83);
  EXPECT_EQ(id.Data4[7], 0xAB);
}

TEST_F(InterfacedObject, DiesOnceWithTheLastReferenceOfManyThreads) {
  ComPtr<TThing> thing = Make<TThing>();
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
}

} // namespace
} // namespace kiv
