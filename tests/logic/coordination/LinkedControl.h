#pragma once

#include <coordination/ShellLink.h>

#include <functional>
#include <string>

namespace kiv::test {

/// A control without a window, that notes what it is told.
class TLinkedControl : public TComponent, public IKivShellControl, public IKivSupportsFilter {
public:
  TLinkedControl(TKivShellLink* pLink, std::wstring pName, std::wstring* pNotes)
      : fName(std::move(pName)), fNotes(pNotes) {
    SetShellLink(pLink);
  }
  ~TLinkedControl() override { SetShellLink(nullptr); }

  void SetShellLink(TKivShellLink* pShellLink) override {
    if (fLink) fLink->UnregisterShellControl(this);
    fLink = pShellLink;
    if (fLink) fLink->RegisterShellControl(this);
  }
  TKivShellLink* GetShellLink() override { return fLink; }
  void PathChanged(IItemIdList* pFolder) override { Note(L'p', pFolder); }
  void FileChanged(IItemIdList*, IItemIdList* pFile) override { Note(L'f', pFile); }
  void SelectAll() override { Note(L'a', nullptr); }
  void Refresh(TRefreshLevel pLevel, IItemIdList* pList) override {
    Note(static_cast<wchar_t>(L'0' + static_cast<int>(pLevel)), pList);
  }
  bool GoUp() override {
    Note(L'u', nullptr);
    return leads;
  }
  void FilterChanged(const std::wstring& pFilter) override {
    *fNotes += fName + L'*' + pFilter + L' ';
    if (whenTold) whenTold();
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override {
    *pObject = nullptr;
    if (pIid == IidOf<IKivShellControl>()) *pObject = static_cast<IKivShellControl*>(this);
    if (pIid == IidOf<IKivSupportsFilter>() && filters) *pObject = static_cast<IKivSupportsFilter*>(this);
    return *pObject ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(-1); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(-1); }

  std::function<void()> whenTold;
  bool leads = false;
  bool filters = true;

private:
  void Note(wchar_t pWhat, IItemIdList* pList) {
    *fNotes += fName + pWhat + (pList ? pList->Path() : std::wstring()) + L' ';
    if (whenTold) whenTold();
  }

  TKivShellLink* fLink = nullptr;
  const std::wstring fName;
  std::wstring* const fNotes;
};

} // namespace kiv::test
