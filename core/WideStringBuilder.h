#pragma once

#include <framework/Strings.h>
#include <platform/Export.h>

#include <cstddef>
#include <memory>
#include <string_view>

namespace kiv {

/// A buffer that grows as texts are appended to it, for platform calls that want many texts in one piece of memory. A
/// value of one thread.
class KIV_EXPORT TWideStringBuilder {
public:
  static constexpr int DefaultAllocBy = 1024;

  /// `pIncludeTrailingZeroCharacter`: a zero character stands behind each text, as in lists of texts for the platform.
  /// `pAllocBy` is the least by which the buffer grows, in characters; at least 1.
  explicit TWideStringBuilder(bool pIncludeTrailingZeroCharacter = false, int pAllocBy = DefaultAllocBy);

  void Append(std::wstring_view pText);
  void Append(const TStrings& pStrings);
  /// Forgets the texts and keeps the memory.
  void Clear() noexcept { fLength = 0; }

  /// In bytes, with the zero characters behind the texts, but not what stands at the end.
  std::size_t GetSize() const noexcept { return fLength * sizeof(wchar_t); }
  /// All texts, with two zero characters at the end that GetSize doesn't count. Valid until the next change.
  const wchar_t* GetString();

private:
  void Reserve(std::size_t pMore);

  std::unique_ptr<wchar_t[]> fString;
  std::size_t fLength = 0; // in characters, as all
  std::size_t fAllocated = 0;
  std::size_t fAllocBy;
  bool fIncludeTrailingZeroCharacter;
};

} // namespace kiv
