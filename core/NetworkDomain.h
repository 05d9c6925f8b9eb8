#pragma once

#include <platform/Export.h>

#include <string>
#include <string_view>

namespace kiv {

/// The domain part of the name of a computer or of something on it: `corp.example` of `\\srv.corp.example\share`. Empty
/// for a name without one, and for an address in place of a name.
KIV_EXPORT std::wstring DomainOfNetworkName(std::wstring_view pName);

} // namespace kiv
