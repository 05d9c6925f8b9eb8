#include <framework/IniFile.h>

#include <framework/TextCompare.h>
#include <platform/Text.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>

#if defined(_WIN32)
#include <platform/Types.h>
#endif

namespace kiv {

namespace {

constexpr std::wstring_view Blanks = L" \t";

std::wstring_view Trimmed(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(Blanks);
  if (first == std::wstring_view::npos) return {};
  return text.substr(first, text.find_last_not_of(Blanks) + 1 - first);
}

bool IsLineEnd(wchar_t c) {
  return c == L'\r' || c == L'\n';
}

// The next line with what ends it; takes it from the text.
std::wstring_view TakeLine(std::wstring_view& text) {
  std::size_t end = 0;
  while (end < text.size() && !IsLineEnd(text[end])) ++end;
  if (end < text.size()) end += text.substr(end).starts_with(L"\r\n") ? 2 : 1;
  const std::wstring_view line = text.substr(0, end);
  text.remove_prefix(end);
  return line;
}

std::wstring_view WithoutLineEnd(std::wstring_view line) {
  while (!line.empty() && IsLineEnd(line.back())) line.remove_suffix(1);
  return line;
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
  const auto breaks = [](wchar_t c) { return c == L'\0' || IsLineEnd(c); };
  if (key.empty() || std::any_of(key.begin(), key.end(), breaks)) return false;
  return key.front() != L';' && Blanks.find(key.front()) == std::wstring_view::npos;
}

// `low`: where in each pair of bytes the lower one is. The first pair is the mark.
std::wstring FromUtf16(const std::string& bytes, std::size_t low) {
  std::wstring text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
    const auto unit = static_cast<std::uint32_t>(static_cast<std::uint8_t>(bytes[i + low]) |
                                                 static_cast<std::uint8_t>(bytes[i + 1 - low]) << 8U);
    if constexpr (sizeof(wchar_t) > 2) {
      const std::uint32_t last = text.empty() ? 0 : static_cast<std::uint32_t>(text.back());
      if (unit >= 0xDC00 && unit < 0xE000 && last >= 0xD800 && last < 0xDC00) { // the two halves of a character
        text.back() = static_cast<wchar_t>(0x10000 + ((last - 0xD800) << 10U) + (unit - 0xDC00));
        continue;
      }
    }
    text.push_back(static_cast<wchar_t>(unit));
  }
  return text;
}

// Files of old programs: what isn't UTF-8 is in the code page of the system.
std::wstring FromCodePage(const std::string& bytes) {
#if defined(_WIN32)
  std::wstring text(bytes.size(), L'\0'); // never more units than bytes
  const auto size = static_cast<int>(bytes.size());
  text.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, text.data(), size)));
  return text;
#else
  std::wstring text;
  for (const char c : bytes) text += static_cast<wchar_t>(static_cast<unsigned char>(c));
  return text;
#endif
}

std::wstring Decoded(const std::string& bytes) {
  if (bytes.starts_with("\xFF\xFE")) return FromUtf16(bytes, 0);
  if (bytes.starts_with("\xFE\xFF")) return FromUtf16(bytes, 1);
  const std::string rest = bytes.substr(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0);
  std::wstring text = FromUtf8(rest);
  return ToUtf8(text) == rest ? text : FromCodePage(rest);
}

std::string ToUtf16(std::wstring_view text) {
  std::string bytes("\xFF\xFE");
  bytes.reserve(2 * text.size() + 2);
  const auto put = [&bytes](std::uint32_t unit) {
    const char pair[] = {static_cast<char>(unit & 0xFFU), static_cast<char>(unit >> 8U & 0xFFU)};
    bytes.append(pair, 2);
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

// False for what is there and can't be read; nothing if there is no such file.
bool ReadAll(const std::filesystem::path& path, std::wstring& text) {
  std::ifstream file(path, std::ios::binary);
  std::error_code error;
  if (!file) return !std::filesystem::exists(path, error) && !error;
  std::string bytes;
  std::vector<char> block(std::size_t{1} << 16U);
  do {
    file.read(block.data(), static_cast<std::streamsize>(block.size()));
    bytes.append(block.data(), static_cast<std::size_t>(file.gcount()));
  } while (file);
  text = Decoded(bytes);
  return file.eof();
}

// In the place of the file only when it is whole: until then that stays as it was.
bool WriteAll(const std::filesystem::path& path, const std::string& bytes) {
  std::filesystem::path whole = path;
  whole.replace_filename("ini" + std::to_string(std::random_device{}()) + ".tmp");
  std::ofstream file(whole, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  std::error_code error;
  if (file) {
    std::filesystem::rename(whole, path, error);
    if (!error) return true;
  }
  std::filesystem::remove(whole, error);
  return false;
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
  std::wstring text;
  if (!ReadAll(NativePath(fFileName), text)) return {};
  return IniSectionKeys(text, pSection);
}

void TIniFile::WriteSection(std::wstring_view pSection, const std::vector<std::wstring>& pKeys) const {
  const std::filesystem::path path = NativePath(fFileName);
  std::wstring text;
  if (!ReadAll(path, text)) throw EIniFileException(L"Unable to read " + fFileName);
  if (!WriteAll(path, ToUtf16(ReplaceIniSection(text, pSection, pKeys)))) {
    throw EIniFileException(L"Unable to write to " + fFileName);
  }
}

} // namespace kiv
