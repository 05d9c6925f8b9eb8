#include <platform/FaultGuard.h>

#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

volatile int* const BadAddress = reinterpret_cast<int*>(8);

void Fault() {
  *BadAddress = 1;
}

// Keeps values in registers that a callee must preserve, across a guarded fault.
__attribute__((noinline)) double SumAcrossFault(int rounds) {
  double sum = 0;
  long long count = 0;
  for (int i = 1; i <= rounds; ++i) {
    const double root = std::sqrt(static_cast<double>(i));
    const HRESULT hr = GuardedCall(&Fault);
    sum += root;
    count += hr == E_FAIL ? i : 0;
  }
  return sum + static_cast<double>(count);
}

TEST(FaultGuard, PassesResultsAndTurnsFaultsIntoEFail) {
  TFault fault{1};
  EXPECT_EQ(GuardedCall([] { return S_FALSE; }, &fault), S_FALSE);
  EXPECT_FALSE(fault);
  EXPECT_EQ(GuardedCall([] {}), S_OK);
  EXPECT_EQ(GuardedCall([] { return HRESULT{E_ACCESSDENIED}; }), E_ACCESSDENIED);
  EXPECT_EQ(GuardedCall(&Fault, &fault), E_FAIL);
  EXPECT_EQ(fault.code, static_cast<std::uint32_t>(EXCEPTION_ACCESS_VIOLATION));
  // A jump into nothing: not even the callee's frame can be unwound by its own data.
  const auto nowhere = reinterpret_cast<void (*)()>(reinterpret_cast<void*>(8));
  EXPECT_EQ(GuardedCall([=] { nowhere(); }, &fault), E_FAIL);
}

TEST(FaultGuard, CoversTheStatedCodesAndNoOthers) {
  for (const DWORD code : {0xC0000005UL, 0xC0000006UL, 0x80000100UL, 0xC06D007EUL, 0xC06D007FUL}) {
    TFault fault;
    EXPECT_EQ(GuardedCall([=] { RaiseException(code, 0, 0, nullptr); }, &fault), E_FAIL);
    EXPECT_EQ(fault.code, code);
  }
  // Any other code reaches whoever stands outside: here a vectored handler that lets the thread go on.
  static std::atomic<int> seen{0};
  const auto handler = [](EXCEPTION_POINTERS* pointers) -> LONG {
    if (pointers->ExceptionRecord->ExceptionCode != 0xE0001234) return EXCEPTION_CONTINUE_SEARCH;
    ++seen;
    return EXCEPTION_CONTINUE_EXECUTION;
  };
  void* const registration = AddVectoredExceptionHandler(0, handler);
  EXPECT_EQ(GuardedCall([] { RaiseException(0xE0001234, 0, 0, nullptr); }), S_OK);
  RemoveVectoredExceptionHandler(registration);
  EXPECT_EQ(seen, 1);
}

TEST(FaultGuard, LeavesACalleesOwnHandlingAlone) {
  // IsBadReadPtr reads, faults and handles that itself.
  BOOL bad = FALSE;
  TFault fault;
  EXPECT_EQ(GuardedCall([&] { bad = IsBadReadPtr(const_cast<int*>(BadAddress), 4); }, &fault), S_OK);
  EXPECT_TRUE(bad);
  EXPECT_FALSE(fault);
  // An inner guard takes its fault; the outer call goes on and has its own.
  HRESULT inner = S_OK;
  bool went_on = false;
  EXPECT_EQ(GuardedCall([&] {
              inner = GuardedCall(&Fault);
              went_on = true;
              Fault();
            }),
            E_FAIL);
  EXPECT_EQ(inner, E_FAIL);
  EXPECT_TRUE(went_on);
}

TEST(FaultGuard, LetsExceptionsPassAndRunsTheirDestructors) {
  struct TWitness {
    int& ends;
    ~TWitness() { ++ends; }
  };
  int ends = 0;
  const auto raise = [&] {
    const TWitness inside{ends};
    throw std::runtime_error("passes");
  };
  for (int depth = 1; depth <= 3; ++depth) {
    ends = 0;
    std::string caught;
    try {
      const TWitness outside{ends};
      if (depth == 1) GuardedCall(raise);
      if (depth == 2) GuardedCall([&] { GuardedCall(raise); });
      if (depth == 3) GuardedCall([&] { GuardedCall([&] { GuardedCall(raise); }); });
    } catch (const std::runtime_error& e) {
      caught = e.what();
    }
    EXPECT_EQ(caught, "passes");
    EXPECT_EQ(ends, 2);
    // The guards that the exception left are gone: the next fault is met by a guard of its own.
    EXPECT_EQ(GuardedCall(&Fault), E_FAIL);
  }
}

TEST(FaultGuard, SurvivesExportsThatArePresentButNotImplemented) {
  const HMODULE properties = LoadLibraryW(L"propsys.dll");
  ASSERT_TRUE(properties);
  using TNameFromKey = HRESULT(WINAPI*)(const PROPERTYKEY*, wchar_t**);
  const auto get_name =
      reinterpret_cast<TNameFromKey>(reinterpret_cast<void*>(GetProcAddress(properties, "PSGetNameFromPropertyKey")));
  const PROPERTYKEY unknown{{0x12345678, 0, 0, {}}, 99};
  for (int round = 0; round < 3; ++round) {
    wchar_t* name = nullptr;
    TFault fault;
    const HRESULT hr = GuardedCall([&] { return get_name(&unknown, &name); }, &fault);
    EXPECT_TRUE(FAILED(hr));
    // A system that implements it answers without a fault; one that doesn't, with this one.
    EXPECT_TRUE(!fault || fault.code == 0x80000100) << std::hex << fault.code;
    // Inside an outer guard only the inner call ends.
    bool went_on = false;
    EXPECT_EQ(GuardedCall([&] {
                GuardedExport(get_name, &unknown, &name);
                went_on = true;
              }),
              S_OK);
    EXPECT_TRUE(went_on);
  }
  EXPECT_EQ(GuardedExport(static_cast<TNameFromKey>(nullptr), &unknown, nullptr), E_NOTIMPL);
  FreeLibrary(properties);
}

TEST(FaultGuard, KeepsTheCallersRegisters) {
  double expected = 0;
  for (int i = 1; i <= 100; ++i) expected += std::sqrt(static_cast<double>(i));
  EXPECT_DOUBLE_EQ(SumAcrossFault(100), expected + 5050);
}

TEST(FaultGuard, WorksOnEightThreadsAtOnce) {
  const HMODULE properties = LoadLibraryW(L"propsys.dll");
  const auto change_type = reinterpret_cast<HRESULT(WINAPI*)(void*, void*, int, int)>(
      reinterpret_cast<void*>(GetProcAddress(properties, "PropVariantChangeType")));
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 200; ++i) {
        HRESULT inner = S_OK;
        const HRESULT outer = GuardedCall([&] {
          inner = GuardedCall(&Fault);
          return static_cast<HRESULT>(t);
        });
        bool passed = false;
        try {
          GuardedCall([&] { throw t; });
        } catch (int thrown) {
          passed = thrown == t;
        }
        const bool failed = FAILED(GuardedExport(change_type, nullptr, nullptr, 0, 0));
        if (inner != E_FAIL || outer != t || !passed || !failed) ++wrong;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  FreeLibrary(properties);
}

} // namespace
} // namespace kiv
