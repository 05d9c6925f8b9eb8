#include <core/PathUtils.h>
#include <platform/Text.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::vector<std::wstring> Split(const std::wstring& text, wchar_t delimiter) {
  std::vector<std::wstring> parts;
  if (text.empty()) return parts;
  parts.emplace_back();
  for (const wchar_t c : text) {
    if (c == delimiter) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

// Part by part, in a list that is changed in place.
std::wstring RemovePlainly(const std::wstring& path, wchar_t delimiter) {
  std::vector<std::wstring> parts = Split(path, delimiter);
  for (std::size_t i = 0; i < parts.size();) {
    const auto at = parts.begin() + static_cast<std::ptrdiff_t>(i);
    if (parts[i] == L".") {
      parts.erase(at);
    } else if (parts[i] == L"..") {
      parts.erase(at);
      const bool drive = i == 1 && parts[0].size() == 2 && parts[0][1] == L':';
      if (i > 0 && !drive) parts.erase(parts.begin() + static_cast<std::ptrdiff_t>(--i));
    } else {
      ++i;
    }
  }
  std::wstring result;
  for (std::size_t i = 0; i < parts.size(); ++i) result += (i > 0 ? std::wstring(1, delimiter) : L"") + parts[i];
  if (result.size() == 2 && result[1] == L':') result += delimiter;
  if (!result.empty() && result[0] != delimiter && path[0] == delimiter) result.insert(0, 1, delimiter);
  return result;
}

} // namespace

// The first character is the delimiter.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize) {
  std::wstring text = kiv::FromUtf8(std::string_view(reinterpret_cast<const char*>(pData), pSize));
  if (text.empty()) return 0;
  const wchar_t delimiter = text[0];
  text.erase(0, 1);
  if (kiv::TPathUtils::RemoveRelativeParts(text, delimiter) != RemovePlainly(text, delimiter)) std::abort();
  return 0;
}
