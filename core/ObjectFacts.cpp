#include <core/ObjectFacts.h>

#include <core/NameInFolder.h>
#include <core/PathUtils.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>

#include <propidl.h>

#include <utility>

namespace kiv {

namespace {

// The storage property set ("PSGUID_STORAGE") and what is asked of it.
constexpr GUID StorageSet = {0xB725F130, 0x47EF, 0x101A, {0xA5, 0xF1, 0x02, 0x60, 0x8C, 0x9E, 0xEB, 0xAC}};
constexpr SHCOLUMNID SizeColumn = {StorageSet, 12};
constexpr SHCOLUMNID ChangedColumn = {StorageSet, 14};
constexpr SHCOLUMNID CreatedColumn = {StorageSet, 15};
constexpr SHCOLUMNID AccessedColumn = {StorageSet, 16};

constexpr struct {
  SFGAOF bit;
  TObjectFlag flag;
} ShellFlags[] = {
    {SFGAO_FOLDER, TObjectFlag::Folder},       {SFGAO_FILESYSTEM, TObjectFlag::FileSystem},
    {SFGAO_LINK, TObjectFlag::Link},           {SFGAO_STREAM, TObjectFlag::Stream},
    {SFGAO_HIDDEN, TObjectFlag::Hidden},       {SFGAO_SYSTEM, TObjectFlag::System},
    {SFGAO_READONLY, TObjectFlag::ReadOnly},   {SFGAO_COMPRESSED, TObjectFlag::Compressed},
    {SFGAO_ENCRYPTED, TObjectFlag::Encrypted}, {SFGAO_ISSLOW, TObjectFlag::Slow},
};

constexpr struct {
  DWORD bit;
  TObjectFlag flag;
} FileFlags[] = {
    {FILE_ATTRIBUTE_HIDDEN, TObjectFlag::Hidden},       {FILE_ATTRIBUTE_SYSTEM, TObjectFlag::System},
    {FILE_ATTRIBUTE_READONLY, TObjectFlag::ReadOnly},   {FILE_ATTRIBUTE_COMPRESSED, TObjectFlag::Compressed},
    {FILE_ATTRIBUTE_ENCRYPTED, TObjectFlag::Encrypted}, {FILE_ATTRIBUTE_REPARSE_POINT, TObjectFlag::ReparsePoint},
    {FILE_ATTRIBUTE_OFFLINE, TObjectFlag::Offline},
};

constexpr SFGAOF AskedFlags() {
  SFGAOF all = 0;
  for (const auto& entry : ShellFlags) all |= entry.bit;
  return all;
}

TFileTime TimeOf(const FILETIME& time) {
  return static_cast<TFileTime>(time.dwHighDateTime) << 32U | time.dwLowDateTime;
}

// WIN32_FIND_DATAW and WIN32_FILE_ATTRIBUTE_DATA name their common fields alike.
template <typename TData>
void TakeFileData(const TData& data, TFolderObject& object) {
  for (const auto& entry : FileFlags) {
    if ((data.dwFileAttributes & entry.bit) != 0) object.flags.Include(entry.flag);
  }
  object.size = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0
                    ? TFolderObject::UnknownSize
                    : static_cast<std::int64_t>(data.nFileSizeHigh) << 32U | data.nFileSizeLow;
  object.created = TimeOf(data.ftCreationTime);
  object.changed = TimeOf(data.ftLastWriteTime);
  object.accessed = TimeOf(data.ftLastAccessTime);
}

// One property of an object, through its folder.
class TDetail {
public:
  TDetail(IShellFolder2* folder, PCUITEMID_CHILD item, const SHCOLUMNID& column) {
    VariantInit(&fValue);
    const HRESULT hr = GuardedCall([&] { return folder->GetDetailsEx(item, &column, &fValue); });
    if (FAILED(hr)) fValue.vt = VT_EMPTY;
  }
  ~TDetail() { VariantClear(&fValue); }
  TDetail(const TDetail&) = delete;
  TDetail& operator=(const TDetail&) = delete;

