#include <core/WideStringBuilder.h>

#include <algorithm>

namespace kiv {

namespace {

constexpr std::size_t AtTheEnd = 2; // zero characters

} // namespace

TWideStringBuilder::TWideStringBuilder(bool pIncludeTrailingZeroCharacter, int pAllocBy)
    : fAllocBy(static_cast<std::size_t>(std::max(pAllocBy, 1))),
      fIncludeTrailingZeroCharacter(pIncludeTrailingZeroCharacter) {}

void TWideStringBuilder::Reserve(std::size_t pMore) {
  const std::size_t needed = fLength + pMore + AtTheEnd;
  if (needed <= fAllocated) return;
  // By half at least, or many small texts would be copied once for each block.
  const std::size_t size = std::max({needed, fAllocated + fAllocBy, fAllocated + fAllocated / 2});
  auto grown = std::make_unique_for_overwrite<wchar_t[]>(size);
  std::copy_n(fString.get(), fLength, grown.get());
  fString = std::move(grown);
  fAllocated = size;
}

void TWideStringBuilder::Append(std::wstring_view pText) {
  Reserve(pText.size() + 1);
  std::copy(pText.begin(), pText.end(), fString.get() + fLength);
  fLength += pText.size();
  if (fIncludeTrailingZeroCharacter) fString[fLength++] = L'\0';
}

void TWideStringBuilder::Append(const TStrings& pStrings) {
  const int count = pStrings.GetCount();
  for (int i = 0; i < count; ++i) Append(pStrings.Get(i));
}

const wchar_t* TWideStringBuilder::GetString() {
  Reserve(0);
  std::fill_n(fString.get() + fLength, AtTheEnd, L'\0');
  return fString.get();
}

} // namespace kiv
