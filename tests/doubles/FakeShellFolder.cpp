#include <doubles/FakeShellFolder.h>

#include <doubles/FakeItemId.h>
#include <doubles/FakeShellShared.h>

#include <shlwapi.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace kiv::test {

namespace {

constexpr CLSID FakeClass = ParseGuid("{6E0B8D34-43D5-4B4C-9E0E-35A3F1F2A7C1}");
// "System.Storage": FMTID_Storage.
constexpr GUID StorageProperties = ParseGuid("{B725F130-47EF-101A-A5F1-02608C9EEBAC}");
enum TStorageProperty : DWORD {
  PropertyName = 10,
  PropertySize = 12,
  PropertyWritten = 14,
  PropertyCreated,
  PropertyAccessed
};

const struct {
  const wchar_t* heading;
  DWORD property;
  SHCOLSTATEF state;
} Columns[] = {{L"Name", PropertyName, SHCOLSTATE_TYPE_STR | SHCOLSTATE_ONBYDEFAULT},
               {L"Size", PropertySize, SHCOLSTATE_TYPE_INT | SHCOLSTATE_ONBYDEFAULT},
               {L"Modified", PropertyWritten, SHCOLSTATE_TYPE_DATE | SHCOLSTATE_ONBYDEFAULT}};

HRESULT ToStrRet(const std::wstring& text, STRRET* result) {
  result->uType = STRRET_WSTR;
  return SHStrDupW(text.c_str(), &result->pOleStr);
}

DATE ToDate(TFileTime time) {
  constexpr double PerDay = 864e9;
  constexpr double From1601To1899 = 109'205;
  return static_cast<double>(time) / PerDay - From1601To1899;
}

SFGAOF AttributesOf(const TFolderObject& object, bool is_drive) {
  static constexpr std::pair<TObjectFlag, SFGAOF> Map[] = {{TObjectFlag::Folder, SFGAO_FOLDER | SFGAO_FILESYSANCESTOR},
                                                           {TObjectFlag::FileSystem, SFGAO_FILESYSTEM},
                                                           {TObjectFlag::Link, SFGAO_LINK},
                                                           {TObjectFlag::Stream, SFGAO_STREAM},
                                                           {TObjectFlag::Hidden, SFGAO_HIDDEN},
                                                           {TObjectFlag::System, SFGAO_SYSTEM},
                                                           {TObjectFlag::ReadOnly, SFGAO_READONLY},
                                                           {TObjectFlag::Compressed, SFGAO_COMPRESSED},
                                                           {TObjectFlag::Encrypted, SFGAO_ENCRYPTED},
                                                           {TObjectFlag::Slow, SFGAO_ISSLOW}};
  SFGAOF attributes = is_drive ? 0 : SFGAO_CANCOPY | SFGAO_CANMOVE | SFGAO_CANRENAME | SFGAO_CANDELETE;
  for (const auto& [flag, attribute] : Map) {
    if (object.flags.Contains(flag)) attributes |= attribute;
  }
  return attributes;
}

bool IsWanted(const TFolderObject& object, SHCONTF flags) {
  const bool folder = object.flags.Contains(TObjectFlag::Folder);
  const bool hidden = object.flags.Contains(TObjectFlag::Hidden);
  const bool super_hidden = hidden && object.flags.Contains(TObjectFlag::System);
  const auto asked = static_cast<DWORD>(flags);
  if ((asked & (folder ? SHCONTF_FOLDERS : SHCONTF_NONFOLDERS)) == 0) return false;
  if (super_hidden) return (asked & SHCONTF_INCLUDESUPERHIDDEN) != 0;
  return !hidden || (asked & SHCONTF_INCLUDEHIDDEN) != 0;
}

} // namespace

