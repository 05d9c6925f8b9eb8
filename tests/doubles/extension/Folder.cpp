#include "Folder.h"

#include "Acts.h"
#include "Enumerator.h"
#include "Extension.h"

#include <doubles/Crash.h>

#include <shlwapi.h>

#include <algorithm>
#include <new>

// The methods that can be told to crash are in two parts: when one does, it owns nothing that a destructor would free.
namespace kiv::test {

namespace {

constexpr HRESULT NotFound = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);

// The one item of a child's list.
std::optional<TFakeItem> MaybeItem(PCUIDLIST_RELATIVE list) {
  auto items = MaybeItemsOf(list);
  if (!items || items->size() != 1) return std::nullopt;
  return std::move(items->front());
}

HRESULT Nothing(void** result, HRESULT hr = E_NOINTERFACE) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return hr;
}

} // namespace

TExtensionFolder::TExtensionFolder(TContent pContent, TUniqueItemIdList pPlace, std::wstring pPath)
    : fContent(std::move(pContent)), fPlace(std::move(pPlace)), fPath(std::move(pPath)) {}

HRESULT TExtensionFolder::QueryInterface(REFIID pIid, void** pObject) {
  if (pIid == IidOf<IShellFolder2>() && !fContent.Script().offersFolder2) return Nothing(pObject);
  return TInterfacedObject::QueryInterface(pIid, pObject);
}

// --- parsing --------------------------------------------------------------------------------------------------------

HRESULT TExtensionFolder::ParseDisplayName(HWND, IBindCtx*, LPWSTR pName, ULONG* pEaten, PIDLIST_RELATIVE* pResult,
                                           ULONG* pAttributes) {
  NoteAsk(TMethod::Parse);
  if (!pName || !pResult) return E_INVALIDARG;
  *pResult = nullptr;
  const auto deed = fContent.Script().DeedOf(TMethod::Parse);
  if (deed == TDeed::Crash) Crash();
  if (const auto answer = deed ? Do(*deed) : std::nullopt) return *answer;
  const HRESULT hr = Parse(pName, pResult, pAttributes);
  if (SUCCEEDED(hr) && pEaten) *pEaten = static_cast<ULONG>(lstrlenW(pName));
  return hr;
}

// Its own part of the path, and the rest in the folder that this leads to.
HRESULT TExtensionFolder::Parse(std::wstring_view pPath, PIDLIST_RELATIVE* pResult, ULONG* pAttributes) {
  const std::size_t end = std::min(pPath.find(L'\\'), pPath.size());
  const auto item = fContent.Find(pPath.substr(0, end));
  if (!item) return NotFound;
  TUniqueItemIdList list = MakeItemIdList({*item});
  std::wstring rest(pPath.substr(std::min(end + 1, pPath.size())));
  if (rest.empty()) {
    if (pAttributes) *pAttributes &= AttributesOf(*item);
    *pResult = list.Release();
    return S_OK;
  }
  void* found = nullptr;
  HRESULT hr = BindToObject(list.Get(), nullptr, IidOf<IShellFolder>(), &found);
  ComPtr<IShellFolder> folder;
  folder.Attach(static_cast<IShellFolder*>(found));
  PIDLIST_RELATIVE below = nullptr;
  if (SUCCEEDED(hr)) {
    hr = folder ? folder->ParseDisplayName(nullptr, nullptr, rest.data(), nullptr, &below, pAttributes) : NotFound;
  }
  const TUniqueItemIdList rest_list(below);
  if (FAILED(hr) || !rest_list) return FAILED(hr) ? hr : NotFound;
  *pResult = ILCombine(static_cast<PCIDLIST_ABSOLUTE>(list.Get()), rest_list.Get());
  return S_OK;
}

HRESULT TExtensionFolder::EnumObjects(HWND, SHCONTF pFlags, IEnumIDList** pResult) {
  NoteAsk(TMethod::EnumObjects);
  if (!pResult) return E_POINTER;
  *pResult = nullptr;
  const auto deed = fContent.Script().DeedOf(TMethod::EnumObjects);
  if (deed == TDeed::Crash) Crash();
  if (const auto answer = deed ? Do(*deed) : std::nullopt) return *answer;
  *pResult = Make<TExtensionEnumerator>(fContent, pFlags).Detach();
  return S_OK;
}

// --- binding --------------------------------------------------------------------------------------------------------

HRESULT TExtensionFolder::BindToObject(PCUIDLIST_RELATIVE pList, IBindCtx* pContext, REFIID pIid, void** pResult) {
  NoteAsk(TMethod::Bind);
  if (!pResult) return E_POINTER;
  *pResult = nullptr;
  const auto deed = DeedForBinding(pList, TMethod::Bind);
  if (deed == TDeed::Crash) Crash();
  if (const auto answer = deed ? Do(*deed) : std::nullopt) return *answer;
  return Bind(pList, pContext, pIid, pResult);
}

