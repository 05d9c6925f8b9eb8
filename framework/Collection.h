#pragma once

#include <framework/Persistent.h>
#include <platform/Export.h>

namespace kiv {

/// Objects in an order that belong to another object and are saved with it: the columns of a list. Published as a
/// property by TClassPublisher::Object; the class of the items is registered like any other.
class KIV_EXPORT TCollection : public TPersistent {
public:
  ~TCollection() override;

  virtual int GetCount() const noexcept = 0;
  /// Raises EListError for an index out of range. The collection's.
  virtual TPersistent* GetItem(int pIndex) const = 0;
  /// A new item at the end.
  virtual TPersistent* Add() = 0;
  virtual void Clear() = 0;
  /// Around several changes. They nest.
  virtual void BeginUpdate() noexcept = 0;
  virtual void EndUpdate() = 0;
};

} // namespace kiv
