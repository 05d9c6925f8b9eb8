#include <coordination/KivStack.h>

#include <utility>

namespace kiv {

void TKivStack::Push(std::unique_ptr<IDiskSearch> pSearch, const std::wstring& pName) {
  if (!pSearch) return;
  fSearches.push_back({std::move(pSearch), fCurrentPath.size()});
  fCurrentPath += pName;
  if (!fCurrentPath.ends_with(L'\\')) fCurrentPath += L'\\';
}

std::unique_ptr<IDiskSearch> TKivStack::Pop() {
  if (fSearches.empty()) return nullptr;
  TLevel top = std::move(fSearches.back());
  fSearches.pop_back();
  fCurrentPath.resize(top.pathBefore);
  return std::move(top.search);
}

} // namespace kiv
