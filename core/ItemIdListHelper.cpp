#include <core/ItemIdListHelper.h>

#include <core/DebugLog.h>
#include <core/FolderEnumerator.h>
#include <core/ItemIdList.h>
#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <core/PathmereError.h>
#include <framework/FileNames.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>
#include <threading/WorkProcedures.h>

#include <winnetwk.h>

#include <atomic>
#include <string>
#include <utility>

namespace kiv {

namespace {

constexpr wchar_t Archive[] = L".ZIP";
constexpr SFGAOF SubFolders = SFGAO_HASSUBFOLDER | SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR;
static_assert(SubFolders == 0xD0000000);

std::atomic<bool (*)(std::wstring_view)> gShowNamespace{nullptr};

UINT DriveType(const std::wstring& drive) {
  const auto get_type = ShellApi().GetDriveTypeW;
  return get_type ? get_type((drive + L'\\').c_str()) : UINT{DRIVE_UNKNOWN};
}

// A drive whose connection the user's profile remembers; one that is connected already counts as well.
bool Reconnect(std::wstring drive) {
  const auto get_connection = ShellApi().WNetGetConnectionW;
  const auto connect = ShellApi().WNetAddConnection2W;
  if (!get_connection || !connect) return false;
  std::wstring remote(LongestPath + 1, L'\0');
  auto length = static_cast<DWORD>(remote.size());
  // The name is given of a connection that has gone, too.
  const DWORD found = get_connection(drive.c_str(), remote.data(), &length);
  if (found == NO_ERROR && DriveType(drive) == DRIVE_REMOTE) return true;
  if (found != NO_ERROR && found != ERROR_CONNECTION_UNAVAIL) return false;
  NETRESOURCEW resource{};
  resource.dwType = RESOURCETYPE_DISK;
  resource.lpLocalName = drive.data();
  resource.lpRemoteName = remote.data();
  const ScopedErrorMode mode;
  return connect(&resource, nullptr, nullptr, CONNECT_TEMPORARY) == NO_ERROR;
}

// What a folder of the desktop must be called to be a namespace extension; empty if it isn't one.
std::wstring ClassIdOf(IItemIdList& list) {
  const std::wstring name = list.DisplayName(dnfRelativeParsing);
  return TKivPathList::IsFolderClassId(name) ? name.substr(2) : std::wstring();
}

} // namespace

void SetShellShowNamespaceSource(bool (*pSource)(std::wstring_view pClassId)) noexcept {
  gShowNamespace = pSource;
}

// --- within a time --------------------------------------------------------------------------------------------------

bool TItemIdListHelper::TryIsInvalid(IItemIdList* pItemIdList, std::uint64_t pStopAfter,
                                     ComPtr<ICancellationIndicator> pCancellationIndicator) {
  if (!pItemIdList) return true;
  bool finished = false;
  return AskInTime<bool>([list = ComPtr<IItemIdList>(pItemIdList)] { return !list->Reload() || list->IsInvalid(); },
                         pStopAfter, true, finished, std::move(pCancellationIndicator));
}

bool TItemIdListHelper::TryReload(IItemIdList* pItemIdList, std::uint64_t pStopAfter, bool& pFinished,
                                  ComPtr<ICancellationIndicator> pCancellationIndicator) {
  pFinished = true;
  if (!pItemIdList) return false;
  const ComPtr<IItemIdList> list(pItemIdList);
  const bool there =
      AskInTime<bool>([list] { return list->Reload(); }, pStopAfter, false, pFinished, pCancellationIndicator);
  if (!pFinished && !(pCancellationIndicator && pCancellationIndicator->IsCancellationRequested())) {
    // Not here: what didn't answer in time won't tell of itself in time either.
    const auto tell = TAsyncProcedure::Create([list] { WriteDebugInfo(list.Get(), L"ItemIdList.Reload timed out."); });
    TItemIdListHelperThreadPool::Instance()->AddWorkItem(tell, TPriority::Normal);
  }
  return there;
}

bool TItemIdListHelper::TryHasSubFolders(IItemIdList* pItemIdList, std::uint64_t pStopAfter, bool pFileSystemOnly,
                                         bool& pFinished, ComPtr<ICancellationIndicator> pCancellationIndicator) {
  pFinished = true;
  if (!pItemIdList) return false;
  // By the path's text, where there is one: a name would have to be asked for, and the folder may not answer.
  const auto* const list = dynamic_cast<const TKivItemIdList*>(pItemIdList);
  const auto path = list ? list->MaybeKnownPath() : std::nullopt;
  if (path && HasFileExtension(ExtractFileName(*path), Archive)) return !pFileSystemOnly;
  return AskInTime<bool>([asked = ComPtr<IItemIdList>(pItemIdList),
                          pFileSystemOnly] { return HasSubFolders(asked.Get(), pFileSystemOnly); },
                         pStopAfter, false, pFinished, std::move(pCancellationIndicator));
}

TKivShellFolder TItemIdListHelper::TryGetSpecialFolder(IItemIdList* pItemIdList, std::uint64_t pStopAfter,
                                                       bool& pFinished,
                                                       ComPtr<ICancellationIndicator> pCancellationIndicator) {
  pFinished = true;
  if (!pItemIdList) return SF_INVALID;
  return AskInTime<TKivShellFolder>([list = ComPtr<IItemIdList>(pItemIdList)] { return list->SpecialFolder(); },
                                    pStopAfter, SF_UNKNOWN, pFinished, std::move(pCancellationIndicator));
}

// --- at once --------------------------------------------------------------------------------------------------------

bool TItemIdListHelper::HasSubFolders(IItemIdList* pItemIdList, bool pFileSystemOnly) {
  if (!pItemIdList) return false;
  if (HasFileExtension(pItemIdList->Name(), Archive)) return !pFileSystemOnly;
  if (!pFileSystemOnly) return pItemIdList->HasAttributes(SFGAO_HASSUBFOLDER);
  const ComPtr<IShellItem> item = pItemIdList->ShellItem();
  if (!item) return false;
  SFGAOF found = 0;
  const HRESULT hr = GuardedCall([&] { return item->GetAttributes(SubFolders, &found); });
  return SUCCEEDED(hr) && (found & SFGAO_HASSUBFOLDER) != 0 &&
         (found & (SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR)) != 0;
}

bool TItemIdListHelper::IsNullOrInvalid(IItemIdList* pItemIdList) {
  return !pItemIdList || pItemIdList->IsInvalid();
}

bool TItemIdListHelper::IsSimple(IItemIdList* pItemIdList) {
  const auto* const list = dynamic_cast<TKivItemIdList*>(pItemIdList);
  return list && list->IsSimple();
}

bool TItemIdListHelper::IsFileAndFolder(IItemIdList* pItemIdList) {
  return pItemIdList && pItemIdList->IsFolder() && pItemIdList->HasAttributes(SFGAO_STREAM);
}

bool TItemIdListHelper::SupportsIShellFolder2(IItemIdList* pItemIdList) {
  ComPtr<IShellFolder> folder;
  return pItemIdList && SUCCEEDED(ComPtr<IItemIdList>(pItemIdList).As(folder)) && folder.MaybeAs<IShellFolder2>();
}

bool TItemIdListHelper::IsUNCPath(IItemIdList* pItemIdList) {
  return pItemIdList && kiv::IsUNCPath(pItemIdList->Path());
}

bool TItemIdListHelper::IsNetworkPath(IItemIdList* pItemIdList) {
  const std::wstring path = pItemIdList ? pItemIdList->Path() : std::wstring();
  const std::wstring drive = ExtractFileDrive(path);
  if (drive.empty()) return false;
  if (TKivPathList::IsUNCPath(path)) return true; // without asking the server
  const UINT type = DriveType(drive);
  return type == DRIVE_REMOTE || type == DRIVE_NO_ROOT_DIR;
}

bool TItemIdListHelper::IsNetworkPathReachable(IItemIdList* pItemIdList, std::uint64_t pTimeout,
                                               ComPtr<ICancellationIndicator> pCancellationIndicator) {
  if (IsUNCPath(pItemIdList)) return !TryIsInvalid(pItemIdList, pTimeout, std::move(pCancellationIndicator));
  if (!IsNetworkPath(pItemIdList)) return true;
  bool finished = false;
  return AskInTime<bool>([drive = ExtractFileDrive(pItemIdList->Path())] { return Reconnect(drive); }, pTimeout, false,
                         finished, std::move(pCancellationIndicator));
}

bool TItemIdListHelper::IsSynchronizedCloudPath(IItemIdList* pItemIdList) {
  const auto is_shown = gShowNamespace.load();
  if (!pItemIdList || !is_shown) return false;
  const std::wstring class_id = ClassIdOf(*pItemIdList);
  if (class_id.empty()) return false;
  const TKivShellFolder folder = pItemIdList->SpecialFolder();
  return (folder == SF_FILESYSTEMFOLDER || folder == SF_ONEDRIVE) && is_shown(class_id);
}

std::vector<ComPtr<IItemIdList>> TItemIdListHelper::GetSynchronizedCloudPaths() {
  std::vector<ComPtr<IItemIdList>> found;
  const ScopedErrorMode mode;
  TFolderEnumerator objects(Desktop());
  TUniqueItemIdList item;
  try {
    for (;;) {
      const TFolderStep step = objects.Next(item);
      if (step != TFolderStep::Object && step != TFolderStep::ObjectAfterFault) return found;
      ComPtr<IItemIdList> list = TKivItemIdList::Create(std::move(item)); // the desktop is the root
      if (!list->Path().empty() && IsSynchronizedCloudPath(list.Get())) found.push_back(std::move(list));
    }
  } catch (const EPathmereError& e) {
    TDebugLog::LogException(L"Synchronized folders", e);
  }
  return found;
}

void TItemIdListHelper::WriteDebugInfo(IItemIdList* pItemIdList, std::wstring_view pMessage) {
  std::wstring info = L"-nil-";
  if (pItemIdList) {
    const auto informant = ComPtr<IItemIdList>(pItemIdList).MaybeAs<IHasDebugInfo>();
    info = informant ? informant->GetInfo(TItemIdListInfoLevel::Verbose) : std::wstring();
  }
  TDebugLog::LogMessage(std::wstring(pMessage) + L": " + info);
}

} // namespace kiv
