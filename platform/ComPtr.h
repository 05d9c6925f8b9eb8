#pragma once

#include <platform/InterfaceId.h>

#include <cstddef>
#include <utility>

namespace kiv {

/// Counted pointer to an interface, in the shape that Windows developers know from Microsoft::WRL::ComPtr, for every
/// compiler and for the logic ring. Not shared between threads without a lock; the object may be.
template <typename I>
class ComPtr {
public:
  ComPtr() noexcept = default;
  ComPtr(std::nullptr_t) noexcept {}
  /// Takes a reference of its own.
  ComPtr(I* pObject) noexcept : fObject(pObject) { AddRef(); }
  ComPtr(const ComPtr& pOther) noexcept : fObject(pOther.fObject) { AddRef(); }
  ComPtr(ComPtr&& pOther) noexcept : fObject(std::exchange(pOther.fObject, nullptr)) {}
  /// From a derived interface.
  template <typename J>
    requires std::is_convertible_v<J*, I*> ComPtr(const ComPtr<J>& pOther)
  noexcept : fObject(pOther.Get()) { AddRef(); }
  template <typename J>
    requires std::is_convertible_v<J*, I*> ComPtr(ComPtr<J>&& pOther)
  noexcept : fObject(pOther.Detach()) {}
  ~ComPtr() { Reset(); }

  ComPtr& operator=(ComPtr pOther) noexcept {
    std::swap(fObject, pOther.fObject);
    return *this;
  }

  I* Get() const noexcept { return fObject; }
  I* operator->() const noexcept { return fObject; }
  I& operator*() const noexcept { return *fObject; }
  explicit operator bool() const noexcept { return fObject != nullptr; }

  /// Takes over a reference that the caller holds.
  void Attach(I* pObject) noexcept {
    I* old = std::exchange(fObject, pObject);
    if (old) old->Release();
  }
  /// Hands the reference to the caller.
  [[nodiscard]] I* Detach() noexcept { return std::exchange(fObject, nullptr); }
  void Reset() noexcept {
    // Cleared first: the object's end may come back to this pointer.
    if (I* old = std::exchange(fObject, nullptr)) old->Release();
  }
  void Swap(ComPtr& pOther) noexcept { std::swap(fObject, pOther.fObject); }

  /// For out parameters. What was held is released.
  [[nodiscard]] I** ReleaseAndGetAddressOf() noexcept {
    Reset();
    return &fObject;
  }
  [[nodiscard]] I** operator&() noexcept { return ReleaseAndGetAddressOf(); }
  [[nodiscard]] I* const* GetAddressOf() const noexcept { return &fObject; }

  /// Asks the object for another interface. E_POINTER when there is no object; on failure `pResult` is empty.
  template <typename J>
  HRESULT As(ComPtr<J>& pResult) const {
    pResult.Reset();
    if (!fObject) return E_POINTER;
    void* found = nullptr;
    const HRESULT hr = fObject->QueryInterface(IidOf<J>(), &found);
    if (SUCCEEDED(hr)) pResult.Attach(static_cast<J*>(found));
    return hr;
  }
  /// The same, empty when the object doesn't offer it.
  template <typename J>
  [[nodiscard]] ComPtr<J> MaybeAs() const {
    ComPtr<J> result;
    As(result);
    return result;
  }
  HRESULT CopyTo(I** pResult) const noexcept {
    if (!pResult) return E_POINTER;
    AddRef();
    *pResult = fObject;
    return S_OK;
  }

  friend bool operator==(const ComPtr& a, const ComPtr& b) noexcept { return a.fObject == b.fObject; }
  friend bool operator==(const ComPtr& a, std::nullptr_t) noexcept { return a.fObject == nullptr; }

private:
  void AddRef() const noexcept {
    if (fObject) fObject->AddRef();
  }

  I* fObject = nullptr;
};

} // namespace kiv