std::optional<TDeed> TExtensionFolder::DeedForBinding(PCUIDLIST_RELATIVE pList, TMethod pMethod) const {
  const auto items = MaybeItemsOf(pList);
  if (!items || items->empty()) return std::nullopt;
  const auto script = TScript::FromName(items->front().name);
  return script ? script->DeedOf(pMethod) : std::nullopt;
}

HRESULT TExtensionFolder::Bind(PCUIDLIST_RELATIVE pList, IBindCtx* pContext, REFIID pIid, void** pResult) const {
  const auto items = MaybeItemsOf(pList);
  if (!items || items->empty()) return E_INVALIDARG;
  const TFakeItem& first = items->front();
  if (!IsFolder(first)) return E_NOINTERFACE;
  const TUniqueItemIdList child = MakeItemIdList({first});
  const auto place = static_cast<PCIDLIST_ABSOLUTE>(fPlace.Get());
  const auto folder = Make<TExtensionFolder>(TContent(first.name), TUniqueItemIdList(ILCombine(place, child.Get())),
                                             OwnPath() + L"\\" + first.name);
  if (items->size() == 1) return folder->QueryInterface(pIid, pResult);
  return folder->BindToObject(ILGetNext(pList), pContext, pIid, pResult);
}

HRESULT TExtensionFolder::BindToStorage(PCUIDLIST_RELATIVE pList, IBindCtx*, REFIID, void** pResult) {
  NoteAsk(TMethod::Storage);
  if (const auto deed = DeedForBinding(pList, TMethod::Storage)) Do(*deed);
  return Nothing(pResult, E_NOTIMPL);
}

HRESULT TExtensionFolder::CreateViewObject(HWND, REFIID, void** pResult) {
  NoteAsk(TMethod::Objects);
  return Nothing(pResult);
}

HRESULT TExtensionFolder::GetUIObjectOf(HWND, UINT, PCUITEMID_CHILD_ARRAY, REFIID, UINT*, void** pResult) {
  NoteAsk(TMethod::Objects);
  const auto deed = fContent.Script().DeedOf(TMethod::Objects);
  if (deed == TDeed::Crash) Crash();
  if (deed) Do(*deed);
  return Nothing(pResult);
}

HRESULT TExtensionFolder::GetClassID(CLSID* pId) {
  if (!pId) return E_POINTER;
  *pId = ExtensionClass;
  return S_OK;
}

HRESULT TExtensionFolder::Initialize(PCIDLIST_ABSOLUTE pPlace) {
  fPlace.Reset(ILClone(pPlace));
  return fPlace ? S_OK : E_OUTOFMEMORY;
}

HRESULT TExtensionFolder::GetCurFolder(PIDLIST_ABSOLUTE* pResult) {
  if (!pResult) return E_POINTER;
  *pResult = ILClone(static_cast<PCIDLIST_ABSOLUTE>(fPlace.Get()));
  return *pResult ? S_OK : E_FAIL;
}

// --- attributes, order, names ---------------------------------------------------------------------------------------

HRESULT TExtensionFolder::GetAttributesOf(UINT pCount, PCUITEMID_CHILD_ARRAY pItems, SFGAOF* pInOut) {
  NoteAsk(TMethod::Attributes);
  if (!pInOut || (pCount != 0 && !pItems)) return E_INVALIDARG;
  const auto deed = DeedFor(pCount, pItems);
  if (deed == TDeed::Crash) Crash();
  if (const auto answer = deed ? Do(*deed) : std::nullopt) {
    *pInOut = 0;
    return *answer;
  }
  return Attributes(pCount, pItems, pInOut);
}

std::optional<TDeed> TExtensionFolder::DeedFor(UINT pCount, PCUITEMID_CHILD_ARRAY pItems) const {
  auto deed = fContent.Script().DeedOf(TMethod::Attributes);
  for (UINT i = 0; i < pCount && !deed; ++i) {
    const auto item = MaybeItem(pItems[i]);
    const auto script = item ? TScript::FromName(item->name) : std::nullopt;
    if (script) deed = script->DeedOf(TMethod::Attributes);
  }
  return deed;
}

HRESULT TExtensionFolder::Attributes(UINT pCount, PCUITEMID_CHILD_ARRAY pItems, SFGAOF* pInOut) const {
  SFGAOF common = *pInOut;
  *pInOut = 0;
  if (pCount == 0) common &= SFGAO_FOLDER | SFGAO_BROWSABLE | SFGAO_HASSUBFOLDER; // the folder itself
  for (UINT i = 0; i < pCount; ++i) {
    const auto item = MaybeItem(pItems[i]);
    if (!item) return E_INVALIDARG;
    common &= AttributesOf(*item);
  }
  *pInOut = common;
  return S_OK;
}

