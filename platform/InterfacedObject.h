#pragma once

#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/InterfaceId.h>

#include <atomic>
#include <type_traits>
#include <utility>

namespace kiv {

/// How many objects that derive from TInterfacedObject exist in the process. Any thread. Tests prove by it that nothing
/// leaks.
KIV_EXPORT long LiveObjects() noexcept;

namespace detail {

/// Counts one object. Always on: two relaxed additions in an object's life are lost beside its allocation, and a switch
/// would give objects of the library and of its host different layouts or counts.
class KIV_EXPORT TLiveObjectMark {
public:
  TLiveObjectMark() noexcept;
  ~TLiveObjectMark();
  TLiveObjectMark(const TLiveObjectMark&) = delete;
  TLiveObjectMark& operator=(const TLiveObjectMark&) = delete;
};

/// Stands in the list of base classes for an interface that another listed one derives from.
template <typename I>
struct TCoveredInterface {};

template <typename I, typename... All>
inline constexpr bool IsCovered = ((!std::is_same_v<I, All> && std::is_base_of_v<I, All>) || ...);

template <typename I, typename... All>
using TInterfaceBase = std::conditional_t<IsCovered<I, All...>, TCoveredInterface<I>, I>;

} // namespace detail

/// Base of objects that live by reference count and offer the listed interfaces (and IUnknown) through QueryInterface.
///
/// An interface that another one in the list derives from is named too if it shall be found:
/// `TInterfacedObject<IShellFolder2, IShellFolder>`. Where an interface can be reached on several roads, the first
/// listed one gives it, always the same.
///
/// Objects are made by Make<T>() only: they begin with one reference, which Make hands out, so that a constructor may
/// pass `this` around without ending the object. A destructor may do so as well, if nobody keeps it. Counting is
/// atomic; the object dies on the thread that releases last. A derived class that offers more overrides QueryInterface.
template <typename... Is>
class TInterfacedObject : public detail::TInterfaceBase<Is, Is...>... {
  static_assert(sizeof...(Is) > 0);
  static_assert((std::is_base_of_v<IUnknown, Is> && ...));

public:
  TInterfacedObject(const TInterfacedObject&) = delete;
  TInterfacedObject& operator=(const TInterfacedObject&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override {
    if (!pObject) return E_POINTER;
    *pObject = Find(pIid);
    if (!*pObject) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }

  ULONG STDMETHODCALLTYPE AddRef() override { return fReferences.fetch_add(1, std::memory_order_relaxed) + 1; }

  ULONG STDMETHODCALLTYPE Release() override {
    // Who holds the only reference needs no locked step to see that: nobody else can count one up.
    const bool only = fReferences.load(std::memory_order_acquire) == 1;
    const ULONG left = only ? 0 : fReferences.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) {
      // Far from zero, so that references that come and go inside the destructor don't end the object again.
      fReferences.store(BeingDestroyed, std::memory_order_relaxed);
      delete this;
    }
    return left;
  }

protected:
  TInterfacedObject() = default;
  virtual ~TInterfacedObject() = default;

private:
  static constexpr ULONG BeingDestroyed = 0x40000000;

  void* Find(REFIID pIid) noexcept {
    void* found = pIid == IidOf<IUnknown>() ? As<IUnknown, Is...>() : nullptr;
    static_cast<void>(((found || (pIid == IidOf<Is>() && (found = As<Is, Is...>()))) || ...));
    return found;
  }

  // `this` as I, through the first listed interface that is one.
  template <typename I, typename J, typename... Rest>
  I* As() noexcept {
    if constexpr (std::is_base_of_v<I, J> && !detail::IsCovered<J, Is...>) {
      return static_cast<J*>(this);
    } else {
      return As<I, Rest...>();
    }
  }

  std::atomic<ULONG> fReferences{1};
  [[no_unique_address]] detail::TLiveObjectMark fMark;
};

/// Makes an object that derives from TInterfacedObject and hands out its first reference.
template <typename T, typename... TArgs>
[[nodiscard]] ComPtr<T> Make(TArgs&&... pArgs) {
  ComPtr<T> object;
  object.Attach(new T(std::forward<TArgs>(pArgs)...));
  return object;
}

} // namespace kiv
