#include <framework/IniFile.h>

#include <framework/TextCompare.h>
#include <platform/Text.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace kiv {

namespace {

constexpr std::wstring_view Blanks = L" \t";

std::wstring_view Trimmed(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(Blanks);
  if (first == std::wstring_view::npos) return {};
  return text.substr(first, text.find_last_not_of(Blanks) + 1 - first);
}

// The next line with what ends it; takes it from the text.
std::wstring_view TakeLine(std::wstring_view& text) {
  std::size_t end = text.find_first_of(L"\r\n");
  end = end == std::wstring_view::npos ? text.size() : end + (text.substr(end).starts_with(L"\r\n") ? 2 : 1);
  const std::wstring_view line = text.substr(0, end);
  text.remove_prefix(end);
  return line;
}

std::wstring_view WithoutLineEnd(std::wstring_view line) {
  return line.substr(0, line.find_first_of(L"\r\n"));
}

bool IsHeader(std::wstring_view line) {
  const std::wstring_view text = Trimmed(WithoutLineEnd(line));
  return text.size() >= 2 && text.front() == L'[' && text.back() == L']';
}

bool IsHeaderOf(std::wstring_view line, std::wstring_view section) {
  const std::wstring_view text = Trimmed(WithoutLineEnd(line));
  return IsHeader(line) && SameText(Trimmed(text.substr(1, text.size() - 2)), Trimmed(section));
}

// Empty for a line that is none.
std::wstring_view KeyOf(std::wstring_view line) {
  std::wstring_view text = WithoutLineEnd(line);
  text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
  if (text.starts_with(L';')) return {};
  const std::size_t first = text.find(L'=');
  if (first == std::wstring_view::npos) return {};
  return text.ends_with(L'=') ? text.substr(0, text.size() - 1) : Trimmed(text.substr(0, first));
}

bool CanBeKey(const std::wstring& key) {
  const std::wstring line = key + L'=';
  return !key.empty() && key.find(L'\0') == std::wstring::npos && !IsHeader(line) && KeyOf(line) == key;
}

bool IsUtf16(const std::string& bytes) {
  return bytes.starts_with("\xFF\xFE");
}

std::wstring FromUtf16(const std::string& bytes) {
  std::wstring text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
    const auto unit =
        static_cast<std::uint32_t>(static_cast<std::uint8_t>(bytes[i]) | static_cast<std::uint8_t>(bytes[i + 1]) << 8U);
    const bool low_half = unit >= 0xDC00 && unit < 0xE000;
    if constexpr (sizeof(wchar_t) > 2) {
      const auto before = text.empty() ? 0U : static_cast<std::uint32_t>(text.back());
      if (low_half && before >= 0xD800 && before < 0xDC00) {
        text.back() = static_cast<wchar_t>(0x10000 + ((before - 0xD800) << 10U) + (unit - 0xDC00));
        continue;
      }
    }
    text.push_back(static_cast<wchar_t>(unit));
  }
  return text;
}

std::string ToUtf16(std::wstring_view text) {
  std::string bytes("\xFF\xFE");
  bytes.reserve(2 * text.size() + 2);
  const auto put = [&bytes](std::uint32_t unit) {
    bytes.push_back(static_cast<char>(unit & 0xFFU));
    bytes.push_back(static_cast<char>(unit >> 8U & 0xFFU));
  };
  for (const wchar_t c : text) {
    const auto code = static_cast<std::uint32_t>(c);
    if (code < 0x10000) {
      put(code);
    } else {
      put(0xD800 + ((code - 0x10000) >> 10U));
      put(0xDC00 + ((code - 0x10000) & 0x3FFU));
    }
  }
  return bytes;
}

std::filesystem::path NativePath(std::wstring path) {
#if defined(_WIN32)
  return path;
#else
  std::replace(path.begin(), path.end(), L'\\', L'/');
  return ToUtf8(path);
#endif
}

// Empty if there is no such file.
std::wstring ReadAll(const std::wstring& path) {
  std::ifstream file(NativePath(path), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (IsUtf16(bytes)) return FromUtf16(bytes);
  return FromUtf8(bytes.starts_with("\xEF\xBB\xBF") ? std::string_view(bytes).substr(3) : bytes);
}

} // namespace

EIniFileException::~EIniFileException() = default;

std::vector<std::wstring> IniSectionKeys(std::wstring_view pText, std::wstring_view pSection) {
  std::vector<std::wstring> keys;
  bool inside = false;
  while (!pText.empty()) {
    const std::wstring_view line = TakeLine(pText);
    if (IsHeader(line)) {
      inside = IsHeaderOf(line, pSection);
    } else if (const std::wstring_view key = KeyOf(line); inside && !key.empty()) {
      keys.emplace_back(key);
    }
  }
  return keys;
}

std::wstring ReplaceIniSection(std::wstring_view pText, std::wstring_view pSection,
                               const std::vector<std::wstring>& pKeys) {
  if (pSection.find_first_of(std::wstring_view(L"\r\n\0", 3)) != std::wstring_view::npos) return std::wstring(pText);
  std::wstring section;
  for (const std::wstring& key : pKeys) {
    if (CanBeKey(key)) section.append(key).append(L"=\r\n");
  }
  if (!section.empty()) section.insert(0, std::wstring(L"[").append(Trimmed(pSection)).append(L"]\r\n"));
  std::wstring text;
  text.reserve(pText.size() + section.size());
  bool inside = false;
  while (!pText.empty()) {
    const std::wstring_view line = TakeLine(pText);
    if (IsHeader(line)) {
      inside = IsHeaderOf(line, pSection);
      if (inside) text += std::exchange(section, {}); // at the place of the first
    }
    const bool goes = inside && (IsHeader(line) || !KeyOf(line).empty());
    if (!goes) text += line;
  }
  if (section.empty()) return text;
  if (!text.empty() && text.back() != L'\n' && text.back() != L'\r') text += L"\r\n";
  return text + section;
}

std::vector<std::wstring> TIniFile::ReadSection(std::wstring_view pSection) const {
  return IniSectionKeys(ReadAll(fFileName), pSection);
}

void TIniFile::WriteSection(std::wstring_view pSection, const std::vector<std::wstring>& pKeys) const {
  const std::string bytes = ToUtf16(ReplaceIniSection(ReadAll(fFileName), pSection, pKeys));
  std::ofstream file(NativePath(fFileName), std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
  if (!file) throw EIniFileException(L"Unable to write to " + fFileName);
}

} // namespace kiv
