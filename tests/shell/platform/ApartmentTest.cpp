#include <platform/Apartment.h>

#include <platform/Exception.h>
#include <platform/Threads.h>
#include <platform/Types.h>

#include <objbase.h>
#include <ole2.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>

namespace kiv {
namespace {

void OnThread(const std::function<void()>& procedure) {
  std::thread(procedure).join();
}

std::wstring Complaint() {
  try {
    RequireOle(L"register a drop target");
  } catch (const EException& e) {
    return e.Message();
  }
  return {};
}

TEST(Apartment, IsToldForEachThreadAndOleIsAskedForWithWhatToDo) {
  OnThread([] {
    EXPECT_EQ(CurrentApartment(), TApartment::None);
    EXPECT_EQ(Complaint(), L"Can't register a drop target: COM isn't initialised on this thread. Call OleInitialize on "
                           L"the main thread before the first window is made.");
  });
  OnThread([] {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    EXPECT_EQ(CurrentApartment(), TApartment::MultiThreaded);
    EXPECT_NE(Complaint().find(L"isn't in a single-threaded apartment"), std::wstring::npos);
    CoUninitialize();
  });
  OnThread([] {
    OleInitialize(nullptr);
    const TApartment apartment = CurrentApartment();
    EXPECT_TRUE(apartment == TApartment::SingleThreaded || apartment == TApartment::MainSingleThreaded);
    EXPECT_EQ(Complaint(), L"");
    OleUninitialize();
    EXPECT_EQ(CurrentApartment(), TApartment::None);
  });
}

TEST(Apartment, LetsThreadsClearUpBeforeTheyLeaveIt) {
  static std::string ended;
  static const auto say = [](char name) { (ended += name) += CurrentApartment() == TApartment::None ? '!' : ' '; };
  OnThread([] {
    EXPECT_FALSE(AtLeaveApartment([] {})) << "nobody would call it";
    for (const bool free_threaded : {false, true}) {
      ended.clear();
      ASSERT_TRUE(EnterApartment(free_threaded));
      EXPECT_TRUE(AtLeaveApartment([] {
        say('a');
        AtLeaveApartment([] { say('c'); });
      }));
      EXPECT_TRUE(AtLeaveApartment([] { say('b'); }));
      LeaveApartment();
      EXPECT_EQ(ended, "b a c ");
    }
    EXPECT_FALSE(AtLeaveApartment([] {}));
  });
}

} // namespace
} // namespace kiv
