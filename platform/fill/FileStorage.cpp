#include <platform/fill/FileStorage.h>

#include <platform/ErrorMode.h>
#include <platform/Handles.h>
#include <platform/InterfacedObject.h>
#include <platform/fill/ElementName.h>
#include <platform/fill/FileStream.h>
#include <platform/fill/StorageElements.h>
#include <platform/fill/StorageError.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace kiv {

namespace {

/// How one storage of this class knows another: between them files are copied and moved by the file system.
struct IFileSystemStorage : IUnknown {
  virtual const std::wstring& STDMETHODCALLTYPE StoragePath() const = 0;
};

} // namespace

KIV_INTERFACE_ID(IFileSystemStorage, "{32F37DC2-1919-4A50-A8FC-BA31A1DC05A1}");

namespace {

bool SameUpToCase(std::wstring_view a, std::wstring_view b) {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
         CSTR_EQUAL;
}

// The folder behind a storage of this class; empty for another's.
std::wstring PathOfStorage(IStorage* storage) {
  const auto own = ComPtr<IStorage>(storage).MaybeAs<IFileSystemStorage>();
  return own ? own->StoragePath() : std::wstring();
}

bool IsInOrSame(const std::wstring& path, const std::wstring& folder) {
  if (path.size() < folder.size() || !SameUpToCase(std::wstring_view(path).substr(0, folder.size()), folder)) {
    return false;
  }
  return path.size() == folder.size() || folder.back() == L'\\' || path[folder.size()] == L'\\';
}

// The same by whatever road each is reached: a copy into itself would find its own work again and again.
bool ReallyIsInOrSame(const std::wstring& path, const std::wstring& folder) {
  return !path.empty() && IsInOrSame(ResolvedPath(path), ResolvedPath(folder));
}

bool IsListed(const std::wstring& name, SNB names) {
  for (; names && *names; ++names) {
    if (SameUpToCase(name, *names)) return true;
  }
  return false;
}

constexpr DWORD NewElement = STGM_WRITE | STGM_SHARE_EXCLUSIVE;

// Copies a file into a storage of any class.
HRESULT CopyFileTo(const std::wstring& path, IStorage* target, const std::wstring& name, bool replace) {
  if (const std::wstring folder = PathOfStorage(target); !folder.empty()) {
    const BOOL done = CopyFileW(path.c_str(), PathInFolder(folder, name).c_str(), replace ? FALSE : TRUE);
    return done ? S_OK : LastStorageError();
  }
  ComPtr<IStream> from;
  HRESULT hr = OpenFileStream(path, STGM_READ | STGM_SHARE_DENY_NONE, OPEN_EXISTING, from);
  if (FAILED(hr)) return hr;
  ComPtr<IStream> to;
  hr = target->CreateStream(name.c_str(), NewElement | (replace ? STGM_CREATE : 0U), 0, 0, &to);
  if (FAILED(hr)) return hr;
  ULARGE_INTEGER all;
  all.QuadPart = std::numeric_limits<ULONGLONG>::max();
  hr = from->CopyTo(to.Get(), all, nullptr, nullptr);
  return FAILED(hr) ? hr : to->Commit(STGC_DEFAULT);
}

HRESULT MakeStorageIn(IStorage* target, const std::wstring& name, bool may_exist, ComPtr<IStorage>& storage) {
  constexpr DWORD mode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
  const HRESULT hr = target->CreateStorage(name.c_str(), mode, 0, 0, &storage);
  if (hr != STG_E_FILEALREADYEXISTS || !may_exist) return hr;
  return target->OpenStorage(name.c_str(), nullptr, mode, nullptr, 0, &storage);
}

struct TCopyFilter {
  bool streams = true;
  bool storages = true;
  SNB names = nullptr; // left out

