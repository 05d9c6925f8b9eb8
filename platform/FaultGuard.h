#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

namespace kiv {

/// What went wrong inside a guarded call.
struct TFault {
  /// The platform's exception code, 0 if there was no fault.
  std::uint32_t code = 0;

  explicit operator bool() const noexcept { return code != 0; }
};

namespace detail {

using TGuardedProcedure = void (*)(void* context);
/// Runs the procedure. 0, or the code of the fault that ended it.
KIV_EXPORT std::uint32_t GuardedInvoke(TGuardedProcedure pProcedure, void* pContext);

} // namespace detail

/// Runs one call into foreign code (a shell extension, a late-bound export) and survives its faults.
///
/// An access violation that nobody inside handles ends the call and counts as `E_FAIL`; so do a page that can't be read
/// in (`EXCEPTION_IN_PAGE_ERROR`: a mapped file whose medium has gone), the exception of an export that is present but
/// not implemented (0x80000100), and a delay load that fails (0xC06D007E, 0xC06D007F). Otherwise the result is the
/// callable's, or `S_OK` for one without a result. Stack overflow is never caught; C++ exceptions pass.
///
/// The guard is frame-based: a callee that handles its own faults isn't disturbed. Destructors between the fault and
/// the guard do **not** run. So the callable is a single platform call, with no lock held and no owning local inside.
template <typename F>
HRESULT GuardedCall(F&& pCall, TFault* pFault = nullptr) {
  using TResult = std::invoke_result_t<F&>;
  static_assert(std::is_void_v<TResult> || std::is_convertible_v<TResult, HRESULT>,
                "A guarded callable returns an HRESULT or nothing.");
  struct TContext {
    std::remove_reference_t<F>* call;
    HRESULT result;
  } context{std::addressof(pCall), S_OK};
  const std::uint32_t code = detail::GuardedInvoke(
      [](void* opaque) {
        auto* const inner = static_cast<TContext*>(opaque);
        if constexpr (std::is_void_v<TResult>) {
          (*inner->call)();
        } else {
          inner->result = (*inner->call)();
        }
      },
      &context);
  if (pFault) pFault->code = code;
  return code == 0 ? context.result : E_FAIL;
}

/// Calls a late-bound export that returns an HRESULT. `E_NOTIMPL` if it is missing; guarded, because some systems
/// export names that abort when they are called.
template <typename R, typename... P, typename... A>
HRESULT GuardedExport(R(STDMETHODCALLTYPE* pExport)(P...), A&&... pArguments) {
  static_assert(std::is_same_v<R, HRESULT>);
  if (!pExport) return E_NOTIMPL;
  return GuardedCall([&] { return pExport(std::forward<A>(pArguments)...); });
}

} // namespace kiv
