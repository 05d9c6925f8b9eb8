#pragma once

namespace kiv::test {

/// Exit codes of a test program beside GoogleTest's own.
inline constexpr int NothingRanExitCode = 3;
inline constexpr int HungExitCode = 86;
inline constexpr int CrashedExitCode = 87;

/// Makes ready what a report needs, so that a report needs as little as possible of a process that hangs: the signal
/// handler natively; on Windows also the end of a crashing process with a report instead of a dialog.
void PrepareReports();

/// Writes the stack of every thread but the calling one to the standard error stream. Reads and prints without taking
/// any lock that a hanging thread could hold, as far as the platform allows that.
void WriteAllStacks() noexcept;

/// Text straight to the standard error stream, past all buffers and their locks.
void WriteError(const char* pText) noexcept;

/// Ends the process at once: no destructors, no exit handlers.
[[noreturn]] void EndProcess(int pExitCode) noexcept;

} // namespace kiv::test
