#include <doubles/FakeShellItem.h>

#include <core/SpecialFolders.h>
#include <doubles/Crash.h>

#include <shlwapi.h>

#include <atomic>
#include <cstring>
#include <utility>

namespace kiv::test {

namespace {

// The platform's entries are plain functions: what they answer by stands here.
ScopedFakeShell::TAnswers gAnswers;
std::atomic<int> gCalls{0};

HRESULT Give(PIDLIST_ABSOLUTE found, PIDLIST_ABSOLUTE* list) {
  *list = found;
  return found ? S_OK : HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
}

HRESULT WINAPI CreateItem(PCIDLIST_ABSOLUTE, IShellFolder*, PCUITEMID_CHILD list, IShellItem** item) {
  ++gCalls;
  ComPtr<IShellItem> made = gAnswers.item ? gAnswers.item(list) : nullptr;
  *item = made.Detach();
  return *item ? S_OK : E_FAIL;
}

HRESULT WINAPI ParseName(PCWSTR path, IBindCtx*, PIDLIST_ABSOLUTE* list, SFGAOF, SFGAOF*) {
  ++gCalls;
  return Give(gAnswers.parse ? gAnswers.parse(path) : nullptr, list);
}

PIDLIST_ABSOLUTE WINAPI CreateFromPath(PCWSTR) {
  ++gCalls;
  return nullptr; // parsing follows
}

HRESULT WINAPI ListFromObject(IUnknown* object, PIDLIST_ABSOLUTE* list) {
  ++gCalls;
  return Give(gAnswers.list ? gAnswers.list(object) : nullptr, list);
}

BOOL WINAPI PathFromListEx(PCIDLIST_ABSOLUTE list, PWSTR buffer, DWORD size, GPFIDL_FLAGS) {
  ++gCalls;
  const std::wstring path = gAnswers.path ? gAnswers.path(list) : std::wstring();
  if (path.empty() || path.size() >= size) return FALSE;
  std::memcpy(buffer, path.c_str(), (path.size() + 1) * sizeof(wchar_t));
  return TRUE;
}

BOOL WINAPI PathFromList(PCIDLIST_ABSOLUTE, PWSTR) {
  ++gCalls;
  return FALSE;
}

} // namespace

HRESULT FakeShellItem::QueryInterface(REFIID pIid, void** pObject) {
  if (fScript.offersItem2 || pIid != IidOf<IShellItem2>()) return TInterfacedObject::QueryInterface(pIid, pObject);
  *pObject = nullptr;
  return E_NOINTERFACE;
}

void FakeShellItem::MaybeCrash() const {
  if (fScript.crashes) Crash();
}

HRESULT FakeShellItem::BindToHandler(IBindCtx* pContext, REFGUID pHandler, REFIID pIid, void** pObject) {
  *pObject = nullptr;
  return fScript.bind ? fScript.bind(pContext, pHandler, pIid, pObject) : E_NOTIMPL;
}

HRESULT FakeShellItem::GetParent(IShellItem** pParent) {
  *pParent = nullptr;
  return E_NOTIMPL;
}

HRESULT FakeShellItem::GetDisplayName(SIGDN pKind, LPWSTR* pName) {
  MaybeCrash();
  *pName = nullptr;
  const auto found = fScript.names.find(pKind);
  return found == fScript.names.end() ? E_INVALIDARG : SHStrDupW(found->second.c_str(), pName);
}

HRESULT FakeShellItem::GetAttributes(SFGAOF pMask, SFGAOF* pAttributes) {
  *pAttributes = fScript.attributes & pMask;
  return *pAttributes == pMask ? S_OK : S_FALSE;
}

HRESULT FakeShellItem::Compare(IShellItem* pOther, SICHINTF pHint, int* pOrder) {
  *pOrder = 0;
  return fScript.compare ? fScript.compare(pOther, pHint, pOrder) : E_NOTIMPL;
}

HRESULT FakeShellItem::Update(IBindCtx*) {
  MaybeCrash();
  return fScript.update ? fScript.update() : E_NOTIMPL;
}

ScopedFakeShell::ScopedFakeShell(TAnswers pAnswers) {
  gAnswers = std::move(pAnswers);
  gCalls = 0;
  SpecialFolders::Clear();
  fApi->wine_get_version = nullptr; // what Wine's shell can't is no matter here
  fApi->SHCreateShellItem = &CreateItem;
  fApi->SHParseDisplayName = &ParseName;
  fApi->ILCreateFromPathW = &CreateFromPath;
  fApi->SHGetIDListFromObject = &ListFromObject;
  fApi->SHGetPathFromIDListEx = &PathFromListEx;
  fApi->SHGetPathFromIDListW = &PathFromList;
}

ScopedFakeShell::~ScopedFakeShell() {
  SpecialFolders::Clear();
  gAnswers = {};
}

int ScopedFakeShell::Calls() noexcept {
  return gCalls;
}

PIDLIST_ABSOLUTE MakeUpList(int pItems) {
  constexpr std::size_t item_size = sizeof(USHORT) + sizeof(int);
  const std::size_t size = item_size * static_cast<std::size_t>(pItems) + sizeof(USHORT);
  auto* const list = static_cast<BYTE*>(CoTaskMemAlloc(size));
  std::memset(list, 0, size);
  for (int i = 0; i < pItems; ++i) {
    BYTE* const item = list + item_size * static_cast<std::size_t>(i);
    const auto cb = static_cast<USHORT>(item_size);
    const int number = i + 1;
    std::memcpy(item, &cb, sizeof(cb));
    std::memcpy(item + sizeof(cb), &number, sizeof(number));
  }
  return reinterpret_cast<PIDLIST_ABSOLUTE>(list);
}

} // namespace kiv::test
