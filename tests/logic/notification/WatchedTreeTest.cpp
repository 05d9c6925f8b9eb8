#include <platform/fill/NoticeQueue.h>
#include <platform/fill/WatchedTree.h>

#include <doubles/SimulatedFileSystem.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace kiv {
namespace {

using test::SimulatedFileSystem;
using TKind = IWatchedFolders::TKind;
using TNodeId = SimulatedFileSystem::TNodeId;

const std::wstring Root = L"C:\\w";

std::wstring ParentOf(const std::wstring& path) {
  return path.substr(0, path.find_last_of(L'\\'));
}
std::wstring NameOf(const std::wstring& path) {
  return path.substr(path.find_last_of(L'\\') + 1);
}

/// Folders of a simulated disk that report as directory handles do: each its own changes, some time later, wherever it
/// was moved meanwhile; or the root all of them. A folder with a handle of its own stays when it is deleted, unless
/// something is in it, until the handle is closed.
class TReportingFolders final : public IWatchedFolders {
public:
  /// `pBefore` is called before anything is looked at: the disk doesn't stand still meanwhile.
  TReportingFolders(SimulatedFileSystem& pFiles, std::function<void()> pBefore)
      : fFiles(pFiles), fBefore(std::move(pBefore)) {}

  std::uint64_t Open(std::uint64_t pFolder, const std::wstring& pPath, bool pSubtree) override {
    fBefore();
    THandle handle;
    handle.subtree = pSubtree;
    if (FAILED(fFiles.IdOf(pPath, handle.node)) || KindNow(pPath) != TKind::Folder) return 0;
    return (fHandles[pFolder] = std::move(handle)).node;
  }
  void Close(std::uint64_t pFolder) noexcept override {
    const TNodeId node = fHandles[pFolder].node;
    fHandles.erase(pFolder);
    if (fDeleted.erase(node) == 0) return;
    for (const auto& [path, object] : fFiles.Snapshot()) {
      TNodeId id = 0;
      if (FAILED(fFiles.IdOf(path, id)) || id != node || !IsEmptyNow(path)) continue;
      fFiles.Delete(path);
      Report(TDirectoryAction::Removed, path);
    }
  }
  std::uint64_t Reopen(std::uint64_t pFolder, const std::wstring& pPath) override {
    Close(pFolder);
    return Open(pFolder, pPath, false);
  }
  std::uint64_t NumberOf(const std::wstring& pPath) override {
    fBefore();
    return NumberNow(pPath);
  }
  std::uint64_t List(const std::wstring& pPath, bool, std::vector<TEntry>& pEntries) override {
    fBefore();
    pEntries = ListNow(pPath);
    return KindNow(pPath) == TKind::Folder ? NumberNow(pPath) : 0;
  }
  TKind KindOf(const std::wstring& pPath) override {
    fBefore();
    return KindNow(pPath);
  }
  bool IsEmpty(const std::wstring& pPath) override {
    fBefore();
    return IsEmptyNow(pPath);
  }

  std::uint64_t NumberNow(const std::wstring& pPath) {
    TNodeId id = 0;
    return SUCCEEDED(fFiles.IdOf(pPath, id)) ? id : 0;
  }
  std::vector<TEntry> ListNow(const std::wstring& pPath) {
    std::vector<TEntry> entries;
    std::vector<SimulatedFileSystem::TChild> children;
    TNodeId id = 0;
    if (FAILED(fFiles.IdOf(pPath, id)) || FAILED(fFiles.ChildrenOf(id, children))) return entries;
    for (const auto& child : children) entries.push_back({child.name, KindNow(pPath + L"\\" + child.name)});
    return entries;
  }
  TKind KindNow(const std::wstring& pPath) {
    TFolderObject object;
    if (FAILED(fFiles.Find(pPath, object))) return TKind::None;
    return object.flags.Contains(TObjectFlag::Folder) ? TKind::Folder : TKind::File;
  }
  bool IsEmptyNow(const std::wstring& pPath) { return KindNow(pPath) == TKind::Folder && ListNow(pPath).empty(); }

