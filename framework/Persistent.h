#pragma once

#include <platform/Export.h>

#include <string>

namespace kiv {

/// Base of objects that can be copied from one another and can have published properties. See PropertyRegistry.h.
class KIV_EXPORT TPersistent {
public:
  virtual ~TPersistent();

  /// The class's name as a developer writes it ("TStringList"). Each class that shall be named overrides it. (Not
  /// "GetClassName": the platform's headers have a macro of that name.)
  virtual std::wstring ClassName() const;

  /// Takes over the content of another object. A class that can't copy from `pSource` lets the source try by its
  /// AssignTo. Raises EConvertError if neither can, or if `pSource` is null.
  virtual void Assign(const TPersistent* pSource);

protected:
  TPersistent() = default;
  TPersistent(const TPersistent&) = default;
  TPersistent& operator=(const TPersistent&) = default;

  /// Copies this object into one that doesn't know this class. Raises EConvertError unless overridden.
  virtual void AssignTo(TPersistent* pTarget) const;
};

} // namespace kiv