class FakeShellNamespace::TEnumerator final : public TCounted<IEnumIDList> {
public:
  TEnumerator(std::shared_ptr<TShared> pShared, TNodeId pFolder, std::vector<TFakeItem> pItems, std::size_t pAt = 0)
      : TCounted(std::move(pShared)), fFolder(pFolder), fItems(std::move(pItems)), fAt(pAt) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
    if (!object) return E_POINTER;
    *object = riid == IidOf<IUnknown>() || riid == IidOf<IEnumIDList>() ? this : nullptr;
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Next(ULONG pCount, PITEMID_CHILD* pItems, ULONG* pFetched) override {
    if (!pItems || (pCount != 1 && !pFetched)) return E_INVALIDARG;
    ULONG done = 0;
    if (pFetched) *pFetched = 0;
    for (; done < pCount; ++done) {
      pItems[done] = nullptr;
      const TShellAnswer answer = fShared->Meet(fFolder, TShellMethod::Next, fAt + 1);
      if (answer.kind == TShellFault::TKind::Crash) Crash();
      if (answer.given) return answer.result;
      if (fAt == fItems.size()) break;
      pItems[done] = reinterpret_cast<PITEMID_CHILD>(MakeItemIdList({fItems[fAt]}).Release());
      if (!answer.stays) ++fAt;
      if (pFetched) *pFetched = done + 1;
    }
    return done == pCount ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG pCount) override {
    const std::size_t left = fItems.size() - fAt;
    fAt += std::min<std::size_t>(pCount, left);
    return pCount <= left ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    fAt = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumIDList** pResult) override {
    if (!pResult) return E_POINTER;
    *pResult = new TEnumerator(fShared, fFolder, fItems, fAt);
    return S_OK;
  }

private:
  const TNodeId fFolder;
  const std::vector<TFakeItem> fItems;
  std::size_t fAt;
};

class FakeShellNamespace::TFolder final : public TCounted<IShellFolder2, IPersistFolder2> {
public:
  TFolder(std::shared_ptr<TShared> pShared, TNodeId pNode) : TCounted(std::move(pShared)), fNode(pNode) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;

  HRESULT STDMETHODCALLTYPE ParseDisplayName(HWND, IBindCtx*, LPWSTR pName, ULONG* pEaten, PIDLIST_RELATIVE* pResult,
                                             ULONG* pAttributes) override;
  HRESULT STDMETHODCALLTYPE EnumObjects(HWND, SHCONTF pFlags, IEnumIDList** pResult) override;
  HRESULT STDMETHODCALLTYPE BindToObject(PCUIDLIST_RELATIVE pList, IBindCtx*, REFIID riid, void** pResult) override;
  HRESULT STDMETHODCALLTYPE CompareIDs(LPARAM pColumn, PCUIDLIST_RELATIVE a, PCUIDLIST_RELATIVE b) override;
  HRESULT STDMETHODCALLTYPE GetAttributesOf(UINT pCount, PCUITEMID_CHILD_ARRAY pItems, SFGAOF* pInOut) override;
  HRESULT STDMETHODCALLTYPE GetDisplayNameOf(PCUITEMID_CHILD pItem, SHGDNF pFlags, STRRET* pName) override;
  HRESULT STDMETHODCALLTYPE SetNameOf(HWND, PCUITEMID_CHILD pItem, LPCWSTR pName, SHGDNF,
                                      PITEMID_CHILD* pResult) override;
  HRESULT STDMETHODCALLTYPE GetDetailsEx(PCUITEMID_CHILD pItem, const SHCOLUMNID* pColumn, VARIANT* pValue) override;
  HRESULT STDMETHODCALLTYPE GetDetailsOf(PCUITEMID_CHILD pItem, UINT pColumn, SHELLDETAILS* pDetails) override;
  HRESULT STDMETHODCALLTYPE GetCurFolder(PIDLIST_ABSOLUTE* pResult) override;

