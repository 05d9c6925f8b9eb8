#pragma once

#include <platform/Types.h>

#include <shobjidl.h>

#include <string>

namespace kiv {

/// The name of an object as its folder gives it ("IShellFolder::GetDisplayNameOf"). `pForm` is a combination of
/// `SHGDN_...`. `S_OK`, or the folder's answer with an empty name; a crash of the folder's code is `E_FAIL`.
HRESULT GetNameInFolder(IShellFolder* pFolder, PCUITEMID_CHILD pItem, DWORD pForm, std::wstring& pName);

} // namespace kiv
