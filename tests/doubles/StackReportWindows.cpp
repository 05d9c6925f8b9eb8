#include <doubles/StackReport.h>

#include <windows.h>

#include <dbghelp.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <cstdio>
#include <cstring>

// Each thread is suspended only while its stack is walked, and its frames are printed as module and offset before the
// next is looked at; those need no lock. Names come last, because asking for them takes the loader's lock, which a
// hanging thread may hold: whatever is printed by then stays.
namespace kiv::test {

namespace {

constexpr int MaxThreads = 256;
constexpr int MaxFrames = 64;
// What GCC's runtime raises for a C++ exception ("STATUS_GCC_THROW"): not a crash, it has its own way to end.
constexpr DWORD GccThrow = 0x20474343;

struct TStack {
  DWORD thread;
  int count;
  DWORD64 frames[MaxFrames];
};

// Static: a report must not allocate.
TStack gStacks[MaxThreads];
int gStackCount = 0;
LPTOP_LEVEL_EXCEPTION_FILTER gRuntimeFilter = nullptr;

void Walk(CONTEXT context, TStack& stack) {
  stack.count = 0;
  while (context.Rip != 0 && stack.count < MaxFrames) {
    stack.frames[stack.count++] = context.Rip;
    DWORD64 base = 0;
    RUNTIME_FUNCTION* function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
    if (function) {
      void* data = nullptr;
      DWORD64 establisher = 0;
      RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &data, &establisher, nullptr);
      continue;
    }
    // A leaf function: its return address is on top. A call to nowhere looks the same.
    MEMORY_BASIC_INFORMATION memory;
    if (VirtualQuery(reinterpret_cast<void*>(context.Rsp), &memory, sizeof memory) == 0 || memory.State != MEM_COMMIT) {
      return;
    }
    std::memcpy(&context.Rip, reinterpret_cast<void*>(context.Rsp), sizeof context.Rip);
    context.Rsp += sizeof(DWORD64);
  }
}

// "module.exe+0x1234". Asks the memory manager: the loader's own functions take its lock.
void WriteRawFrame(int index, DWORD64 address) {
  char line[400];
  char path[MAX_PATH] = "?";
  MEMORY_BASIC_INFORMATION memory;
  void* place = reinterpret_cast<void*>(address);
  if (VirtualQuery(place, &memory, sizeof memory) == 0 || memory.Type != MEM_IMAGE) {
    std::snprintf(line, sizeof line, "  #%-2d 0x%llx\n", index, address);
  } else {
    GetMappedFileNameA(GetCurrentProcess(), memory.AllocationBase, path, sizeof path);
    const char* name = std::strrchr(path, '\\');
    std::snprintf(line, sizeof line, "  #%-2d %s+0x%llx\n", index, name ? name + 1 : path,
                  address - reinterpret_cast<DWORD64>(memory.AllocationBase));
  }
  WriteError(line);
}

void WriteRawStack(const TStack& stack) {
  char line[64];
  std::snprintf(line, sizeof line, "Thread %lu:\n", stack.thread);
  WriteError(line);
  for (int i = 0; i < stack.count; ++i) WriteRawFrame(i, stack.frames[i]);
}

bool WalkThread(DWORD thread, TStack& stack) {
  const HANDLE handle = OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT, FALSE, thread);
  if (!handle) return false;
  stack.thread = thread;
  stack.count = 0;
  CONTEXT context{};
  context.ContextFlags = CONTEXT_FULL;
  if (SuspendThread(handle) != static_cast<DWORD>(-1)) {
    if (GetThreadContext(handle, &context)) Walk(context, stack);
    ResumeThread(handle);
  }
  CloseHandle(handle);
  return true;
}

using TSymInitialize = BOOL(WINAPI*)(HANDLE, PCSTR, BOOL);
using TSymFromAddr = BOOL(WINAPI*)(HANDLE, DWORD64, PDWORD64, PSYMBOL_INFO);

template <typename F>
F Procedure(HMODULE module, const char* name) {
  return reinterpret_cast<F>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// A second pass with the names of functions, if the debugging library loads and knows any.
void WriteNames() {
  const HMODULE library = LoadLibraryW(L"dbghelp.dll");
  if (!library) return;
  const auto initialize = Procedure<TSymInitialize>(library, "SymInitialize");
  const auto ask = Procedure<TSymFromAddr>(library, "SymFromAddr");
  if (!initialize || !ask || !initialize(GetCurrentProcess(), nullptr, TRUE)) return;
  alignas(SYMBOL_INFO) static char buffer[sizeof(SYMBOL_INFO) + 400];
  for (int t = 0; t < gStackCount; ++t) {
    char line[500];
    std::snprintf(line, sizeof line, "Thread %lu, with names:\n", gStacks[t].thread);
    WriteError(line);
    for (int i = 0; i < gStacks[t].count; ++i) {
      auto& symbol = *reinterpret_cast<SYMBOL_INFO*>(buffer);
      symbol.SizeOfStruct = sizeof(SYMBOL_INFO);
      symbol.MaxNameLen = 400;
      DWORD64 offset = 0;
      // Of a caller the return address is known, which may lie behind its function's last instruction.
      if (!ask(GetCurrentProcess(), gStacks[t].frames[i] - (i == 0 ? 0 : 1), &offset, &symbol)) continue;
      std::snprintf(line, sizeof line, "  #%-2d %.400s+0x%llx\n", i, symbol.Name, offset);
      WriteError(line);
    }
  }
}

LONG WINAPI OnCrash(EXCEPTION_POINTERS* pCrash) {
  if (pCrash->ExceptionRecord->ExceptionCode == GccThrow) {
    return gRuntimeFilter ? gRuntimeFilter(pCrash) : EXCEPTION_CONTINUE_SEARCH;
  }
  char line[128];
  std::snprintf(line, sizeof line, "Crash: exception 0x%08lx at %p in thread %lu\n",
                pCrash->ExceptionRecord->ExceptionCode, pCrash->ExceptionRecord->ExceptionAddress,
                GetCurrentThreadId());
  WriteError(line);
  gStackCount = 1;
  gStacks[0].thread = GetCurrentThreadId();
  Walk(*pCrash->ContextRecord, gStacks[0]);
  WriteRawStack(gStacks[0]);
  WriteNames();
  EndProcess(CrashedExitCode);
}

} // namespace

void PrepareReports() {
  // No dialog about a crash or an empty drive may wait for a click that never comes.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
  gRuntimeFilter = SetUnhandledExceptionFilter(OnCrash);
}

void WriteAllStacks() noexcept {
  const HANDLE threads = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  if (threads == INVALID_HANDLE_VALUE) return;
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  gStackCount = 0;
  for (BOOL more = Thread32First(threads, &entry); more; more = Thread32Next(threads, &entry)) {
    if (entry.th32OwnerProcessID != GetCurrentProcessId() || entry.th32ThreadID == GetCurrentThreadId()) continue;
    if (gStackCount == MaxThreads) break;
    if (WalkThread(entry.th32ThreadID, gStacks[gStackCount])) WriteRawStack(gStacks[gStackCount++]);
  }
  CloseHandle(threads);
  WriteNames();
}

void WriteError(const char* pText) noexcept {
  DWORD wrote = 0;
  WriteFile(GetStdHandle(STD_ERROR_HANDLE), pText, static_cast<DWORD>(std::strlen(pText)), &wrote, nullptr);
}

void EndProcess(int pExitCode) noexcept {
  for (;;) TerminateProcess(GetCurrentProcess(), static_cast<UINT>(pExitCode));
}

} // namespace kiv::test
