#include <framework/FloatingPoint.h>

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#if defined(__x86_64__) && defined(__GNUC__)

#include <xmmintrin.h>

#include <cstdint>

namespace kiv {
namespace {

using enum TArithmeticException;

unsigned VectorMask() {
  return (_mm_getcsr() >> 7) & 0x3FU;
}
unsigned CoprocessorMask() {
  std::uint16_t control = 0;
  __asm__ volatile("fnstcw %0" : "=m"(control));
  return control & 0x3FU;
}
void SetMasks(unsigned mask) {
  _mm_setcsr((_mm_getcsr() & ~0x1FBFU) | (mask << 7));
  std::uint16_t control = 0;
  __asm__ volatile("fnclex\n\tfnstcw %0" : "=m"(control));
  control = static_cast<std::uint16_t>((control & ~0x3FU) | mask);
  __asm__ volatile("fldcw %0" : : "m"(control));
}

constexpr unsigned ZeroDivideOn = 0x3F & ~0x4U;

// A host that has faults for divisions by zero enabled.
class FloatingPoint : public testing::Test {
protected:
  void SetUp() override { SetMasks(ZeroDivideOn); }
  void TearDown() override { SetMasks(0x3F); }

  static void ExpectAsBefore() {
    EXPECT_EQ(VectorMask(), ZeroDivideOn);
    EXPECT_EQ(CoprocessorMask(), ZeroDivideOn);
    // A flag that was left standing would be a fault here.
    volatile long double one = 1;
    one = one + 1;
    EXPECT_EQ(static_cast<int>(one), 2);
  }
};

TEST_F(FloatingPoint, FaultsAreOffInTheClosureAndBackAfterIt) {
  double by_vector = 0;
  bool by_coprocessor = false;
  EnsureExceptionMask([&] {
    volatile double zero = 0;
    volatile long double long_zero = 0;
    by_vector = 1 / zero;
    by_coprocessor = std::isinf(1 / long_zero);
  });
  EXPECT_TRUE(std::isinf(by_vector));
  EXPECT_TRUE(by_coprocessor);
  ExpectAsBefore();
}

TEST_F(FloatingPoint, TheMaskComesBackWhateverTheClosureDoes) {
  EXPECT_THROW(EnsureExceptionMask([] { throw std::runtime_error("x"); }, {exZeroDivide}), std::runtime_error);
  ExpectAsBefore();
  EnsureExceptionMask([] { SetMasks(0x20); }, {exOverflow}); // nothing to add, and foreign code that meddles
  ExpectAsBefore();
  EnsureExceptionMask([] {
    EnsureExceptionMask([] { EXPECT_EQ(VectorMask(), 0x3FU); }, {exInvalidOp});
    EXPECT_EQ(VectorMask(), 0x3FU);
  });
  ExpectAsBefore();
}

TEST_F(FloatingPoint, OnlyWhatIsAskedForIsMasked) {
  SetMasks(0x20);
  EnsureExceptionMask([] { EXPECT_EQ(VectorMask(), 0x29U); }, {exInvalidOp, exOverflow});
  EnsureExceptionMask([] { EXPECT_EQ(CoprocessorMask(), 0x22U); }, {exDenormalized});
  SetMasks(ZeroDivideOn);
}

} // namespace
} // namespace kiv

#endif
