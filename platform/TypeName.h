#pragma once

#include <platform/Export.h>

#include <string>
#include <typeinfo>

namespace kiv {

/// A class's name as its source has it, without namespaces in front: "TAsyncProcedure". For messages; two classes may
/// share a name.
KIV_EXPORT std::wstring UnqualifiedTypeName(const std::type_info& pType);

} // namespace kiv
