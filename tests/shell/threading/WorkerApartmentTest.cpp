#include <doubles/Gate.h>
#include <framework/InterfacedObject.h>
#include <framework/Thread.h>
#include <platform/Apartment.h>
#include <platform/ComPtr.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <platform/Threads.h>
#include <threading/KivThread.h>
#include <threading/WorkProcedures.h>
#include <threading/WorkerPool.h>

#include <gtest/gtest.h>

#include <objidl.h>
#include <ole2.h>

#include <atomic>
#include <functional>
#include <thread>

namespace kiv::test {
namespace {

// Says on which thread it was asked. COM has a proxy for its interface.
class TWhere : public TInterfacedObject<IPersist> {
public:
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pId) override {
    *pId = {};
    pId->Data1 = GetCurrentThreadId();
    return S_OK;
  }
};

// The test's thread is the host's, and as such the first to enter COM.
class HostApartment : public testing::Test {
protected:
  void SetUp() override {
    OleInitialize(nullptr);
    MainThread::Attach();
  }
  void TearDown() override {
    EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
    Shutdown();
    OleUninitialize();
  }
};

class WorkerApartment : public HostApartment {
protected:
  void SetUp() override {
    HostApartment::SetUp();
    fPool = TWorkerPool::CreateInstance(nullptr);
    static_cast<TWorkerThreadPool&>(*fPool).SetMaxRunningThreads(1);
    Run([this] {
      fApartment = CurrentApartment();
      fWorker = GetCurrentThreadId();
      fWindow = CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
      const ComPtr<IPersist> object = Make<TWhere>();
      CoMarshalInterThreadInterfaceInStream(IidOf<IPersist>(), object.Get(), &fStream);
    });
    ASSERT_TRUE(fStream);
    ASSERT_TRUE(fWindow);
  }
  void TearDown() override {
    fPool.Reset();
    HostApartment::TearDown();
  }

  ComPtr<IWorkItem> Add(TProcedure work) {
    ComPtr<IWorkItem> item = TAsyncProcedure::Create(std::move(work));
    fPool->AddWorkItem(item, TPriority::Normal);
    return item;
  }
  void Run(TProcedure work) { Add(std::move(work))->Wait(); }

  // Calls from another apartment into the worker's, and sends a message to its window. True if both got through to the
  // worker; a call that doesn't hangs, which the watchdog ends.
  bool Reach() {
    bool reached = false;
    std::thread([&] {
      CoInitializeEx(nullptr, COINIT_MULTITHREADED);
      {
        ComPtr<IPersist> proxy;
        IStream* const stream = fStream;
        fStream = nullptr;
        CoGetInterfaceAndReleaseStream(stream, IidOf<IPersist>(), reinterpret_cast<void**>(&proxy));
        CLSID answer{};
        DWORD_PTR ignored = 0;
        reached = proxy && proxy->GetClassID(&answer) == S_OK && answer.Data1 == fWorker &&
                  SendMessageTimeoutW(fWindow, WM_NULL, 0, 0, SMTO_NORMAL, 30'000, &ignored) != 0;
      }
      CoUninitialize();
    }).join();
    return reached;
  }

  ComPtr<IWorkerThreadPool> fPool;
  TApartment fApartment = TApartment::None;
  DWORD fWorker = 0;
  HWND fWindow = nullptr;
  IStream* fStream = nullptr;
};

TEST_F(WorkerApartment, IsServedWhileTheWorkerIsIdle) {
  EXPECT_EQ(fApartment, TApartment::SingleThreaded);
  Run([] { // an item that enters once more, and leaves, leaves the thread as it was
    ASSERT_TRUE(EnterApartment(false));
    LeaveApartment();
  });
  EXPECT_TRUE(Reach());
}

TEST_F(WorkerApartment, IsServedWhileTheWorkerWaitsForTheMainThread) {
  TGate gate;
  bool called = false;
  const auto item = Add([&] {
    gate.Open();
    gate.Pass();
    TThread::Synchronize([&] { called = true; });
  });
  gate.AwaitArrivals();
  EXPECT_TRUE(Reach());
  EXPECT_FALSE(called);
  while (!called) MainThread::CheckSynchronize(std::chrono::milliseconds(10));
  item->Wait();
}

TEST_F(WorkerApartment, IsServedWhileTheWorkerIsPausedOrDelayed) {
  TGate gate;
  ComPtr<IWorkItem> item;
  item = Add([&] {
    gate.Pass();
    static_cast<TBasicWorkItem&>(*item).Terminated();
  });
  gate.AwaitArrivals();
  static_cast<TWorkerThreadPool&>(*fPool).SetPaused(true);
  gate.Open();
  EXPECT_TRUE(Reach());
  static_cast<TWorkerThreadPool&>(*fPool).SetPaused(false);
  item->Wait();
}

using ComThread = HostApartment;

TEST_F(ComThread, RunsInTheApartmentThatWasAskedForAndKeepsItsObject) {
  const long before = LiveObjects();
  for (const bool free_threaded : {false, true}) {
    std::atomic<bool> done{false};
    TApartment apartment = TApartment::None;
    {
      const ComPtr<IPersist> object = Make<TWhere>();
      TCOMThread::Run(
          [&] {
            apartment = CurrentApartment();
            EXPECT_EQ(LiveObjects(), before + 1);
            done = true;
          },
          object, free_threaded);
    }
    EXPECT_TRUE(TThread::AwaitAllEnded(std::chrono::seconds(60)));
    EXPECT_TRUE(done);
    EXPECT_EQ(apartment, free_threaded ? TApartment::MultiThreaded : TApartment::SingleThreaded);
    EXPECT_EQ(LiveObjects(), before);
  }
}

} // namespace
} // namespace kiv::test
