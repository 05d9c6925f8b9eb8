#include <core/LongPath.h>

#include <platform/Characters.h>

#include <algorithm>

namespace kiv {

namespace {

// From here on plain paths fail: a folder's path must leave room for a short file name in it ("CreateDirectory").
constexpr std::size_t PlainPathLimit = 248;

} // namespace

std::wstring ToLongPath(const std::wstring& pPath) {
  if (pPath.size() < PlainPathLimit) return pPath;
  std::wstring path = pPath;
  std::replace(path.begin(), path.end(), L'/', L'\\');
  const bool prefixed = path.starts_with(LR"(\\?\)") || path.starts_with(LR"(\\.\)");
  if (prefixed) return path;
  if (path.starts_with(LR"(\\)")) return LR"(\\?\UNC\)" + path.substr(2);
  if (IsAsciiLetter(path[0]) && path[1] == L':' && path[2] == L'\\') return LR"(\\?\)" + path;
  return path;
}

} // namespace kiv
