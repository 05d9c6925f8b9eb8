#include <folder_view/FolderWork.h>

#include <core/FileFunctions.h>
#include <core/FolderFunctions.h>
#include <core/ItemIdList.h>
#include <core/PathUtils.h>
#include <core/PathmereError.h>
#include <core/ShellFolderSource.h>
#include <platform/ErrorText.h>
#include <platform/FaultGuard.h>
#include <platform/Lifecycle.h>
#include <platform/ShellApi.h>
#include <walker/Pathmere.h>

#include <algorithm>
#include <chrono>
#include <memory>

namespace kiv::sample {

namespace {

constexpr std::chrono::milliseconds BetweenDeliveries{100};
constexpr int FreeWorkers = 4;
constexpr int MostMeasuring = 2;

HRESULT CodeOf(const EOSError& error) {
  const auto code = static_cast<HRESULT>(error.ErrorCode());
  if (FAILED(code)) return code;
  return code == S_OK ? E_FAIL : HRESULT_FROM_WIN32(static_cast<DWORD>(code));
}

TFailure CannotShow(const std::wstring& name, HRESULT code) {
  return {L"\u201C" + name + L"\u201D can't be shown.", code};
}

// The folder's own answer for one that can't be bound: the shell's own may be no more than "not found".
HRESULT WhyNot(const std::wstring& path) {
  std::unique_ptr<IFolderStepper> stepper;
  const HRESULT opened = TShellFolderSource().OpenFolder(path, stepper);
  return FAILED(opened) ? opened : E_FAIL;
}

std::wstring Trimmed(const std::wstring& text) {
  constexpr const wchar_t* blanks = L" \t\"";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::wstring::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

std::wstring TFailure::Text() const {
  return *this ? what + L" " + DescribeError(code) : std::wstring();
}

// --- folders ---------------------------------------------------------------------------------------------------------

TOpenedFolder OpenFolder(const ComPtr<IItemIdList>& pFolder) {
  TOpenedFolder opened;
  opened.list = pFolder;
  try {
    opened.path = pFolder->DisplayPath();
    TPathmere walker;
    walker.SetShowErrorMessages(false);
    walker.SetFolderIdList(pFolder);
    if (!walker.GetShellFolder()) throw EPathmereError(E_FAIL, opened.path);
    opened.diskPath = pFolder->HasAttributes(SFGAO_FILESYSTEM) ? pFolder->Path() : std::wstring();
    if (!opened.diskPath.empty()) {
      opened.names = pFolder->IsSpecialFolder(SF_DESKTOP) ? TNameUse::Merged : TNameUse::Unique;
    }
    // Not every shell tells it of the disk's.
    opened.takesFolders =
        pFolder->HasAttributes(SFGAO_STORAGE) || (!opened.diskPath.empty() && !pFolder->HasAttributes(SFGAO_STREAM));
    opened.title = pFolder->DisplayName(dnfNormal);
    // A notifier asks on the main thread where the folder leads, and then that is known.
    static_cast<void>(pFolder->LinkTarget());
  } catch (const EOSError& error) {
    const std::wstring disk_path = pFolder->Path();
    opened.failure = CannotShow(opened.path, disk_path.empty() ? CodeOf(error) : WhyNot(disk_path));
  } catch (...) {
    opened.failure = CannotShow(opened.path, E_FAIL);
  }
  return opened;
}

namespace {

TOpenedFolder OpenTyped(const std::wstring& text) {
  const ComPtr<IItemIdList> list = TKivItemIdList::Parse(text);
  TOpenedFolder opened;
  if (!list || list->IsInvalid()) {
    const HRESULT code = WhyNot(text);
    opened.failure = CannotShow(text, code == E_FAIL ? HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND) : code);
  } else if (!list->IsFolder()) {
    opened.failure = CannotShow(text, HRESULT_FROM_WIN32(ERROR_DIRECTORY));
  } else {
    opened = OpenFolder(list);
  }
  return opened;
}

} // namespace

TOpenedFolder OpenFolder(const std::wstring& pText) {
  try {
    return OpenTyped(KIVExpandEnvironmentStrings(Trimmed(pText)));
  } catch (...) {
    TOpenedFolder failed;
    failed.failure = CannotShow(pText, E_FAIL);
    return failed;
  }
}

// --- listing ---------------------------------------------------------------------------------------------------------

namespace {

/// One run of ListFolder.
class TLister {
public:
  TLister(const TListing& pListing, ICancellationIndicator& pWithdrawn,
          const std::function<void(TEntries, bool)>& pDeliver)
      : fListing(pListing), fWithdrawn(pWithdrawn), fDeliver(pDeliver) {}

  void Run() {
    TPathmere walker;
    walker.SetShowErrorMessages(false);
    walker.SetFolderIdList(fListing.folder.list);
    TObjectFacts facts(walker.GetShellFolder());
    auto due = std::chrono::steady_clock::now() + BetweenDeliveries;
    while (!fWithdrawn.IsCancellationRequested() && walker.Next()) {
      const TOpenedFolder& folder = fListing.folder;
      auto entry = ReadEntry(facts, walker.GetItemIdList(), folder.list.Get(), folder.names);
      if (entry) fNew.push_back(std::move(entry));
      if (std::chrono::steady_clock::now() < due) continue;
      Deliver(false);
      due = std::chrono::steady_clock::now() + BetweenDeliveries;
    }
    // Some shells list what isn't there any more, and find nothing.
    const std::wstring& path = fListing.folder.diskPath;
    if (fAll.empty() && fNew.empty() && !path.empty() && !IsFolder(path)) {
      throw EPathmereError(WhyNot(path), std::wstring_view());
    }
    if (!fWithdrawn.IsCancellationRequested()) Deliver(true);
  }

private:
  void Deliver(bool complete) {
    if (!complete && fNew.empty()) return;
    const auto known = static_cast<std::ptrdiff_t>(fAll.size());
    SortEntries(fNew, fListing.order);
    fAll.insert(fAll.end(), std::make_move_iterator(fNew.begin()), std::make_move_iterator(fNew.end()));
    fNew.clear();
    if (fListing.order.column == TFolderColumn::Type) {
      SortEntries(fAll, fListing.order);
    } else {
      std::inplace_merge(fAll.begin(), fAll.begin() + known, fAll.end(),
                         [this](const TEntry& a, const TEntry& b) { return StandsBefore(*a, *b, fListing.order); });
    }
    if (known == 0) LookAtFirstPage();
    if (!fWithdrawn.IsCancellationRequested()) fDeliver(fAll, complete);
  }

