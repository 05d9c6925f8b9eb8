#include <platform/TempPath.h>

#include <platform/Types.h>

namespace kiv {

namespace {

// Calls what fills a buffer and answers the length, or the size that it needs. Empty on failure.
template <typename F>
std::wstring ReadText(F&& call) {
  std::wstring text(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = call(text.data(), static_cast<DWORD>(text.size()));
    const bool fits = length < text.size();
    text.resize(length);
    if (fits) return text;
  }
}

} // namespace

std::wstring KivGetTempPath() {
  const std::wstring path = ReadText([](wchar_t* buffer, DWORD size) { return GetTempPathW(size, buffer); });
  // The variable that it comes from often holds short names, which don't compare with the path that the shell gives.
  std::wstring full =
      ReadText([&](wchar_t* buffer, DWORD size) { return GetLongPathNameW(path.c_str(), buffer, size); });
  if (full.empty()) return path;
  if (full.back() != L'\\') full += L'\\';
  return full;
}

} // namespace kiv