  /// Whether a folder that is being deleted stays for now.
  bool Keeps(const std::wstring& pPath) {
    TNodeId id = 0;
    if (!IsEmptyNow(pPath) || FAILED(fFiles.IdOf(pPath, id))) return false;
    const bool open = std::any_of(fHandles.begin(), fHandles.end(),
                                  [id](const auto& entry) { return entry.second.node == id && !entry.second.subtree; });
    if (open) fDeleted.insert(id);
    return open;
  }
  bool KeepsSome() const {
    return std::any_of(fDeleted.begin(), fDeleted.end(), [this](TNodeId id) {
      std::vector<SimulatedFileSystem::TChild> children;
      return SUCCEEDED(fFiles.ChildrenOf(id, children)) && children.empty();
    });
  }

  void Report(TDirectoryAction pAction, const std::wstring& pPath) {
    TNodeId id = 0;
    fFiles.IdOf(ParentOf(pPath), id);
    for (auto& [folder, handle] : fHandles) {
      if (handle.subtree) {
        handle.records.push_back({pAction, pPath.substr(Root.size() + 1)});
      } else if (handle.node == id) {
        handle.records.push_back({pAction, NameOf(pPath)});
      }
    }
  }
  void LoseRecords() {
    for (auto& [folder, handle] : fHandles) {
      handle.lost = handle.lost || !handle.records.empty();
      handle.records.clear();
    }
  }
  /// Hands some records of some folder to the tree. False if there are none.
  bool Deliver(TWatchedTree& pTree, std::mt19937& pRandom) {
    std::vector<std::uint64_t> ready;
    for (const auto& [folder, handle] : fHandles) {
      if (handle.lost || !handle.records.empty()) ready.push_back(folder);
    }
    if (ready.empty()) return false;
    const std::uint64_t folder = ready[pRandom() % ready.size()];
    THandle& handle = fHandles[folder];
    if (std::exchange(handle.lost, false)) {
      pTree.OnOverflow(folder);
      return true;
    }
    const std::size_t count = 1 + pRandom() % handle.records.size();
    const auto end = handle.records.begin() + static_cast<std::ptrdiff_t>(count);
    const std::vector<TDirectoryRecord> records(handle.records.begin(), end);
    handle.records.erase(handle.records.begin(), end);
    pTree.OnRecords(folder, records);
    return true;
  }
  std::size_t OpenCount() const { return fHandles.size(); }

private:
  struct THandle {
    TNodeId node = 0;
    bool subtree = false;
    bool lost = false;
    std::deque<TDirectoryRecord> records;
  };
  SimulatedFileSystem& fFiles;
  const std::function<void()> fBefore;
  std::map<std::uint64_t, THandle> fHandles;
  std::set<TNodeId> fDeleted;
};

/// What somebody knows of a folder who listed it once and heard of every change since.
class TListing {
public:
  explicit TListing(SimulatedFileSystem& pFiles, bool pRecursive) : fFiles(pFiles), fRecursive(pRecursive) { List(); }

  void Apply(const TDirectoryNotice& n) {
    const bool folder = n.event == TDirectoryEvent::FolderCreate || n.event == TDirectoryEvent::FolderRename;
    switch (n.event) {
    case TDirectoryEvent::FileCreate:
    case TDirectoryEvent::FolderCreate:
      fKnown[n.path1] = folder;
      break;
    case TDirectoryEvent::FileDelete:
    case TDirectoryEvent::FolderDelete:
      Take(n.path1);
      break;
    case TDirectoryEvent::FileRename:
    case TDirectoryEvent::FolderRename: {
      const auto moved = Take(n.path1);
      Take(n.path2);
      for (const auto& [path, is_folder] : moved) fKnown[n.path2 + path.substr(n.path1.size())] = is_folder;
      fKnown[n.path2] = folder;
      break;
    }
    case TDirectoryEvent::FolderUpdate:
      if (n.path1 == Root) List();
      break;
    default:
      break;
    }
  }
  bool operator==(const TListing& pOther) const { return fKnown == pOther.fKnown; }
  std::string Text() const {
    std::string text;
    for (const auto& [path, folder] : fKnown) text += std::string(path.begin(), path.end()) + (folder ? "/ " : " ");
    return text;
  }

private:
  using TKnown = std::map<std::wstring, bool>;

