#include "Enumerator.h"

#include "Acts.h"

#include <doubles/Crash.h>

#include <utility>

namespace kiv::test {

TExtensionEnumerator::TExtensionEnumerator(TContent pContent, SHCONTF pFlags)
    : fContent(std::move(pContent)), fFlags(pFlags) {
  Reset();
}

// In two parts: when it crashes, nothing is owned that a destructor would have to free.
HRESULT TExtensionEnumerator::Next(ULONG pCount, PITEMID_CHILD* pItems, ULONG* pFetched) {
  NoteAsk(TMethod::Next);
  if (!pItems || (pCount != 1 && !pFetched)) return E_INVALIDARG;
  if (pFetched) *pFetched = 0;
  for (ULONG i = 0; i < pCount; ++i) {
    pItems[i] = nullptr;
    if (Crashes()) Crash();
    const HRESULT hr = Give(&pItems[i]);
    if (hr != S_OK || !pItems[i]) return hr;
    if (pFetched) *pFetched = i + 1;
  }
  return S_OK;
}

bool TExtensionEnumerator::Crashes() noexcept {
  const auto& acts = fContent.Script().acts;
  for (std::size_t i = 0; i < acts.size(); ++i) {
    if (acts[i].method == TMethod::Next && acts[i].step == fStep && fCrashesLeft[i] > 0) return --fCrashesLeft[i], true;
  }
  return false;
}

std::optional<HRESULT> TExtensionEnumerator::Act() {
  for (const TAct& act : fContent.Script().acts) {
    if (act.method != TMethod::Next || act.step > fStep) continue;
    const bool goes_on = act.deed == TDeed::Slow || act.deed == TDeed::Repeat;
    if (act.step != fStep && !goes_on) continue;
    if (act.deed == TDeed::Repeat && fAt > 0) --fAt;
    if (const auto answer = Do(act.deed)) return answer;
  }
  return std::nullopt;
}

HRESULT TExtensionEnumerator::Give(PITEMID_CHILD* pItem) {
  const auto answer = Act();
  ++fStep;
  if (answer) return *answer;
  while (fAt < fContent.Count()) {
    const TFakeItem item = fContent.At(fAt++);
    if (!IsWanted(item)) continue;
    *pItem = reinterpret_cast<PITEMID_CHILD>(MakeItemIdList({item}).Release());
    return *pItem ? S_OK : E_OUTOFMEMORY;
  }
  return S_FALSE;
}

bool TExtensionEnumerator::IsWanted(const TFakeItem& pItem) const {
  return (fFlags & (IsFolder(pItem) ? SHCONTF_FOLDERS : SHCONTF_NONFOLDERS)) != 0;
}

HRESULT TExtensionEnumerator::Skip(ULONG pCount) {
  for (ULONG i = 0; i < pCount; ++i) {
    PITEMID_CHILD item = nullptr;
    const HRESULT hr = Next(1, &item, nullptr);
    CoTaskMemFree(item);
    if (hr != S_OK) return hr;
  }
  return S_OK;
}

HRESULT TExtensionEnumerator::Reset() {
  fAt = 0;
  fStep = 1;
  fCrashesLeft.clear();
  for (const TAct& act : fContent.Script().acts) fCrashesLeft.push_back(act.deed == TDeed::Crash ? act.times : 0);
  return S_OK;
}

HRESULT TExtensionEnumerator::Clone(IEnumIDList** pResult) {
  if (!pResult) return E_POINTER;
  auto copy = Make<TExtensionEnumerator>(fContent, fFlags);
  copy->fCrashesLeft = fCrashesLeft;
  copy->fAt = fAt;
  copy->fStep = fStep;
  *pResult = copy.Detach();
  return S_OK;
}

} // namespace kiv::test
