#pragma once

#include <core/FolderObject.h>
#include <core/IItemIdList.h>
#include <core/ObjectFacts.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kiv::sample {

class TFolderRow;

/// What the view knows of one object of its folder, as a worker read it. Shared by workers and the main thread, and
/// never changed: a change on disk makes another one, which takes over the row.
struct TFolderEntry {
  ComPtr<IItemIdList> item; ///< relative to the folder
  std::wstring name;
  std::wstring key;  ///< what makes it the same object when it is read again
  std::wstring path; ///< of its own, where the folder's and its name don't make it: on the desktop
  TObjectFlags flags;
  std::int64_t size = TFolderObject::UnknownSize;
  TFileTime changed = 0;
  int image = -1;                    ///< in the system's image lists; known at once for the first page only
  std::wstring type;                 ///< as above
  mutable TFolderRow* row = nullptr; ///< the main thread's

  /// Listed before the files. An archive, though it can be opened like a folder, is a file.
  bool IsFolder() const noexcept { return flags.Contains(TObjectFlag::Folder) && !flags.Contains(TObjectFlag::Stream); }
  bool IsOnDisk() const noexcept { return flags.Contains(TObjectFlag::FileSystem); }
};
using TEntry = std::shared_ptr<const TFolderEntry>;
using TEntries = std::vector<TEntry>;

enum class TFolderColumn { Name, Size, Type, Changed };
struct TFolderOrder {
  TFolderColumn column = TFolderColumn::Name;
  bool descending = false;
  friend bool operator==(const TFolderOrder&, const TFolderOrder&) = default;
};

/// What names are worth in a folder.
enum class TNameUse {
  Unique, ///< on a disk
  Merged, ///< the desktop: several folders' files, whose names may be the same
  Shown   ///< whatever several objects are shown as: the recycle bin, a library
};

/// Reads what an open folder says of an object. Nil if it says nothing. `pFolder` is the folder's list.
std::shared_ptr<TFolderEntry> ReadEntry(TObjectFacts& pFacts, ComPtr<IItemIdList> pItem, IItemIdList* pFolder,
                                        TNameUse pNames);
/// Whether two entries of one object say the same of it.
bool IsSameFact(const TFolderEntry& pFirst, const TFolderEntry& pSecond) noexcept;
/// The key of a file of that name.
std::wstring KeyOfName(std::wstring_view pName);

/// A folder that has been listed again: what is known already stays, by identity.
struct TMerged {
  TEntries entries;                               ///< the new ones; of those that say the same the old ones
  std::vector<std::pair<TEntry, TEntry>> changed; ///< old and new
};
/// `pMoved` leads from the former keys of objects to those that they have now. On any thread.
TMerged MergeEntries(const TEntries& pKnown, const std::map<std::wstring, std::wstring>& pMoved, TEntries pListed);

/// Whether one stands before the other: folders first, equals by name. Not for the column of types, which aren't known
/// of all entries.
bool StandsBefore(const TFolderEntry& pFirst, const TFolderEntry& pSecond, const TFolderOrder& pOrder);
/// On a worker: may ask the platform for the names of types.
void SortEntries(TEntries& pEntries, const TFolderOrder& pOrder);

/// Asks the platform for the name of an entry's type, and for its icon. On a worker; by the extension where that
/// decides, else of the object itself, as slow as its drive. `pFolder` is the folder's list.
std::wstring TypeOf(const TFolderEntry& pEntry);
int ImageOf(const TFolderEntry& pEntry, IItemIdList* pFolder);
/// Whether every object with this entry's extension looks the same.
bool LooksLikeItsKind(const TFolderEntry& pEntry);

/// The columns' texts, in the user's language. Empty for what isn't known.
std::wstring SizeText(std::int64_t pSize);
std::wstring TimeText(TFileTime pTime);

} // namespace kiv::sample
