#include <framework/FileNames.h>

namespace kiv {

namespace {

constexpr std::size_t None = std::wstring_view::npos;

constexpr bool IsSlash(wchar_t c) {
  return c == L'\\' || c == L'/';
}

constexpr bool IsDelimiter(wchar_t c) {
  return IsSlash(c) || c == L':';
}

// Where the name begins: behind the last delimiter.
std::size_t NameStart(std::wstring_view text) {
  const std::size_t last = text.find_last_of(L"\\/:");
  return last == None ? 0 : last + 1;
}

} // namespace

std::wstring ExtractFileName(std::wstring_view pFileName) {
  return std::wstring(pFileName.substr(NameStart(pFileName)));
}

std::wstring ExtractFilePath(std::wstring_view pFileName) {
  return std::wstring(pFileName.substr(0, NameStart(pFileName)));
}

std::wstring ExtractFileDir(std::wstring_view pFileName) {
  std::size_t length = NameStart(pFileName);
  // "C:\" and "\\" keep what makes them roots.
  if (length > 1 && IsSlash(pFileName[length - 1]) && !IsDelimiter(pFileName[length - 2])) --length;
  return std::wstring(pFileName.substr(0, length));
}

std::wstring ExtractFileDrive(std::wstring_view pFileName) {
  if (pFileName.size() < 2) return {};
  if (pFileName[1] == L':') return std::wstring(pFileName.substr(0, 2));
  if (!IsSlash(pFileName[0]) || !IsSlash(pFileName[1])) return {};
  const std::size_t server_end = pFileName.find_first_of(L"\\/", 2);
  if (server_end == None) return std::wstring(pFileName);
  const std::size_t share_end = pFileName.find_first_of(L"\\/", server_end + 1);
  // A server without a share ends before its delimiter.
  const bool no_share = server_end + 1 == pFileName.size() || share_end == server_end + 1;
  return std::wstring(pFileName.substr(0, no_share ? server_end : share_end));
}

std::wstring ExtractFileExt(std::wstring_view pFileName) {
  const std::size_t dot = pFileName.rfind(L'.');
  if (dot == None || dot < NameStart(pFileName)) return {};
  return std::wstring(pFileName.substr(dot));
}

} // namespace kiv
