#include <core/ReparsePoint.h>

#include <core/PathUtils.h>
#include <platform/ErrorMode.h>

namespace kiv {

bool IsReparsePoint(const std::wstring& pPath) {
  std::wstring path = TPathUtils::GetUnicodeAPICallPath(pPath);
  // With a delimiter behind it the path leads through the link. A drive's root is one with it only.
  constexpr std::size_t drive_root = 3;
  while (path.size() > drive_root && (path.back() == L'\\' || path.back() == L'/')) path.pop_back();
  const ScopedErrorMode mode;
  return IsReparsePoint(GetFileAttributesW(path.c_str()));
}

} // namespace kiv
