#include <doubles/StackReport.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <unwind.h>

// How it works: each thread in turn gets a signal whose handler notes the return addresses of the thread it interrupts;
// the reporting thread writes them as module and offset. Where modules lie is noted before anything hangs: the loader's
// functions take its lock. Names come last, from a process of its own that reads the program's file. Built without
// sanitizers, whose instrumentation doesn't belong into a signal handler.
namespace kiv::test {

namespace {

constexpr int MaxThreads = 256;
constexpr int MaxFrames = 64;
constexpr int MaxModules = 128;
constexpr int MaxNames = 500;
constexpr int AnswerMilliseconds = 1000;

struct TStack {
  std::atomic<bool> complete;
  int count;
  std::uintptr_t frames[MaxFrames];
};

struct TModule {
  std::uintptr_t start; // of the executable part
  std::uintptr_t end;
  std::uintptr_t base; // of the whole
  const char* path;
};

// Static: a report must not allocate.
TStack gStacks[MaxThreads];
TModule gModules[MaxModules]; // the program itself is the first
int gModuleCount = 0;
// What is asked about the program's own frames.
char gProgram[32];
char gOffsets[MaxNames][20];
const char* gQuestion[MaxNames + 5] = {"addr2line", "-Cfpas", "-e", gProgram};
int gNames = 0;

int AskingSignal() {
  return SIGRTMIN + 5;
}

_Unwind_Reason_Code NoteFrame(_Unwind_Context* context, void* argument) {
  auto& stack = *static_cast<TStack*>(argument);
  if (stack.count == MaxFrames) return _URC_END_OF_STACK;
  stack.frames[stack.count++] = _Unwind_GetIP(context);
  return _URC_NO_REASON;
}

void OnAsked(int, siginfo_t* info, void*) {
  const int slot = info->si_value.sival_int;
  if (info->si_code != SI_QUEUE || slot < 0 || slot >= MaxThreads) return;
  const int saved = errno;
  TStack& stack = gStacks[slot];
  stack.count = 0;
  _Unwind_Backtrace(NoteFrame, &stack);
  stack.complete.store(true, std::memory_order_release);
  errno = saved;
}

// False if the thread is gone or doesn't answer.
bool AskThread(pid_t thread, int slot) {
  siginfo_t info;
  std::memset(&info, 0, sizeof info);
  info.si_signo = AskingSignal();
  info.si_code = SI_QUEUE;
  info.si_pid = getpid();
  info.si_uid = getuid();
  info.si_value.sival_int = slot;
  if (syscall(SYS_rt_tgsigqueueinfo, getpid(), thread, AskingSignal(), &info) != 0) return false;
  for (int i = 0; i < AnswerMilliseconds; ++i) {
    if (gStacks[slot].complete.load(std::memory_order_acquire)) return true;
    const timespec pause{0, 1'000'000};
    nanosleep(&pause, nullptr);
  }
  return false;
}

int NoteModule(dl_phdr_info* info, std::size_t, void*) {
  for (int i = 0; i < info->dlpi_phnum && gModuleCount < MaxModules; ++i) {
    const auto& part = info->dlpi_phdr[i];
    if (part.p_type != PT_LOAD || (part.p_flags & PF_X) == 0) continue;
    const char* name = std::strrchr(info->dlpi_name, '/');
    const std::uintptr_t start = info->dlpi_addr + part.p_vaddr;
    gModules[gModuleCount++] = {start, start + part.p_memsz, info->dlpi_addr, name ? name + 1 : info->dlpi_name};
  }
  return 0;
}

const TModule* ModuleOf(std::uintptr_t address) {
  for (int i = 0; i < gModuleCount; ++i) {
    if (address >= gModules[i].start && address < gModules[i].end) return &gModules[i];
  }
  return nullptr;
}

void WriteFrame(int index, std::uintptr_t address) {
  char line[400];
  const TModule* const module = ModuleOf(address);
  const std::uintptr_t offset = module ? address - module->base : address;
  const char* const name = !module ? "" : module == gModules ? program_invocation_short_name : module->path;
  std::snprintf(line, sizeof line, "  #%-2d %.300s%s0x%lx\n", index, name, module ? "+" : "", offset);
  WriteError(line);
  if (module != gModules || gNames == MaxNames) return;
  // Of a caller the return address is known, which may lie behind its function's last instruction.
  std::snprintf(gOffsets[gNames], sizeof gOffsets[gNames], "0x%lx", offset - 1);
  gQuestion[4 + gNames] = gOffsets[gNames];
  ++gNames;
}

// Functions and lines of the program's frames. Not by fork: it takes locks that a hanging thread may hold.
void WriteNames() {
  if (gNames == 0) return;
  WriteError("The program's functions, at one less than the offsets above:\n");
  gQuestion[4 + gNames] = nullptr;
  const auto child = static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
  if (child == 0) {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    execvp(gQuestion[0], const_cast<char* const*>(gQuestion));
    _exit(1);
  }
  if (child > 0) waitpid(child, nullptr, 0);
}

void WriteThread(pid_t thread, int slot) {
  char line[128];
  std::snprintf(line, sizeof line, "Thread %d%s:\n", static_cast<int>(thread), thread == getpid() ? " (main)" : "");
  WriteError(line);
  if (!AskThread(thread, slot)) {
    WriteError("  is gone, or blocks signals\n");
    return;
  }
  for (int i = 0; i < gStacks[slot].count; ++i) WriteFrame(i, gStacks[slot].frames[i]);
}

} // namespace

void PrepareReports() {
  dl_iterate_phdr(&NoteModule, nullptr);
  std::snprintf(gProgram, sizeof gProgram, "/proc/%d/exe", static_cast<int>(getpid()));
  struct sigaction action {};
  action.sa_sigaction = OnAsked;
  action.sa_flags = SA_SIGINFO | SA_RESTART;
  sigfillset(&action.sa_mask);
  // The C library's own: the thread sanitizer's holds signals back until the thread leaves the runtime, which a thread
  // that waits for a lock never does.
  using TInstall = int (*)(int, const struct sigaction*, struct sigaction*);
  void* library = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
  auto install = library ? reinterpret_cast<TInstall>(dlsym(library, "sigaction")) : nullptr;
  if (!install) install = &sigaction;
  install(AskingSignal(), &action, nullptr);
  // The unwinder sets itself up at its first use: now rather than inside a signal handler.
  TStack& stack = gStacks[0];
  stack.count = 0;
  _Unwind_Backtrace(NoteFrame, &stack);
}

void WriteAllStacks() noexcept {
  // opendir allocates; a thread may hang inside the allocator.
  const int folder = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return;
  struct TEntry {
    std::uint64_t node;
    std::int64_t next;
    std::uint16_t length;
    std::uint8_t kind;
    char name[1];
  };
  alignas(TEntry) static char buffer[8192];
  const auto self = static_cast<pid_t>(syscall(SYS_gettid));
  int slot = 0;
  for (long got = 0; (got = syscall(SYS_getdents64, folder, buffer, sizeof buffer)) > 0;) {
    for (long at = 0; at < got;) {
      const auto* entry = reinterpret_cast<const TEntry*>(buffer + at);
      at += entry->length;
      const int thread = std::atoi(reinterpret_cast<const char*>(entry) + offsetof(TEntry, name));
      if (thread <= 0 || thread == self || slot == MaxThreads) continue;
      WriteThread(thread, slot++);
    }
  }
  close(folder);
  WriteNames();
}

void WriteError(const char* pText) noexcept {
  std::size_t left = std::strlen(pText);
  while (left != 0) {
    const ssize_t wrote = write(STDERR_FILENO, pText, left);
    if (wrote <= 0) return;
    pText += wrote;
    left -= static_cast<std::size_t>(wrote);
  }
}

void EndProcess(int pExitCode) noexcept {
  _exit(pExitCode);
}

} // namespace kiv::test