HRESULT TExtensionFolder::CompareIDs(LPARAM, PCUIDLIST_RELATIVE a, PCUIDLIST_RELATIVE b) {
  NoteAsk(TMethod::Compare);
  for (const PCUIDLIST_RELATIVE list : {a, b}) {
    if (const auto deed = DeedForBinding(list, TMethod::Compare)) Do(*deed);
  }
  const auto first = MaybeItemsOf(a);
  const auto second = MaybeItemsOf(b);
  if (!first || !second) return E_INVALIDARG;
  int order = 0;
  for (std::size_t i = 0; order == 0 && i < std::max(first->size(), second->size()); ++i) {
    const bool both = i < first->size() && i < second->size();
    order = both ? (*first)[i].name.compare((*second)[i].name) : i < first->size() ? 1 : -1;
  }
  const int sign = (order > 0) - (order < 0);
  return MAKE_HRESULT(SEVERITY_SUCCESS, 0, static_cast<USHORT>(static_cast<short>(sign)));
}

HRESULT TExtensionFolder::GetDisplayNameOf(PCUITEMID_CHILD pItem, SHGDNF pFlags, STRRET* pName) {
  NoteAsk(TMethod::Names);
  if (!pName) return E_POINTER;
  pName->uType = STRRET_CSTR;
  pName->cStr[0] = 0;
  const auto deed = fContent.Script().DeedOf(TMethod::Names);
  if (deed == TDeed::Crash) Crash();
  if (const auto answer = deed ? Do(*deed) : std::nullopt) return *answer;
  return GiveName(pItem, pFlags, pName);
}

HRESULT TExtensionFolder::GiveName(PCUITEMID_CHILD pItem, SHGDNF pFlags, STRRET* pName) const {
  const auto item = MaybeItem(pItem);
  if (!item) return E_INVALIDARG;
  std::wstring name = item->name;
  if ((pFlags & SHGDN_FORPARSING) != 0) {
    if ((pFlags & SHGDN_INFOLDER) == 0) name = OwnPath() + L"\\" + name;
  } else if ((pFlags & SHGDN_FOREDITING) == 0) {
    name = ShownName(*item);
  }
  pName->uType = STRRET_WSTR;
  return SHStrDupW(name.c_str(), &pName->pOleStr);
}

std::wstring TExtensionFolder::OwnPath() const {
  if (!fContent.IsRoot()) return fPath;
  wchar_t* name = nullptr;
  const auto place = static_cast<PCIDLIST_ABSOLUTE>(fPlace.Get());
  if (FAILED(SHGetNameFromIDList(place, SIGDN_DESKTOPABSOLUTEPARSING, &name))) return ExtensionRoot;
  const TUniqueTaskText text(name);
  return text.Get();
}

HRESULT TExtensionFolder::SetNameOf(HWND, PCUITEMID_CHILD, LPCWSTR, SHGDNF, PITEMID_CHILD* pResult) {
  NoteAsk(TMethod::Names);
  if (pResult) *pResult = nullptr;
  return E_ACCESSDENIED;
}

// --- its one column -------------------------------------------------------------------------------------------------

HRESULT TExtensionFolder::EnumSearches(IEnumExtraSearch** pResult) {
  return Nothing(reinterpret_cast<void**>(pResult), E_NOTIMPL);
}

HRESULT TExtensionFolder::GetDefaultColumn(DWORD, ULONG* pSort, ULONG* pDisplay) {
  if (pSort) *pSort = 0;
  if (pDisplay) *pDisplay = 0;
  return S_OK;
}

HRESULT TExtensionFolder::GetDefaultColumnState(UINT pColumn, SHCOLSTATEF* pState) {
  if (pColumn != 0 || !pState) return E_INVALIDARG;
  *pState = SHCOLSTATE_TYPE_STR | SHCOLSTATE_ONBYDEFAULT;
  return S_OK;
}

HRESULT TExtensionFolder::GetDetailsEx(PCUITEMID_CHILD, const SHCOLUMNID*, VARIANT*) {
  return E_NOTIMPL;
}

HRESULT TExtensionFolder::GetDetailsOf(PCUITEMID_CHILD pItem, UINT pColumn, SHELLDETAILS* pDetails) {
  NoteAsk(TMethod::Details);
  if (const auto deed = fContent.Script().DeedOf(TMethod::Details)) Do(*deed);
  if (pColumn != 0) return E_INVALIDARG;
  if (!pDetails) return E_POINTER;
  *pDetails = {LVCFMT_LEFT, 30, {}};
  if (pItem) return GetDisplayNameOf(pItem, SHGDN_INFOLDER, &pDetails->str);
  pDetails->str.uType = STRRET_WSTR;
  return SHStrDupW(L"Name", &pDetails->str.pOleStr);
}

HRESULT TExtensionFolder::MapColumnToSCID(UINT pColumn, SHCOLUMNID* pId) {
  if (pColumn != 0 || !pId) return E_INVALIDARG;
  // "System.ItemNameDisplay".
  *pId = {ParseGuid("{B725F130-47EF-101A-A5F1-02608C9EEBAC}"), 10};
  return S_OK;
}

} // namespace kiv::test
