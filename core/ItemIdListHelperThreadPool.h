#pragma once

#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <threading/Future.h>
#include <threading/WorkerThreadPool.h>

#include <cstdint>
#include <functional>
#include <utility>

namespace kiv {

/// The pool for questions to the shell that the asker doesn't want to wait for without limit. Its threads are in
/// apartments of their own.
class KIV_EXPORT TItemIdListHelperThreadPool {
public:
  TItemIdListHelperThreadPool() = delete;

  /// Made at first use, ended by Shutdown. Any thread.
  static ComPtr<IWorkerThreadPool> Instance();
  /// Whether the calling thread is one of the pool's.
  static bool IsCurrentThread() noexcept;
};

/// Asks on the pool, and waits at most `pLimit` milliseconds for the answer; the question runs on after that, so it
/// owns all that it uses, and makes the shell's objects itself. `pFinished` tells whether the answer is one; if not,
/// `pOtherwise` is returned: too late, cancelled by the token, or the question raised, which is reported then.
///
/// On one of the pool's own threads the question is asked at once and without limit: a thread that waited there for
/// another one could wait for ever. What it raises passes.
template <typename T>
T AskInTime(std::function<T()> pQuestion, std::uint64_t pLimit, T pOtherwise, bool& pFinished,
            ComPtr<ICancellationIndicator> pToken = nullptr) {
  if (TItemIdListHelperThreadPool::IsCurrentThread()) {
    T answer = pQuestion();
    pFinished = true;
    return answer;
  }
  ComPtr<IFuture<T>> future;
  const auto pool = TItemIdListHelperThreadPool::Instance();
  TFuture<T>::CreateAndQueue(std::move(pQuestion), std::move(pToken), future, pool.Get());
  T answer{};
  pFinished = future->TryGetValue(pLimit, answer) == TTaskStatus::Completed;
  return pFinished ? answer : pOtherwise;
}

} // namespace kiv
