// What an item list asks of the object behind it: shell item, attributes, folder, content, and whether it is there
// still.
#include <core/ItemIdList.h>

#include <core/FileFunctions.h>
#include <core/PathFunctions.h>
#include <core/PathmereError.h>
#include <core/ShellLinkHelper.h>
#include <platform/FaultGuard.h>
#include <platform/MainThread.h>
#include <platform/TakeResult.h>
#include <platform/fill/FileStream.h>
#include <platform/fill/Revalidation.h>

#include <cstring>

namespace kiv {

namespace {

// The control panel with all its tasks: its categories can't be browsed.
constexpr wchar_t ControlPanelCategories[] = L"::{26EE0668-A00A-44D7-9371-BEB064C98683}";

// What is known of whether it is a link.
constexpr std::uint8_t LinkAsked = 1;
constexpr std::uint8_t LinkFound = 2;
constexpr std::uint8_t LinkBits = LinkAsked | LinkFound;

bool SameBytes(PCIDLIST_ABSOLUTE a, PCIDLIST_ABSOLUTE b) {
  if (!a || !b) return false;
  const UINT size = ILGetSize(a);
  return size == ILGetSize(b) && std::memcmp(a, b, size) == 0;
}

HRESULT MakeReadContext(ComPtr<IBindCtx>& context) {
  const HRESULT hr = CreateBindCtx(0, &context);
  if (FAILED(hr)) return hr;
  BIND_OPTS options{};
  options.cbStruct = sizeof(options);
  options.grfMode = STGM_SHARE_DENY_NONE;
  return context->SetBindOptions(&options);
}

} // namespace

ComPtr<IShellItem> TKivItemIdList::ShellItem() {
  const bool is_main_thread = MainThread::IsCurrent();
  if (is_main_thread && fItemIsOld.exchange(false, std::memory_order_acquire)) fShellItem.Reset();
  const PCIDLIST_ABSOLUTE list = WindowsPointer();
  if (!list) return nullptr;
  if (is_main_thread && fShellItem) return fShellItem;
  ComPtr<IShellItem> item;
  if (FAILED(GuardedExport(ShellApi().SHCreateShellItem, nullptr, nullptr, list, &item))) return nullptr;
  const bool keep = is_main_thread && fSpecialFolder.load(std::memory_order_relaxed) != SF_QUICKACCESS;
  if (keep) fShellItem = item;
  return item;
}

bool TKivItemIdList::HasAttributes(SFGAOF pAttributes) {
  if (pAttributes == SFGAO_BROWSABLE) return IsBrowsable();
  if (pAttributes == SFGAO_FILESYSTEM) {
    const auto path = fPath.Read();
    if (path.known && path.text.size() > 1 && FileOrFolderExists(path.text)) return true;
  }
  SFGAOF found = 0;
  return SUCCEEDED(AskAttributes(pAttributes, found)) && found != 0;
}

HRESULT TKivItemIdList::AskAttributes(SFGAOF pAttributes, SFGAOF& pFound) {
  const ComPtr<IShellItem> item = ShellItem();
  if (!item) return E_POINTER;
  return GuardedCall([&] { return item->GetAttributes(pAttributes, &pFound); });
}

bool TKivItemIdList::IsFolder() {
  return HasAttributes(SFGAO_FOLDER);
}

bool TKivItemIdList::IsBrowsable() {
  if (IsInvalid() || !IsFolder() || IsParentOf(SF_BITBUCKET, this, false)) return false;
  if (Depth() != 3) return true;
  return !Create(ControlPanelCategories)->IsParentOf(this, true, ilcExact);
}

bool TKivItemIdList::IsSlow() {
  if (IsInvalid()) return false;
  if (Depth() < 3 && IsNetworkPidl(this)) return true;
  if (IsParentOf(SF_NETHOOD, this, true)) return true;
  const std::wstring path = Path();
  const auto drive_type = ShellApi().GetDriveTypeW;
  return drive_type && IsDrive(path) && drive_type(path.c_str()) == DRIVE_REMOTE;
}

// Answered once: whoever has let a worker ask needn't wait for the shell again.
bool TKivItemIdList::IsLink() {
  std::uint8_t known = fLink.load(std::memory_order_relaxed);
  if ((known & LinkAsked) != 0) return (known & LinkFound) != 0;
  SFGAOF found = 0;
  if (FAILED(AskAttributes(SFGAO_LINK, found))) return false;
  const int answer = known | LinkAsked | (found != 0 ? LinkFound : 0);
  // Not over a Reload that came meanwhile.
  fLink.compare_exchange_strong(known, static_cast<std::uint8_t>(answer), std::memory_order_relaxed);
  return found != 0;
}

ComPtr<IItemIdList> TKivItemIdList::LinkTarget() {
  if (IsParentOf(SF_QUICKACCESS, this, false)) return Parse(DisplayPath());
  if (!IsLink()) return this;
  const ComPtr<IItemIdList> target = TShellLinkHelper::Resolve(this);
  return target ? target : this;
}

// --- binding --------------------------------------------------------------------------------------------------------

HRESULT TKivItemIdList::BindTo(REFGUID pHandler, IBindCtx* pContext, REFIID pIid, void** pObject) {
  const ComPtr<IShellItem> item = ShellItem();
  if (!item) return E_POINTER;
  return GuardedCall([&] { return item->BindToHandler(pContext, pHandler, pIid, pObject); });
}

ComPtr<IShellFolder> TKivItemIdList::GetShellFolder() {
  if (IsSpecialFolder(SF_DESKTOP)) return Desktop();
  if (!ShellItem()) {
    throw EPathmereError(L"Could not retrieve IShellItem for ItemIdList ", static_cast<IItemIdList*>(this));
  }
  void* found = nullptr;
  const HRESULT hr = BindTo(BHID_SFObject, nullptr, IidOf<IShellFolder>(), &found);
  ComPtr<IShellFolder> folder;
  folder.Attach(static_cast<IShellFolder*>(found));
  if (FAILED(hr) || !folder) throw EPathmereError(FAILED(hr) ? hr : E_UNEXPECTED, DisplayPath());
  return folder;
}

ComPtr<IStream> TKivItemIdList::GetStream() {
  ComPtr<IStream> stream;
  ComPtr<IBindCtx> context;
  if (IsFolder() || !ShellItem() || FAILED(MakeReadContext(context))) return nullptr;
  void* found = nullptr;
  const HRESULT hr = BindTo(BHID_Stream, context.Get(), IidOf<IStream>(), &found);
  stream.Attach(static_cast<IStream*>(found));
  if (SUCCEEDED(hr)) return stream;
  // A shell without this handler: a file has a stream all the same.
  const bool unknown_handler = hr == MK_E_NOOBJECT || hr == E_NOTIMPL;
  if (unknown_handler && HasAttributes(SFGAO_FILESYSTEM)) {
    if (FAILED(CreateFileStream(Path(), STGM_READ | STGM_SHARE_DENY_NONE, stream))) stream.Reset();
  }
  return stream;
}

ComPtr<ISequentialStream> TKivItemIdList::GetSequentialStream() {
  return GetStream();
}

HRESULT TKivItemIdList::QueryInterface(REFIID pIid, void** pObject) {
  const HRESULT hr = TInterfacedObject::QueryInterface(pIid, pObject);
  if (hr != E_NOINTERFACE) return hr;
  try {
    if (pIid == IidOf<IShellFolder>()) return GetShellFolder().CopyTo(reinterpret_cast<IShellFolder**>(pObject));
    if (pIid == IidOf<IStream>() || pIid == IidOf<ISequentialStream>()) {
      if (const auto stream = GetStream()) return stream.CopyTo(reinterpret_cast<IStream**>(pObject));
    }
    return hr;
  } catch (const EPathmereError& e) {
    const auto code = static_cast<HRESULT>(e.ErrorCode());
    return FAILED(code) ? code : E_NOINTERFACE;
  } catch (...) {
    return E_FAIL;
  }
}

// --- reload ---------------------------------------------------------------------------------------------------------

std::recursive_mutex& TKivItemIdList::ReloadLock() {
  std::recursive_mutex* lock = fPIDLLock.load(std::memory_order_acquire);
  if (lock) return *lock;
  auto made = std::make_unique<std::recursive_mutex>();
  // Two threads may make one: the loser's goes.
  if (fPIDLLock.compare_exchange_strong(lock, made.get(), std::memory_order_acq_rel)) lock = made.release();
  return *lock;
}

bool TKivItemIdList::Reload() {
  // Recursive: an extension that pumps messages may lead back here.
  const std::lock_guard guard(ReloadLock());
  if (IsInvalid()) return false;
  const bool reloaded = ReloadLocked();
  const int reloads = (fLink.load(std::memory_order_relaxed) | LinkBits) + 1;
  fLink.store(static_cast<std::uint8_t>(reloads), std::memory_order_relaxed);
  return reloaded;
}

bool TKivItemIdList::ReloadLocked() {
  const ComPtr<IShellItem> item = ShellItem();
  if (!item) return false;
  ComPtr<IShellItem2> updatable;
  HRESULT hr = item.As(updatable);
  if (SUCCEEDED(hr)) hr = GuardedCall([&] { return updatable->Update(nullptr); });
  if (hr == E_NOINTERFACE) return true; // such an item can't be updated
  TUniqueItemIdList list;
  if (hr == E_NOTIMPL) {
    hr = Revalidate(item.Get(), list);
    if (MainThread::IsCurrent()) fShellItem.Reset(); // it knows nothing of the new list
  } else if (SUCCEEDED(hr)) {
    PIDLIST_ABSOLUTE raw = nullptr;
    hr = GuardedExport(ShellApi().SHGetIDListFromObject, item.Get(), &raw);
    list = TakeItemIdList(hr, raw);
  }
  if (FAILED(hr) || !list) return false;
  if (SameBytes(list.Get(), fItemIdList.Get())) return true;
  fItemIdList.Replace(list.Release());
  if (!MainThread::IsCurrent()) fItemIsOld.store(true, std::memory_order_release);
  return true;
}

} // namespace kiv
