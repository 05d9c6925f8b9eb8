#pragma once

#include <coordination/SelectionDisk.h>
#include <platform/Export.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace kiv {

/// The folders that a walk stands in, from its first folder down: their searches, which close with it.
class KIV_EXPORT TKivStack {
public:
  /// Nothing for a null search. The first name is a whole path.
  void Push(std::unique_ptr<IDiskSearch> pSearch, const std::wstring& pName);
  /// The one on top, which leaves; null if there is none.
  std::unique_ptr<IDiskSearch> Pop();
  IDiskSearch* Top() const noexcept { return fSearches.empty() ? nullptr : fSearches.back().search.get(); }
  bool IsEmpty() const noexcept { return fSearches.empty(); }
  /// The folder on top, with a delimiter at its end; empty when the stack is.
  const std::wstring& GetCurrentPath() const noexcept { return fCurrentPath; }

  /// What the last search gave.
  TDiskEntry FindData;

private:
  struct TLevel {
    std::unique_ptr<IDiskSearch> search;
    std::size_t pathBefore; // length of fCurrentPath
  };

  std::vector<TLevel> fSearches;
  std::wstring fCurrentPath;
};

} // namespace kiv
