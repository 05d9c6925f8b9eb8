#pragma once

#include <platform/Handles.h>

#include <string>

namespace kiv {

/// Makes the lists of many files in one folder cheap: a parse from the root binds every folder on the way anew, one in
/// the open parent folder costs a look at the file. The folder that was parsed from last is kept open, by each thread
/// for itself, for a second at most.
///
/// Only where the result is the same to the last byte: files (a folder may have another place in the namespace), on
/// fixed disks, in plain folders of the file system that haven't changed since, whose first list came out equal.
/// Nothing is kept on threads that don't say when they leave their apartment (see AtLeaveApartment), except for the
/// main thread, which lets go at Shutdown.

/// The list of a path in the folder that is kept; empty if another folder must be asked, or the file isn't there.
TUniqueItemIdList ParseInParent(const std::wstring& pPath);
/// Learns from a path that was parsed from the root. The second path of one folder opens that.
void LearnParent(const std::wstring& pPath, PCIDLIST_ABSOLUTE pList);

/// The list of something that was reported to have changed, made in its open parent folder of what the disk says of it;
/// of its name alone if it isn't there, or the disk isn't to be asked. Its folder's own dates may be old by a second.
/// Empty where no such folder can be kept, as on other disks than fixed ones. Costs a hundredth of a parse from the
/// root. Many folders are kept like that, each for a second.
TUniqueItemIdList ListInParent(const std::wstring& pPath, bool pAskDisk);

} // namespace kiv
