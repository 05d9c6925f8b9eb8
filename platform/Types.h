#pragma once

/// The handful of Windows types that portable code uses.
///
/// On Windows they are the platform's own. Elsewhere this header supplies the same names with the layouts and values
/// of the platform's documentation ([MS-DTYP], "Common HRESULT Values", "System Error Codes", "File Attribute
/// Constants"), so that interfaces and the algorithms behind them compile, run and are sanitized on any host.

#if defined(_WIN32)

#include <windows.h>

#include <shtypes.h>
#include <unknwn.h>

#else

#include <cstdint>
#include <cstring>

using HRESULT = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16);

using IID = GUID;
using REFIID = const IID&;
using REFGUID = const GUID&;

inline bool operator==(REFGUID a, REFGUID b) noexcept {
  return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

#define STDMETHODCALLTYPE

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFF);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);

inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_NOT_READY = 21;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_DIRECTORY = 267;

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

constexpr bool SUCCEEDED(HRESULT hr) noexcept {
  return hr >= 0;
}
constexpr bool FAILED(HRESULT hr) noexcept {
  return hr < 0;
}
constexpr HRESULT HRESULT_FROM_WIN32(DWORD code) noexcept {
  return code == 0 ? S_OK : static_cast<HRESULT>((code & 0x0000FFFFU) | 0x80070000U);
}

/// The root of all interfaces: see "IUnknown" in the platform's documentation.
struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

/// Items of the namespace: only their platform looks inside.
struct ITEMIDLIST;
using PCIDLIST_ABSOLUTE = const ITEMIDLIST*;

#endif

/// A shell item, where only a pointer to it is needed.
struct IShellItem;
/// Attributes of shell objects, bits of `SFGAO_...`.
using SFGAOF = ULONG;
