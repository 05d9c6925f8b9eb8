#pragma once

#include <framework/SpinWait.h>
#include <threading/WorkItem.h>
#include <threading/WorkerPool.h>
#include <threading/WorkerThreadPool.h>

#include <concepts>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace kiv {

/// A value that a worker is making. A value that can be copied is given to everybody who asks; one that can only be
/// moved goes to the first, and the default of T to all others.
///
/// All futures share one identifier, whatever their T: ask an object for IFuture<T> only if you know its T.
template <typename T>
struct IFuture : IUnknown {
  /// Waits until the status is final. The default of T if the work was cancelled or raised.
  virtual T GetValue() = 0;
  /// Waits at most so many milliseconds. Returns the final status, or Running, whatever the real status is, when the
  /// time has passed; `pValue` is the value as it stands, the default of T if there is none. The item stays where it is
  /// then, and a late result is dropped with the last reference.
  virtual TTaskStatus TryGetValue(std::uint64_t pTimeout, T& pValue) = 0;
  virtual TTaskStatus GetStatus() = 0;
};

template <typename T>
struct TInterfaceId<IFuture<T>> {
  static const IID& Value() {
    static constexpr IID id = ParseGuid("{D4F6E5CE-5CB9-4BED-8308-8F333C5A63B1}");
    return id;
  }
};

/// A work item that makes one value. Derived classes compute it in DoWork and give it to `SetValue`.
template <typename T>
  requires std::movable<T> && std::default_initializable<T>
class TFuture : public TBasicWorkItem, public IFuture<T> {
public:
  using TFunction = std::function<T()>;

  /// A future whose value comes from a closure. Queues nothing.
  static ComPtr<TFuture> Construct(TFunction pFunction, ComPtr<ICancellationIndicator> pCancellationToken = nullptr);
  /// The same, added with priority Normal to `pPool`, or to the global pool if none is given.
  static void CreateAndQueue(TFunction pFunction, ComPtr<ICancellationIndicator> pCancellationToken,
                             ComPtr<IFuture<T>>& pFuture, IWorkerThreadPool* pPool = nullptr);

  // Two roads lead to the root interface: the work item's is the object's identity.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override {
    if (!pObject) return E_POINTER;
    if (!(pIid == IidOf<IFuture<T>>())) return TBasicWorkItem::QueryInterface(pIid, pObject);
    *pObject = static_cast<IFuture<T>*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return TBasicWorkItem::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return TBasicWorkItem::Release(); }

  T GetValue() override {
    Wait();
    return StoredValue();
  }

  TTaskStatus TryGetValue(std::uint64_t pTimeout, T& pValue) override {
    const std::uint64_t start = ThreadApi().tickCount();
    for (TSpinWait wait;; wait.SpinCycle()) {
      const TTaskStatus status = TBasicWorkItem::GetStatus();
      const bool late = !IsFinal(status) && ThreadApi().tickCount() - start >= pTimeout;
      if (!IsFinal(status) && !late) continue;
      pValue = StoredValue();
      return late ? TTaskStatus::Running : status;
    }
  }

  TTaskStatus GetStatus() final { return TBasicWorkItem::GetStatus(); }

protected:
  using TBasicWorkItem::TBasicWorkItem;
  ~TFuture() override = default;

  /// The value as it stands. A cancelled item may still be at work: the lock is for the value's sake.
  virtual T StoredValue() {
    const std::lock_guard guard(fLock);
    if (!fValue) return T();
    if constexpr (std::copy_constructible<T>) {
      return *fValue;
    } else {
      return *std::exchange(fValue, std::nullopt);
    }
  }
  void SetValue(T pValue) {
    const std::lock_guard guard(fLock);
    fValue = std::move(pValue);
  }

private:
  std::mutex fLock;
  std::optional<T> fValue; // guarded by fLock
};

/// A future whose value comes from a closure.
template <typename T>
class TAnonymousFuture final : public TFuture<T> {
public:
  using typename TFuture<T>::TFunction;

  TAnonymousFuture(TFunction pFunction, ComPtr<ICancellationIndicator> pCancellationToken)
      : TFuture<T>(std::move(pCancellationToken)), fFunction(std::move(pFunction)) {}

  void DoWork() override { this->SetValue(fFunction()); }

private:
  ~TAnonymousFuture() override = default;

  TFunction fFunction;
};

template <typename T>
  requires std::movable<T> && std::default_initializable<T> ComPtr<TFuture<T>>
  TFuture<T>::Construct(TFunction pFunction, ComPtr<ICancellationIndicator> pCancellationToken) {
    return Make<TAnonymousFuture<T>>(std::move(pFunction), std::move(pCancellationToken));
  }

template <typename T>
  requires std::movable<T> && std::default_initializable<T>
void TFuture<T>::CreateAndQueue(TFunction pFunction, ComPtr<ICancellationIndicator> pCancellationToken,
                                ComPtr<IFuture<T>>& pFuture, IWorkerThreadPool* pPool) {
  const ComPtr<TFuture> made = Construct(std::move(pFunction), std::move(pCancellationToken));
  pFuture = made;
  IWorkerThreadPool& pool = pPool ? *pPool : TWorkerPool::GlobalInstance();
  pool.AddWorkItem(made, TPriority::Normal);
}

} // namespace kiv
