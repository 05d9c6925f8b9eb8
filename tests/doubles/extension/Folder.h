#pragma once

#include <doubles/extension/Content.h>
#include <platform/Handles.h>
#include <platform/InterfacedObject.h>

#include <shlobj.h>

#include <string>

namespace kiv::test {

/// A folder of the extension; what lies in it and what it does stands in its content's name.
class TExtensionFolder final
    : public TInterfacedObject<IShellFolder2, IPersistFolder2, IShellFolder, IPersistFolder, IPersist> {
public:
  /// The root, which the shell tells its place by Initialize.
  TExtensionFolder() = default;
  TExtensionFolder(TContent pContent, TUniqueItemIdList pPlace, std::wstring pPath);

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override;

  HRESULT STDMETHODCALLTYPE ParseDisplayName(HWND pWindow, IBindCtx* pContext, LPWSTR pName, ULONG* pEaten,
                                             PIDLIST_RELATIVE* pResult, ULONG* pAttributes) override;
  HRESULT STDMETHODCALLTYPE EnumObjects(HWND, SHCONTF pFlags, IEnumIDList** pResult) override;
  HRESULT STDMETHODCALLTYPE BindToObject(PCUIDLIST_RELATIVE pList, IBindCtx* pContext, REFIID pIid,
                                         void** pResult) override;
  HRESULT STDMETHODCALLTYPE BindToStorage(PCUIDLIST_RELATIVE, IBindCtx*, REFIID, void** pResult) override;
  HRESULT STDMETHODCALLTYPE CompareIDs(LPARAM pColumn, PCUIDLIST_RELATIVE a, PCUIDLIST_RELATIVE b) override;
  HRESULT STDMETHODCALLTYPE CreateViewObject(HWND, REFIID, void** pResult) override;
  HRESULT STDMETHODCALLTYPE GetAttributesOf(UINT pCount, PCUITEMID_CHILD_ARRAY pItems, SFGAOF* pInOut) override;
  HRESULT STDMETHODCALLTYPE GetUIObjectOf(HWND, UINT, PCUITEMID_CHILD_ARRAY, REFIID, UINT*, void** pResult) override;
  HRESULT STDMETHODCALLTYPE GetDisplayNameOf(PCUITEMID_CHILD pItem, SHGDNF pFlags, STRRET* pName) override;
  HRESULT STDMETHODCALLTYPE SetNameOf(HWND, PCUITEMID_CHILD, LPCWSTR, SHGDNF, PITEMID_CHILD* pResult) override;

  HRESULT STDMETHODCALLTYPE GetDefaultSearchGUID(GUID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumSearches(IEnumExtraSearch** pResult) override;
  HRESULT STDMETHODCALLTYPE GetDefaultColumn(DWORD, ULONG* pSort, ULONG* pDisplay) override;
  HRESULT STDMETHODCALLTYPE GetDefaultColumnState(UINT pColumn, SHCOLSTATEF* pState) override;
  HRESULT STDMETHODCALLTYPE GetDetailsEx(PCUITEMID_CHILD pItem, const SHCOLUMNID* pColumn, VARIANT* pValue) override;
  HRESULT STDMETHODCALLTYPE GetDetailsOf(PCUITEMID_CHILD pItem, UINT pColumn, SHELLDETAILS* pDetails) override;
  HRESULT STDMETHODCALLTYPE MapColumnToSCID(UINT pColumn, SHCOLUMNID* pId) override;

  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pId) override;
  HRESULT STDMETHODCALLTYPE Initialize(PCIDLIST_ABSOLUTE pPlace) override;
  HRESULT STDMETHODCALLTYPE GetCurFolder(PIDLIST_ABSOLUTE* pResult) override;

private:
  std::optional<TDeed> DeedFor(UINT pCount, PCUITEMID_CHILD_ARRAY pItems) const;
  std::optional<TDeed> DeedForBinding(PCUIDLIST_RELATIVE pList, TMethod pMethod) const;
  HRESULT Parse(std::wstring_view pPath, PIDLIST_RELATIVE* pResult, ULONG* pAttributes);
  HRESULT Bind(PCUIDLIST_RELATIVE pList, IBindCtx* pContext, REFIID pIid, void** pResult) const;
  HRESULT Attributes(UINT pCount, PCUITEMID_CHILD_ARRAY pItems, SFGAOF* pInOut) const;
  HRESULT GiveName(PCUITEMID_CHILD pItem, SHGDNF pFlags, STRRET* pName) const;
  std::wstring OwnPath() const;

  const TContent fContent{};
  TUniqueItemIdList fPlace; // absolute
  const std::wstring fPath; // the root's is asked for
};

} // namespace kiv::test
