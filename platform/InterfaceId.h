#pragma once

#include <platform/Characters.h>
#include <platform/Types.h>

#include <string>
#include <string_view>

namespace kiv {

namespace detail {

constexpr std::uint32_t HexNumber(std::string_view text) {
  std::uint32_t value = 0;
  for (const char c : text) {
    const int digit = HexDigitValue(c);
    if (digit < 0) throw "not a hexadecimal digit"; // in a constant expression: a compile error
    value = value << 4U | static_cast<std::uint32_t>(digit);
  }
  return value;
}

} // namespace detail

/// The identifier that `{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}` stands for, at compile time; a malformed text doesn't
/// compile.
consteval GUID ParseGuid(std::string_view text) {
  if (text.size() != 38 || text.front() != '{' || text.back() != '}' || text[9] != '-' || text[14] != '-' ||
      text[19] != '-' || text[24] != '-') {
    throw "not of the form {xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
  }
  GUID id{};
  id.Data1 = detail::HexNumber(text.substr(1, 8));
  id.Data2 = static_cast<std::uint16_t>(detail::HexNumber(text.substr(10, 4)));
  id.Data3 = static_cast<std::uint16_t>(detail::HexNumber(text.substr(15, 4)));
  for (std::size_t i = 0; i < 8; ++i) {
    const std::size_t at = i < 2 ? 20 + 2 * i : 25 + 2 * (i - 2);
    id.Data4[i] = static_cast<std::uint8_t>(detail::HexNumber(text.substr(at, 2)));
  }
  return id;
}

/// The identifier of an interface. Our own interfaces get theirs by KIV_INTERFACE_ID; the platform's bring them along.
template <typename I>
struct TInterfaceId {
#if defined(_WIN32)
  static const IID& Value() {
    return __uuidof(I);
  }
#else
  static_assert(sizeof(I) == 0, "This interface has no KIV_INTERFACE_ID.");
#endif
};

template <>
struct TInterfaceId<IUnknown> {
  static const IID& Value() {
    static constexpr IID id = ParseGuid("{00000000-0000-0000-C000-000000000046}");
    return id;
  }
};

/// Shorthand: `IidOf<IShellFolder>()`.
template <typename I>
const IID& IidOf() {
  return TInterfaceId<I>::Value();
}

} // namespace kiv

/// Gives an interface its identifier. Stands in namespace kiv, behind the interface's declaration:
/// `KIV_INTERFACE_ID(IHasDebugInfo, "{68F5A3CD-B8FE-4400-B312-DC2334AF731E}");`
#define KIV_INTERFACE_ID(Interface, Text)                                                                              \
  template <>                                                                                                          \
  struct TInterfaceId<Interface> {                                                                                     \
    static const IID& Value() {                                                                                        \
      static constexpr IID id = ParseGuid(Text);                                                                       \
      return id;                                                                                                       \
    }                                                                                                                  \
  }
