#pragma once

#include <platform/Export.h>
#include <platform/Handles.h>

#include <shobjidl.h>

namespace kiv {

/// Whether an object is there still, for shells whose `IShellItem2::Update` isn't implemented: asks the disk for what
/// lies there, and parses the object's name again. On success `pList` is the list that the shell makes of it now, or
/// the object's own if the disk has it and the shell doesn't parse its name; otherwise the platform's code for what
/// failed. Slow: not for loops over a folder.
KIV_EXPORT HRESULT Revalidate(IShellItem* pItem, TUniqueItemIdList& pList);

} // namespace kiv