  void List() {
    fKnown.clear();
    for (const auto& [path, object] : fFiles.Snapshot()) {
      if (!path.starts_with(Root + L"\\")) continue;
      if (fRecursive || ParentOf(path) == Root) fKnown[path] = object.flags.Contains(TObjectFlag::Folder);
    }
  }
  TKnown Take(const std::wstring& path) {
    TKnown taken;
    for (auto at = fKnown.begin(); at != fKnown.end();) {
      const bool of = at->first == path || at->first.starts_with(path + L"\\");
      if (of) taken.insert(*at);
      at = of ? fKnown.erase(at) : std::next(at);
    }
    return taken;
  }

  SimulatedFileSystem& fFiles;
  const bool fRecursive;
  TKnown fKnown;
};

class TRun {
public:
  TRun(unsigned pSeed, TWatchedTree::TOptions pOptions, bool pLoses)
      : fRandom(pSeed), fOptions(pOptions), fLoses(pLoses), fFolders(fFiles, [this] { ChangeMeanwhile(); }),
        fTree(Root, pOptions, fFolders, [this](const TDirectoryNotice& notice) {
          if (fListing) fListing->Apply(notice);
        }) {
    fFiles.AddDrive(L'C');
    fFiles.MakeFolder(Root);
    fFiles.MakeFolder(L"C:\\elsewhere");
    for (int i = 0; i < 15; ++i) Change();
    EXPECT_TRUE(fTree.Open());
    while (fTree.ScanSome()) Change();
    while (fFolders.Deliver(fTree, fRandom)) {
    }
    fListing.emplace(fFiles, fOptions.recursive);
  }

  void Go(int steps) {
    fBusy = true;
    for (int i = 0; i < steps; ++i) {
      for (auto changes = fRandom() % 4; changes > 0; --changes) Change();
      if (fLoses && fRandom() % 40 == 0) fFolders.LoseRecords();
      for (auto reports = fRandom() % 3; reports > 0; --reports) fFolders.Deliver(fTree, fRandom);
      if (fRandom() % 8 == 0) Rest();
    }
    fBusy = false;
    for (int i = 0; i < 3 || (i < 50 && (fFolders.KeepsSome() || fTree.WantsIdle())); ++i) Rest();
    EXPECT_FALSE(fFolders.KeepsSome());
    const TListing now(fFiles, fOptions.recursive);
    EXPECT_EQ(*fListing == now, true) << "known: " << fListing->Text() << "\nthere: " << now.Text();
    fTree.Close();
    EXPECT_EQ(fFolders.OpenCount(), 0U);
  }

private:
  // Until nothing is reported any more.
  void Rest() {
    while (fFolders.Deliver(fTree, fRandom)) {
    }
    fTree.OnIdle();
    fTree.LetGoOfEmpty();
    while (fFolders.Deliver(fTree, fRandom)) {
    }
  }
  // Somewhere in the tree, or beside it.
  std::wstring SomePath(bool folder) {
    std::vector<std::wstring> paths;
    for (const auto& [path, object] : fFiles.Snapshot()) {
      const bool fits = !folder || object.flags.Contains(TObjectFlag::Folder);
      if (fits && path.size() > 2 && path != Root && path != L"C:\\elsewhere") paths.push_back(path);
    }
    if (folder) paths.insert(paths.end(), {Root, Root, L"C:\\elsewhere"});
    return paths.empty() ? std::wstring() : paths[fRandom() % paths.size()];
  }
  // In between what the tree does.
  void ChangeMeanwhile() {
    if (fBusy && fRandom() % 6 == 0) Change();
  }
  bool IsInside(const std::wstring& path) const { return path.starts_with(Root + L"\\"); }
  void Report(TDirectoryAction action, const std::wstring& path) {
    if (IsInside(path)) fFolders.Report(action, path);
  }

