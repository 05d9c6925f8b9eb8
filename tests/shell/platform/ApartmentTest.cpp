#include <platform/Apartment.h>

#include <platform/Exception.h>
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

} // namespace
} // namespace kiv
