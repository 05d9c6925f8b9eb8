#pragma once

#include <core/IItemIdList.h>

namespace kiv {

/// What takes item lists one by one, as a change notifier does: how a collection or a walker copies its objects to
/// something that stands above it.
class IItemIdListSink {
public:
  /// Takes an absolute list.
  virtual void AddItemIdList(IItemIdList* pItemIdList) = 0;

protected:
  ~IItemIdListSink() = default;
};

} // namespace kiv
