#pragma once

#include <doubles/extension/Content.h>
#include <platform/InterfacedObject.h>

#include <vector>

namespace kiv::test {

/// Steps through a folder's content, and does there what its script says.
class TExtensionEnumerator final : public TInterfacedObject<IEnumIDList> {
public:
  TExtensionEnumerator(TContent pContent, SHCONTF pFlags);

  HRESULT STDMETHODCALLTYPE Next(ULONG pCount, PITEMID_CHILD* pItems, ULONG* pFetched) override;
  HRESULT STDMETHODCALLTYPE Skip(ULONG pCount) override;
  HRESULT STDMETHODCALLTYPE Reset() override;
  HRESULT STDMETHODCALLTYPE Clone(IEnumIDList** pResult) override;

private:
  bool Crashes() noexcept;
  std::optional<HRESULT> Act();
  HRESULT Give(PITEMID_CHILD* pItem);
  bool IsWanted(const TFakeItem& pItem) const;

  const TContent fContent;
  const SHCONTF fFlags;
  std::vector<int> fCrashesLeft; // by act
  std::size_t fAt = 0;           // in the content
  std::size_t fStep = 1;         // the one to come
};

} // namespace kiv::test