  HRESULT STDMETHODCALLTYPE GetDefaultColumnState(UINT pColumn, SHCOLSTATEF* pState) override {
    if (pColumn >= std::size(Columns)) return E_INVALIDARG;
    *pState = Columns[pColumn].state;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE MapColumnToSCID(UINT pColumn, SHCOLUMNID* pId) override {
    if (pColumn >= std::size(Columns)) return E_INVALIDARG;
    *pId = {StorageProperties, Columns[pColumn].property};
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetDefaultColumn(DWORD, ULONG* pSort, ULONG* pDisplay) override {
    *pSort = *pDisplay = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pId) override {
    *pId = FakeClass;
    return S_OK;
  }

  // What a plain folder may leave out.
  HRESULT STDMETHODCALLTYPE BindToStorage(PCUIDLIST_RELATIVE, IBindCtx*, REFIID, void** pResult) override {
    return Nothing(pResult);
  }
  HRESULT STDMETHODCALLTYPE CreateViewObject(HWND, REFIID, void** pResult) override { return Nothing(pResult); }
  HRESULT STDMETHODCALLTYPE GetUIObjectOf(HWND, UINT, PCUITEMID_CHILD_ARRAY, REFIID, UINT*, void** pResult) override {
    return Nothing(pResult);
  }
  HRESULT STDMETHODCALLTYPE GetDefaultSearchGUID(GUID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumSearches(IEnumExtraSearch** pResult) override {
    return Nothing(reinterpret_cast<void**>(pResult));
  }
  HRESULT STDMETHODCALLTYPE Initialize(PCIDLIST_ABSOLUTE) override { return S_OK; }

private:
  static HRESULT Nothing(void** pResult) {
    if (pResult) *pResult = nullptr;
    return E_NOTIMPL;
  }
  /// The one item of a child list, and the object behind it.
  HRESULT Ask(PCUITEMID_CHILD pItem, TFakeItem& pFound, TFolderObject* pObject) const;
  HRESULT MakeEnumerator(SHCONTF pFlags, IEnumIDList** pResult);
  HRESULT Bind(PCUIDLIST_RELATIVE pList, REFIID riid, void** pResult);
  HRESULT Attributes(UINT pCount, PCUITEMID_CHILD_ARRAY pItems, SFGAOF* pInOut);
  HRESULT Name(PCUITEMID_CHILD pItem, SHGDNF pFlags, STRRET* pName);
  std::wstring PathOfItem(const TFakeItem& pItem) const;

  const TNodeId fNode;
};

HRESULT FakeShellNamespace::TFolder::QueryInterface(REFIID riid, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  if (riid == IidOf<IUnknown>() || riid == IidOf<IShellFolder>()) {
    *object = static_cast<IShellFolder2*>(this);
  } else if (riid == IidOf<IShellFolder2>() && fShared->offersFolder2) {
    *object = static_cast<IShellFolder2*>(this);
  } else if (riid == IidOf<IPersist>() || riid == IidOf<IPersistFolder>() || riid == IidOf<IPersistFolder2>()) {
    *object = static_cast<IPersistFolder2*>(this);
  }
  if (!*object) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

// The methods that can crash are in two parts: when one crashes, it holds nothing that a destructor would have to free.

HRESULT FakeShellNamespace::TFolder::EnumObjects(HWND, SHCONTF pFlags, IEnumIDList** pResult) {
  if (!pResult) return E_POINTER;
  *pResult = nullptr;
  const TShellAnswer answer = fShared->Meet(fNode, TShellMethod::EnumObjects);
  if (answer.kind == TShellFault::TKind::Crash) Crash();
  return answer.given ? answer.result : MakeEnumerator(pFlags, pResult);
}

HRESULT FakeShellNamespace::TFolder::MakeEnumerator(SHCONTF pFlags, IEnumIDList** pResult) {
  std::vector<SimulatedFileSystem::TChild> children;
  if (const HRESULT hr = fShared->fileSystem.ChildrenOf(fNode, children); FAILED(hr)) return hr;
  std::vector<TFakeItem> items;
  for (const auto& child : children) {
    const auto object = fShared->fileSystem.MaybeObject(child.id);
    if (object && IsWanted(*object, pFlags)) items.push_back({child.id, child.name});
  }
  *pResult = new TEnumerator(fShared, fNode, std::move(items));
  return S_OK;
}

HRESULT FakeShellNamespace::TFolder::BindToObject(PCUIDLIST_RELATIVE pList, IBindCtx*, REFIID riid, void** pResult) {
  if (!pResult) return E_POINTER;
  *pResult = nullptr;
  const TShellAnswer answer = fShared->Meet(fNode, TShellMethod::BindToObject);
  if (answer.kind == TShellFault::TKind::Crash) Crash();
  return answer.given ? answer.result : Bind(pList, riid, pResult);
}

HRESULT FakeShellNamespace::TFolder::Bind(PCUIDLIST_RELATIVE pList, REFIID riid, void** pResult) {
  const auto items = MaybeItemsOf(pList);
  if (!items || items->empty()) return E_INVALIDARG;
  const auto object = fShared->fileSystem.MaybeObject(items->back().id);
  if (!object) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  if (!object->flags.Contains(TObjectFlag::Folder)) return E_NOINTERFACE;
  ComPtr<IShellFolder> folder;
  folder.Attach(new TFolder(fShared, items->back().id));
  return folder->QueryInterface(riid, pResult);
}

HRESULT FakeShellNamespace::TFolder::GetAttributesOf(UINT pCount, PCUITEMID_CHILD_ARRAY pItems, SFGAOF* pInOut) {
  if (!pInOut || (pCount != 0 && !pItems)) return E_INVALIDARG;
  const TShellAnswer answer = fShared->Meet(fNode, TShellMethod::GetAttributesOf);
  if (answer.kind == TShellFault::TKind::Crash) Crash();
  if (answer.given) {
    *pInOut = 0;
    return answer.result;
  }
  return Attributes(pCount, pItems, pInOut);
}

HRESULT FakeShellNamespace::TFolder::Attributes(UINT pCount, PCUITEMID_CHILD_ARRAY pItems, SFGAOF* pInOut) {
  SFGAOF common = *pInOut;
  *pInOut = 0;
  const bool drives = fNode == SimulatedFileSystem::ComputerId;
  if (pCount == 0) { // the folder itself
    const auto self = fShared->fileSystem.MaybeObject(fNode);
    if (!self) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    common &= AttributesOf(*self, drives);
  }
  for (UINT i = 0; i < pCount; ++i) {
    TFakeItem item;
    TFolderObject object;
    if (const HRESULT hr = Ask(pItems[i], item, &object); FAILED(hr)) return hr;
    SFGAOF attributes = AttributesOf(object, drives);
    if ((common & SFGAO_HASSUBFOLDER) && object.flags.Contains(TObjectFlag::Folder)) {
      std::vector<SimulatedFileSystem::TChild> children;
      fShared->fileSystem.ChildrenOf(item.id, children);
      for (const auto& child : children) {
        const auto below = fShared->fileSystem.MaybeObject(child.id);
        if (below && below->flags.Contains(TObjectFlag::Folder)) attributes |= SFGAO_HASSUBFOLDER;
      }
    }
    common &= attributes;
  }
  *pInOut = common;
  return S_OK;
}

HRESULT FakeShellNamespace::TFolder::GetDisplayNameOf(PCUITEMID_CHILD pItem, SHGDNF pFlags, STRRET* pName) {
  if (!pName) return E_POINTER;
  pName->uType = STRRET_CSTR;
  pName->cStr[0] = 0;
  const TShellAnswer answer = fShared->Meet(fNode, TShellMethod::GetDisplayNameOf);
  if (answer.kind == TShellFault::TKind::Crash) Crash();
  return answer.given ? answer.result : Name(pItem, pFlags, pName);
}

HRESULT FakeShellNamespace::TFolder::Name(PCUITEMID_CHILD pItem, SHGDNF pFlags, STRRET* pName) {
  TFakeItem item;
  if (const HRESULT hr = Ask(pItem, item, nullptr); FAILED(hr)) return hr;
  if (pFlags & SHGDN_FORPARSING) return ToStrRet(pFlags & SHGDN_INFOLDER ? item.name : PathOfItem(item), pName);
  {
    const std::lock_guard guard(fShared->lock);
    const auto scripted = fShared->displayNames.find(item.id);
    if (scripted != fShared->displayNames.end() && !(pFlags & SHGDN_FOREDITING)) item.name = scripted->second;
  }
  return ToStrRet(item.name, pName);
}

HRESULT FakeShellNamespace::TFolder::SetNameOf(HWND, PCUITEMID_CHILD pItem, LPCWSTR pName, SHGDNF,
                                               PITEMID_CHILD* pResult) {
  if (pResult) *pResult = nullptr;
  if (!pName) return E_INVALIDARG;
  TFakeItem item;
  TFolderObject object;
  if (const HRESULT hr = Ask(pItem, item, &object); FAILED(hr)) return hr;
  const auto path = fShared->fileSystem.MaybePath(item.id);
  if (!path) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  const HRESULT hr = fShared->fileSystem.Rename(*path, pName);
  if (SUCCEEDED(hr) && pResult) {
    *pResult = reinterpret_cast<PITEMID_CHILD>(MakeItemIdList({{item.id, pName}}).Release());
  }
  return hr;
}

HRESULT FakeShellNamespace::TFolder::ParseDisplayName(HWND, IBindCtx*, LPWSTR pName, ULONG* pEaten,
                                                      PIDLIST_RELATIVE* pResult, ULONG* pAttributes) {
  if (!pResult || !pName) return E_INVALIDARG;
  *pResult = nullptr;
  const auto& fs = fShared->fileSystem;
  const auto self = fs.MaybePath(fNode);
  if (!self) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  const std::wstring path = fNode == SimulatedFileSystem::ComputerId ? pName : fs.Combine(*self, pName);
  TFolderObject object;
  if (const HRESULT hr = fs.Find(path, object); FAILED(hr)) return hr;
  auto items = fShared->ItemsTo(path);
  const std::size_t above = fShared->ItemsTo(*self).size();
  if (items.size() <= above) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  items.erase(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(above));
  if (pAttributes) *pAttributes &= AttributesOf(object, above == 0 && items.size() == 1);
  if (pEaten) *pEaten = static_cast<ULONG>(wcslen(pName));
  *pResult = MakeItemIdList(items).Release();
  return *pResult ? S_OK : E_OUTOFMEMORY;
}

HRESULT FakeShellNamespace::TFolder::CompareIDs(LPARAM pColumn, PCUIDLIST_RELATIVE a, PCUIDLIST_RELATIVE b) {
  const auto left = MaybeItemsOf(a);
  const auto right = MaybeItemsOf(b);
  if (!left || !right) return E_INVALIDARG;
  const auto answer = [](int order) { return MAKE_HRESULT(SEVERITY_SUCCESS, 0, static_cast<USHORT>(order)); };
  for (std::size_t i = 0; i < std::min(left->size(), right->size()); ++i) {
    const TFakeItem& one = (*left)[i];
    const TFakeItem& other = (*right)[i];
    if (const auto x = fShared->fileSystem.MaybeObject(one.id), y = fShared->fileSystem.MaybeObject(other.id); x && y) {
      const auto column = static_cast<DWORD>(pColumn & SHCIDS_COLUMNMASK);
      if (column == 1 && x->size != y->size) return answer(x->size < y->size ? -1 : 1);
      if (column == 2 && x->changed != y->changed) return answer(x->changed < y->changed ? -1 : 1);
    }
    if (const int order = FoldName(one.name).compare(FoldName(other.name))) return answer(order < 0 ? -1 : 1);
  }
  if (left->size() == right->size()) return answer(0);
  return answer(left->size() < right->size() ? -1 : 1);
}

HRESULT FakeShellNamespace::TFolder::GetDetailsEx(PCUITEMID_CHILD pItem, const SHCOLUMNID* pColumn, VARIANT* pValue) {
  if (!pColumn || !pValue) return E_INVALIDARG;
  VariantInit(pValue);
  TFakeItem item;
  TFolderObject object;
  if (const HRESULT hr = Ask(pItem, item, &object); FAILED(hr)) return hr;
  if (!(pColumn->fmtid == StorageProperties)) return E_FAIL;
  const auto date = [pValue](TFileTime time) {
    pValue->vt = VT_DATE;
    pValue->date = ToDate(time);
    return S_OK;
  };
  switch (pColumn->pid) {
  case PropertyName:
    pValue->vt = VT_BSTR;
    pValue->bstrVal = SysAllocStringLen(item.name.data(), static_cast<UINT>(item.name.size()));
    return S_OK;
  case PropertySize:
    if (object.size == TFolderObject::UnknownSize) return S_OK; // empty
    pValue->vt = VT_UI8;
    pValue->ullVal = static_cast<ULONGLONG>(object.size);
    return S_OK;
  case PropertyWritten:
    return date(object.changed);
  case PropertyCreated:
    return date(object.created);
  case PropertyAccessed:
    return date(object.accessed);
  default:
    return E_FAIL;
  }
}

HRESULT FakeShellNamespace::TFolder::GetDetailsOf(PCUITEMID_CHILD pItem, UINT pColumn, SHELLDETAILS* pDetails) {
  if (!pDetails) return E_POINTER;
  if (pColumn >= std::size(Columns)) return E_INVALIDARG;
  pDetails->fmt = 0;
  pDetails->cxChar = 20;
  if (!pItem) return ToStrRet(Columns[pColumn].heading, &pDetails->str);
  TFakeItem item;
  TFolderObject object;
  if (const HRESULT hr = Ask(pItem, item, &object); FAILED(hr)) return hr;
  std::wstring text = item.name;
  if (pColumn == 1) text = object.size == TFolderObject::UnknownSize ? L"" : std::to_wstring(object.size);
  if (pColumn == 2) text = std::to_wstring(object.changed);
  return ToStrRet(text, &pDetails->str);
}

HRESULT FakeShellNamespace::TFolder::GetCurFolder(PIDLIST_ABSOLUTE* pResult) {
  if (!pResult) return E_POINTER;
  *pResult = nullptr;
  const auto path = fShared->fileSystem.MaybePath(fNode);
  if (!path) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  *pResult = reinterpret_cast<PIDLIST_ABSOLUTE>(MakeItemIdList(fShared->ItemsTo(*path)).Release());
  return *pResult ? S_OK : E_OUTOFMEMORY;
}

HRESULT FakeShellNamespace::TFolder::Ask(PCUITEMID_CHILD pItem, TFakeItem& pFound, TFolderObject* pObject) const {
  const auto items = MaybeItemsOf(pItem);
  if (!items || items->size() != 1) return E_INVALIDARG;
  pFound = items->front();
  if (!pObject) return S_OK;
  const auto object = fShared->fileSystem.MaybeObject(pFound.id);
  if (!object) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  *pObject = *object;
  return S_OK;
}

std::wstring FakeShellNamespace::TFolder::PathOfItem(const TFakeItem& pItem) const {
  return fShared->fileSystem.Combine(fShared->fileSystem.MaybePath(fNode).value_or(L""), pItem.name);
}

FakeShellNamespace::FakeShellNamespace(SimulatedFileSystem& pFileSystem)
    : fShared(std::make_shared<TShared>(pFileSystem)) {}

FakeShellNamespace::~FakeShellNamespace() = default;

ComPtr<IShellFolder> FakeShellNamespace::Folder(const std::wstring& pPath) {
  ComPtr<IShellFolder> folder;
  TNodeId id = 0;
  TFolderObject object;
  if (FAILED(fShared->fileSystem.IdOf(pPath, id)) || FAILED(fShared->fileSystem.Find(pPath, object))) return folder;
  if (object.flags.Contains(TObjectFlag::Folder)) folder.Attach(new TFolder(fShared, id));
  return folder;
}

TUniqueItemIdList FakeShellNamespace::ItemIdList(const std::wstring& pPath, bool pLastOnly) const {
  auto items = fShared->ItemsTo(pPath);
  if (items.empty() && !pPath.empty()) return {};
  if (pLastOnly && items.size() > 1) items.erase(items.begin(), items.end() - 1);
  return MakeItemIdList(items);
}

std::optional<TNodeId> FakeShellNamespace::MaybeNodeOf(PCUIDLIST_RELATIVE pList) {
  const auto items = MaybeItemsOf(pList);
  return items && !items->empty() ? std::optional(items->back().id) : std::nullopt;
}

void FakeShellNamespace::AddFault(const std::wstring& pFolder, TShellFault pFault) {
  TNodeId id = 0;
  if (FAILED(fShared->fileSystem.IdOf(pFolder, id)))
    throw std::invalid_argument("A fault for a folder that isn't there.");
  const std::lock_guard guard(fShared->lock);
  fShared->faults.emplace(id, std::move(pFault));
}

void FakeShellNamespace::ClearFaults() {
  const std::lock_guard guard(fShared->lock);
  fShared->faults.clear();
  fShared->calls.clear();
}

void FakeShellNamespace::SetDisplayName(const std::wstring& pPath, std::wstring pName) {
  TNodeId id = 0;
  if (FAILED(fShared->fileSystem.IdOf(pPath, id)))
    throw std::invalid_argument("A name for an object that isn't there.");
  const std::lock_guard guard(fShared->lock);
  fShared->displayNames[id] = std::move(pName);
}

void FakeShellNamespace::SetOffersFolder2(bool pOffers) {
  fShared->offersFolder2 = pOffers;
}

long FakeShellNamespace::LiveObjects() const {
  return fShared->liveObjects;
}

long FakeShellNamespace::References() const {
  return fShared->references;
}

} // namespace kiv::test
