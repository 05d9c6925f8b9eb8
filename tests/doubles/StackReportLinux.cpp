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
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <unwind.h>

// How it works: each thread in turn gets a signal whose handler notes the return addresses of the thread it interrupts;
// the reporting thread puts names to them afterwards. Names come from the ELF files themselves and places from
// /proc/self/maps: the loader's functions would take its lock, and know no function of internal linkage, which all test
// bodies are. Built without sanitizers, whose instrumentation doesn't belong into a signal handler.
namespace kiv::test {

namespace {

constexpr int MaxThreads = 256;
constexpr int MaxFrames = 64;
constexpr int MaxModules = 128;
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
  char path[256];
};

// Static: a report must not allocate.
TStack gStacks[MaxThreads];
TModule gModules[MaxModules];
int gModuleCount = 0;

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

void AddModule(const char* line) {
  static std::uintptr_t base = 0;
  static char path[256];
  std::uintptr_t start = 0;
  std::uintptr_t end = 0;
  char rights[8] = {};
  char name[256] = {};
  if (std::sscanf(line, "%lx-%lx %7s %*s %*s %*s %255[^\n]", &start, &end, rights, name) < 4) return;
  if (std::strcmp(name, path) != 0) {
    base = start;
    std::memcpy(path, name, sizeof path);
  }
  if (rights[2] != 'x' || gModuleCount == MaxModules) return;
  TModule& module = gModules[gModuleCount++];
  module.start = start;
  module.end = end;
  module.base = base;
  std::memcpy(module.path, name, sizeof module.path);
}

void ReadModules() {
  gModuleCount = 0;
  const int file = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  static char buffer[16384];
  std::size_t held = 0;
  for (;;) {
    const ssize_t got = read(file, buffer + held, sizeof buffer - 1 - held);
    if (got <= 0) break;
    held += static_cast<std::size_t>(got);
    buffer[held] = 0;
    char* line = buffer;
    while (char* next = std::strchr(line, '\n')) {
      *next = 0;
      AddModule(line);
      line = next + 1;
    }
    held = static_cast<std::size_t>(buffer + held - line);
    std::memmove(buffer, line, held);
  }
  close(file);
}

const TModule* ModuleOf(std::uintptr_t address) {
  for (int i = 0; i < gModuleCount; ++i) {
    if (address >= gModules[i].start && address < gModules[i].end) return &gModules[i];
  }
  return nullptr;
}

// The function at an address of an ELF file that is mapped at `file`; null if none has a name.
const char* FunctionIn(const char* file, std::uintptr_t address, std::uintptr_t& offset) {
  const auto& header = *reinterpret_cast<const ElfW(Ehdr)*>(file);
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return nullptr;
  const auto* sections = reinterpret_cast<const ElfW(Shdr)*>(file + header.e_shoff);
  for (int i = 0; i < header.e_shnum; ++i) {
    const auto& section = sections[i];
    if (section.sh_type != SHT_SYMTAB && section.sh_type != SHT_DYNSYM) continue;
    const char* names = file + sections[section.sh_link].sh_offset;
    const auto* symbols = reinterpret_cast<const ElfW(Sym)*>(file + section.sh_offset);
    for (std::size_t s = 0; s < section.sh_size / sizeof *symbols; ++s) {
      const auto& symbol = symbols[s];
      if ((symbol.st_info & 0xFU) != STT_FUNC || symbol.st_shndx == SHN_UNDEF) continue;
      if (address < symbol.st_value || address >= symbol.st_value + symbol.st_size) continue;
      offset = address - symbol.st_value;
      return names + symbol.st_name;
    }
  }
  return nullptr;
}

void WriteFrame(int index, std::uintptr_t address) {
  char line[1024];
  const TModule* module = ModuleOf(address);
  if (!module) {
    std::snprintf(line, sizeof line, "  #%-2d 0x%lx\n", index, address);
    WriteError(line);
    return;
  }
  const char* name = nullptr;
  std::uintptr_t offset = 0;
  void* mapped = MAP_FAILED;
  struct stat facts {};
  const int file = open(module->path, O_RDONLY | O_CLOEXEC);
  if (file >= 0 && fstat(file, &facts) == 0) {
    mapped = mmap(nullptr, static_cast<std::size_t>(facts.st_size), PROT_READ, MAP_PRIVATE, file, 0);
  }
  // Of a caller the return address is known, which may lie behind its function's last instruction.
  const std::uintptr_t place = address - module->base;
  if (mapped != MAP_FAILED) name = FunctionIn(static_cast<const char*>(mapped), place - 1, offset);
  const char* short_path = std::strrchr(module->path, '/');
  short_path = short_path ? short_path + 1 : module->path;
  if (name) {
    std::snprintf(line, sizeof line, "  #%-2d %s+0x%lx %s+0x%lx\n", index, short_path, place, name, offset + 1);
  } else {
    std::snprintf(line, sizeof line, "  #%-2d %s+0x%lx\n", index, short_path, place);
  }
  WriteError(line);
  if (mapped != MAP_FAILED) munmap(mapped, static_cast<std::size_t>(facts.st_size));
  if (file >= 0) close(file);
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
  ReadModules();
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
