// The numbers that objects have in the platform's lists of icons.
#include <viewstate/SystemImageList.h>

#include <core/FileFunctions.h>
#include <framework/FileNames.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <platform/Lifecycle.h>
#include <platform/ShellApi.h>
#include <platform/TempPath.h>
#include <platform/Wow64.h>
#include <viewstate/GrowingTextMap.h>

#include <algorithm>
#include <atomic>
#include <mutex>

namespace kiv {

namespace {

constexpr int None = -1;

// What has been found out. Comes with its first use, and is forgotten at the end of the library: workers that are still
// about to end may read it then.
struct TKnown {
  TGrowingTextMap<int> indexes; // by extension without its point; the number says size and form
  TGrowingTextMap<std::wstring> types;
  std::atomic<int> folder{None};
  std::atomic<int> unknownFile{None};

  void Forget() noexcept {
    indexes.Clear();
    types.Clear();
    folder = None;
    unknownFile = None;
  }
};

TKnown& Known() {
  static auto* const known = new TKnown; // workers may outlive the statics
  return *known;
}

void ForgetAtShutdown() {
  static std::atomic<bool> registered{false};
  if (registered.exchange(true)) return;
  AtShutdown([] {
    registered = false;
    Known().Forget();
  });
}

bool Ask(const wchar_t* object, DWORD attributes, UINT flags, SHFILEINFOW& info) {
  const auto ask = ShellApi().SHGetFileInfoW;
  if (!ask) return false;
  const ScopedErrorMode mode;
  const ScopedWow64FsRedirectionOff redirection;
  DWORD_PTR answer = 0;
  const HRESULT hr = GuardedCall([&] { answer = ask(object, attributes, &info, sizeof(info), flags); });
  return SUCCEEDED(hr) && answer != 0;
}

UINT IndexFlags(TKivImageListSize size, bool opened) {
  UINT flags = SHGFI_SYSICONINDEX;
  if (size != TKivImageListSize::si_Large) flags |= SHGFI_SMALLICON;
  if (opened) flags |= SHGFI_OPENICON;
  return flags;
}

std::wstring_view WithoutPoint(std::wstring_view extension) {
  return extension.starts_with(L'.') ? extension.substr(1) : extension;
}

bool LooksLikeFolder(std::wstring_view path) {
  if (path.ends_with(L'\\')) return true;
  return path.starts_with(L'\\') && std::ranges::count(path, L'\\') <= 3; // a server or a share
}

} // namespace

int TKivSystemImageList::GetFileInfo(const std::wstring& pFilepath, TKivImageListSize pSize, bool pOpened,
                                     DWORD pAttributes) {
  if (pFilepath.find(L'\0') != std::wstring::npos) return None; // the platform would read another path
  UINT flags = IndexFlags(pSize, pOpened);
  DWORD attributes = 0;
  if (pAttributes != 0) {
    flags |= SHGFI_USEFILEATTRIBUTES;
    const bool folder = (pAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    attributes = folder ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
  }
  SHFILEINFOW info{};
  return Ask(pFilepath.c_str(), attributes, flags, info) ? info.iIcon : None;
}

int TKivSystemImageList::GetIndexFromItemIdList(IItemIdList* pAbsoluteItemIdList, TKivImageListSize pSize,
                                                bool pOpened) {
  if (!pAbsoluteItemIdList || pAbsoluteItemIdList->IsInvalid()) return None;
  const auto* const list = reinterpret_cast<const wchar_t*>(pAbsoluteItemIdList->WindowsPointer());
  SHFILEINFOW info{};
  return Ask(list, 0, IndexFlags(pSize, pOpened) | SHGFI_PIDL, info) ? info.iIcon : None;
}

int TKivSystemImageList::GetIndexFromExtension(std::wstring_view pExtension, TKivImageListSize pSize, bool pOpened) {
  const std::wstring_view extension = WithoutPoint(pExtension);
  const auto number = static_cast<std::uint32_t>(pSize) * 2 + (pOpened ? 1U : 0U);
  if (const int* const index = Known().indexes.Find(number, extension)) return *index;
  // No lock is held: the shell may take its time for one, and others are known already.
  std::wstring name = L"C:\\test" + std::to_wstring(TKivImageListSizeHelper::ToInt(pSize));
  name += pOpened ? L"True." : L"False.";
  name += extension;
  const int index = GetFileInfo(name, pSize, pOpened, FILE_ATTRIBUTE_NORMAL);
  if (index < 0) return None; // perhaps next time
  ForgetAtShutdown();
  return Known().indexes.Add(number, extension, index);
}

int TKivSystemImageList::GetIndexFromPathByExt(const std::wstring& pPath, TKivImageListSize pSize, bool pOpened) {
  if (LooksLikeFolder(pPath)) return GetFolderIconNumber(pOpened);
  return GetIndexFromExtension(ExtractFileExt(pPath), pSize, pOpened);
}

int TKivSystemImageList::GetIndexFromPath(const std::wstring& pFullPath, TKivImageListSize pSize, bool pOpened) {
  const int index = GetFileInfo(pFullPath, pSize, pOpened, 0);
  if (index >= 0) return index;
  const bool folder = pFullPath.ends_with(L'\\') || pFullPath.find(L'*') != std::wstring::npos;
  return folder ? GetFolderIconNumber(false) : GetIndexFromPathByExt(pFullPath, pSize, pOpened);
}

int TKivSystemImageList::GetFolderIconNumber(bool pOpened) {
  std::atomic<int>& known = Known().folder;
  const int standing = known.load(std::memory_order_relaxed);
  if (standing >= 0) return standing;
  std::wstring folder = KivGetTempPath();
  if (!FileOrFolderExists(folder)) folder = KivGetWindowsPath();
  const int index = GetFileInfo(folder, TKivImageListSize::si_Small, pOpened, 0);
  if (index < 0) return None;
  ForgetAtShutdown();
  int expected = None;
  return known.compare_exchange_strong(expected, index) ? index : expected;
}

int TKivSystemImageList::GetUnknownFileIconNumber() {
  std::atomic<int>& known = Known().unknownFile;
  int index = known.load(std::memory_order_relaxed);
  if (index >= 0) return index;
  // An extension that no program can have registered.
  index = GetIndexFromExtension(L"lxvbf_unknown_extension", TKivImageListSize::si_Small, false);
  known = index;
  return index;
}

std::wstring TKivSystemImageList::GetFileType(std::wstring_view pExtension) {
  const std::wstring_view extension = WithoutPoint(pExtension);
  if (const std::wstring* const type = Known().types.Find(0, extension)) return *type;
  SHFILEINFOW info{};
  const std::wstring name = L"C:\\test." + std::wstring(extension);
  if (!Ask(name.c_str(), FILE_ATTRIBUTE_NORMAL, SHGFI_TYPENAME | SHGFI_USEFILEATTRIBUTES, info)) return {};
  ForgetAtShutdown();
  return Known().types.Add(0, extension, info.szTypeName);
}

} // namespace kiv
