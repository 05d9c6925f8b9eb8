#pragma once

#include <platform/ComPtr.h>
#include <platform/Types.h>

#include <oleacc.h>

namespace kiv {

class TCustomListView;
class TListItem;

/// What assistive programs are told of a list and its rows ("IAccessible"), for platforms whose own object for a list
/// view knows no rows: each row is an element of the object, numbered from 1. For all that concerns the list as a
/// window the platform's object is asked.
///
/// Null if the platform's object knows the rows; else the object, which outlives the list and answers
/// CO_E_OBJNOTCONNECTED then. Main thread only.
ComPtr<IAccessible> MakeListAccessible(TCustomListView& pView);

/// The state of a row in the platform's bits ("Object State Constants").
long AccessibleStateOf(TCustomListView& pView, TListItem& pItem);

/// The answer to WM_GETOBJECT with an object; 0 if the platform has no such service.
LRESULT AnswerWithObject(WPARAM pWParam, IAccessible& pObject);

} // namespace kiv
