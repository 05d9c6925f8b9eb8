#pragma once

#include <framework/Set.h>
#include <platform/Export.h>

#include <functional>

namespace kiv {

/// What a floating-point operation can meet. A masked one gives a result (infinity, not-a-number), one that isn't
/// masked is a fault. The values are numbered as the processor's bits are.
enum class TArithmeticException { exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow, exPrecision };

using TArithmeticExceptions = TSet<TArithmeticException>;

inline constexpr TArithmeticExceptions AllArithmeticExceptions = TArithmeticExceptions::FromBits(0x3F);

/// Runs a closure with at least the given floating-point exceptions masked on this thread, and puts the mask back
/// afterwards, also when the closure raises. It surrounds calls into shell code that enables floating-point faults, or
/// can't stand that the host did. On processors other than x86 and x64 it just runs the closure.
KIV_EXPORT void EnsureExceptionMask(const std::function<void()>& pProc,
                                    TArithmeticExceptions pMask = AllArithmeticExceptions);

/// A checked conversion that checks nothing: whatever the value, it does nothing. Kept for hosts that call it.
constexpr void SafeConvert(int) noexcept {}

} // namespace kiv
