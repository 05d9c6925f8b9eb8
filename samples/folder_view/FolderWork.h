#pragma once

#include <folder_view/FolderEntry.h>
#include <threading/Cancellation.h>
#include <threading/WorkerThreadPool.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kiv::sample {

// What workers do for the view. Each of these binds the folder anew, in its own thread's apartment, and lets it go
// there.

/// Why something can't be done, for people: what was tried, and the platform's text.
struct TFailure {
  std::wstring what;
  HRESULT code = S_OK;
  explicit operator bool() const noexcept { return FAILED(code); }
  std::wstring Text() const;
};

/// A folder that can be shown.
struct TOpenedFolder {
  ComPtr<IItemIdList> list; ///< resolved
  std::wstring title;
  std::wstring path;     ///< to be shown, and understood when it is typed
  std::wstring diskPath; ///< empty for a folder that isn't on a disk
  TNameUse names = TNameUse::Shown;
  bool takesFolders = false; ///< new ones can be made in it
  TFailure failure;
};
/// By its list.
TOpenedFolder OpenFolder(const ComPtr<IItemIdList>& pFolder);
/// By what a user types: a path, a name that the shell parses ("shell:", "::{...}"), variables of the environment.
TOpenedFolder OpenFolder(const std::wstring& pText);

struct TListing {
  TOpenedFolder folder;
  TFolderOrder order;
  int page = 0; ///< so many first entries get icon and type at once
};
/// Lists a folder. `pDeliver` gets all that is known so far, in order, about ten times a second and at the end; its
/// last argument says that this is all.
TFailure ListFolder(const TListing& pListing, ICancellationIndicator& pWithdrawn,
                    const std::function<void(TEntries pEntries, bool pComplete)>& pDeliver);

/// What has become of a file: nil if it is gone.
struct TReread {
  std::wstring key;
  TEntry entry;
};
/// When something last came to a folder of a disk or left it; 0 if nobody knows.
TFileTime LastChange(const std::wstring& pDiskPath);

/// Reads some objects again, by their names in the folder. Nothing if the folder can't be asked for them.
std::optional<std::vector<TReread>> ReadObjects(const TOpenedFolder& pFolder, const std::vector<std::wstring>& pNames,
                                                ICancellationIndicator& pWithdrawn);

// What the user wants done. Answers are empty if it was done.

TFailure RenameObject(const TOpenedFolder& pFolder, const std::wstring& pName, const std::wstring& pNewName);
/// Under the first name that is free: "New folder", "New folder (2)", ... `pName` is that.
TFailure MakeFolder(const TOpenedFolder& pFolder, std::wstring& pName);
/// To the recycle bin where there is one.
TFailure DeleteObjects(const std::vector<std::wstring>& pPaths);
/// Starts what the object is opened with.
TFailure OpenObject(const ComPtr<IItemIdList>& pObject, const std::wstring& pName);

/// The workers that all views share. A folder's code may never come back: whoever leaves a folder calls MakeRoom, and
/// there are as many free threads then as there were, however many are stuck. Main thread; ends with the library.
TWorkerThreadPool& FolderWorkers();
void MakeRoom();
/// For what has been added with Highest: at least one worker that isn't busy now takes it.
void MakeRoomForOne();

/// Those that measure folders, which takes long: nobody waits behind them. As above.
TWorkerThreadPool& SizeWorkers();

} // namespace kiv::sample
