#include <framework/Persistent.h>

#include <framework/Collection.h>

#include <framework/Exceptions.h>

namespace kiv {

namespace {

[[noreturn]] void RaiseAssignError(const std::wstring& sourceName, const TPersistent& target) {
  throw EConvertError(L"Cannot assign a " + sourceName + L" to a " + target.ClassName() + L".");
}

} // namespace

TPersistent::~TPersistent() = default;

TCollection::~TCollection() = default;

std::wstring TPersistent::ClassName() const {
  return L"TPersistent";
}

void TPersistent::Assign(const TPersistent* pSource) {
  if (!pSource) RaiseAssignError(L"nil", *this);
  pSource->AssignTo(this);
}

void TPersistent::AssignTo(TPersistent* pTarget) const {
  RaiseAssignError(ClassName(), *pTarget);
}

} // namespace kiv