  bool Takes(const TStorageElement& element) const {
    if (IsListed(element.name, names)) return false;
    return element.IsStorage() ? storages : streams;
  }
};

// The content of a folder, at any depth; the filter counts for the first level. S_FALSE if links were left out.
HRESULT CopyContent(const std::wstring& folder, IStorage* target, TCopyFilter filter) {
  std::vector<std::pair<std::wstring, ComPtr<IStorage>>> work{{folder, target}};
  HRESULT result = S_OK;
  while (!work.empty()) {
    const auto [path, storage] = std::move(work.back());
    work.pop_back();
    TStorageElements elements;
    HRESULT hr = ReadElements(path, elements);
    for (const TStorageElement& element : elements) {
      if (FAILED(hr)) break;
      if (!filter.Takes(element)) continue;
      if (element.IsLinkToStorage()) {
        result = S_FALSE;
        continue;
      }
      const std::wstring from = PathInFolder(path, element.name);
      if (!element.IsStorage()) {
        hr = CopyFileTo(from, storage.Get(), element.name, true);
        continue;
      }
      ComPtr<IStorage> below;
      hr = MakeStorageIn(storage.Get(), element.name, true, below);
      if (SUCCEEDED(hr)) work.emplace_back(from, std::move(below));
    }
    if (FAILED(hr)) return hr;
    filter = {};
  }
  return result;
}

class TFileStorage final : public TInterfacedObject<IStorage, IFileSystemStorage> {
public:
  explicit TFileStorage(std::wstring pPath) : fPath(std::move(pPath)) {}

  const std::wstring& STDMETHODCALLTYPE StoragePath() const override { return fPath; }

  HRESULT STDMETHODCALLTYPE CreateStream(const wchar_t* pName, DWORD pMode, DWORD, DWORD, IStream** pStream) override;
  HRESULT STDMETHODCALLTYPE OpenStream(const wchar_t* pName, void*, DWORD pMode, DWORD, IStream** pStream) override;
  HRESULT STDMETHODCALLTYPE CreateStorage(const wchar_t* pName, DWORD pMode, DWORD, DWORD,
                                          IStorage** pStorage) override;
  HRESULT STDMETHODCALLTYPE OpenStorage(const wchar_t* pName, IStorage* pPriority, DWORD pMode, SNB pExclude, DWORD,
                                        IStorage** pStorage) override;
  HRESULT STDMETHODCALLTYPE CopyTo(DWORD pCount, const IID* pExclude, SNB pNames, IStorage* pTarget) override;
  HRESULT STDMETHODCALLTYPE MoveElementTo(const wchar_t* pName, IStorage* pTarget, const wchar_t* pNewName,
                                          DWORD pFlags) override;
  HRESULT STDMETHODCALLTYPE EnumElements(DWORD, void*, DWORD, IEnumSTATSTG** pEnumerator) override;
  HRESULT STDMETHODCALLTYPE DestroyElement(const wchar_t* pName) override;
  HRESULT STDMETHODCALLTYPE RenameElement(const wchar_t* pOldName, const wchar_t* pNewName) override;
  HRESULT STDMETHODCALLTYPE SetElementTimes(const wchar_t* pName, const FILETIME* pCreated, const FILETIME* pAccessed,
                                            const FILETIME* pWritten) override;
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* pStat, DWORD pFlags) override;

  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Revert() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetClass(REFCLSID) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetStateBits(DWORD, DWORD) override { return E_NOTIMPL; }

private:
  HRESULT CopyElement(const std::wstring& pName, IStorage* pTarget, const std::wstring& pNewName) const;

  const std::wstring fPath;
};

HRESULT CheckName(const wchar_t* name, bool is_new) {
  if (!name) return STG_E_INVALIDPOINTER;
  return (is_new ? IsNewElementName(name) : IsElementName(name)) ? S_OK : STG_E_INVALIDNAME;
}

HRESULT TFileStorage::CreateStream(const wchar_t* pName, DWORD pMode, DWORD, DWORD, IStream** pStream) {
  if (!pStream) return STG_E_INVALIDPOINTER;
  *pStream = nullptr;
  if (const HRESULT hr = CheckName(pName, true); FAILED(hr)) return hr;
  ComPtr<IStream> stream;
  const DWORD disposition = (pMode & STGM_CREATE) != 0 ? CREATE_ALWAYS : CREATE_NEW;
  const HRESULT hr = OpenFileStream(PathInFolder(fPath, pName), pMode, disposition, stream);
  *pStream = stream.Detach();
  return hr;
}

