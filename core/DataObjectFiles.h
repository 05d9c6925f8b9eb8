#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <objidl.h>

#include <string>
#include <vector>

namespace kiv {

/// The files that a data object of the clipboard or of a drag offers: their paths ("CF_HDROP"), else the names of
/// virtual files ("FileGroupDescriptorW", then "FileGroupDescriptor"), which are another program's making and
/// unchecked. Nothing if it offers neither. The object is foreign code: call it on the thread that got it.
KIV_EXPORT std::vector<std::wstring> GetFilenamesFromDataObject(IDataObject* pData);

} // namespace kiv
