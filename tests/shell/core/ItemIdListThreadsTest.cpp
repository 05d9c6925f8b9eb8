#include <core/ItemIdList.h>

#include <core/SpecialFolders.h>
#include <doubles/Barrier.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

namespace kiv {
namespace {

constexpr int ThreadCount = 8;
constexpr int RoundCount = 40;

struct TExpected {
  std::wstring path;
  std::wstring name;
  int depth = 0;
};

// One question in a random order, with its only right answer.
void Ask(IItemIdList* list, const TExpected& expected, unsigned question) {
  switch (question % 7) {
  case 0:
    EXPECT_EQ(list->Path(), expected.path);
    break;
  case 1:
    EXPECT_EQ(list->Depth(), expected.depth);
    break;
  case 2:
    EXPECT_EQ(list->Name(), expected.name);
    break;
  case 3:
    EXPECT_EQ(list->SpecialFolder(), SF_FILESYSTEMFOLDER);
    break;
  case 4:
    EXPECT_EQ(list->DisplayName(dnfAbsoluteParsing), expected.path);
    break;
  case 5:
    EXPECT_TRUE(list->GetParent()->IsParentOf(list, false, ilcExact));
    break;
  default:
    EXPECT_FALSE(list->IsInvalid());
  }
}

TEST(ItemIdListThreads, OneListServesManyWhileItIsReloadedAndLetGo) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  MainThread::Attach();
  test::ScopedTempFolder temp;
  const std::wstring path = temp.MakeFile(L"shared.txt", 10);
  const TExpected expected{path, L"shared.txt", TKivItemIdList::Create(path)->Depth()};
  MainThread::CheckSynchronize();
  TKivItemIdList::Create(path)->SpecialFolder(); // the shared folders are made
  const long before = LiveObjects();

  ComPtr<IItemIdList> shared;
  test::TBarrier step(ThreadCount + 1);
  std::vector<std::jthread> threads;
  for (unsigned i = 0; i < ThreadCount; ++i) {
    threads.emplace_back([&, i] {
      CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
      std::minstd_rand random(i + 1);
      for (int round = 0; round < RoundCount; ++round) {
        step.ArriveAndWait();
        ComPtr<IItemIdList> list = shared;
        step.ArriveAndWait(); // the main thread lets its own go
        for (int n = 0; n < 12; ++n) {
          if (i == 0 && n % 4 == 0) {
            EXPECT_TRUE(list->Reload());
          }
          Ask(list.Get(), expected, static_cast<unsigned>(random()));
        }
        list.Reset(); // one of the threads is the last
        step.ArriveAndWait();
      }
      CoUninitialize();
    });
  }
  for (int round = 0; round < RoundCount; ++round) {
    shared = TKivItemIdList::Create(path);
    // Sometimes there is an item of the main thread's to be brought home.
    if (round % 2 == 0) {
      EXPECT_TRUE(shared->ShellItem());
    }
    step.ArriveAndWait();
    step.ArriveAndWait();
    shared.Reset();
    step.ArriveAndWait();
    MainThread::CheckSynchronize();
  }
  threads.clear();
  MainThread::CheckSynchronize();
  EXPECT_EQ(LiveObjects(), before);
}

} // namespace
} // namespace kiv
