#include <platform/fill/UnimplementedExport.h>

namespace kiv::fill {

#if defined(__x86_64__) && !defined(_MSC_VER)

namespace {

// The innermost scope of each thread. A slot of the platform's: thread_local costs an allocation a thread and a lock
// here, and a vectored handler must do neither. TLS_OUT_OF_INDEXES: not needed on this system.
DWORD gScopeSlot = TLS_OUT_OF_INDEXES;

} // namespace

DWORD ScopedUnimplementedExportTrap::Install() noexcept {
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  if (!ntdll || !GetProcAddress(ntdll, "wine_get_version")) return TLS_OUT_OF_INDEXES;
  gScopeSlot = TlsAlloc();
  if (gScopeSlot != TLS_OUT_OF_INDEXES) AddVectoredExceptionHandler(1, &OnException);
  return gScopeSlot;
}

ScopedUnimplementedExportTrap::ScopedUnimplementedExportTrap(DWORD pCode, void* pResume) noexcept
    : fResume(pResume), fCode(pCode) {
  static const DWORD slot = Install();
  if (slot == TLS_OUT_OF_INDEXES) return;
  fOuter = static_cast<ScopedUnimplementedExportTrap*>(TlsGetValue(slot));
  TlsSetValue(slot, this);
}

ScopedUnimplementedExportTrap::~ScopedUnimplementedExportTrap() {
  if (gScopeSlot != TLS_OUT_OF_INDEXES) TlsSetValue(gScopeSlot, fOuter);
}

LONG CALLBACK ScopedUnimplementedExportTrap::OnException(EXCEPTION_POINTERS* pointers) {
  const auto* const scope = static_cast<ScopedUnimplementedExportTrap*>(TlsGetValue(gScopeSlot));
  if (!scope || !scope->fFrame || pointers->ExceptionRecord->ExceptionCode != scope->fCode) {
    return EXCEPTION_CONTINUE_SEARCH;
  }
  CONTEXT& context = *pointers->ContextRecord;
  context.Rip = reinterpret_cast<DWORD64>(scope->fResume);
  context.Rsp = reinterpret_cast<DWORD64>(scope->fFrame);
  context.Rax = scope->fCode;
  return EXCEPTION_CONTINUE_EXECUTION;
}

#endif

} // namespace kiv::fill
