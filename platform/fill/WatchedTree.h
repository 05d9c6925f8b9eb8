#pragma once

#include <platform/Export.h>
#include <platform/fill/DirectoryChange.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// What happened in a watched folder, with full paths.
enum class TDirectoryEvent : std::uint8_t {
  FileCreate,
  FileDelete,
  FileRename, ///< path2 is the new one
  FileChange, ///< content, size or attributes
  FolderCreate,
  FolderDelete, ///< with all that was in it
  FolderRename, ///< with all that is in it
  FolderUpdate, ///< something in it changed; of the watched folder itself: nobody knows what
  NoFolder      ///< what is watched turns out to be a file: it isn't watched any more
};

struct TDirectoryNotice {
  TDirectoryEvent event{};
  std::wstring path1;
  std::wstring path2;

  friend bool operator==(const TDirectoryNotice&, const TDirectoryNotice&) = default;
};

/// What a watched tree needs of the file system. `pFolder` is the tree's own name for a folder.
class IWatchedFolders {
public:
  enum class TKind { None, File, Folder, Link }; ///< Link: a folder that is kept elsewhere
  struct TEntry {
    std::wstring name;
    TKind kind = TKind::None;
  };

  /// Opens a folder and lets it report from now on; with all below it if `pSubtree`. Its number; 0 if it can't be.
  virtual std::uint64_t Open(std::uint64_t pFolder, const std::wstring& pPath, bool pSubtree) = 0;
  virtual void Close(std::uint64_t pFolder) noexcept = 0;
  /// Lets go of an open folder and opens it again. 0 if it isn't there any more; it is closed then.
  virtual std::uint64_t Reopen(std::uint64_t pFolder, const std::wstring& pPath) = 0;
  /// What stands at a path now: its number, which stays with it when it is renamed; 0 for nothing.
  virtual std::uint64_t NumberOf(const std::wstring& pPath) = 0;
  /// What a folder holds, without "." and "..", and the number of the folder that was listed; 0 if that can't be done.
  /// Files may be left out if nobody asks for them.
  virtual std::uint64_t List(const std::wstring& pPath, bool pFiles, std::vector<TEntry>& pEntries) = 0;
  virtual TKind KindOf(const std::wstring& pPath) = 0;
  /// Whether there is such a folder and nothing in it.
  virtual bool IsEmpty(const std::wstring& pPath) = 0;

protected:
  ~IWatchedFolders() = default;
};

/// The state of one watch: turns what directory handles report into events that tell files from folders, and that give
/// the folder as it is when they are applied to a listing of it that was made after the watch began.
///
/// Handles report names only, and say of what has gone not even what it was. So the tree knows the folders. Either one
/// handle reports all that lies below (a subtree), or, where platforms don't get that right, each folder has one of its
/// own: then a new folder is opened first and listed behind that, so that nothing in it is missed, and what its handle
/// reports of the objects listed isn't told twice. Reports of several handles come in no order: what isn't found
/// because a folder above it has another name by now is looked for again when that is reported. Links to folders aren't
/// followed.
///
/// Between a report and what is then seen at its path folders may be exchanged, and what was told is of another one. So
/// when folders were renamed or have gone, and nothing is reported any more, those that were touched are audited: each
/// must be the one that was listed, and have the folders that are known of it. One that isn't is told as deleted and
/// created, with what is in it.
///
/// The same platforms keep a folder that was deleted until its handles are closed, and don't say that it was deleted.
/// So handles of empty folders, the only ones that can be, are let go for a moment now and then.
///
/// One thread at a time.
class KIV_EXPORT TWatchedTree {
public:
  /// More folders than that aren't opened one by one; changes in the rest stay unseen.
  static constexpr std::size_t MostFolders = 20'000;

  struct TOptions {
    bool recursive = false;
    bool subtree = false; ///< one handle for all
  };
  using TEmit = std::function<void(TDirectoryNotice)>;

  /// `pFolders` outlives the tree. Path without a delimiter at its end, but for the root of a drive.
  TWatchedTree(std::wstring pPath, TOptions pOptions, IWatchedFolders& pFolders, TEmit pEmit);
  ~TWatchedTree();
  TWatchedTree(const TWatchedTree&) = delete;
  TWatchedTree& operator=(const TWatchedTree&) = delete;

