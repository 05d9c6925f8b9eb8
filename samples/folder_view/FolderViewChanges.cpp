#include <folder_view/FolderView.h>

#include <framework/FileNames.h>
#include <framework/TextCompare.h>
#include <platform/MainThread.h>

#include <algorithm>
#include <mutex>
#include <utility>

// Changes on the disk.

namespace kiv::sample {

namespace {

// Reading so many names again costs as much as listing a large folder.
constexpr std::size_t MostNames = 200;

struct THint {
  TNotificationEvent event;
  std::wstring path;
  std::wstring new_path;
};

} // namespace

/// What notifications leave behind, on whatever thread they come. Outlives the view for as long as one is on its way.
struct TFolderView::THints {
  std::mutex lock;
  std::vector<THint> hints; // under lock
  TFolderView* view;        // main thread; its token says whether it is still there
};

void TFolderView::Watch() {
  fHints = std::make_shared<THints>();
  fHints->view = this;
  fNotifier = std::make_unique<TKivShellChangeNotifier>();
  // What a notification is about is asked by workers, however long that takes; the order doesn't matter.
  fNotifier->SetNotifyAsynchronously(true);
  const ComPtr<ICancellationIndicator> indicator = fNavigation;
  fNotifier->SetOnChange([hints = fHints, indicator](TPersistent*, TNotificationEvent event, const std::wstring& path,
                                                     const std::wstring& new_path) {
    const std::lock_guard guard(hints->lock);
    hints->hints.push_back({event, path, new_path});
    if (hints->hints.size() > 1) return;
    MainThread::Queue([hints, indicator] {
      if (!indicator->IsCancellationRequested()) hints->view->TakeHints();
    });
  });
  fNotifier->AddItemIdList(fFolder.list.Get(), false, {});
  fNotifier->Start();
}

void TFolderView::TakeHints() {
  std::vector<THint> hints;
  {
    const std::lock_guard guard(fHints->lock);
    hints.swap(fHints->hints);
  }
  const auto note = [this](const std::wstring& path) {
    const bool here = !fFolder.diskPath.empty() && SameText(ExtractFileDir(path), fFolder.diskPath);
    if (here) fNames.insert(ExtractFileName(path));
    return here;
  };
  for (const THint& hint : hints) {
    if (hint.event == neDriveSpaceChange) continue;
    bool known = note(hint.path);
    if (!hint.new_path.empty()) known = note(hint.new_path) && known;
    if (!known) {
      fRelist = true;
    } else if (!hint.new_path.empty()) {
      NoteRename(ExtractFileName(hint.path), ExtractFileName(hint.new_path));
    }
  }
  if (!hints.empty()) fChangeTimer.SetEnabled(true);
}

// A row goes with its object, however often that got another name meanwhile.
void TFolderView::NoteRename(const std::wstring& pName, const std::wstring& pNewName) {
  const std::wstring from = KeyOfName(pName);
  const std::wstring to = KeyOfName(pNewName);
  bool known = false;
  for (auto& renamed : fRenamed) {
    if (renamed.second != from) continue;
    renamed.second = to;
    known = true;
  }
  if (!known) fRenamed[from] = to;
  fNames.insert({pName, pNewName});
}

void TFolderView::RunChanges() {
  fChangeTimer.SetEnabled(false);
  if (!fNotifier && !fListing && fOpened) {
    Watch();
    LookForMissedChanges();
  }
  if (IsNameOpen() || fListing || fReading || fSorting) return; // their end looks again
  const bool is_plain = fFolder.names == TNameUse::Unique || fNames.empty();
  if (fRelist || fNames.size() > MostNames || !is_plain) {
    StartListing(true);
    return;
  }
  if (fNames.empty()) return;
  fReading = true;
  fMoved = std::exchange(fRenamed, {});
  fNameCame = false;
  const std::vector<std::wstring> names(fNames.begin(), fNames.end());
  fNames.clear();
  const auto answers = std::make_shared<std::optional<std::vector<TReread>>>();
  const ComPtr<ICancellationIndicator> indicator = fNavigation;
  Run(
      fNavigation,
      [answers, names, folder = fFolder, indicator] { *answers = ReadObjects(folder, names, *indicator.Get()); },
      [this, answers] {
        fReading = false;
        if (!std::exchange(fNameCame, false) && *answers && !IsNameOpen())
          TakeReread(**answers);
        else
          ListBehindTheEdit();
      });
}

void TFolderView::RunWhatWasHeldUp() {
  if (fRelist || !fNames.empty()) fChangeTimer.SetEnabled(true);
}

// An answer can't be used: the next listing brings all of it, and rows follow their objects then.
void TFolderView::ListBehindTheEdit() {
  fRelist = true;
  for (const auto& [from, to] : std::exchange(fMoved, {})) {
    const auto further = fRenamed.extract(to);
    fRenamed.emplace(from, further ? further.mapped() : to);
  }
  if (!IsNameOpen()) RunWhatWasHeldUp(); // else the end of that does
}

void TFolderView::TakeReread(const std::vector<TReread>& pObjects) {
  RunWhatWasHeldUp();
  std::map<std::wstring_view, TEntry> answers;
  for (const TReread& object : pObjects) answers[object.key] = object.entry;
  TEntries entries;
  entries.reserve(fEntries.size() + answers.size());
  std::map<std::wstring_view, TEntry> gone;
  for (const TEntry& entry : fEntries) {
    const auto answer = answers.find(entry->key);
    if (answer == answers.end()) {
      entries.push_back(entry);
    } else if (!answer->second) {
      gone.emplace(entry->key, entry);
    } else {
      if (IsSameFact(*entry, *answer->second))
        answer->second = entry;
      else if (entry->row)
        entry->row->SetEntry(answer->second);
    }
  }
  for (const auto& [from, to] : fMoved) {
    const auto old = gone.find(from);
    const auto answer = answers.find(to);
    const bool follows = old != gone.end() && old->second->row && answer != answers.end() && answer->second;
    if (follows && !answer->second->row) old->second->row->SetEntry(answer->second);
  }
  for (const auto& [key, entry] : answers) {
    if (!entry) continue;
    if (fOrder.column == TFolderColumn::Type) {
      entries.push_back(entry);
      continue;
    }
    const auto place =
        std::upper_bound(entries.begin(), entries.end(), entry,
                         [this](const TEntry& a, const TEntry& b) { return StandsBefore(*a, *b, fOrder); });
    entries.insert(place, entry);
  }
  fEntries = std::move(entries);
  ++fVersion;
  const TAliveWatch alive(GetAliveToken());
  ShowRows();
  if (!alive.IsAlive()) return;
  EndAwaitingWhatWontCome();
  if (fOrder.column == TFolderColumn::Type) SortLater();
}

} // namespace kiv::sample
