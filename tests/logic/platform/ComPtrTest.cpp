#include <platform/ComPtr.h>

#include <gtest/gtest.h>

#include <memory>

namespace kiv {

struct IFirst : IUnknown {
  virtual int First() = 0;
};
KIV_INTERFACE_ID(IFirst, "{11111111-2222-3333-4455-66778899AABB}");

struct IMissing : IUnknown {};
KIV_INTERFACE_ID(IMissing, "{11111111-2222-3333-4455-66778899aabc}");

namespace {

class TCounted final : public IFirst {
public:
  explicit TCounted(int& pAlive) : fAlive(pAlive) { ++fAlive; }
  virtual ~TCounted() { --fAlive; }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
    *object = nullptr;
    if (!(riid == IidOf<IFirst>()) && !(riid == IidOf<IUnknown>())) return E_NOINTERFACE;
    *object = static_cast<IFirst*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++fCount; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --fCount;
    if (left == 0) delete this;
    return left;
  }
  int First() override { return static_cast<int>(fCount); }

private:
  ULONG fCount = 0;
  int& fAlive;
};

TEST(ComPtr, CountsThroughEveryWayOfPassingItOn) {
  int alive = 0;
  {
    ComPtr<IFirst> a(std::make_unique<TCounted>(alive).release());
    ComPtr<IFirst> b = a;
    EXPECT_EQ(a->First(), 2);
    ComPtr<IUnknown> base = b;
    EXPECT_EQ(a->First(), 3);
    base = std::move(b);
    EXPECT_FALSE(b);
    EXPECT_EQ(a->First(), 2);
    a = ComPtr<IFirst>(a.Get()); // assigned its own object
    EXPECT_EQ(a->First(), 2);
    IFirst* raw = nullptr;
    EXPECT_EQ(a.CopyTo(&raw), S_OK);
    EXPECT_EQ(a->First(), 3);
    b.Attach(raw);
    EXPECT_EQ(a->First(), 3);
    raw = b.Detach();
    b.Attach(raw);
    b.Swap(a);
    EXPECT_EQ(a, b);
  }
  EXPECT_EQ(alive, 0);
}

TEST(ComPtr, AsksForInterfacesByTheirIdentifiers) {
  int alive = 0;
  {
    const ComPtr<IUnknown> object(std::make_unique<TCounted>(alive).release());
    ComPtr<IFirst> first;
    EXPECT_EQ(object.As(first), S_OK);
    EXPECT_EQ(first->First(), 2);
    ComPtr<IMissing> missing;
    EXPECT_EQ(object.As(missing), E_NOINTERFACE);
    EXPECT_FALSE(object.MaybeAs<IMissing>());
    EXPECT_TRUE(object.MaybeAs<IFirst>());
    EXPECT_EQ(ComPtr<IUnknown>().As(first), E_POINTER);
    EXPECT_FALSE(first) << "a failure leaves nothing of what was held";
  }
  EXPECT_EQ(alive, 0);
  const IID& id = IidOf<IFirst>();
  EXPECT_EQ(id.Data1, 0x11111111U);
  EXPECT_EQ(id.Data3, 0x3333);
  EXPECT_EQ(id.Data4[1], 0x55);
  EXPECT_EQ(id.Data4[7], 0xBB);
}

} // namespace
} // namespace kiv
