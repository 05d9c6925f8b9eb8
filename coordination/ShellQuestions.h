#pragma once

#include <core/IItemIdList.h>
#include <platform/Export.h>

#include <functional>
#include <memory>
#include <utility>

namespace kiv {

/// How the link and its history ask what a folder answers in code that isn't ours, which may take for ever: the main
/// thread waits a moment, and goes on without an answer then. Tests put another one in the place of the platform's.
class IShellQuestions {
public:
  virtual ~IShellQuestions() = default;

  /// Whether two lists are the same by all that is at hand: the same object, or the same bytes. No folder is asked.
  virtual bool IsPlainlySame(IItemIdList& pFirst, IItemIdList& pSecond) = 0;
  /// Asks, on any thread. True if the answer has come. If not, the question goes on, and `pLate` is called on the main
  /// thread when it has ended; never if it raises. So a question owns all that it uses.
  virtual bool Ask(std::function<void()> pQuestion, std::function<void()> pLate) = 0;
};

/// The one in use. Main thread.
KIV_EXPORT IShellQuestions& ShellQuestions() noexcept;

/// Puts another one in its place for as long as it lives. For tests.
class KIV_EXPORT ScopedShellQuestions {
public:
  explicit ScopedShellQuestions(IShellQuestions& pQuestions) noexcept;
  ~ScopedShellQuestions();
  ScopedShellQuestions(const ScopedShellQuestions&) = delete;
  ScopedShellQuestions& operator=(const ScopedShellQuestions&) = delete;

private:
  IShellQuestions* const fOuter;
};

/// Whether two lists are equal. Who gives no answer in time isn't: at worst somebody is told again what he knows.
bool IsSameInTime(const ComPtr<IItemIdList>& pFirst, const ComPtr<IItemIdList>& pSecond,
                  TItemIdListComparison pComparison);

namespace detail {
/// The platform's; each platform has its source file.
IShellQuestions& PlatformShellQuestions();
} // namespace detail

} // namespace kiv
