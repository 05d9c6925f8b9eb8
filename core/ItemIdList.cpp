#include <core/ItemIdList.h>

#include <core/IdListFromPath.h>
#include <core/ParseInParent.h>
#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <core/PathmereError.h>
#include <core/ResolveByParentPath.h>
#include <core/ShellLibrary.h>
#include <core/SpecialFolders.h>
#include <framework/Exceptions.h>
#include <framework/TextCompare.h>
#include <platform/FaultGuard.h>
#include <platform/MainThread.h>
#include <platform/PathApi.h>
#include <platform/TakeResult.h>

#include <utility>

namespace kiv {

namespace {

// Also the largest path that SHGetPathFromIDListEx can give, without the zero behind it.
constexpr std::size_t LongestListPath = 32767;

ITEMIDLIST* Copy(PCIDLIST_ABSOLUTE list) {
  return list ? ILClone(list) : nullptr;
}

// "C:\" keeps its delimiter.
std::wstring_view WithoutTrailingDelimiter(std::wstring_view path) {
  const bool is_drive = path.size() < 4 && TPathUtils::StartsWithDriveLetter(path);
  const bool ends = !path.empty() && (path.back() == L'\\' || path.back() == L'/');
  return ends && !is_drive ? path.substr(0, path.size() - 1) : path;
}

// Such a path is one; others ("::{...}", "file:...", a bare name) only lead to the object.
bool IsRealPath(std::wstring_view path) {
  constexpr std::wstring_view file = L"file:";
  return path.find(L'\\') != std::wstring_view::npos && path.find(L"::") == std::wstring_view::npos &&
         !SameText(path.substr(0, file.size()), file);
}

TUniqueItemIdList ListFromPath(std::wstring_view path) {
  TUniqueItemIdList list = GetIdListFromPath(nullptr, path, nullptr);
  if (!list && TPathUtils::IsUnicodeAPICallPath(path)) {
    list = GetIdListFromPath(nullptr, TPathUtils::RevertUnicodeAPICallPath(path), nullptr);
  }
  if (!list && path.size() > MAX_PATH) list.Reset(Copy(ResolveByParentPath(path)->WindowsPointer()));
  return list;
}

// Without asking the disk.
TUniqueItemIdList SimpleListFromPath(std::wstring_view path) {
  PIDLIST_ABSOLUTE raw = nullptr;
  const std::wstring text(path);
  const auto make = ShellApi().SHSimpleIDListFromPath;
  if (make) GuardedCall([&] { raw = make(text.c_str()); });
  return TUniqueItemIdList(raw);
}

// Empty only for what the shell can't have a list of.
TUniqueItemIdList ListOfChange(std::wstring_view path, bool gone) {
  const std::wstring text(path);
  if (!ShellTakesPath(text)) return {};
  TUniqueItemIdList list = ListInParent(text, !gone);
  const bool there =
      !gone && !list && PathApi::FileAttributes(TPathUtils::GetUnicodeAPICallPath(text)) != INVALID_FILE_ATTRIBUTES;
  if (there) list = ListFromPath(path);
  return list ? std::move(list) : SimpleListFromPath(path);
}

TUniqueItemIdList ListFromItem(IShellItem* item) {
  PIDLIST_ABSOLUTE raw = nullptr;
  const HRESULT hr = GuardedExport(ShellApi().SHGetIDListFromObject, item, &raw);
  TUniqueItemIdList list = TakeItemIdList(hr, raw);
  if (list) return list;
  wchar_t* name = nullptr;
  const HRESULT named = GuardedCall([&] { return item->GetDisplayName(SIGDN_DESKTOPABSOLUTEPARSING, &name); });
  const TUniqueTaskText text = TakeText(named, name);
  if (!text) return {};
  return GetIdListFromPath(nullptr, text.Get(), nullptr);
}

// The path that the platform finds for a list.
std::wstring PlatformPath(PCIDLIST_ABSOLUTE list) {
  std::wstring path(LongestListPath + 1, L'\0');
  const auto size = static_cast<DWORD>(LongestListPath);
  const auto extended = ShellApi().SHGetPathFromIDListEx;
  const auto classic = ShellApi().SHGetPathFromIDListW;
  const auto found = [&](auto&& call) { return GuardedCall([&] { return call() ? S_OK : E_FAIL; }) == S_OK; };
  const bool any = (extended && found([&] { return extended(list, path.data(), size, GPFIDL_DEFAULT); })) ||
                   (classic && found([&] { return classic(list, path.data()); }));
  path.resize(any ? path.find(L'\0') : 0);
  // Some systems give a class identifier for an object that has no path.
  if (TKivPathList::IsFolderClassId(path)) path.clear();
  // And some a delimiter at the end of a folder's.
  if (TPathUtils::StartsWithDriveLetter(path)) path.resize(WithoutTrailingDelimiter(path).size());
  path.shrink_to_fit();
  return path;
}

} // namespace

void detail::FreeItemIdList(ITEMIDLIST* pList) noexcept {
  ILFree(pList);
}

// --- making ---------------------------------------------------------------------------------------------------------

TKivItemIdList::TKivItemIdList(const TStart& pStart)
    : fItemIdList(pStart.list, pStart.foreign), fSpecialFolder(pStart.folder), fIsSimple(pStart.simple),
      fIsOfChange(pStart.ofChange) {
  if (pStart.failed) fItemIdList.Fail();
  if (pStart.pathKnown) fPath.Set(pStart.path);
}

TKivItemIdList::~TKivItemIdList() {
  delete fPIDLLock.load(std::memory_order_acquire);
  ReleaseShellItem();
}

// The item belongs to the main thread's apartment.
void TKivItemIdList::ReleaseShellItem() noexcept {
  if (!fShellItem) return;
  ComPtr<IShellItem> item = std::move(fShellItem);
  if (MainThread::IsCurrent()) return;
  try {
    MainThread::Queue([item = std::move(item)] {});
  } catch (...) {
    // No memory: then it ends here.
  }
}

ComPtr<TKivItemIdList> TKivItemIdList::Create(PCIDLIST_ABSOLUTE pItemIdList, TItemIdListOwnership pOwnsPointer) {
  TUniqueItemIdList copy;
  TStart start;
  start.foreign = pOwnsPointer == iloForeignOwned;
  if (pOwnsPointer == iloCopyMemory) {
    copy.Reset(Copy(pItemIdList));
    start.list = copy.Get();
  } else {
    start.list = const_cast<PIDLIST_ABSOLUTE>(pItemIdList); // never written to
  }
  auto made = Make<TKivItemIdList>(start);
  static_cast<void>(copy.Release());
  return made;
}

ComPtr<TKivItemIdList> TKivItemIdList::Create(TUniqueItemIdList pItemIdList) {
  auto made = Make<TKivItemIdList>(TStart{.list = pItemIdList.Get()});
  static_cast<void>(pItemIdList.Release());
  return made;
}

ComPtr<TKivItemIdList> TKivItemIdList::Create(std::wstring_view pPath, IShellFolder* pShellFolder,
                                              HWND pWindowHandleForLogonDialog) {
  TStart start;
  TUniqueItemIdList list;
  const bool is_network = pPath == LR"(\\*)";
  if (pPath.empty() || is_network) {
    const TKivShellFolder folder = is_network ? SF_NETWORK : SF_DRIVES;
    list.Reset(Copy(CreateForSpecialFolder(folder, true)->WindowsPointer()));
    start.failed = !list;
  } else if (pShellFolder || pWindowHandleForLogonDialog) {
    list = GetIdListFromPath(pShellFolder, pPath, pWindowHandleForLogonDialog);
    start.failed = !list && pShellFolder; // a whole path has its other forms left to be tried
  }
  start.list = list.Get();
  start.path = WithoutTrailingDelimiter(pPath);
  start.pathKnown = !pShellFolder && !pPath.empty();
  auto made = Make<TKivItemIdList>(start);
  static_cast<void>(list.Release());
  return made;
}

ComPtr<TKivItemIdList> TKivItemIdList::Create(IShellFolder* pShellFolder, PCUIDLIST_RELATIVE pRelativeIdList) {
  PIDLIST_ABSOLUTE raw = nullptr;
  HRESULT hr = E_POINTER;
  if (pShellFolder) hr = GuardedExport(ShellApi().SHGetIDListFromObject, pShellFolder, &raw);
  const TUniqueItemIdList folder = TakeItemIdList(hr, raw);
  if (folder) return Create(TUniqueItemIdList(ILCombine(folder.Get(), pRelativeIdList)));
  return Make<TKivItemIdList>(TStart{.failed = true, .folder = SF_FILESYSTEMFOLDER, .pathKnown = true});
}

ComPtr<TKivItemIdList> TKivItemIdList::Create(IShellItem* pShellItem) {
  auto made = Make<TKivItemIdList>(TStart{.folder = SF_FILESYSTEMFOLDER});
  made->SetShellItem(pShellItem);
  made->IsInvalid();
  return made;
}

ComPtr<TKivItemIdList> TKivItemIdList::CreateSimpleIdList(std::wstring_view pPath) {
  TUniqueItemIdList list = SimpleListFromPath(pPath);
  auto made = Make<TKivItemIdList>(
      TStart{.list = list.Get(), .simple = true, .pathKnown = true, .path = WithoutTrailingDelimiter(pPath)});
  static_cast<void>(list.Release());
  return made;
}

ComPtr<TKivItemIdList> TKivItemIdList::CreateOfChange(std::wstring_view pPath, bool pGone) {
  return Make<TKivItemIdList>(
      TStart{.simple = pGone, .ofChange = true, .pathKnown = true, .path = WithoutTrailingDelimiter(pPath)});
}

ComPtr<TKivItemIdList> TKivItemIdList::CreateInvalidWithPath(std::wstring_view pPath) {
  return Make<TKivItemIdList>(TStart{.failed = true, .pathKnown = true, .path = pPath});
}

void TKivItemIdList::SetPidl(PIDLIST_ABSOLUTE pItemIdList) {
  fItemIdList.Replace(pItemIdList);
  fSpecialFolder.store(SF_INVALID, std::memory_order_relaxed);
  fPath.Forget();
  ReleaseShellItem();
}

void TKivItemIdList::SetShellItem(IShellItem* pShellItem) {
  ReleaseShellItem();
  fItemIsOld.store(false, std::memory_order_relaxed);
  if (MainThread::IsCurrent()) fShellItem = pShellItem;
  fPath.Forget();
  // At once: other threads can't resolve from it later, since they must not touch it.
  if (pShellItem) fItemIdList.Resolve([&] { return ListFromItem(pShellItem).Release(); });
}

// --- resolution -----------------------------------------------------------------------------------------------------

PCIDLIST_ABSOLUTE TKivItemIdList::WindowsPointer() {
  return fItemIdList.Resolve([this] { return MakeList(); });
}

PIDLIST_ABSOLUTE TKivItemIdList::MakeList() {
  const auto path = fPath.Read();
  if (!path.known || path.text.empty()) return nullptr;
  if (fIsOfChange) return ListOfChange(path.text, fIsSimple).Release();
  return (fIsSimple ? SimpleListFromPath(path.text) : ListFromPath(path.text)).Release();
}

bool TKivItemIdList::IsInvalid() {
  return WindowsPointer() == nullptr;
}

bool TKivItemIdList::IsResolved() {
  return fItemIdList.IsResolved();
}

std::optional<std::wstring> TKivItemIdList::MaybeKnownPath() const {
  const auto seen = fPath.Read();
  if (seen.known && (seen.text.empty() || fIsSimple || IsRealPath(seen.text))) return std::wstring(seen.text);
  return std::nullopt;
}

std::wstring TKivItemIdList::Path() {
  if (auto known = MaybeKnownPath()) return *std::move(known);
  const auto seen = fPath.Read();
  const PCIDLIST_ABSOLUTE list = WindowsPointer();
  if (!list) {
    // Unless it is being resolved further up on this thread.
    if (!seen.known && IsResolved()) fPath.Publish(seen, {});
    return std::wstring(seen.text);
  }
  const ScopedVisit visit(&fPath);
  if (visit.IsRepeated()) return {};
  return std::wstring(fPath.Publish(seen, FindPath(list)).text);
}

std::wstring TKivItemIdList::FindPath(PCIDLIST_ABSOLUTE pList) {
  std::wstring path;
  try {
    path = PlatformPath(pList);
    if (Depth() < 2 || !path.empty()) return path;
    path = GetDefaultSavePathFromLibrary(pList);
    if (!path.empty()) return path;
    path = ShellName(SIGDN_DESKTOPABSOLUTEEDITING);
    if (!TKivPathList::IsUncServer(path)) path.clear();
  } catch (...) {
    path.clear(); // no path is an answer; an extension that faults isn't worth more
  }
  return path;
}

int TKivItemIdList::Depth() {
  int depth = 0;
  for (PCUIDLIST_RELATIVE item = WindowsPointer(); item && item->mkid.cb != 0; item = ILGetNext(item)) ++depth;
  return depth;
}

bool TKivItemIdList::IsAbsolute() {
  if (Depth() != 1) return true;
  const TKivShellFolder folder = SpecialFolder();
  return folder != SF_FILESYSTEMFOLDER && folder != SF_UNKNOWN;
}

// --- pieces ---------------------------------------------------------------------------------------------------------

PCUIDLIST_RELATIVE TKivItemIdList::GetElementNo(PCUIDLIST_RELATIVE pIdList, int pElementsToSkip) {
  if (pElementsToSkip < 0) {
    throw EInvalidArgument(L"TKivItemIdList.GetStartItemIdList: The paramter pFragments must be greater or equal 0.");
  }
  PCUIDLIST_RELATIVE item = pIdList;
  for (int i = 0; item && i < pElementsToSkip; ++i) {
    const PCUIDLIST_RELATIVE next = ILGetNext(item);
    if (!next || next->mkid.cb == 0) break;
    item = next;
  }
  return item;
}

ComPtr<IItemIdList> TKivItemIdList::GetStartItemIdList(int pFragments) {
  GetElementNo(nullptr, pFragments); // refuses a negative number
  TUniqueItemIdList list(Copy(WindowsPointer()));
  ITEMIDLIST* item = list.Get();
  for (int i = 0; item && i < pFragments && item->mkid.cb != 0; ++i) item = ILGetNext(item);
  if (item) item->mkid.cb = 0;
  return Create(std::move(list));
}

ComPtr<IItemIdList> TKivItemIdList::GetParent() {
  const PCIDLIST_ABSOLUTE list = WindowsPointer();
  if (!list)
    throw EPathmereError(L"Could not get the parent ItemIdList for invalid ItemIdList: ",
                         static_cast<IItemIdList*>(this));
  TUniqueItemIdList parent(Copy(list));
  if (!parent || !ILRemoveLastID(parent.Get())) {
    throw EPathmereError(L"Could not get the parent ItemIdList for: ", static_cast<IItemIdList*>(this));
  }
  return Create(std::move(parent));
}

ComPtr<IItemIdList> TKivItemIdList::GetLastPart() {
  const PCIDLIST_ABSOLUTE list = WindowsPointer();
  return Create(TUniqueItemIdList(list ? ILClone(ILFindLastID(list)) : nullptr));
}

ComPtr<IItemIdList> TKivItemIdList::Concat(IItemIdList* pItemIdList2) {
  if (!pItemIdList2) return this;
  return Create(TUniqueItemIdList(ILCombine(WindowsPointer(), pItemIdList2->WindowsPointer())));
}

// --- the shared invalid list ----------------------------------------------------------------------------------------

ComPtr<IItemIdList> EmptyIdList() {
  return SpecialFolders::FromCache(SF_FILESYSTEMFOLDER);
}

} // namespace kiv
