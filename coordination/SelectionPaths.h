#pragma once

#include <framework/Strings.h>

#include <string>
#include <vector>

namespace kiv {

class TKivBaseSelectionList;

/// The entries of a selection as a list of texts, for the published property. It stands in the selection's order.
class TSelectionPaths final : public TStrings {
public:
  explicit TSelectionPaths(TKivBaseSelectionList& pSelection) : fSelection(pSelection) {}

  std::wstring ClassName() const override { return L"TSelectionPaths"; }
  int GetCount() const override;
  const std::wstring& Get(int pIndex) const override;
  void Put(int pIndex, const std::wstring& pText) override;
  std::intptr_t GetObjectAt(int) const override { return 0; }
  void PutObjectAt(int, std::intptr_t) override {}
  void Clear() override;
  void Delete(int pIndex) override;
  void InsertObject(int pIndex, const std::wstring& pText, std::intptr_t pObject) override;

protected:
  void AddParsed(std::vector<std::wstring> pTexts) override;

private:
  TKivBaseSelectionList& fSelection;
};

} // namespace kiv
