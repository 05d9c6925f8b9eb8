#pragma once

#include <platform/Export.h>
#include <platform/Types.h>

#include <objidl.h>
#include <shellapi.h>

#include <string>
#include <vector>

namespace kiv {

/// How files are asked of a data object: `CF_HDROP`, as content, in memory ("FORMATETC").
inline constexpr FORMATETC HDropFormatEtc{CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};

/// The clipboard formats "FileGroupDescriptor" and "FileGroupDescriptorW" by which virtual files are offered.
/// Registered once. 0 if the system is out of formats.
KIV_EXPORT CLIPFORMAT CF_FILEDESCRIPTORA();
KIV_EXPORT CLIPFORMAT CF_FILEDESCRIPTORW();

/// True if the clipboard holds files, real or virtual ones. It isn't opened for that. Any thread.
KIV_EXPORT bool FilesInClipboard();

/// The full paths in a drop handle, which stays the caller's. Null and what isn't one give nothing.
KIV_EXPORT std::vector<std::wstring> GetFilenamesFromHandle(HDROP pDrop);

/// The names in the memory of a medium in the format CF_FILEDESCRIPTORW, which stays the caller's. Relative paths of
/// another program's making, unchecked: see DecodeFileDescriptorsW.
KIV_EXPORT std::vector<std::wstring> GetFilenamesFromFileDescriptorW(HGLOBAL pMemory);
/// The same for CF_FILEDESCRIPTORA; the bytes count as text in this system's code page.
KIV_EXPORT std::vector<std::wstring> GetFilenamesFromFileDescriptorA(HGLOBAL pMemory);

} // namespace kiv
