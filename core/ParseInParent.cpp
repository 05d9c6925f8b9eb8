#include <core/ParseInParent.h>

#include <core/FileSystemBindData.h>
#include <core/PathUtils.h>
#include <platform/ComPtr.h>
#include <platform/FaultGuard.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <platform/ShellApi.h>
#include <platform/TakeResult.h>
#include <platform/Threads.h>
#include <platform/fill/ElementName.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

namespace kiv {

namespace {

constexpr std::uint64_t ValidFor = 1000; // milliseconds; what lies above the folder may change as well
constexpr CLSID FileSystemFolder = ParseGuid("{F3364BA0-65B9-11CE-A9BA-00AA004AE837}"); // "CLSID_ShellFSFolder"

// Changes when something in the folder is made, renamed or deleted, when the folder itself is renamed (which its dates
// that are shown don't tell), and when another folder stands in its place.
struct TStamp {
  LONGLONG made;
  LONGLONG written;
  LONGLONG changed;
  DWORD attributes;
  bool operator==(const TStamp&) const = default;
};

struct TParent {
  std::wstring path; // exactly as it was written, without a delimiter at its end
  TStamp stamp{};
  std::uint64_t since = 0;
  bool refused = false;
  TUniqueItemIdList list;
  ComPtr<IShellFolder> folder;          // empty until it is worth opening
  std::shared_ptr<const TParent> above; // of one that has gone: the nearest that is open
};
using TKept = std::shared_ptr<const TParent>;

struct TKeptParents {
  TKept last;
  std::map<std::wstring, TKept> changing; // where things change: by path; without a folder, if none can be had
};

// Raw, because nothing may be left to be destroyed behind the end of the apartment.
thread_local TKeptParents* gKept = nullptr;

void Forget() {
  delete std::exchange(gKept, nullptr);
}

// Whether this thread may keep something.
bool Keeps() {
  if (gKept) return true;
  const bool is_main_thread = MainThread::IsCurrent();
  if (!AtLeaveApartment(&Forget) && !is_main_thread) return false;
  gKept = new TKeptParents;
  if (is_main_thread) AtShutdown(&Forget);
  return true;
}

// Where the file's name begins behind its folder's path; 0 if it isn't a path of the kind that is kept.
std::size_t NameStart(const std::wstring& path) {
  constexpr std::size_t root = 3; // "C:\": the root itself is cheap
  const std::size_t delimiter = path.rfind(L'\\');
  const bool plain = delimiter != std::wstring::npos && delimiter >= root && path[2] == L'\\' &&
                     path.size() < MAX_PATH && TPathUtils::StartsWithDriveLetter(path) &&
                     path.find(L'/') == std::wstring::npos;
  if (!plain) return 0;
  const wchar_t last = path[delimiter - 1]; // file calls cut blanks and dots there, and see another folder
  if (last == L' ' || last == L'.') return 0;
  // The root's parser takes pieces of some names for something else, or changes them.
  return IsNewElementName(std::wstring_view(path).substr(delimiter + 1)) ? delimiter + 1 : 0;
}

bool ReadStamp(const std::wstring& folder, TStamp& stamp) {
  constexpr DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const TUniqueHandle handle(CreateFileW(folder.c_str(), FILE_READ_ATTRIBUTES, share, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  FILE_BASIC_INFO info;
  if (!handle || !GetFileInformationByHandleEx(handle.Get(), FileBasicInfo, &info, sizeof info)) return false;
  stamp = {info.CreationTime.QuadPart, info.LastWriteTime.QuadPart, info.ChangeTime.QuadPart, info.FileAttributes};
  constexpr DWORD kind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  return (info.FileAttributes & kind) == FILE_ATTRIBUTE_DIRECTORY;
}

bool IsPlainFile(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0;
}

TUniqueItemIdList ParseChild(const TParent& parent, std::wstring name, IBindCtx* context = nullptr) {
  PIDLIST_RELATIVE raw = nullptr;
  ULONG eaten = 0;
  ULONG attributes = 0;
  const HRESULT hr = GuardedCall(
      [&] { return parent.folder->ParseDisplayName(nullptr, context, name.data(), &eaten, &raw, &attributes); });
  const TUniqueItemIdList child = TakeItemIdList(hr, raw);
  if (hr != S_OK || !child) return {};
  return TUniqueItemIdList(ILCombine(static_cast<PCIDLIST_ABSOLUTE>(parent.list.Get()), child.Get()));
}

bool IsFileSystemFolder(IShellFolder* folder) {
  const auto persistent = ComPtr<IShellFolder>(folder).MaybeAs<IPersist>();
  CLSID id{};
  return persistent && SUCCEEDED(GuardedCall([&] { return persistent->GetClassID(&id); })) && id == FileSystemFolder;
}

bool IsOnFixedDrive(const std::wstring& path) {
  const auto drive_type = ShellApi().GetDriveTypeW;
  return drive_type && drive_type(path.substr(0, 3).c_str()) == DRIVE_FIXED;
}

// The folder that a list means to another one, if it is a plain one.
bool Bind(TParent& parent, const ComPtr<IShellFolder>& from, PCUIDLIST_RELATIVE list) {
  void* found = nullptr;
  const HRESULT hr = GuardedCall([&] { return from->BindToObject(list, nullptr, IidOf<IShellFolder>(), &found); });
  if (FAILED(hr) || !found) return false;
  ComPtr<IShellFolder> folder;
  folder.Attach(static_cast<IShellFolder*>(found));
  if (!IsFileSystemFolder(folder.Get())) return false;
  parent.folder = std::move(folder);
  return true;
}

// Opens the folder, and sees whether it makes the same list.
bool Open(TParent& parent, const std::wstring& name, PCIDLIST_ABSOLUTE list) {
  if (!IsOnFixedDrive(parent.path)) return false;
  parent.list.Reset(ILClone(list));
  if (!parent.list || !ILRemoveLastID(static_cast<PIDLIST_ABSOLUTE>(parent.list.Get()))) return false;
  if (!Bind(parent, Desktop(), parent.list.Get())) return false;
  const TUniqueItemIdList again = ParseChild(parent, name);
  const UINT size = ILGetSize(list);
  return again && ILGetSize(again.Get()) == size && std::memcmp(again.Get(), list, size) == 0;
}

// What the disk says of a file or folder. False if it isn't there, or leads elsewhere.
bool FindPlain(const std::wstring& path, WIN32_FIND_DATAW& data) {
  WIN32_FILE_ATTRIBUTE_DATA there;
  if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &there)) return false;
  data.dwFileAttributes = there.dwFileAttributes;
  data.ftCreationTime = there.ftCreationTime;
  data.ftLastAccessTime = there.ftLastAccessTime;
  data.ftLastWriteTime = there.ftLastWriteTime;
  data.nFileSizeHigh = there.nFileSizeHigh;
  data.nFileSizeLow = there.nFileSizeLow;
  return (there.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
}

// The list of something below the parent, of what is known of it and no more.
TUniqueItemIdList MakeChild(const TParent& parent, const std::wstring& path, WIN32_FIND_DATAW& data) {
  const std::wstring name = path.substr(path.rfind(L'\\') + 1);
  // It may be a short name, and only a search gives the other one.
  if (name.find(L'~') != std::wstring::npos || name.size() >= std::size(data.cFileName)) return {};
  std::copy(name.begin(), name.end(), data.cFileName);
  ComPtr<IBindCtx> context;
  if (FAILED(CreateFileSystemBindContext(data, context))) return {};
  return ParseChild(parent, path.substr(parent.path.size() + 1), context.Get());
}

TKept ChangingParent(const std::wstring& path);

// Opened in the folder above it, or from the root if there is none to be kept.
void OpenChanging(TParent& parent) {
  const std::size_t start = NameStart(parent.path);
  const TKept above = start != 0 ? ChangingParent(parent.path.substr(0, start - 1)) : nullptr;
  WIN32_FIND_DATAW data{};
  if (!FindPlain(parent.path, data)) {
    if (above) parent.above = above->folder ? above : above->above;
    return;
  }
  if (above && above->folder) {
    parent.list = MakeChild(*above, parent.path, data);
    if (parent.list && Bind(parent, above->folder, ILFindLastID(parent.list.Get()))) return;
  }
  if (!IsOnFixedDrive(parent.path)) return;
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr =
      GuardedExport(ShellApi().SHParseDisplayName, parent.path.c_str(), nullptr, &raw, SFGAOF{0}, nullptr);
  parent.list = TakeItemIdList(hr, raw);
  if (parent.list) Bind(parent, Desktop(), parent.list.Get());
}

// Kept or opened; without a folder if there is none that could be.
TKept ChangingParent(const std::wstring& path) {
  constexpr std::size_t most = 256;
  const std::uint64_t now = ThreadApi().tickCount();
  if (!gKept) return std::make_shared<TParent>(); // what was opened ended all
  const auto found = gKept->changing.find(path);
  if (found != gKept->changing.end() && now - found->second->since < ValidFor) return found->second;
  auto parent = std::make_shared<TParent>();
  parent->path = path;
  parent->since = now;
  OpenChanging(*parent);
  if (!gKept) return parent;
  std::map<std::wstring, TKept> kept;
  for (const auto& [known, other] : gKept->changing) {
    if (kept.size() < most && now - other->since < ValidFor) kept.emplace(known, other);
  }
  kept[path] = parent;
  kept.swap(gKept->changing); // what isn't kept is released behind that, and its code may lead back here
  return parent;
}

} // namespace

TUniqueItemIdList ParseInParent(const std::wstring& pPath) {
  const TKept parent = gKept ? gKept->last : nullptr; // its code may lead back here
  if (!parent || !parent->folder || ThreadApi().tickCount() - parent->since >= ValidFor) return {};
  const std::size_t start = NameStart(pPath);
  if (start == 0 || pPath.compare(0, start - 1, parent->path) != 0) return {};
  TStamp stamp;
  if (!ReadStamp(parent->path, stamp) || stamp != parent->stamp || !IsPlainFile(pPath)) return {};
  return ParseChild(*parent, pPath.substr(start));
}

void LearnParent(const std::wstring& pPath, PCIDLIST_ABSOLUTE pList) {
  const std::size_t start = NameStart(pPath);
  if (start == 0 || !Keeps()) return;
  auto parent = std::make_shared<TParent>();
  parent->path = pPath.substr(0, start - 1);
  parent->since = ThreadApi().tickCount();
  if (!ReadStamp(parent->path, parent->stamp)) return;
  const TKept last = gKept->last;
  const bool again = last && last->path == parent->path && last->stamp == parent->stamp;
  // What was found out stands: the path is one that the open folder isn't asked for.
  if (again && (last->refused || last->folder) && parent->since - last->since < ValidFor) return;
  if (again && IsPlainFile(pPath) && !Open(*parent, pPath.substr(start), pList)) {
    parent->refused = true;
    parent->folder.Reset();
  }
  if (!gKept) return; // what was opened ended all
  const TKept old = std::exchange(gKept->last, std::move(parent));
}

TUniqueItemIdList ListInParent(const std::wstring& pPath, bool pAskDisk) {
  const std::size_t start = NameStart(pPath);
  if (start == 0 || !Keeps()) return {};
  const TKept parent = ChangingParent(pPath.substr(0, start - 1));
  WIN32_FIND_DATAW data{};
  const bool there = pAskDisk && FindPlain(pPath, data);
  const bool is_link = !there && data.dwFileAttributes != 0;
  if (parent->folder) return is_link ? TUniqueItemIdList() : MakeChild(*parent, pPath, data);
  return !there && parent->above ? MakeChild(*parent->above, pPath, data) : TUniqueItemIdList();
}

} // namespace kiv