  void Change() {
    using enum TDirectoryAction;
    const std::wstring name(1, static_cast<wchar_t>(L'a' + fRandom() % 6));
    const std::wstring made = SomePath(true) + L"\\" + name;
    const std::wstring path = SomePath(false);
    switch (fRandom() % 7) {
    case 0:
    case 1:
      if (SUCCEEDED(fFiles.MakeFile(made))) Report(Added, made);
      break;
    case 2:
      if (SUCCEEDED(fFiles.MakeFolder(made))) Report(Added, made);
      break;
    case 3:
      if (!path.empty() && SUCCEEDED(fFiles.Write(path, 1))) Report(Modified, path);
      break;
    case 4:
      if (!path.empty() && !fFolders.Keeps(path) && SUCCEEDED(fFiles.Delete(path))) Report(Removed, path);
      break;
    default:
      if (!path.empty()) MoveTo(path, fRandom() % 2 == 0 ? made : ParentOf(path) + L"\\" + name);
    }
  }
  void MoveTo(const std::wstring& from, const std::wstring& to) {
    using enum TDirectoryAction;
    if (FAILED(fFiles.Move(from, to)) || from == to) return;
    const bool pair = ParentOf(from) == ParentOf(to);
    Report(pair ? RenamedFrom : Removed, from);
    Report(pair ? RenamedTo : Added, to);
  }

