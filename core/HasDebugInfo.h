#pragma once

#include <platform/InterfaceId.h>

#include <string>

namespace kiv {

/// How much an object tells of itself.
enum class TItemIdListInfoLevel {
  Normal, ///< what is at hand
  Verbose ///< also what must be asked for
};

/// Offered by objects that can describe themselves in logs and exception messages.
struct IHasDebugInfo : IUnknown {
  /// A text for developers. Doesn't raise.
  virtual std::wstring GetInfo(TItemIdListInfoLevel pLevel) = 0;
};
KIV_INTERFACE_ID(IHasDebugInfo, "{68F5A3CD-B8FE-4400-B312-DC2334AF731E}");

} // namespace kiv
