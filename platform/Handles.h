#pragma once

#include <platform/Types.h>

#include <combaseapi.h>
#include <shtypes.h>

#include <memory>
#include <string>
#include <utility>

namespace kiv {

/// Owner of one handle. `TTraits` says the handle's type, its empty value and how it is closed.
template <typename TTraits>
class TUnique {
public:
  using TValue = typename TTraits::TValue;

  TUnique() noexcept = default;
  explicit TUnique(TValue pValue) noexcept : fValue(TTraits::Normalize(pValue)) {}
  TUnique(TUnique&& pOther) noexcept : fValue(std::exchange(pOther.fValue, TTraits::Empty())) {}
  TUnique& operator=(TUnique&& pOther) noexcept {
    Reset(pOther.Release());
    return *this;
  }
  ~TUnique() { Reset(); }

  TValue Get() const noexcept { return fValue; }
  explicit operator bool() const noexcept { return fValue != TTraits::Empty(); }
  /// Hands the handle to the caller.
  [[nodiscard]] TValue Release() noexcept { return std::exchange(fValue, TTraits::Empty()); }
  void Reset(TValue pValue = TTraits::Empty()) noexcept {
    const TValue old = std::exchange(fValue, TTraits::Normalize(pValue));
    if (old != TTraits::Empty() && old != fValue) TTraits::Close(old);
  }
  /// For out parameters. What was held is closed.
  [[nodiscard]] TValue* ReleaseAndGetAddressOf() noexcept {
    Reset();
    return &fValue;
  }

private:
  TValue fValue = TTraits::Empty();
};

namespace detail {

template <typename T>
struct TPointerTraits {
  using TValue = T;
  static T Empty() noexcept { return nullptr; }
  static T Normalize(T value) noexcept { return value; }
};

struct THandleTraits : TPointerTraits<HANDLE> {
  // Some functions answer a failure with INVALID_HANDLE_VALUE instead of null.
  static HANDLE Normalize(HANDLE value) noexcept { return value == INVALID_HANDLE_VALUE ? nullptr : value; }
  static void Close(HANDLE value) noexcept { CloseHandle(value); }
};
struct TFindTraits : TPointerTraits<HANDLE> {
  static HANDLE Normalize(HANDLE value) noexcept { return value == INVALID_HANDLE_VALUE ? nullptr : value; }
  static void Close(HANDLE value) noexcept { FindClose(value); }
};
struct TModuleTraits : TPointerTraits<HMODULE> {
  static void Close(HMODULE value) noexcept { FreeLibrary(value); }
};
struct TRegistryKeyTraits : TPointerTraits<HKEY> {
  static void Close(HKEY value) noexcept { RegCloseKey(value); }
};
template <typename T>
struct TGdiObjectTraits : TPointerTraits<T> {
  static void Close(T value) noexcept { DeleteObject(value); }
};
struct TMemoryDcTraits : TPointerTraits<HDC> {
  static void Close(HDC value) noexcept { DeleteDC(value); }
};
struct TIconTraits : TPointerTraits<HICON> {
  static void Close(HICON value) noexcept { DestroyIcon(value); }
};
template <typename T>
struct TTaskMemoryTraits : TPointerTraits<T*> {
  static void Close(T* value) noexcept { CoTaskMemFree(value); }
};

} // namespace detail

/// A kernel object.
using TUniqueHandle = TUnique<detail::THandleTraits>;
/// A file search (`FindFirstFileW`).
using TUniqueFind = TUnique<detail::TFindTraits>;
using TUniqueModule = TUnique<detail::TModuleTraits>;
using TUniqueRegistryKey = TUnique<detail::TRegistryKeyTraits>;
using TUniqueBitmap = TUnique<detail::TGdiObjectTraits<HBITMAP>>;
using TUniqueFont = TUnique<detail::TGdiObjectTraits<HFONT>>;
using TUniqueBrush = TUnique<detail::TGdiObjectTraits<HBRUSH>>;
using TUniquePen = TUnique<detail::TGdiObjectTraits<HPEN>>;
using TUniqueRegion = TUnique<detail::TGdiObjectTraits<HRGN>>;
/// A device context that its owner made (`CreateCompatibleDC`).
using TUniqueMemoryDc = TUnique<detail::TMemoryDcTraits>;
using TUniqueIcon = TUnique<detail::TIconTraits>;
/// A raw item identifier list, absolute or relative, from the task allocator.
using TUniqueItemIdList = TUnique<detail::TTaskMemoryTraits<ITEMIDLIST_RELATIVE>>;
/// A text that the platform allocated with the task allocator.
using TUniqueTaskText = TUnique<detail::TTaskMemoryTraits<wchar_t>>;

} // namespace kiv
