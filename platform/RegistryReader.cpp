#include <platform/RegistryReader.h>

#include <algorithm>
#include <cstring>

namespace kiv {

namespace {

// Text from a value's bytes: it may lack its terminating zero, or have several, or an odd byte.
std::wstring TextOf(const std::vector<std::uint8_t>& bytes) {
  std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
  std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
  return text;
}

std::wstring CutAtZero(std::wstring text) {
  text.resize(std::min(text.find(L'\0'), text.size()));
  return text;
}

std::optional<std::wstring> Expand(const std::wstring& text) {
  std::wstring expanded(text.size() + MAX_PATH, L'\0');
  for (;;) {
    const DWORD needed = ExpandEnvironmentStringsW(text.c_str(), expanded.data(), static_cast<DWORD>(expanded.size()));
    if (needed == 0) return std::nullopt;
    const bool fits = needed <= expanded.size();
    expanded.resize(fits ? needed - 1 : needed);
    if (fits) return expanded;
  }
}

// All names that an enumeration gives; none without a key, since it fails at once.
template <typename F>
std::vector<std::wstring> Names(F&& enumerate) {
  std::vector<std::wstring> names;
  wchar_t name[16384]; // the longest name of a value, with its end; those of keys are shorter
  for (DWORD i = 0;; ++i) {
    auto length = static_cast<DWORD>(std::size(name));
    if (enumerate(i, name, &length) != ERROR_SUCCESS) return names;
    names.emplace_back(name, length);
  }
}

} // namespace

TRegistryReader::TRegistryReader(HKEY pRoot, const std::wstring& pPath, REGSAM pView) noexcept {
  RegOpenKeyExW(pRoot, pPath.c_str(), 0, KEY_READ | pView, fKey.ReleaseAndGetAddressOf());
}

std::optional<std::vector<std::uint8_t>> TRegistryReader::Read(const std::wstring& pName, DWORD& pType) const {
  if (!fKey) return std::nullopt;
  std::vector<std::uint8_t> bytes(256);
  for (;;) {
    auto size = static_cast<DWORD>(bytes.size());
    const LSTATUS status = RegQueryValueExW(fKey.Get(), pName.c_str(), nullptr, &pType, bytes.data(), &size);
    // Another program may lengthen the value between two calls.
    if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) return std::nullopt;
    const bool complete = status == ERROR_SUCCESS;
    bytes.resize(complete ? size : std::max<std::size_t>(size, bytes.size() * 2));
    if (complete) return bytes;
  }
}

std::optional<std::wstring> TRegistryReader::Text(const std::wstring& pName) const {
  DWORD type = REG_NONE;
  const auto bytes = Read(pName, type);
  if (!bytes || (type != REG_SZ && type != REG_EXPAND_SZ)) return std::nullopt;
  std::wstring text = CutAtZero(TextOf(*bytes));
  return type == REG_SZ ? std::optional(std::move(text)) : Expand(text);
}

std::optional<std::uint32_t> TRegistryReader::Number(const std::wstring& pName) const {
  DWORD type = REG_NONE;
  const auto bytes = Read(pName, type);
  std::uint32_t number = 0;
  if (!bytes || type != REG_DWORD || bytes->size() != sizeof(number)) return std::nullopt;
  std::memcpy(&number, bytes->data(), sizeof(number));
  return number;
}

std::optional<std::vector<std::wstring>> TRegistryReader::Texts(const std::wstring& pName) const {
  DWORD type = REG_NONE;
  const auto bytes = Read(pName, type);
  if (!bytes || type != REG_MULTI_SZ) return std::nullopt;
  std::vector<std::wstring> texts;
  const std::wstring all = TextOf(*bytes);
  for (std::size_t at = 0; at < all.size();) {
    const std::size_t end = std::min(all.find(L'\0', at), all.size());
    if (end == at) break; // an empty text ends the list
    texts.push_back(all.substr(at, end - at));
    at = end + 1;
  }
  return texts;
}

std::optional<std::vector<std::uint8_t>> TRegistryReader::Bytes(const std::wstring& pName) const {
  DWORD type = REG_NONE;
  return Read(pName, type);
}

bool TRegistryReader::HasValue(const std::wstring& pName) const {
  return fKey && RegQueryValueExW(fKey.Get(), pName.c_str(), nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

std::vector<std::wstring> TRegistryReader::ValueNames() const {
  return Names([this](DWORD index, wchar_t* name, DWORD* length) {
    return RegEnumValueW(fKey.Get(), index, name, length, nullptr, nullptr, nullptr, nullptr);
  });
}

std::vector<std::wstring> TRegistryReader::KeyNames() const {
  return Names([this](DWORD index, wchar_t* name, DWORD* length) {
    return RegEnumKeyExW(fKey.Get(), index, name, length, nullptr, nullptr, nullptr, nullptr);
  });
}

} // namespace kiv
