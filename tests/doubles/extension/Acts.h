#pragma once

#include <doubles/extension/Script.h>

#include <windows.h>

#include <optional>
#include <string>

namespace kiv::test {

/// Does a deed, except for crashing: that is for the method itself, while it owns nothing. What the method is to
/// answer, if it isn't to go on.
std::optional<HRESULT> Do(TDeed pDeed);

/// Every method that a third party may take its time over says so first.
void NoteAsk(TMethod pMethod);

/// From now on those are noted that a thread asks, which also reads them: their names with a blank behind each.
void WatchAsksOf(DWORD pThread);
const std::wstring& NotedAsks();

} // namespace kiv::test