HRESULT TFileStorage::OpenStream(const wchar_t* pName, void*, DWORD pMode, DWORD, IStream** pStream) {
  if (!pStream) return STG_E_INVALIDPOINTER;
  *pStream = nullptr;
  if (const HRESULT hr = CheckName(pName, false); FAILED(hr)) return hr;
  const std::wstring path = PathInFolder(fPath, pName);
  TStorageElement element;
  HRESULT hr = ReadElement(path, element);
  if (SUCCEEDED(hr) && element.IsStorage()) hr = STG_E_FILENOTFOUND;
  if (FAILED(hr)) return hr;
  ComPtr<IStream> stream;
  hr = OpenFileStream(path, pMode, OPEN_EXISTING, stream);
  *pStream = stream.Detach();
  return hr;
}

HRESULT TFileStorage::CreateStorage(const wchar_t* pName, DWORD, DWORD, DWORD, IStorage** pStorage) {
  if (!pStorage) return STG_E_INVALIDPOINTER;
  *pStorage = nullptr;
  if (const HRESULT hr = CheckName(pName, true); FAILED(hr)) return hr;
  const ScopedErrorMode mode;
  std::wstring path = PathInFolder(fPath, pName);
  if (!CreateDirectoryW(path.c_str(), nullptr)) return LastStorageError();
  *pStorage = Make<TFileStorage>(std::move(path)).Detach();
  return S_OK;
}

HRESULT TFileStorage::OpenStorage(const wchar_t* pName, IStorage* pPriority, DWORD, SNB pExclude, DWORD,
                                  IStorage** pStorage) {
  if (!pStorage) return STG_E_INVALIDPOINTER;
  *pStorage = nullptr;
  if (pPriority || pExclude) return STG_E_INVALIDPARAMETER;
  if (const HRESULT hr = CheckName(pName, false); FAILED(hr)) return hr;
  std::wstring path = PathInFolder(fPath, pName);
  TStorageElement element;
  const HRESULT hr = ReadElement(path, element);
  if (FAILED(hr)) return hr;
  if (!element.IsStorage()) return STG_E_FILENOTFOUND;
  *pStorage = Make<TFileStorage>(std::move(path)).Detach();
  return S_OK;
}

HRESULT TFileStorage::CopyTo(DWORD pCount, const IID* pExclude, SNB pNames, IStorage* pTarget) {
  if (!pTarget || (pCount > 0 && !pExclude)) return STG_E_INVALIDPOINTER;
  if (ReallyIsInOrSame(PathOfStorage(pTarget), fPath)) return STG_E_ACCESSDENIED;
  TCopyFilter filter;
  for (DWORD i = 0; i < pCount; ++i) {
    if (pExclude[i] == IID_IStream) filter.streams = false;
    if (pExclude[i] == IID_IStorage) filter.storages = false;
  }
  filter.names = pNames;
  const ScopedErrorMode mode;
  const HRESULT hr = CopyContent(fPath, pTarget, filter);
  return FAILED(hr) ? hr : S_OK;
}

HRESULT TFileStorage::CopyElement(const std::wstring& pName, IStorage* pTarget, const std::wstring& pNewName) const {
  const std::wstring path = PathInFolder(fPath, pName);
  TStorageElement element;
  HRESULT hr = ReadElement(path, element);
  if (FAILED(hr)) return hr;
  if (!element.IsStorage()) return CopyFileTo(path, pTarget, pNewName, false);
  if (ReallyIsInOrSame(PathOfStorage(pTarget), path)) return STG_E_ACCESSDENIED;
  ComPtr<IStorage> copy;
  hr = MakeStorageIn(pTarget, pNewName, false, copy);
  return FAILED(hr) ? hr : CopyContent(path, copy.Get(), {});
}