  // So that what is painted first needn't be painted again.
  void LookAtFirstPage() {
    const std::size_t count = std::min(fAll.size(), static_cast<std::size_t>(fListing.page));
    for (std::size_t i = 0; i < count && !fWithdrawn.IsCancellationRequested(); ++i) {
      if (!LooksLikeItsKind(*fAll[i])) continue;
      auto entry = std::make_shared<TFolderEntry>(*fAll[i]);
      entry->image = ImageOf(*entry, fListing.folder.list.Get());
      entry->type = TypeOf(*entry);
      fAll[i] = std::move(entry);
    }
  }

  const TListing& fListing;
  ICancellationIndicator& fWithdrawn;
  const std::function<void(TEntries, bool)>& fDeliver;
  TEntries fAll;
  TEntries fNew;
};

} // namespace

TFailure ListFolder(const TListing& pListing, ICancellationIndicator& pWithdrawn,
                    const std::function<void(TEntries pEntries, bool pComplete)>& pDeliver) {
  try {
    TLister(pListing, pWithdrawn, pDeliver).Run();
  } catch (const EOSError& error) {
    return CannotShow(pListing.folder.path, CodeOf(error));
  } catch (...) {
    return CannotShow(pListing.folder.path, E_FAIL);
  }
  return {};
}

TFileTime LastChange(const std::wstring& pDiskPath) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  const std::wstring path = TPathUtils::GetUnicodeAPICallPath(pDiskPath);
  if (pDiskPath.empty() || !GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return 0;
  return static_cast<TFileTime>(data.ftLastWriteTime.dwHighDateTime) << 32U | data.ftLastWriteTime.dwLowDateTime;
}

std::optional<std::vector<TReread>> ReadObjects(const TOpenedFolder& pFolder, const std::vector<std::wstring>& pNames,
                                                ICancellationIndicator& pWithdrawn) {
  try {
    std::vector<TReread> answers;
    TPathmere walker;
    walker.SetShowErrorMessages(false);
    walker.SetFolderIdList(pFolder.list);
    const ComPtr<IShellFolder> folder = walker.GetShellFolder();
    if (!folder) return std::nullopt;
    TObjectFacts facts(folder, pFolder.diskPath, TFactsPrecision::Exact);
    for (const std::wstring& name : pNames) {
      if (pWithdrawn.IsCancellationRequested()) break;
      std::wstring text = name; // the platform's declaration takes it for changeable
      PIDLIST_RELATIVE raw = nullptr;
      const HRESULT hr =
          GuardedCall([&] { return folder->ParseDisplayName(nullptr, nullptr, text.data(), nullptr, &raw, nullptr); });
      TUniqueItemIdList item(raw);
      TEntry entry;
      if (SUCCEEDED(hr) && item) {
        entry = ReadEntry(facts, TKivItemIdList::Create(std::move(item)), pFolder.list.Get(), pFolder.names);
      }
      // The report may have had the short name.
      const std::wstring key = entry ? entry->key : KeyOfName(name);
      answers.push_back({key, std::move(entry)});
    }
    return answers;
  } catch (...) {
    return std::nullopt; // a listing tells why
  }
}

// --- workers ---------------------------------------------------------------------------------------------------------

namespace {

std::unique_ptr<TWorkerThreadPool> gWorkers;
std::unique_ptr<TWorkerThreadPool> gSizeWorkers;

std::unique_ptr<TWorkerThreadPool> MakePool() {
  auto pool = std::make_unique<TWorkerThreadPool>(true);
  pool->SetMaxTimeUntilHardTerminate(200);
  pool->SetMaxCpuUsage(100);
  pool->SetMaxIdleTime(10'000);
  return pool;
}

} // namespace

TWorkerThreadPool& FolderWorkers() {
  if (!gWorkers) {
    gWorkers = MakePool();
    AtShutdown([] { gWorkers.reset(); });
    MakeRoom();
  }
  return *gWorkers;
}

TWorkerThreadPool& SizeWorkers() {
  if (!gSizeWorkers) {
    gSizeWorkers = MakePool();
    AtShutdown([] { gSizeWorkers.reset(); });
    gSizeWorkers->SetMaxRunningThreads(MostMeasuring);
  }
  return *gSizeWorkers;
}

void MakeRoom() {
  TWorkerThreadPool& workers = FolderWorkers();
  const int wanted = workers.GetActiveThreadCount() + FreeWorkers;
  if (wanted > workers.GetMaxRunningThreads()) workers.SetMaxRunningThreads(wanted);
  workers.SetMinWorkerThreads(wanted);
}

void MakeRoomForOne() {
  TWorkerThreadPool& workers = FolderWorkers();
  const int wanted = workers.GetActiveThreadCount() + 1;
  if (wanted > workers.GetMinWorkerThreads()) workers.SetMinWorkerThreads(wanted);
}

} // namespace kiv::sample