  std::int64_t Size() const {
    if (fValue.vt == VT_UI8 || fValue.vt == VT_I8) return fValue.llVal;
    if (fValue.vt == VT_UI4) return fValue.ulVal;
    if (fValue.vt == VT_I4) return fValue.lVal;
    return TFolderObject::UnknownSize;
  }
  // UTC: a FILETIME has no place in a variant, so it becomes a date without a change of zone.
  TFileTime Time() const {
    SYSTEMTIME utc;
    FILETIME time;
    if (fValue.vt != VT_DATE || !VariantTimeToSystemTime(fValue.date, &utc) || !SystemTimeToFileTime(&utc, &time)) {
      return 0;
    }
    return TimeOf(time);
  }

private:
  VARIANT fValue;
};

} // namespace

TObjectFacts::TObjectFacts(ComPtr<IShellFolder> pFolder, std::wstring pFolderPath, TFactsPrecision pPrecision)
    : fFolder(std::move(pFolder)) {
  if (pPrecision == TFactsPrecision::Listed || pFolderPath.empty()) return;
  fPath = TPathUtils::GetUnicodeAPICallPath(pFolderPath);
  if (fPath.back() != L'\\') fPath += L'\\';
  fPathLength = fPath.size();
}

HRESULT TObjectFacts::Read(PCUITEMID_CHILD pItem, TFolderObject& pObject) {
  pObject.flags = {};
  pObject.size = TFolderObject::UnknownSize;
  pObject.created = pObject.changed = pObject.accessed = 0;
  const ScopedErrorMode mode; // attributes and details of a drive may ask for its medium
  WIN32_FIND_DATAW data;
  const auto get_data = ShellApi().SHGetDataFromIDListW;
  const HRESULT found =
      !get_data ? E_NOTIMPL
                : GuardedCall([&] { return get_data(fFolder.Get(), pItem, SHGDFIL_FINDDATA, &data, sizeof(data)); });
  const bool is_file = SUCCEEDED(found) && data.cFileName[0] != L'\0';
  ReadFlags(pItem, pObject.flags);
  // The name in the find data isn't taken: some shells keep it there in an 8-bit form that loses characters.
  const DWORD form = is_file ? SHGDN_INFOLDER | SHGDN_FORPARSING : SHGDN_INFOLDER;
  const HRESULT named = GetNameInFolder(fFolder.Get(), pItem, form, pObject.name);
  if (FAILED(named)) {
    pObject.flags = {};
    return named;
  }
  if (!is_file) {
    ReadDetails(pItem, pObject);
    return S_OK;
  }
  TakeFileData(data, pObject);
  if (fPathLength != 0) ReadDisk(pObject);
  return S_OK;
}

void TObjectFacts::ReadFlags(PCUITEMID_CHILD pItem, TObjectFlags& pFlags) const {
  constexpr SFGAOF asked = AskedFlags();
  SFGAOF answer = asked;
  const HRESULT hr = GuardedCall([&] { return fFolder->GetAttributesOf(1, &pItem, &answer); });
  if (FAILED(hr)) return;
  for (const auto& entry : ShellFlags) {
    if ((answer & entry.bit) != 0) pFlags.Include(entry.flag);
  }
}

// For objects that aren't files: a folder inside an archive, a device, an extension's own.
void TObjectFacts::ReadDetails(PCUITEMID_CHILD pItem, TFolderObject& pObject) {
  // A folder's size and dates may have to be gathered, from a slow place at that.
  if (pObject.flags.Contains(TObjectFlag::Folder)) return;
  if (!std::exchange(fAskedFolder2, true)) fFolder2 = fFolder.MaybeAs<IShellFolder2>();
  if (!fFolder2) return;
  pObject.size = TDetail(fFolder2.Get(), pItem, SizeColumn).Size();
  pObject.changed = TDetail(fFolder2.Get(), pItem, ChangedColumn).Time();
  pObject.created = TDetail(fFolder2.Get(), pItem, CreatedColumn).Time();
  pObject.accessed = TDetail(fFolder2.Get(), pItem, AccessedColumn).Time();
}

void TObjectFacts::ReadDisk(TFolderObject& pObject) {
  fPath.resize(fPathLength);
  fPath += pObject.name;
  WIN32_FILE_ATTRIBUTE_DATA data;
  // Gone since it was listed, or not to be asked: what the folder said stands.
  if (GetFileAttributesExW(fPath.c_str(), GetFileExInfoStandard, &data)) TakeFileData(data, pObject);
}

} // namespace kiv
