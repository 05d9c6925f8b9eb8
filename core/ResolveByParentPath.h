#pragma once

#include <core/IItemIdList.h>

#include <string_view>

namespace kiv {

/// The list of a path that the platform doesn't parse in one go because it is too long: the nearest folder above that
/// does parse, and from there name by name, each in its parent. EmptyIdList if that fails. Slow.
ComPtr<IItemIdList> ResolveByParentPath(std::wstring_view pPath);

} // namespace kiv
