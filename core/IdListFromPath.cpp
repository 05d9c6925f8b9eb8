#include <core/IdListFromPath.h>

#include <core/FileSystemBindData.h>
#include <core/ParseInParent.h>
#include <core/PathFunctions.h>
#include <core/PathUtils.h>
#include <core/SpecialFolderPath.h>
#include <framework/TextCompare.h>
#include <platform/Characters.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>
#include <platform/TakeResult.h>
#include <platform/Wow64.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>

namespace kiv {

namespace {

constexpr std::wstring_view VolumePrefix = LR"(\\?\volume{)";
constexpr std::wstring_view ShellPrefix = L"shell:";
constexpr std::wstring_view ClassPrefix = L"::{";
constexpr std::size_t GuidLength = 38; // with its braces

// The one item that the library makes itself: a volume, drive letter or not, in the folder of the drives.
constexpr std::size_t VolumeItemSize = 41;
constexpr std::size_t VolumeTypeOffset = 2;
constexpr std::size_t VolumeIdOffset = 25;
constexpr std::byte VolumeType{0x21};
using TVolumeItem = std::array<std::byte, VolumeItemSize + sizeof(USHORT)>; // with the terminator
static_assert(VolumeIdOffset + sizeof(GUID) == VolumeItemSize);

// The identifier whose opening brace stands at `open`.
bool ReadGuid(const std::wstring& path, std::size_t open, GUID& id) {
  return SUCCEEDED(IIDFromString(path.substr(open, GuidLength).c_str(), &id));
}

TVolumeItem MakeVolumeItem(const GUID& volume) {
  TVolumeItem item{};
  constexpr USHORT size = VolumeItemSize;
  std::memcpy(item.data(), &size, sizeof(size));
  item[VolumeTypeOffset] = VolumeType;
  std::memcpy(item.data() + VolumeIdOffset, &volume, sizeof(volume));
  return item;
}

TUniqueItemIdList Combine(const TUniqueItemIdList& parent, PCUIDLIST_RELATIVE child) {
  return TUniqueItemIdList(ILCombine(static_cast<PCIDLIST_ABSOLUTE>(parent.Get()), child));
}

TUniqueItemIdList DrivesFolder() {
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = GuardedExport(ShellApi().SHGetSpecialFolderLocation, nullptr, CSIDL_DRIVES, &raw);
  return TakeItemIdList(hr, raw);
}

TUniqueItemIdList ParseFromRoot(const std::wstring& path, IBindCtx* context) {
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = GuardedExport(ShellApi().SHParseDisplayName, path.c_str(), context, &raw, SFGAOF{0}, nullptr);
  return TakeItemIdList(hr, raw);
}

TUniqueItemIdList CreateFromRoot(const std::wstring& path) {
  PIDLIST_ABSOLUTE raw = nullptr;
  const auto create = ShellApi().ILCreateFromPathW;
  if (create) GuardedCall([&] { raw = create(path.c_str()); });
  return raw ? TUniqueItemIdList(raw) : ParseFromRoot(path, nullptr);
}

TUniqueItemIdList ParseInFolder(IShellFolder* folder, std::wstring path, HWND window) {
  // The parser may write to the text, and to both of these.
  PIDLIST_RELATIVE raw = nullptr;
  ULONG eaten = 0;
  ULONG attributes = 0;
  const HRESULT hr =
      GuardedCall([&] { return folder->ParseDisplayName(window, nullptr, path.data(), &eaten, &raw, &attributes); });
  TUniqueItemIdList list = TakeItemIdList(hr, raw);
  return hr == S_OK ? std::move(list) : TUniqueItemIdList();
}

ComPtr<IShellFolder> BindFromRoot(const TUniqueItemIdList& list) {
  const ComPtr<IShellFolder> desktop = Desktop();
  void* found = nullptr;
  const HRESULT hr =
      GuardedCall([&] { return desktop->BindToObject(list.Get(), nullptr, IidOf<IShellFolder>(), &found); });
  ComPtr<IShellFolder> folder;
  if (SUCCEEDED(hr)) folder.Attach(static_cast<IShellFolder*>(found));
  return folder;
}

// A volume need not have a drive letter, and then the shell has no name for it that it would parse.
TUniqueItemIdList ListOfVolume(const std::wstring& path) {
  const std::size_t open = VolumePrefix.size() - 1;
  GUID volume;
  if (!ReadGuid(path, open, volume)) return {};
  const TUniqueItemIdList drives = DrivesFolder();
  if (!drives) return {};
  const TVolumeItem item = MakeVolumeItem(volume);
  TUniqueItemIdList list = Combine(drives, reinterpret_cast<PCUIDLIST_RELATIVE>(item.data()));
  std::wstring rest = path.substr(open + GuidLength);
  if (!rest.empty() && (rest.front() == L'\\' || rest.front() == L'/')) rest.erase(0, 1);
  if (!list || rest.empty()) return list;
  const ComPtr<IShellFolder> folder = BindFromRoot(list);
  const TUniqueItemIdList below = folder ? GetIdListFromPath(folder.Get(), rest, nullptr) : TUniqueItemIdList();
  return below ? Combine(list, below.Get()) : TUniqueItemIdList();
}

// Some shells (Wine 8) take every name that begins with "shell:" for a folder of a class without an identifier.
bool IsNobodysFolder(const TUniqueItemIdList& list) {
  constexpr std::size_t id_offset = 4;
  constexpr std::array<std::byte, sizeof(GUID)> no_id{};
  const auto* const bytes = reinterpret_cast<const std::byte*>(list.Get());
  return ILGetSize(list.Get()) == id_offset + sizeof(GUID) + sizeof(USHORT) &&
         std::equal(no_id.begin(), no_id.end(), bytes + id_offset);
}

// Some shells (Wine 8) leave out what follows a class behind "shell:", and give the folder itself.
bool LostItsEnd(const std::wstring& path, const TUniqueItemIdList& list) {
  const std::size_t end = path.find(L'\\');
  const bool leads_on = end != std::wstring::npos && end + 1 < path.size() &&
                        path.compare(ShellPrefix.size(), ClassPrefix.size(), ClassPrefix) == 0;
  const ITEMIDLIST* const next = leads_on ? ILGetNext(list.Get()) : nullptr;
  return leads_on && (!next || next->mkid.cb == 0);
}

// "::{...}" or "shell:::{...}" without a well-formed class identifier.
bool NamesNoClass(const std::wstring& path) {
  const std::size_t start = StartsText(ShellPrefix, path) ? ShellPrefix.size() : 0;
  GUID folder_class;
  return path.compare(start, ClassPrefix.size(), ClassPrefix) == 0 &&
         !ReadGuid(path, start + ClassPrefix.size() - 1, folder_class);
}

// The special folder that the name stands for, where the shell doesn't know it.
TUniqueItemIdList ListOfShellName(const std::wstring& path) {
  const std::wstring folder = ExpandSpecialFolderPath(path);
  return folder == path ? TUniqueItemIdList() : CreateFromRoot(folder);
}

bool IsFullPath(const std::wstring& path) {
  return path.starts_with(LR"(\\)") || (path.size() > 2 && IsAsciiLetter(path[0]) && path[1] == L':');
}

// What the disk has and the shell doesn't find by itself: the shell is told what the disk says.
TUniqueItemIdList ListFromDisk(const std::wstring& path) {
  if (path.find(L'\\') == std::wstring::npos || HasWildcards(path)) return {};
  WIN32_FIND_DATAW data;
  const TUniqueFind find(FindFirstFileW(TPathUtils::GetUnicodeAPICallPath(path).c_str(), &data));
  ComPtr<IBindCtx> context;
  if (!find || FAILED(CreateFileSystemBindContext(data, context))) return {};
  return ParseFromRoot(path, context.Get());
}

} // namespace

TUniqueItemIdList GetIdListFromPath(IShellFolder* pShellFolder, std::wstring_view pPath,
                                    HWND pWindowHandleForLogonDialog) {
  if (pPath.empty()) return DrivesFolder();
  if (pPath.size() > LongestPath || pPath.find(L'\0') != std::wstring_view::npos) return {};
  std::wstring path(pPath);
  if (path.size() == 2 && path[1] == L':') path += L'\\';
  // Some shells take a pattern for the first thing that it finds.
  if (IsFullPath(path) && HasWildcards(path)) return {};
  // Some shells make an item of whatever stands there.
  if (NamesNoClass(path)) return {};
  if (IsFullPath(path) && !ShellTakesPath(path)) return {};
  const ScopedErrorMode mode;
  const ScopedWow64FsRedirectionOff real_folders;

  TUniqueItemIdList list;
  if (!pShellFolder && !pWindowHandleForLogonDialog) {
    list = ParseInParent(path);
    if (!list) {
      list = CreateFromRoot(path);
      if (list) LearnParent(path, static_cast<PCIDLIST_ABSOLUTE>(list.Get()));
    }
  } else {
    const ComPtr<IShellFolder> folder = pShellFolder ? ComPtr<IShellFolder>(pShellFolder) : Desktop();
    list = ParseInFolder(folder.Get(), path, pWindowHandleForLogonDialog);
  }
  if (list && StartsText(ShellPrefix, path)) {
    if (IsNobodysFolder(list)) {
      list = ListOfShellName(path);
    } else if (LostItsEnd(path, list)) {
      list = CreateFromRoot(path.substr(ShellPrefix.size()));
    }
  }
  if (!list && SameText(path.substr(0, VolumePrefix.size()), VolumePrefix)) list = ListOfVolume(path);
  // A name relative to a folder isn't one relative to the current directory.
  if (!list && (!pShellFolder || IsFullPath(path))) list = ListFromDisk(path);
  return list;
}

bool ShellTakesPath(std::wstring_view pPath) {
  return pPath.size() < MAX_PATH || !ShellApi().wine_get_version;
}

} // namespace kiv
