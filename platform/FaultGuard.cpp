#include <platform/FaultGuard.h>

#include <platform/fill/UnimplementedExport.h>

namespace kiv::detail {

namespace {

constexpr DWORD UnimplementedExportCode = 0x80000100;
constexpr DWORD ModuleNotFoundCode = 0xC06D007E; // a delay load: the DLL is missing
constexpr DWORD ExportNotFoundCode = 0xC06D007F; // a delay load: the name is missing

bool IsGuarded(DWORD code) noexcept {
  switch (code) {
  case static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION):
  case static_cast<DWORD>(EXCEPTION_IN_PAGE_ERROR):
  case UnimplementedExportCode:
  case ModuleNotFoundCode:
  case ExportNotFoundCode:
    return true;
  default:
    return false;
  }
}

} // namespace

#if defined(_MSC_VER)

std::uint32_t GuardedInvoke(TGuardedProcedure pProcedure, void* pContext) {
  __try {
    pProcedure(pContext);
  } __except (IsGuarded(GetExceptionCode()) ? EXCEPTION_EXECUTE_HANDLER : EXCEPTION_CONTINUE_SEARCH) {
    return GetExceptionCode();
  }
  return 0;
}

#elif defined(__x86_64__)

// GCC has no __try. A trampoline in assembler carries the language handler; its frame is where a fault unwinds to, at
// the label behind the call. It keeps all non-volatile registers on its stack, so that the road that knows no more than
// its stack pointer (a fault in code without unwind data, see UnimplementedExport.h) can resume it as well.
extern "C" {

std::uint32_t KivGuardTrampoline(TGuardedProcedure procedure, void* context, void** frame);
void KivGuardResume();

// The language handler of the trampoline ("RtlVirtualUnwind", "Language-Specific Handler" in the x64 documentation).
__attribute__((used)) EXCEPTION_DISPOSITION KivGuardHandler(EXCEPTION_RECORD* record, void* frame, CONTEXT*,
                                                            DISPATCHER_CONTEXT* dispatcher) {
  constexpr DWORD unwinding = 0x66; // UNWINDING, EXIT_UNWIND, TARGET_UNWIND, COLLIDED_UNWIND
  if ((record->ExceptionFlags & unwinding) != 0 || !IsGuarded(record->ExceptionCode)) return ExceptionContinueSearch;
  const auto code = reinterpret_cast<void*>(static_cast<std::uintptr_t>(record->ExceptionCode));
  RtlUnwindEx(frame, reinterpret_cast<void*>(&KivGuardResume), record, code, dispatcher->ContextRecord,
              dispatcher->HistoryTable);
  return ExceptionContinueSearch; // not reached
}

} // extern "C"

// clang-format off
asm(R"(
    .text
    .globl KivGuardTrampoline
    .globl KivGuardResume
    .def KivGuardTrampoline; .scl 2; .type 32; .endef
    .def KivGuardResume; .scl 2; .type 32; .endef
    .p2align 4
    .seh_proc KivGuardTrampoline
KivGuardTrampoline:
    pushq %rbp
    .seh_pushreg %rbp
    pushq %rbx
    .seh_pushreg %rbx
    pushq %rdi
    .seh_pushreg %rdi
    pushq %rsi
    .seh_pushreg %rsi
    pushq %r12
    .seh_pushreg %r12
    pushq %r13
    .seh_pushreg %r13
    pushq %r14
    .seh_pushreg %r14
    pushq %r15
    .seh_pushreg %r15
    subq $200, %rsp
    .seh_stackalloc 200
    movaps %xmm6, 32(%rsp)
    .seh_savexmm %xmm6, 32
    movaps %xmm7, 48(%rsp)
    .seh_savexmm %xmm7, 48
    movaps %xmm8, 64(%rsp)
    .seh_savexmm %xmm8, 64
    movaps %xmm9, 80(%rsp)
    .seh_savexmm %xmm9, 80
    movaps %xmm10, 96(%rsp)
    .seh_savexmm %xmm10, 96
    movaps %xmm11, 112(%rsp)
    .seh_savexmm %xmm11, 112
    movaps %xmm12, 128(%rsp)
    .seh_savexmm %xmm12, 128
    movaps %xmm13, 144(%rsp)
    .seh_savexmm %xmm13, 144
    movaps %xmm14, 160(%rsp)
    .seh_savexmm %xmm14, 160
    movaps %xmm15, 176(%rsp)
    .seh_savexmm %xmm15, 176
    .seh_endprologue
    movq %rsp, (%r8)
    movq %rcx, %rax
    movq %rdx, %rcx
    call *%rax
    xorl %eax, %eax
KivGuardResume:
    nop
    movaps 32(%rsp), %xmm6
    movaps 48(%rsp), %xmm7
    movaps 64(%rsp), %xmm8
    movaps 80(%rsp), %xmm9
    movaps 96(%rsp), %xmm10
    movaps 112(%rsp), %xmm11
    movaps 128(%rsp), %xmm12
    movaps 144(%rsp), %xmm13
    movaps 160(%rsp), %xmm14
    movaps 176(%rsp), %xmm15
    addq $200, %rsp
    popq %r15
    popq %r14
    popq %r13
    popq %r12
    popq %rsi
    popq %rdi
    popq %rbx
    popq %rbp
    ret
    .seh_handler KivGuardHandler, @except, @unwind
    .seh_endproc
)");
// clang-format on

std::uint32_t GuardedInvoke(TGuardedProcedure pProcedure, void* pContext) {
  fill::ScopedUnimplementedExportTrap trap(UnimplementedExportCode, reinterpret_cast<void*>(&KivGuardResume));
  return KivGuardTrampoline(pProcedure, pContext, trap.Frame());
}

#else
#error "The fault guard needs MSVC or a 64-bit MinGW target."
#endif

} // namespace kiv::detail
