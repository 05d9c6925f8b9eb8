#pragma once

#include <core/ScopedVisit.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

namespace kiv {

/// A pointer that is worked out on first need and read by many threads without a lock.
///
/// Three states: not resolved, failed, a value. The first need resolves it, once: threads that race compute each their
/// own, one is published, and the others' are freed. Somebody who asks again from inside the computation, on the same
/// thread, gets null; other threads see "not resolved" until the value is there. Only Replace changes it afterwards,
/// and what it replaces is kept until this object dies, because readers hold no lock.
template <typename T, void (*Free)(T*)>
class TLazyPointer {
public:
  /// Not resolved.
  TLazyPointer() noexcept = default;
  /// A value; null is "not resolved". What is foreign is never freed.
  TLazyPointer(T* pValue, bool pForeign) noexcept : fValue(pValue), fForeign(pForeign) {}
  ~TLazyPointer() {
    Drop(fValue.load(std::memory_order_acquire), fForeign.load(std::memory_order_relaxed));
    for (TKept* kept = fKept.load(std::memory_order_acquire); kept;) {
      const std::unique_ptr<TKept> ended(kept);
      Free(ended->value);
      kept = ended->older;
    }
  }
  TLazyPointer(const TLazyPointer&) = delete;
  TLazyPointer& operator=(const TLazyPointer&) = delete;

  /// True with a value and after a failure.
  bool IsResolved() const noexcept { return fValue.load(std::memory_order_acquire) != nullptr; }
  /// The value; null if it failed or isn't resolved. Resolves nothing.
  T* Get() const noexcept { return Shown(fValue.load(std::memory_order_acquire)); }

  /// The value, worked out by `pMake` if that hasn't happened: it returns a pointer that this object frees, or null for
  /// a failure. If it raises, the pointer stays unresolved.
  template <typename F>
  T* Resolve(F&& pMake) {
    T* value = fValue.load(std::memory_order_acquire);
    if (value) return Shown(value);
    const ScopedVisit visit(this);
    if (visit.IsRepeated()) return nullptr;
    T* made = pMake();
    if (!made) made = Failed();
    T* standing = nullptr;
    // Before the value is there: who sees the value finds it owned.
    fForeign.store(false, std::memory_order_relaxed);
    if (fValue.compare_exchange_strong(standing, made, std::memory_order_acq_rel, std::memory_order_acquire)) {
      return Shown(made);
    }
    Drop(made, false);
    return Shown(standing);
  }

  /// Puts a failure in the place of "not resolved"; a value stays.
  void Fail() noexcept {
    T* standing = nullptr;
    fValue.compare_exchange_strong(standing, Failed(), std::memory_order_acq_rel, std::memory_order_acquire);
  }

  /// Takes over another value. Replacements are made by one thread at a time.
  void Replace(T* pValue) {
    auto kept = std::make_unique<TKept>();
    const bool foreign = fForeign.exchange(false, std::memory_order_relaxed);
    T* const old = fValue.exchange(pValue, std::memory_order_acq_rel);
    if (!Shown(old) || foreign) return;
    kept->value = old;
    kept->older = fKept.load(std::memory_order_relaxed);
    fKept.store(kept.release(), std::memory_order_release);
  }

private:
  struct TKept {
    T* value = nullptr;
    TKept* older = nullptr;
  };

  static T* Failed() noexcept { return reinterpret_cast<T*>(std::uintptr_t{1}); }
  static T* Shown(T* pValue) noexcept { return pValue == Failed() ? nullptr : pValue; }
  static void Drop(T* pValue, bool pForeign) noexcept {
    if (Shown(pValue) && !pForeign) Free(pValue);
  }

  std::atomic<T*> fValue{nullptr};
  std::atomic<TKept*> fKept{nullptr};
  std::atomic<bool> fForeign{false};
};

} // namespace kiv
