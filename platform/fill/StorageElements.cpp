#include <platform/fill/StorageElements.h>

#include <platform/ErrorMode.h>
#include <platform/Handles.h>
#include <platform/InterfacedObject.h>
#include <platform/fill/StorageError.h>

#include <objbase.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace kiv {

namespace {

// Of find data or of a file's attribute data, which have these fields in common.
template <typename T>
TStorageElement ElementOf(const T& data, std::wstring name) {
  return {.name = std::move(name),
          .attributes = data.dwFileAttributes,
          .size = static_cast<std::uint64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow,
          .written = data.ftLastWriteTime,
          .created = data.ftCreationTime,
          .accessed = data.ftLastAccessTime};
}

class TElementEnumerator final : public TInterfacedObject<IEnumSTATSTG> {
public:
  explicit TElementEnumerator(std::shared_ptr<const TStorageElements> pElements, std::size_t pNext = 0)
      : fElements(std::move(pElements)), fNext(pNext) {}

  HRESULT STDMETHODCALLTYPE Next(ULONG pCount, STATSTG* pStats, ULONG* pFetched) override {
    if (pFetched) *pFetched = 0;
    if (!pStats || (!pFetched && pCount != 1)) return STG_E_INVALIDPOINTER;
    const std::size_t count = std::min<std::size_t>(pCount, fElements->size() - fNext);
    for (std::size_t i = 0; i < count; ++i) {
      const HRESULT hr = FillStat((*fElements)[fNext + i], STATFLAG_DEFAULT, pStats[i]);
      if (SUCCEEDED(hr)) continue;
      while (i-- > 0) CoTaskMemFree(pStats[i].pwcsName);
      return hr;
    }
    fNext += count;
    if (pFetched) *pFetched = static_cast<ULONG>(count);
    return count == pCount ? S_OK : S_FALSE;
  }

  HRESULT STDMETHODCALLTYPE Skip(ULONG pCount) override {
    const std::size_t count = std::min<std::size_t>(pCount, fElements->size() - fNext);
    fNext += count;
    return count == pCount ? S_OK : S_FALSE;
  }

  HRESULT STDMETHODCALLTYPE Reset() override {
    fNext = 0;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Clone(IEnumSTATSTG** pEnumerator) override {
    if (!pEnumerator) return STG_E_INVALIDPOINTER;
    *pEnumerator = Make<TElementEnumerator>(fElements, fNext).Detach();
    return S_OK;
  }

private:
  std::shared_ptr<const TStorageElements> fElements;
  std::size_t fNext;
};

HRESULT RemoveOne(const std::wstring& path, DWORD attributes) {
  // What is read-only can't be removed; that it is wanted gone has been said.
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    SetFileAttributesW(path.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
  }
  const bool is_folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (is_folder ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str())) return S_OK;
  const DWORD error = GetLastError();
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) SetFileAttributesW(path.c_str(), attributes);
  return StorageError(error);
}

} // namespace

HRESULT ReadElements(const std::wstring& pFolder, TStorageElements& pElements) {
  pElements.clear();
  const ScopedErrorMode mode;
  WIN32_FIND_DATAW data;
  const TUniqueFind find(FindFirstFileExW(PathInFolder(pFolder, L"*").c_str(), FindExInfoBasic, &data,
                                          FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
  // The empty root of a drive has no entries at all.
  if (!find) return GetLastError() == ERROR_FILE_NOT_FOUND ? S_OK : LastStorageError();
  do {
    const std::wstring_view name = data.cFileName;
    if (name != L"." && name != L"..") pElements.push_back(ElementOf(data, std::wstring(name)));
  } while (FindNextFileW(find.Get(), &data));
  return GetLastError() == ERROR_NO_MORE_FILES ? S_OK : LastStorageError();
}

HRESULT ReadElement(const std::wstring& pPath, TStorageElement& pElement) {
  const ScopedErrorMode mode;
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!GetFileAttributesExW(pPath.c_str(), GetFileExInfoStandard, &data)) return LastStorageError();
  pElement = ElementOf(data, NameOfPath(pPath));
  return S_OK;
}

HRESULT FillStat(const TStorageElement& pElement, DWORD pFlags, STATSTG& pStat) {
  pStat = {};
  if ((pFlags & STATFLAG_NONAME) == 0) {
    const std::size_t size = (pElement.name.size() + 1) * sizeof(wchar_t);
    pStat.pwcsName = static_cast<wchar_t*>(CoTaskMemAlloc(size));
    if (!pStat.pwcsName) return STG_E_INSUFFICIENTMEMORY;
    std::memcpy(pStat.pwcsName, pElement.name.c_str(), size);
  }
  pStat.type = pElement.IsStorage() ? STGTY_STORAGE : STGTY_STREAM;
  pStat.cbSize.QuadPart = pElement.IsStorage() ? 0 : pElement.size;
  pStat.mtime = pElement.written;
  pStat.ctime = pElement.created;
  pStat.atime = pElement.accessed;
  return S_OK;
}

ComPtr<IEnumSTATSTG> EnumerateElements(std::shared_ptr<const TStorageElements> pElements) {
  return Make<TElementEnumerator>(std::move(pElements));
}

HRESULT DestroyFileOrFolder(const std::wstring& pPath) {
  const ScopedErrorMode mode;
  TStorageElement element;
  HRESULT hr = ReadElement(pPath, element);
  if (FAILED(hr)) return hr;
  if (!element.IsStorage() || element.IsLinkToStorage()) return RemoveOne(pPath, element.attributes);
  // Without recursion: a path of any length nests deeper than a stack.
  std::vector<std::pair<std::wstring, DWORD>> folders{{pPath, element.attributes}};
  for (std::size_t i = 0; i < folders.size() && SUCCEEDED(hr); ++i) {
    const std::wstring folder = folders[i].first;
    TStorageElements elements;
    hr = ReadElements(folder, elements);
    for (const TStorageElement& below : elements) {
      const std::wstring path = PathInFolder(folder, below.name);
      if (below.IsStorage() && !below.IsLinkToStorage()) {
        folders.emplace_back(path, below.attributes);
      } else if (SUCCEEDED(hr)) {
        hr = RemoveOne(path, below.attributes);
      }
    }
  }
  for (auto at = folders.rbegin(); at != folders.rend() && SUCCEEDED(hr); ++at) hr = RemoveOne(at->first, at->second);
  return hr;
}

} // namespace kiv
