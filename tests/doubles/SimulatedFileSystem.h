#pragma once

#include <core/FolderSource.h>
#include <doubles/NoticeBoard.h>
#include <doubles/StepFault.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kiv::test {

/// The name as folders compare it: case doesn't count for ASCII, the letters of Latin-1, and Greek and Cyrillic ones
/// (the Greek without accents). Anything else stands for itself, lone surrogates too.
std::wstring FoldName(std::wstring_view pName);

/// A file system in memory, for all that lists folders, watches them or changes files, with faults on demand.
///
/// Paths are `C:\Folder\File`; the empty path is the computer, whose objects are the drives (`C:`). Names preserve
/// case and don't compare by it; a folder lists its objects in the order of the folded names. A clock of its own gives
/// each new or written file a time one second later than the one before. Changes are announced to the subscribers of
/// `Notices()`, all but new drives, rights and faults.
///
/// What would surprise you:
/// - OpenFolder fails for what isn't a folder that exists, and for what stands on a drive without medium. What needs
///   the folder's content fails at the first step: the drive itself without medium, access denied. That is how the
///   shell does it.
/// - A stepper takes the *names* at its first step and asks each object's *facts* when it comes to it. An object that
///   is gone or renamed by then comes with its listed name and nothing else: no flags, no size, no times. One that
///   appears meanwhile isn't listed.
/// - A stepper holds its folder as an open handle does: renaming the folder doesn't disturb it. Deleting it makes the
///   next step fail with ERROR_PATH_NOT_FOUND.
/// - Deleting or moving a folder takes its content along with one notice. A folder's own times don't change with its
///   content.
/// - Nobody crashes here. A scripted crash gives what a careful lister makes of one: the object at the second attempt
///   (ObjectAfterFault), or a premature End with E_FAIL. Real access violations are FakeShellFolder's.
///
/// Any thread. One lock guards the tree; it isn't held while a step is slow or hangs, nor while subscribers are told.
/// Must outlive its steppers.
class SimulatedFileSystem : public IFolderSource {
public:
  using TNodeId = std::uint64_t;

  static constexpr std::size_t MaxPath = 32'767;
  static constexpr std::size_t MaxName = 255;

  SimulatedFileSystem();
  ~SimulatedFileSystem() override;
  SimulatedFileSystem(const SimulatedFileSystem&) = delete;
  SimulatedFileSystem& operator=(const SimulatedFileSystem&) = delete;

  HRESULT OpenFolder(const std::wstring& pPath, std::unique_ptr<IFolderStepper>& pStepper) override;
  /// The path of an object in a folder; the empty path is the computer.
  static std::wstring Combine(const std::wstring& pFolder, const std::wstring& pName);

  /// Adds a drive with a medium: `AddDrive(L'C')`.
  HRESULT AddDrive(wchar_t pLetter);
  /// Takes the medium out, or puts it back with its content as it was.
  HRESULT SetMedium(wchar_t pLetter, bool pPresent);

  HRESULT MakeFolder(const std::wstring& pPath);
  HRESULT MakeFile(const std::wstring& pPath, std::int64_t pSize = 0);
  /// New content: sets size and times of a file.
  HRESULT Write(const std::wstring& pPath, std::int64_t pSize);
  /// Sets and takes away attributes; Folder, FileSystem and Stream stay as they are.
  HRESULT SetAttributes(const std::wstring& pPath, TObjectFlags pFlags);
  HRESULT Rename(const std::wstring& pPath, const std::wstring& pNewName);
  /// To a new path on the same drive.
  HRESULT Move(const std::wstring& pPath, const std::wstring& pNewPath);
  HRESULT Delete(const std::wstring& pPath);
  /// Denies listing a folder and making, removing and renaming objects in it, or allows it again. What its files hold
  /// and their attributes can be changed still.
  HRESULT DenyAccess(const std::wstring& pPath, bool pDeny = true);
  /// Announces that a folder changed, without saying what: what a watcher does that lost count.
  HRESULT AnnounceFolderUpdate(const std::wstring& pPath);

  /// Scripts a fault for a folder. The folder keeps its faults when it is renamed.
  HRESULT AddFault(const std::wstring& pFolder, std::size_t pStep, TStepFault pFault);
  void ClearFaults(const std::wstring& pFolder);

  HRESULT Find(const std::wstring& pPath, TFolderObject& pObject) const;
  /// All objects by path, in the order of a walk that lists each folder before it goes into its objects. Needs no
  /// access and meets no faults.
  using TSnapshot = std::vector<std::pair<std::wstring, TFolderObject>>;
  TSnapshot Snapshot() const;
  TFileTime CurrentTime() const;

  TNoticeBoard& Notices() { return fNotices; }

  /// By number, for doubles that give this tree another face. Numbers are never used again.
  struct TChild {
    TNodeId id;
    std::wstring name;
  };
  static constexpr TNodeId ComputerId = 1;
  HRESULT IdOf(const std::wstring& pPath, TNodeId& pId) const;
  /// Fails as a listing's first step does.
  HRESULT ChildrenOf(TNodeId pId, std::vector<TChild>& pChildren) const;
  std::optional<TFolderObject> MaybeObject(TNodeId pId) const;
  std::optional<std::wstring> MaybePath(TNodeId pId) const;

private:
  class TStepper;
  struct TNode;
  using TNodePtr = std::shared_ptr<TNode>;

  template <typename F>
  HRESULT Change(F pChange);
  HRESULT Resolve(const std::wstring& pPath, TNodePtr& pNode) const;
  HRESULT ResolveNewPlace(const std::wstring& pPath, TNodePtr& pFolder, std::wstring& pName) const;
  HRESULT Make(const std::wstring& pPath, TObjectFlags pFlags, std::int64_t pSize, TFileChange pChange);
  HRESULT MoveNode(const TNodePtr& pNode, const TNodePtr& pFolder, const std::wstring& pName);
  void Unlink(const TNodePtr& pNode);
  HRESULT CheckListable(const TNode& pNode) const;
  TNodePtr FindDrive(wchar_t pLetter) const;
  TNodePtr AddNode(const TNodePtr& pParent, const std::wstring& pName, TObjectFlags pFlags);
  TNodePtr NodeOf(TNodeId pId) const;
  void Forget(TNode& pNode);
  std::wstring PathOf(const TNode& pNode) const;
  TFileTime Tick() { return fTime += 10'000'000; }
  void Collect(const TNode& pNode, TSnapshot& pAll) const;

  mutable std::mutex fLock;
  TNodePtr fComputer;
  std::map<TNodeId, std::weak_ptr<TNode>> fNodes;
  TNodeId fLastId = 0;
  TFileTime fTime = 132'223'104'000'000'000; // 2020-01-01
  TNoticeBoard fNotices;
};

} // namespace kiv::test
