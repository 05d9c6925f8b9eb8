#pragma once

#include <platform/Handles.h>

namespace kiv {

// What a call gave: nothing if it failed, whatever it left in the pointer. Some shells (Wine) leave one there that they
// have freed.

inline TUniqueItemIdList TakeItemIdList(HRESULT pResult, ITEMIDLIST_RELATIVE* pList) noexcept {
  return TUniqueItemIdList(SUCCEEDED(pResult) ? pList : nullptr);
}
inline TUniqueTaskText TakeText(HRESULT pResult, wchar_t* pText) noexcept {
  return TUniqueTaskText(SUCCEEDED(pResult) ? pText : nullptr);
}

} // namespace kiv
