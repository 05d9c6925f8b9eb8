#include <framework/FloatingPoint.h>

#include <cstdint>

#if defined(__x86_64__) || defined(_M_X64) || defined(__i386__) || defined(_M_IX86)
#define KIV_X86 1
#include <xmmintrin.h>
#endif

namespace kiv {

namespace {

#if defined(KIV_X86)

constexpr unsigned ExceptionBits = 0x3F;
constexpr unsigned MxcsrMaskShift = 7; // in MXCSR the mask's bits stand above the flags' ("Intel 64 Manual", 10.2.3)

// The vector unit has a mask, and so has the old coprocessor, which 32-bit code and long doubles use.
struct TMasks {
  unsigned vector = ExceptionBits;
  unsigned coprocessor = ExceptionBits;
};

#if defined(__GNUC__)

std::uint16_t CoprocessorControl() noexcept {
  std::uint16_t control = 0;
  __asm__ volatile("fnstcw %0" : "=m"(control));
  return control;
}

void SetCoprocessorMask(unsigned mask) noexcept {
  const auto control = static_cast<std::uint16_t>((CoprocessorControl() & ~ExceptionBits) | mask);
  // Flags that were raised while they were masked would be a fault at the next instruction: cleared before.
  __asm__ volatile("fnclex\n\tfldcw %0" : : "m"(control));
}

#else

// A compiler without inline assembler for this target; its own code doesn't use the coprocessor either.
std::uint16_t CoprocessorControl() noexcept {
  return ExceptionBits;
}
void SetCoprocessorMask(unsigned) noexcept {}

#endif

TMasks ReadMasks() noexcept {
  return {(_mm_getcsr() >> MxcsrMaskShift) & ExceptionBits, CoprocessorControl() & ExceptionBits};
}

void SetMasks(const TMasks& masks) noexcept {
  const TMasks standing = ReadMasks();
  if (masks.vector != standing.vector) {
    _mm_setcsr((_mm_getcsr() & ~(ExceptionBits << MxcsrMaskShift)) | (masks.vector << MxcsrMaskShift));
  }
  if (masks.coprocessor != standing.coprocessor) SetCoprocessorMask(masks.coprocessor);
}

// Puts the masks back, whatever foreign code made of them.
class TScopedMasks {
public:
  explicit TScopedMasks(unsigned mask) noexcept : fOld(ReadMasks()) {
    SetMasks({fOld.vector | mask, fOld.coprocessor | mask});
  }
  ~TScopedMasks() { SetMasks(fOld); }
  TScopedMasks(const TScopedMasks&) = delete;
  TScopedMasks& operator=(const TScopedMasks&) = delete;

private:
  const TMasks fOld;
};

#endif

} // namespace

void EnsureExceptionMask(const std::function<void()>& pProc, TArithmeticExceptions pMask) {
#if defined(KIV_X86)
  const TScopedMasks masks(static_cast<unsigned>(pMask.Bits()) & ExceptionBits);
#else
  static_cast<void>(pMask);
#endif
  pProc();
}

} // namespace kiv
