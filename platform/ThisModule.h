#pragma once

#include <platform/Types.h>

namespace kiv {

/// The module that this code stands in: pathmere.dll, or the program that links the static library. Window classes and
/// resources of the library belong to it.
HINSTANCE ThisModule() noexcept;

} // namespace kiv
