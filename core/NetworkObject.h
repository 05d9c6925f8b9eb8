#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <shobjidl.h>

#include <string>

namespace kiv {

/// The domain that a network object belongs to: of a domain or workgroup its own name, of a computer or a share the
/// domain part of its name. Empty for everything else. `pItem` is relative to the folder; both are borrowed. A folder
/// that crashes gives an empty text.
KIV_EXPORT std::wstring GetDomainFromIdList(IShellFolder* pFolder, PCUITEMID_CHILD pItem);

} // namespace kiv