HRESULT TFileStorage::MoveElementTo(const wchar_t* pName, IStorage* pTarget, const wchar_t* pNewName, DWORD pFlags) {
  if (!pTarget) return STG_E_INVALIDPOINTER;
  if (pFlags != STGMOVE_MOVE && pFlags != STGMOVE_COPY) return STG_E_INVALIDFLAG;
  const wchar_t* const new_name = pNewName ? pNewName : pName;
  if (const HRESULT hr = CheckName(pName, false); FAILED(hr)) return hr;
  if (const HRESULT hr = CheckName(new_name, true); FAILED(hr)) return hr;
  const ScopedErrorMode mode;
  const std::wstring path = PathInFolder(fPath, pName);
  const std::wstring folder = PathOfStorage(pTarget);
  if (pFlags == STGMOVE_MOVE && !folder.empty()) {
    if (IsInOrSame(folder, path)) return STG_E_ACCESSDENIED;
    if (MoveFileExW(path.c_str(), PathInFolder(folder, new_name).c_str(), 0)) return S_OK;
    if (GetLastError() != ERROR_NOT_SAME_DEVICE) return LastStorageError();
  }
  TStorageElement element;
  HRESULT hr = ReadElement(path, element);
  // A link's target isn't the link's to give away.
  if (SUCCEEDED(hr) && element.IsLinkToStorage()) hr = STG_E_ACCESSDENIED;
  if (SUCCEEDED(hr)) hr = CopyElement(pName, pTarget, new_name);
  if (FAILED(hr)) return hr;
  if (pFlags == STGMOVE_COPY) return S_OK;
  // What wasn't copied must not be lost.
  return hr == S_OK ? DestroyFileOrFolder(path) : STG_E_ACCESSDENIED;
}

HRESULT TFileStorage::EnumElements(DWORD, void*, DWORD, IEnumSTATSTG** pEnumerator) {
  if (!pEnumerator) return STG_E_INVALIDPOINTER;
  *pEnumerator = nullptr;
  auto elements = std::make_shared<TStorageElements>();
  const HRESULT hr = ReadElements(fPath, *elements);
  if (SUCCEEDED(hr)) *pEnumerator = EnumerateElements(std::move(elements)).Detach();
  return hr;
}

HRESULT TFileStorage::DestroyElement(const wchar_t* pName) {
  if (const HRESULT hr = CheckName(pName, false); FAILED(hr)) return hr;
  return DestroyFileOrFolder(PathInFolder(fPath, pName));
}

HRESULT TFileStorage::RenameElement(const wchar_t* pOldName, const wchar_t* pNewName) {
  if (const HRESULT hr = CheckName(pOldName, false); FAILED(hr)) return hr;
  if (const HRESULT hr = CheckName(pNewName, true); FAILED(hr)) return hr;
  const ScopedErrorMode mode;
  const BOOL done = MoveFileExW(PathInFolder(fPath, pOldName).c_str(), PathInFolder(fPath, pNewName).c_str(), 0);
  return done ? S_OK : LastStorageError();
}

HRESULT TFileStorage::SetElementTimes(const wchar_t* pName, const FILETIME* pCreated, const FILETIME* pAccessed,
                                      const FILETIME* pWritten) {
  // Without a name it is the storage itself.
  if (pName) {
    if (const HRESULT hr = CheckName(pName, false); FAILED(hr)) return hr;
  }
  const ScopedErrorMode mode;
  const std::wstring path = pName ? PathInFolder(fPath, pName) : fPath;
  const TUniqueHandle file(CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  return file && SetFileTime(file.Get(), pCreated, pAccessed, pWritten) ? S_OK : LastStorageError();
}

HRESULT TFileStorage::Stat(STATSTG* pStat, DWORD pFlags) {
  if (!pStat) return STG_E_INVALIDPOINTER;
  *pStat = {};
  TStorageElement element;
  const HRESULT hr = ReadElement(fPath, element);
  return FAILED(hr) ? hr : FillStat(element, pFlags, *pStat);
}

} // namespace

HRESULT CreateFileStorage(const std::wstring& pFolder, ComPtr<IStorage>& pStorage) {
  pStorage.Reset();
  std::wstring path = ToStoragePath(pFolder);
  if (path.empty()) return STG_E_INVALIDNAME;
  TStorageElement element;
  const HRESULT hr = ReadElement(path, element);
  if (hr == STG_E_FILENOTFOUND || (SUCCEEDED(hr) && !element.IsStorage())) return STG_E_PATHNOTFOUND;
  if (FAILED(hr)) return hr;
  pStorage = Make<TFileStorage>(std::move(path));
  return S_OK;
}

} // namespace kiv
