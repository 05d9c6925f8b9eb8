#pragma once

#include <doubles/SimulatedFileSystem.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Inside of SimulatedFileSystem: not for tests.
namespace kiv::test {

/// A file, folder, drive or the computer. Under the file system's lock.
struct SimulatedFileSystem::TNode {
  TNodeId id = 0;
  TFolderObject object;
  std::weak_ptr<TNode> parent;
  std::map<std::wstring, TNodePtr> children; // by folded name
  bool denied = false;
  bool noMedium = false; // of a drive
  bool deleted = false;
  std::multimap<std::size_t, TStepFault> faults; // by step

  bool IsFolder() const { return object.flags.Contains(TObjectFlag::Folder); }
  bool IsDriveOrComputer() const {
    const TNodePtr above = parent.lock();
    return !above || above->parent.expired();
  }
  TNodePtr Child(std::wstring_view pName) const {
    const auto found = children.find(FoldName(pName));
    return found == children.end() ? nullptr : found->second;
  }
  /// The drive that this stands on; the computer is its own.
  const TNode& Drive() const {
    const TNode* at = this;
    while (!at->IsDriveOrComputer()) at = at->parent.lock().get();
    return *at;
  }
};

/// One walk through a folder: the names as they were at the first step, the facts as they are.
class SimulatedFileSystem::TStepper : public IFolderStepper {
public:
  TStepper(SimulatedFileSystem& pFileSystem, TNodePtr pFolder);

  TFolderStep Next(TFolderObject& pObject) override;
  HRESULT Status() const override { return fStatus; }
  std::wstring ObjectPath() const override { return fObjectPath; }

private:
  HRESULT TakeNames();
  void WaitAsScripted();
  void ChangeAsScripted();
  bool CrashesAsScripted();
  HRESULT Attempt(TFolderObject& pObject);
  bool HasFault(TStepFault::TKind pKind) const { return Faults(pKind) != nullptr; }
  TStepFault* Faults(TStepFault::TKind pKind) const;

  SimulatedFileSystem& fFileSystem;
  const TNodePtr fFolder;
  std::vector<std::wstring> fNames;
  bool fUnderWay = false;
  std::size_t fStep = 0; // from 1
  std::size_t fAt = 0;   // in fNames
  HRESULT fStatus = S_OK;
  std::wstring fObjectPath;
};

} // namespace kiv::test
