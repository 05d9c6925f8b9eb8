#pragma once

#include <doubles/extension/Script.h>

#include <windows.h>

#include <optional>

namespace kiv::test {

/// Does a deed, except for crashing: that is for the method itself, while it owns nothing. What the method is to
/// answer, if it isn't to go on.
std::optional<HRESULT> Do(TDeed pDeed);

} // namespace kiv::test