  std::mt19937 fRandom;
  const TWatchedTree::TOptions fOptions;
  const bool fLoses;
  bool fBusy = false;
  SimulatedFileSystem fFiles;
  TReportingFolders fFolders;
  std::optional<TListing> fListing;
  TWatchedTree fTree;
};

TEST(WatchedTree, TellsAllThatAListingNeeds) {
  const TWatchedTree::TOptions ways[] = {{false, false}, {true, false}, {true, true}};
  for (const auto& way : ways) {
    for (const bool loses : {false, true}) {
      for (unsigned seed = 1; seed <= 50; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed << " recursive " << way.recursive << " subtree "
                                        << way.subtree << " loses " << loses);
        TRun(seed, way, loses).Go(60);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

// What is made while the folder is let go is told by the listing behind that; what is reported of it must be heard.
TEST(WatchedTree, HearsOfAFolderBeforeItIsLetGoAgain) {
  SimulatedFileSystem files;
  files.AddDrive(L'C');
  files.MakeFolder(Root);
  files.MakeFolder(Root + L"\\sub");
  const std::wstring file = Root + L"\\sub\\x";
  int looks = 3;
  TReportingFolders folders(files, [&] {
    if (++looks == 3) files.MakeFile(file); // empty, the same, and now it is opened again
  });
  std::vector<TDirectoryNotice> told;
  TWatchedTree tree(Root, {true, false}, folders, [&](TDirectoryNotice notice) { told.push_back(std::move(notice)); });
  ASSERT_TRUE(tree.Open());
  while (tree.ScanSome()) {
  }
  for (int i = 0; i < 10 && told.empty(); ++i) {
    looks = 0;
    tree.LetGoOfEmpty();
  }
  files.Delete(file);
  folders.Report(TDirectoryAction::Removed, file);
  tree.LetGoOfEmpty();
  std::mt19937 random(1);
  while (folders.Deliver(tree, random)) {
  }
  using enum TDirectoryEvent;
  EXPECT_EQ(told, (std::vector<TDirectoryNotice>{{FileCreate, file, {}}, {FileDelete, file, {}}}));
}

/// More folders in one than are opened one by one, and nothing in them.
class TManyFolders final : public IWatchedFolders {
public:
  std::uint64_t Open(std::uint64_t, const std::wstring&, bool) override { return ++opened; }
  void Close(std::uint64_t) noexcept override { --opened; }
  std::uint64_t Reopen(std::uint64_t, const std::wstring&) override { return 0; }
  std::uint64_t NumberOf(const std::wstring&) override { return 0; }
  std::uint64_t List(const std::wstring& pPath, bool, std::vector<TEntry>& pEntries) override {
    if (pPath != Root) return opened; // never the number that it was opened by
    for (std::size_t i = 0; i < Count; ++i) pEntries.push_back({L"d" + std::to_wstring(i), TKind::Folder});
    return 1;
  }
  TKind KindOf(const std::wstring&) override { return TKind::None; }
  bool IsEmpty(const std::wstring&) override { return false; }

  static constexpr std::size_t Count = TWatchedTree::MostFolders + 10;
  std::uint64_t opened = 0;
};

TEST(WatchedTree, OpensALimitedNumberOfFolders) {
  for (const bool subtree : {false, true}) {
    TManyFolders folders;
    std::vector<TDirectoryNotice> told;
    const auto tell = [&](TDirectoryNotice notice) { told.push_back(std::move(notice)); };
    TWatchedTree tree(Root, {true, subtree}, folders, tell);
    ASSERT_TRUE(tree.Open());
    while (tree.ScanSome()) {
    }
    EXPECT_EQ(folders.opened, subtree ? 1 : TWatchedTree::MostFolders);
    // All are known to be folders.
    const std::wstring last = L"d" + std::to_wstring(TManyFolders::Count - 1);
    tree.OnRecords(TWatchedTree::RootFolder, {{TDirectoryAction::Removed, last}});
    EXPECT_EQ(told, (std::vector<TDirectoryNotice>{{TDirectoryEvent::FolderDelete, Root + L"\\" + last, {}}}));
    tree.Close();
    EXPECT_EQ(folders.opened, 0U);
  }
}

TEST(WatchedTree, MergesNothingButAdjacentWritesThatNobodyTook) {
  SimulatedFileSystem files;
  files.AddDrive(L'C');
  files.MakeFolder(Root);
  files.MakeFolder(Root + L"\\sub");
  TReportingFolders folders(files, [] {});
  std::vector<TDirectoryNotice> told;
  TNoticeQueue queue([] { return true; });
  queue.Begin(1, Root);
  TWatchedTree tree(Root, {}, folders, [&queue](TDirectoryNotice notice) { queue.Push(1, {std::move(notice)}); });
  const auto take = [&] {
    TNoticeQueue::TEntry entry;
    while (queue.Pop(entry)) told.push_back(std::move(entry.notice));
  };
  ASSERT_TRUE(tree.Open());
  while (tree.ScanSome()) {
  }
  using enum TDirectoryAction;
  tree.OnRecords(
      TWatchedTree::RootFolder,
      {{Added, L"a"}, {Modified, L"a"}, {Modified, L"a"}, {Modified, L"b"}, {Modified, L"a"}, {Removed, L"a"}});
  tree.OnRecords(TWatchedTree::RootFolder, {{Added, L"a"}, {Removed, L"a"}, {Modified, L"sub"}, {Removed, L"sub"}});
  files.Delete(Root + L"\\sub");
  tree.OnRecords(TWatchedTree::RootFolder, {{RenamedFrom, L"x"}});
  EXPECT_TRUE(tree.WantsIdle());
  tree.OnIdle();
  for (int i = 0; i < 2; ++i) {
    tree.OnRecords(TWatchedTree::RootFolder, {{Modified, L"b"}, {Modified, L"b"}});
    take();
  }
  using enum TDirectoryEvent;
  const auto path = [](const wchar_t* name) { return Root + L"\\" + name; };
  const std::vector<TDirectoryNotice> expected = {
      {FileCreate, path(L"a"), {}}, {FileChange, path(L"a"), {}},     {FileChange, path(L"b"), {}},
      {FileChange, path(L"a"), {}}, {FileDelete, path(L"a"), {}},     {FileCreate, path(L"a"), {}},
      {FileDelete, path(L"a"), {}}, {FolderUpdate, path(L"sub"), {}}, {FolderDelete, path(L"sub"), {}},
      {FileDelete, path(L"x"), {}}, {FileChange, path(L"b"), {}},     {FileChange, path(L"b"), {}},
  };
  EXPECT_EQ(told, expected);
}

} // namespace
} // namespace kiv
