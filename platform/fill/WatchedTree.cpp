#include <platform/fill/WatchedTree.h>

#include <algorithm>
#include <utility>

namespace kiv {

using TKind = IWatchedFolders::TKind;

namespace {

// Of folders that are looked at without a pause; letting one go costs as much as some looks.
constexpr int LooksAtOnce = 256;
constexpr int LooksToLetGo = 4;
// An idle time is a silence, and so is the time between two turns of LetGoOfEmpty; one of these may come straight
// behind an idle time.
constexpr int TicksOfSilence = 2;

bool IsRemoval(const TDirectoryRecord& record) {
  return record.action == TDirectoryAction::Removed || record.action == TDirectoryAction::RenamedFrom;
}

} // namespace

/// A folder of the tree.
struct TWatchedTree::TNode {
  std::uint64_t id = 0;
  std::uint64_t number = 0; // of the folder that reports, or was listed
  TNode* parent = nullptr;
  std::wstring name;
  bool open = false;
  bool entered = false; // its content is the tree's concern
  TRenamePairer pairer;
  std::set<std::wstring> listed; // told by a listing, and not reported since
  std::set<std::wstring> unseen; // told as files, since they weren't there any more, or not under that path
  bool unlisted = false;         // it wasn't at its path when it was listed
  bool silent = false;           // nothing was reported since it was seen to be empty
  int silentSince = 0;           // by the tree's clock
  bool lost = false;             // it couldn't be opened again
  std::map<std::wstring, TNodePtr> folders;
};

TWatchedTree::TWatchedTree(std::wstring pPath, TOptions pOptions, IWatchedFolders& pFolders, TEmit pEmit)
    : fPath(std::move(pPath)), fOptions(pOptions), fFolders(pFolders), fEmit(std::move(pEmit)) {}

TWatchedTree::~TWatchedTree() {
  Close();
}

void TWatchedTree::Emit(TDirectoryEvent pEvent, std::wstring pPath1, std::wstring pPath2) {
  if (pEvent == TDirectoryEvent::FolderDelete || pEvent == TDirectoryEvent::FolderRename) Doubt();
  fEmit({pEvent, std::move(pPath1), std::move(pPath2)});
}

void TWatchedTree::TellUpdate() {
  fUpdated = fWantsIdle = true;
  Emit(TDirectoryEvent::FolderUpdate, fPath);
}

std::wstring TWatchedTree::PathOf(const TNode& pNode) const {
  if (!pNode.parent) return fPath;
  return PathOf(TPlace{pNode.parent, pNode.name});
}

std::wstring TWatchedTree::PathOf(const TPlace& pPlace) const {
  std::wstring path = PathOf(*pPlace.folder);
  if (!path.ends_with(L'\\')) path += L'\\';
  return path += pPlace.name;
}

// --- opening and closing --------------------------------------------------------------------------------------------

bool TWatchedTree::Open() {
  Close();
  fRoot = std::make_unique<TNode>();
  fRoot->id = RootFolder;
  fById.emplace(RootFolder, fRoot.get());
  fRoot->number = fFolders.Open(RootFolder, fPath, fOptions.recursive && fOptions.subtree);
  fRoot->open = fRoot->entered = fIsOpen = fRoot->number != 0;
  if (!fIsOpen) {
    Close();
    return false;
  }
  fToScan.push_back(RootFolder);
  return true;
}

void TWatchedTree::Close() {
  fToScan.clear();
  fEmptied.clear();
  fEmpty.clear();
  fTouched.clear();
  fListsLeft = 0;
  fInDoubt = false;
  if (fRoot) CloseNode(*fRoot);
  fRoot.reset();
  fIsOpen = false;
}

void TWatchedTree::CloseNode(TNode& pNode) {
  for (auto& [name, folder] : pNode.folders) CloseNode(*folder);
  if (pNode.open) fFolders.Close(pNode.id);
  pNode.open = false;
  fById.erase(pNode.id);
}

TWatchedTree::TNode& TWatchedTree::AddFolder(TNode& pParent, const std::wstring& pName, TKind pKind) {
  auto made = std::make_unique<TNode>();
  TNode& node = *made;
  node.parent = &pParent;
  node.name = pName;
  node.id = ++fLastId;
  pParent.folders[pName] = std::move(made);
  // One handle for all costs nothing more for each.
  const bool room = fOptions.subtree || fById.size() < MostFolders;
  node.entered = fOptions.recursive && pKind == TKind::Folder && room;
  if (node.entered && !fOptions.subtree) {
    node.number = fFolders.Open(node.id, PathOf(node), false);
    node.open = node.entered = node.number != 0;
  }
  if (node.entered) fById.emplace(node.id, &node);
  return node;
}

void TWatchedTree::Remove(TNode& pParent, const std::wstring& pName) {
  const auto found = pParent.folders.find(pName);
  if (found == pParent.folders.end()) return;
  CloseNode(*found->second);
  pParent.folders.erase(found);
}

bool TWatchedTree::ScanSome() {
  while (!fToScan.empty()) {
    const auto found = fById.find(fToScan.front());
    fToScan.pop_front();
    if (found == fById.end()) continue; // it has gone meanwhile
    Scan(*found->second, false);
    if (MayGo(*found->second)) fEmpty.insert(found->first);
    return true;
  }
  return false;
}

// A folder is open before it is listed: what changes from then on is reported.
void TWatchedTree::Scan(TNode& pNode, bool pTell) {
  std::vector<IWatchedFolders::TEntry> entries;
  const std::uint64_t number = fFolders.List(PathOf(pNode), pTell, entries);
  pNode.unlisted = number == 0 || (pNode.open && number != pNode.number);
  if (pTell) Touch(pNode);
  if (pNode.unlisted) return Doubt();
  pNode.number = number;
  for (auto& entry : entries) {
    const bool is_folder = entry.kind != TKind::File;
    if (is_folder && pNode.folders.contains(entry.name)) continue; // reported already
    const TPlace place{&pNode, entry.name};
    if (pTell) {
      Emit(is_folder ? TDirectoryEvent::FolderCreate : TDirectoryEvent::FileCreate, PathOf(place));
      pNode.listed.insert(entry.name);
      fWantsIdle = true;
    }
    if (!is_folder) continue;
    TNode& folder = AddFolder(pNode, entry.name, entry.kind);
    if (folder.entered) fToScan.push_back(folder.id);
  }
}

void TWatchedTree::ScanAll(TNode& pNode, bool pTell) {
  if (!pNode.entered) return;
  std::deque<std::uint64_t> waiting = std::exchange(fToScan, {pNode.id});
  while (!fToScan.empty()) {
    const auto found = fById.find(fToScan.front());
    fToScan.pop_front();
    if (found == fById.end()) continue;
    Scan(*found->second, pTell);
    if (!MayGo(*found->second)) continue;
    fEmptied.insert(found->first);
    fWantsIdle = true;
  }
  fToScan = std::move(waiting);
}

// A folder that is new here, with all that is in it.
void TWatchedTree::Enter(const TPlace& pPlace, TKind pKind) {
  TNode& node = AddFolder(*pPlace.folder, pPlace.name, pKind);
  if (pKind == TKind::Folder && fOptions.recursive && !node.entered) {
    pPlace.folder->unseen.insert(pPlace.name);
    Doubt();
  }
  ScanAll(node, true);
}

// What wasn't found at its path may be found now.
void TWatchedTree::LookAgain(TNode& pNode) {
  if (MayGo(pNode)) fEmpty.insert(pNode.id);
  if (std::exchange(pNode.unlisted, false)) ScanAll(pNode, true);
  const std::set<std::wstring> unseen = std::exchange(pNode.unseen, {});
  for (const std::wstring& name : unseen) {
    const TPlace place{&pNode, name};
    const std::wstring path = PathOf(place);
    const TKind kind = fFolders.KindOf(path);
    if (kind == TKind::None) pNode.unseen.insert(name);
    if (kind != TKind::Folder && kind != TKind::Link) continue;
    Remove(pNode, name);
    Emit(TDirectoryEvent::FolderCreate, path);
    Enter(place, kind);
  }
  std::vector<TNode*> folders;
  for (const auto& [name, folder] : pNode.folders) folders.push_back(folder.get());
  for (TNode* const folder : folders) LookAgain(*folder);
}

// --- what is reported -----------------------------------------------------------------------------------------------

void TWatchedTree::OnRecords(std::uint64_t pFolder, std::vector<TDirectoryRecord> pRecords) {
  const auto found = fById.find(pFolder);
  if (found == fById.end()) return;
  TNode& node = *found->second;
  node.silent = false;
  fAuditsLeft = MostAudits;
  fReported = true;
  if (node.parent && !fOptions.subtree && std::any_of(pRecords.begin(), pRecords.end(), &IsRemoval)) {
    fEmptied.insert(pFolder);
    fWantsIdle = true;
  }
  std::vector<TDirectoryChange> changes;
  node.pairer.Add(std::move(pRecords), changes);
  fWantsIdle = fWantsIdle || node.pairer.IsPending();
  Apply(node, changes);
}

void TWatchedTree::Apply(TNode& pNode, const std::vector<TDirectoryChange>& pChanges) {
  for (const TDirectoryChange& change : pChanges) ApplyOne(pNode, change);
}

void TWatchedTree::OnOverflow(std::uint64_t pFolder) {
  const auto found = fById.find(pFolder);
  if (found == fById.end()) return;
  ListAnew(*found->second);
  // Reports from before that listing may still be under way, and be of a name that another folder has by now.
  fListsLeft = MostLists;
  fReported = fWantsIdle = true;
}

void TWatchedTree::ListAnew(TNode& pNode) {
  // A folder that was made anew under its old name has another handle now.
  pNode.pairer.Reset();
  pNode.listed.clear();
  pNode.unseen.clear();
  while (!pNode.folders.empty()) Remove(pNode, std::wstring(pNode.folders.begin()->first));
  ScanAll(pNode, false);
  TellUpdate();
}

void TWatchedTree::OnIdle() {
  fWantsIdle = fUpdated = false;
  fClock += TicksOfSilence;
  std::vector<std::uint64_t> ids;
  for (const auto& [id, node] : fById) ids.push_back(id);
  for (const std::uint64_t id : ids) {
    const auto found = fById.find(id);
    if (found == fById.end()) continue;
    found->second->listed.clear();
    std::vector<TDirectoryChange> changes;
    found->second->pairer.Flush(changes);
    Apply(*found->second, changes);
  }
  // Each listing has the same trouble, but less and less of it.
  if (!std::exchange(fReported, false)) fListsLeft = 0;
  if (fListsLeft > 0 && fRoot) {
    --fListsLeft;
    ListAnew(*fRoot);
    fWantsIdle = true;
  }
  Audit();
  LetGoOfEmptied();
}

// --- audits ---------------------------------------------------------------------------------------------------------

void TWatchedTree::Touch(const TNode& pNode) {
  fTouched.insert(pNode.id);
  fWantsIdle = true; // what was touched long ago needs no audit
}

void TWatchedTree::Doubt() {
  fInDoubt = true;
  fWantsIdle = true;
}

void TWatchedTree::Audit() {
  const std::set<std::uint64_t> touched = std::exchange(fTouched, {});
  if (!std::exchange(fInDoubt, false) || fAuditsLeft == 0) return;
  --fAuditsLeft;
  for (const std::uint64_t id : touched) {
    const auto found = fById.find(id);
    if (found != fById.end()) AuditNode(*found->second);
  }
}

void TWatchedTree::AuditNode(TNode& pNode) {
  if (pNode.unlisted) ScanAll(pNode, true);
  std::vector<IWatchedFolders::TEntry> entries;
  const std::uint64_t number = fFolders.List(PathOf(pNode), false, entries);
  if (number != pNode.number || pNode.unlisted) {
    if (number != 0 && pNode.parent) return Retell(pNode);
    Touch(pNode); // a report is under way
    return Doubt();
  }
  pNode.unseen.clear();
  std::set<std::wstring> gone;
  for (const auto& [name, folder] : pNode.folders) gone.insert(name);
  for (const auto& entry : entries) {
    if (entry.kind == TKind::File) continue;
    if (gone.erase(entry.name) == 0) {
      TellNew({&pNode, entry.name});
    } else if (entry.kind == TKind::Folder && fOptions.recursive && !pNode.folders[entry.name]->entered) {
      // It couldn't be opened under an earlier name.
      Remove(pNode, entry.name);
      Enter({&pNode, entry.name}, entry.kind);
    }
  }
  for (const std::wstring& name : gone) Retell(*pNode.folders[name]);
}

void TWatchedTree::Retell(TNode& pNode) {
  const TPlace place{pNode.parent, pNode.name};
  Touch(*place.folder);
  OnRemoved(place);
  TellNew(place);
}

void TWatchedTree::TellNew(const TPlace& pPlace) {
  const std::wstring path = PathOf(pPlace);
  const TKind kind = fFolders.KindOf(path);
  if (kind == TKind::None) {
    pPlace.folder->unseen.insert(pPlace.name);
    return Doubt();
  }
  const bool is_folder = kind != TKind::File;
  Emit(is_folder ? TDirectoryEvent::FolderCreate : TDirectoryEvent::FileCreate, path);
  if (is_folder) Enter(pPlace, kind);
}

// --- empty folders --------------------------------------------------------------------------------------------------

bool TWatchedTree::MayGo(const TNode& pNode) const {
  return pNode.open && pNode.parent && !fOptions.subtree && pNode.folders.empty();
}

// What is reported between the two handles is lost. So a folder must have been empty for a while without a report: then
// all that was told to be in it has been told to be gone, too, and what a listing shows behind that is new.
TWatchedTree::TLetGo TWatchedTree::LetGo(std::uint64_t pFolder) {
  const auto found = fById.find(pFolder);
  if (found == fById.end()) return TLetGo::NotEmpty;
  TNode& node = *found->second;
  const std::wstring path = PathOf(node);
  if (!MayGo(node) || !fFolders.IsEmpty(path)) {
    node.silent = false;
    return TLetGo::NotEmpty;
  }
  // Another folder has its name, and the report of that is under way.
  if (fFolders.NumberOf(path) != node.number) return TLetGo::Done;
  if (!std::exchange(node.silent, true)) node.silentSince = fClock;
  if (fClock - node.silentSince < TicksOfSilence) {
    fWantsIdle = true;
    return TLetGo::Soon;
  }
  const std::uint64_t number = fFolders.Reopen(pFolder, path);
  if (number != 0) {
    if (number != node.number) Doubt();
    node.number = number;
    std::deque<std::uint64_t> waiting = std::exchange(fToScan, {});
    Scan(node, true);
    fToScan = std::move(waiting);
    // What was told just now to be in it must be told to be gone before its handle is let go again.
    node.silent = node.listed.empty();
    for (const auto& [name, folder] : node.folders) ScanAll(*folder, true);
    return TLetGo::Done;
  }
  // The folder above reports what became of it.
  node.open = node.entered = false;
  node.lost = true;
  Touch(*node.parent);
  Doubt();
  fById.erase(found);
  return TLetGo::NotEmpty;
}

void TWatchedTree::LetGoOfEmptied() {
  auto at = fEmptied.begin();
  for (int left = LooksAtOnce; left > 0 && at != fEmptied.end(); left -= LooksToLetGo) {
    const TLetGo state = LetGo(*at);
    if (state == TLetGo::Done) fEmpty.insert(*at);
    at = state == TLetGo::Soon ? std::next(at) : fEmptied.erase(at);
  }
  fWantsIdle = fWantsIdle || !fEmptied.empty();
}

void TWatchedTree::LetGoOfEmpty() {
  ++fClock;
  LetGoOfEmptied(); // while something is reported all the time there is no other occasion
  std::size_t count = fEmpty.size();
  for (int left = LooksAtOnce; left > 0 && count > 0; --count) {
    auto at = fEmpty.upper_bound(fLastEmpty);
    if (at == fEmpty.end()) at = fEmpty.begin();
    fLastEmpty = *at;
    const bool empty = LetGo(fLastEmpty) != TLetGo::NotEmpty;
    if (!empty) fEmpty.erase(fLastEmpty);
    left -= empty ? LooksToLetGo : 1;
  }
}

// A folder that was never reported itself. While the tree is being read, that is only because its turn hasn't come;
// otherwise nobody was told of it and its content.
void TWatchedTree::Discover(TNode& pNode) {
  if (!fToScan.empty()) return fToScan.push_back(pNode.id);
  pNode.unlisted = true;
  Emit(TDirectoryEvent::FolderCreate, PathOf(pNode));
  Touch(pNode);
  Doubt();
}

// The folder that a reported name lies in. Something below it is reported, so it is one.
TWatchedTree::TPlace TWatchedTree::Resolve(TNode& pNode, std::wstring_view pName) {
  TNode* node = &pNode;
  std::size_t delimiter = pName.find(L'\\');
  while (delimiter != std::wstring_view::npos) {
    const std::wstring part(pName.substr(0, delimiter));
    const auto found = node->folders.find(part);
    if (found != node->folders.end()) {
      node = found->second.get();
    } else {
      node = &AddFolder(*node, part, TKind::Folder);
      Discover(*node);
    }
    pName.remove_prefix(delimiter + 1);
    delimiter = pName.find(L'\\');
  }
  return {node, std::wstring(pName)};
}

void TWatchedTree::ApplyOne(TNode& pNode, const TDirectoryChange& pChange) {
  const TPlace place = Resolve(pNode, pChange.name);
  switch (pChange.action) {
  case TDirectoryAction::Added:
    return OnAdded(place);
  case TDirectoryAction::Removed:
    return OnRemoved(place);
  case TDirectoryAction::RenamedTo:
    return OnRenamed(place, Resolve(pNode, pChange.newName));
  default: {
    const bool is_folder = place.folder->folders.contains(place.name);
    return Emit(is_folder ? TDirectoryEvent::FolderUpdate : TDirectoryEvent::FileChange, PathOf(place));
  }
  }
}

void TWatchedTree::OnAdded(TPlace pPlace) {
  Touch(*pPlace.folder);
  if (pPlace.folder->listed.erase(pPlace.name) != 0) return;
  const std::wstring path = PathOf(pPlace);
  const TKind kind = fFolders.KindOf(path);
  const bool is_folder = kind == TKind::Folder || kind == TKind::Link;
  // What stood there before has gone unseen.
  const bool known = pPlace.folder->folders.contains(pPlace.name);
  if (known) OnRemoved(pPlace);
  // Who was told an update may have listed it behind this report, and before that of what it holds now.
  if (is_folder && !known && fUpdated) Emit(TDirectoryEvent::FolderDelete, path);
  Emit(is_folder ? TDirectoryEvent::FolderCreate : TDirectoryEvent::FileCreate, path);
  if (is_folder) return Enter(pPlace, kind);
  if (kind != TKind::None) return;
  pPlace.folder->unseen.insert(pPlace.name);
  Doubt();
}

void TWatchedTree::OnRemoved(const TPlace& pPlace) {
  pPlace.folder->listed.erase(pPlace.name);
  pPlace.folder->unseen.erase(pPlace.name);
  const bool is_folder = pPlace.folder->folders.contains(pPlace.name);
  Remove(*pPlace.folder, pPlace.name);
  Emit(is_folder ? TDirectoryEvent::FolderDelete : TDirectoryEvent::FileDelete, PathOf(pPlace));
}

// Reports are late: a folder that was opened by its path may be another one than the report was of. What isn't there
// any more was renamed once more, and that report follows.
bool TWatchedTree::IsNodeAt(const TNode& pNode, const std::wstring& pPath) {
  if (pNode.lost) return false;
  if (!pNode.open) return true;
  const std::uint64_t number = fFolders.NumberOf(pPath);
  return number == 0 || number == pNode.number;
}

void TWatchedTree::OnRenamed(const TPlace& pFrom, const TPlace& pTo) {
  Touch(*pTo.folder);
  // A listing that came later has told the new name, and all that is in it.
  if (pTo.folder->listed.erase(pTo.name) != 0) return OnRemoved(pFrom);
  const std::wstring path = PathOf(pTo);
  const auto found = pFrom.folder->folders.find(pFrom.name);
  if (found != pFrom.folder->folders.end() && (fUpdated || !IsNodeAt(*found->second, path))) {
    // What was told of the old name is of another folder; or who was told an update has listed the folder behind this
    // report, and knows the content by the new name alone.
    OnRemoved(pFrom);
    return OnAdded(pTo);
  }
  pFrom.folder->listed.erase(pFrom.name);
  pFrom.folder->unseen.erase(pFrom.name);
  pTo.folder->unseen.erase(pTo.name);
  if (found != pFrom.folder->folders.end()) {
    TNodePtr node = std::move(found->second);
    pFrom.folder->folders.erase(found);
    Emit(TDirectoryEvent::FolderRename, PathOf(pFrom), path);
    Remove(*pTo.folder, pTo.name);
    node->parent = pTo.folder;
    node->name = pTo.name;
    TNode& moved = *(pTo.folder->folders[pTo.name] = std::move(node));
    Touch(moved);
    return LookAgain(moved);
  }
  const TKind kind = fFolders.KindOf(path);
  const bool is_folder = kind == TKind::Folder || kind == TKind::Link;
  Remove(*pTo.folder, pTo.name);
  Emit(is_folder ? TDirectoryEvent::FolderRename : TDirectoryEvent::FileRename, PathOf(pFrom), path);
  if (is_folder) return Enter(pTo, kind);
  if (kind != TKind::None) return;
  pTo.folder->unseen.insert(pTo.name);
  Doubt();
}

} // namespace kiv
