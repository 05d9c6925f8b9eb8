#pragma once

#include <optional>

namespace kiv {

class ShellChangeSource;

/// Finds out whether the shell's registration tells of changes that it didn't announce itself. Main thread.
///
/// Some shells only pass on what this process announces. A thread of its own registers a folder in the temporary
/// folder, makes a file there behind the shell's back, and waits for the event, once a process. The first question
/// waits a moment for the answer; until it is known the directory watcher serves, and sources are told when it comes.
class ReportingProbe {
public:
  ReportingProbe() = delete;

  /// Nothing as long as it isn't known.
  static std::optional<bool> Result();
  static void Add(ShellChangeSource& pSource);
  static void Remove(ShellChangeSource& pSource) noexcept;
};

} // namespace kiv