  const std::wstring& Path() const noexcept { return fPath; }
  bool IsOpen() const noexcept { return fIsOpen; }
  static constexpr std::uint64_t RootFolder = 1;

  /// Opens the watched folder. What is below it is opened by ScanSome. False if it can't be opened.
  bool Open();
  /// Opens one more folder; false if there is none left. A watch is complete then.
  bool ScanSome();
  /// Closes everything: the folder has gone, or must be let go.
  void Close();
  /// Says that nobody knows what happened.
  void TellUpdate();

  /// What a folder reported.
  void OnRecords(std::uint64_t pFolder, std::vector<TDirectoryRecord> pRecords);
  /// A folder lost count of its changes.
  void OnOverflow(std::uint64_t pFolder);
  /// Nothing is being reported: what waits for more doesn't get it.
  void OnIdle();
  /// Whether OnIdle has something to do.
  bool WantsIdle() const noexcept { return fWantsIdle; }
  /// Lets go of some of the empty folders for a moment, in turn. To be called every few seconds.
  void LetGoOfEmpty();

private:
  struct TNode;
  using TNodePtr = std::unique_ptr<TNode>;
  struct TPlace {
    TNode* folder = nullptr;
    std::wstring name;
  };
  enum class TLetGo { NotEmpty, Soon, Done };

  // Foreign handles may keep a folder from being opened for ever.
  static constexpr int MostAudits = 5;
  static constexpr int MostLists = 3;

  void Apply(TNode& pNode, const std::vector<TDirectoryChange>& pChanges);
  void ApplyOne(TNode& pNode, const TDirectoryChange& pChange);
  void OnAdded(TPlace pPlace);
  void OnRemoved(const TPlace& pPlace);
  void OnRenamed(const TPlace& pFrom, const TPlace& pTo);
  bool IsNodeAt(const TNode& pNode, const std::wstring& pPath);
  void Touch(const TNode& pNode);
  void Doubt();
  void Audit();
  void AuditNode(TNode& pNode);
  void Retell(TNode& pNode);
  void TellNew(const TPlace& pPlace);
  void Discover(TNode& pNode);
  TPlace Resolve(TNode& pNode, std::wstring_view pName);
  TNode& AddFolder(TNode& pParent, const std::wstring& pName, IWatchedFolders::TKind pKind);
  void Enter(const TPlace& pPlace, IWatchedFolders::TKind pKind);
  void LookAgain(TNode& pNode);
  void Remove(TNode& pParent, const std::wstring& pName);
  void CloseNode(TNode& pNode);
  void Scan(TNode& pNode, bool pTell);
  void ScanAll(TNode& pNode, bool pTell);
  void ListAnew(TNode& pNode);
  bool MayGo(const TNode& pNode) const;
  TLetGo LetGo(std::uint64_t pFolder);
  void LetGoOfEmptied();
  std::wstring PathOf(const TNode& pNode) const;
  std::wstring PathOf(const TPlace& pPlace) const;
  void Emit(TDirectoryEvent pEvent, std::wstring pPath1, std::wstring pPath2 = {});

  const std::wstring fPath;
  const TOptions fOptions;
  IWatchedFolders& fFolders;
  const TEmit fEmit;
  TNodePtr fRoot;
  std::map<std::uint64_t, TNode*> fById;
  std::uint64_t fLastId = RootFolder;
  std::deque<std::uint64_t> fToScan;
  std::set<std::uint64_t> fEmptied; // since the last idle time, it may be
  std::set<std::uint64_t> fEmpty;   // it may be, for longer
  std::uint64_t fLastEmpty = 0;     // where the turn stands
  int fClock = 0;
  std::set<std::uint64_t> fTouched; // since the last audit
  int fAuditsLeft = MostAudits;     // without a report
  bool fIsOpen = false;
  bool fWantsIdle = false;
  bool fUpdated = false;  // an update was told, and what is reported may be older than that
  int fListsLeft = 0;     // of everything, in idle times behind lost reports
  bool fReported = false; // since the last idle time
  bool fInDoubt = false;  // something was seen at a path that may have been another's
};

} // namespace kiv
