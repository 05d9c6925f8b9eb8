#pragma once

#include <coordination/SelectionStates.h>
#include <framework/Component.h>
#include <framework/Strings.h>
#include <platform/Export.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// A path that was to be selected isn't that of a file or folder.
using TInvalidPathEvent = TEvent<TPersistent*, const std::wstring&>;

/// A set of files and folders, as entries: what it holds, its ini form, and what each kind of selection answers in its
/// own way.
///
/// Main thread, but for what is said to be any thread's. Events go out when a change is complete and nothing is locked;
/// their handlers may come back, and may destroy the selection.
class KIV_EXPORT TKivBaseSelectionList : public TComponent {
public:
  explicit TKivBaseSelectionList(TComponent* pOwner = nullptr);
  ~TKivBaseSelectionList() override;

  std::wstring ClassName() const override;
  /// Takes over the entries and totals of another selection as they are. Calculations that run there aren't waited for.
  void Assign(const TPersistent* pSource) override;

  bool IsEmpty() const;
  int GetCount() const;
  virtual std::wstring GetListItem(int pIndex) const;
  /// The entries, sorted; adding to it and taking away selects and unselects.
  TStrings& GetPaths() noexcept { return *fPaths; }
  /// Clears, and selects each path.
  virtual void SetPaths(const std::vector<std::wstring>& pPaths);

  // As far as they have been calculated: see OnCompletedCalculateFiles.
  std::int64_t GetSize() const noexcept { return FSize; } ///< bytes
  int GetFileCount() const noexcept { return FFileCount; }
  int GetFolderCount() const noexcept { return FFolderCount; }

  /// Any thread. ssDisabled for what isn't there. `pIsSubItemOf`: selected, but without an entry of its own.
  virtual TKivSelectionState PathSelected(const std::wstring& sFQPath, bool& pIsSubItemOf) = 0;
  /// The highest folder that is complete once the path is selected, seen from its parent up, without a delimiter at its
  /// end, but a root with one; the path itself if that is none.
  virtual std::wstring CompletePathSelected(const std::wstring& sFQPath) = 0;
  virtual void AddPathToSelection(const std::wstring& sFQPath) = 0;
  /// Selects many, as AddPathToSelection does each, but looks only once at what they complete.
  virtual void AddPaths(std::vector<std::wstring> pPaths) = 0;
  virtual void RemovePathFromSelection(const std::wstring& sFQPath) = 0;
  /// Unselects many, as RemovePathFromSelection does each, and takes neighbours out at once.
  virtual void RemovePaths(std::vector<std::wstring> pPaths) = 0;
  virtual void Clear() = 0;
  /// Follows a rename or move on disk. An entry whose new place is selected anyway goes.
  virtual void PathWasRenamed(const std::wstring& pOldPath, const std::wstring& pNewPath) = 0;

  /// Replaces a section of an ini file: each entry a key with an empty value. Raises EIniFileException if the file
  /// can't be written.
  void SaveToIniFile(const std::wstring& sFileName, const std::wstring& pSection) const;
  /// Replaces the selection by the keys of a section; none of it is selected if there is no such file.
  void LoadFromIniFile(const std::wstring& sFileName, const std::wstring& pSection);

  /// Lives on for who asks it in the background.
  std::shared_ptr<ISelectionStateSource> GetStateSource() const noexcept { return fStates; }

  const TNotifyEvent& GetOnChange() const noexcept { return fOnChange; }
  void SetOnChange(TNotifyEvent pEvent) { fOnChange = std::move(pEvent); }
  const TInvalidPathEvent& GetOnInvalidPath() const noexcept { return fOnInvalidPath; }
  void SetOnInvalidPath(TInvalidPathEvent pEvent) { fOnInvalidPath = std::move(pEvent); }

protected:
  friend class TSelectionPaths;

  /// Runs a change under the lock. Its events go out behind the outermost one.
  virtual void Edit(const std::function<void()>& pChange) = 0;
  virtual void DeleteEntry(int pIndex, bool pUpdateSize) = 0;
  /// An entry came or went.
  virtual void Changed(const std::wstring& pPath) = 0;
  virtual void AddAllExclude(const std::wstring& pParent, const std::wstring& pExclude, std::wstring& pTop) = 0;
  virtual bool FormatSelectionPath(std::wstring& pPath);
  virtual bool IsItemFullSelected(const std::wstring& pPath);
  virtual TKivSelectionState IsItemSelected(const std::wstring& pPath, bool& pIsSubItemOf);
  virtual void RemoveSubFolders(const std::wstring& pPath) = 0;
  virtual bool CompleteChildPathSelected(const std::wstring& pPath) = 0;
  virtual std::wstring CompletePathSelectedExclude(const std::wstring& pParent, const std::wstring& pExclude) = 0;

  TSelectionEntries& List() const noexcept { return fStates->Entries(); }

  const std::shared_ptr<TSelectionStates> fStates;
  TNotifyEvent fOnChange;
  TInvalidPathEvent fOnInvalidPath;
  TNotifyEvent fOnCompletedCalculateFiles;
  std::int64_t FSize = 0;
  int FFileCount = 0;
  int FFolderCount = 0;

private:
  const std::unique_ptr<TStrings> fPaths;
};

} // namespace kiv
