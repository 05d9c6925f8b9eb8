#include <framework/Component.h>

#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <platform/Characters.h>
#include <platform/Version.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <unordered_map>

namespace kiv {

namespace {

// Names are ASCII, so this is all there is to their case.
std::wstring NameKey(std::wstring_view name) {
  std::wstring key(name);
  for (wchar_t& c : key) {
    if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c + (L'a' - L'A'));
  }
  return key;
}

// From the back: what came last is asked for, and goes, first.
bool EraseLast(std::vector<TComponent*>& list, const TComponent* component) noexcept {
  const auto found = std::find(list.rbegin(), list.rend(), component);
  if (found == list.rend()) return false;
  list.erase(std::next(found).base());
  return true;
}

} // namespace

struct TComponent::TNameIndex {
  std::unordered_map<std::wstring, TComponent*> map;
};

bool IsIdentifier(std::wstring_view pText) noexcept {
  if (pText.empty() || IsAsciiDigit(pText.front())) return false;
  return std::all_of(pText.begin(), pText.end(),
                     [](wchar_t c) { return IsAsciiLetter(c) || IsAsciiDigit(c) || c == L'_'; });
}

TComponent::TComponent(TComponent* pOwner) {
  if (!pOwner) return;
  try {
    pOwner->InsertComponent(this);
  } catch (...) {
    // A notified component may have raised when this one was in its place already.
    LeaveOwner();
    NotifyLinked();
    throw;
  }
}

TComponent::~TComponent() {
  BeginDestruction();
  NotifyLinked();
  DestroyComponents();
  LeaveOwner();
  // Those that asked only while the others were being told.
  NotifyLinked();
}

std::wstring TComponent::ClassName() const {
  return L"TComponent";
}

std::wstring TComponent::GetVersion() const {
  return ClassName() + L" V" + LibraryVersion;
}

void TComponent::SetName(const std::wstring& pName) {
  if (pName == fName) return;
  if (!pName.empty() && !IsIdentifier(pName)) {
    throw EComponentError(L"\"" + pName + L"\" is not a valid component name.");
  }
  if (fOwner) {
    const TComponent* const other = pName.empty() ? nullptr : fOwner->FindComponent(pName);
    if (other && other != this) throw EComponentError(L"A component named " + pName + L" already exists.");
    if (!fOwner->fNames) fOwner->fNames = std::make_unique<TNameIndex>();
    auto& names = fOwner->fNames->map;
    const std::wstring oldKey = NameKey(fName);
    if (!pName.empty()) names[NameKey(pName)] = this;
    if (!fName.empty() && oldKey != NameKey(pName)) names.erase(oldKey);
  }
  fName = pName;
}

void TComponent::SetDesigning(bool pDesigning) {
  PutState(TComponentStateFlag::csDesigning, pDesigning);
  for (TComponent* component : fComponents) component->SetDesigning(pDesigning);
}

TComponent* TComponent::FindComponent(std::wstring_view pName) const {
  if (!fNames || pName.empty()) return nullptr;
  const auto found = fNames->map.find(NameKey(pName));
  return found == fNames->map.end() ? nullptr : found->second;
}

void TComponent::CheckInsertable(const TComponent& pComponent) const {
  if (fInDestructor) throw EComponentError(L"A component that is being destroyed can't own another one.");
  if (pComponent.fInDestructor) throw EComponentError(L"A component that is being destroyed can't get an owner.");
  for (const TComponent* above = this; above; above = above->fOwner) {
    if (above == &pComponent) throw EComponentError(L"A component can't own itself or its own owner.");
  }
  if (FindComponent(pComponent.fName)) {
    throw EComponentError(L"A component named " + pComponent.fName + L" already exists.");
  }
}

void TComponent::InsertComponent(TComponent* pComponent) {
  if (!pComponent) throw EInvalidArgument(L"TComponent.InsertComponent: there is no component.");
  if (pComponent->fOwner == this) return;
  CheckInsertable(*pComponent);
  if (pComponent->fOwner) {
    const TAliveWatch self(fAlive);
    const TAliveWatch component(pComponent->fAlive);
    pComponent->fOwner->RemoveComponent(pComponent);
    // Others were told, and may have done anything.
    if (!self.IsAlive() || !component.IsAlive() || pComponent->fOwner) return;
    CheckInsertable(*pComponent);
  }
  Attach(pComponent);
  if (!IsLoading()) Notify(pComponent, TOperation::opInsert);
}

void TComponent::RemoveComponent(TComponent* pComponent) {
  if (!pComponent || pComponent->fOwner != this) return;
  Detach(pComponent);
  Notify(pComponent, TOperation::opRemove);
}

// All or nothing.
void TComponent::Attach(TComponent* pComponent) {
  fComponents.push_back(pComponent);
  if (!pComponent->fName.empty()) {
    try {
      if (!fNames) fNames = std::make_unique<TNameIndex>();
      fNames->map.emplace(NameKey(pComponent->fName), pComponent);
    } catch (...) {
      fComponents.pop_back();
      throw;
    }
  }
  pComponent->fOwner = this;
  if (IsDesigning()) pComponent->SetDesigning(true);
}

void TComponent::Detach(TComponent* pComponent) noexcept {
  EraseLast(fComponents, pComponent);
  if (!pComponent->fName.empty()) fNames->map.erase(NameKey(pComponent->fName));
  pComponent->fOwner = nullptr;
}

void TComponent::FreeNotification(TComponent* pComponent) {
  if (!pComponent || pComponent == this) return;
  // In the shorter list: half the components of a form may be linked to one of them.
  const bool isShorter = fLinked.size() <= pComponent->fLinked.size();
  const std::vector<TComponent*>& list = isShorter ? fLinked : pComponent->fLinked;
  if (std::find(list.begin(), list.end(), isShorter ? pComponent : this) != list.end()) return;
  fLinked.push_back(pComponent);
  try {
    pComponent->fLinked.push_back(this);
  } catch (...) {
    fLinked.pop_back();
    throw;
  }
}

void TComponent::RemoveFreeNotification(TComponent* pComponent) noexcept {
  if (!pComponent) return;
  const bool isShorter = fLinked.size() <= pComponent->fLinked.size();
  if (!EraseLast(isShorter ? fLinked : pComponent->fLinked, isShorter ? pComponent : this)) return;
  EraseLast(isShorter ? pComponent->fLinked : fLinked, isShorter ? this : pComponent);
}

void TComponent::BeginLoading() noexcept {
  PutState(TComponentStateFlag::csLoading, true);
}

void TComponent::EndLoading() {
  const TAliveWatch self(fAlive);
  try {
    Loaded();
  } catch (...) {
    if (self.IsAlive()) CancelLoading();
    throw;
  }
  if (self.IsAlive()) CancelLoading();
}

void TComponent::CancelLoading() noexcept {
  PutState(TComponentStateFlag::csLoading, false);
}

void TComponent::Loaded() {
  CancelLoading();
}

void TComponent::Notification(TComponent* pComponent, TOperation pOperation) {
  if (pOperation == TOperation::opRemove) RemoveFreeNotification(pComponent);
  if (fComponents.empty()) return;
  const TAliveWatch self(fAlive);
  // Downwards: whatever goes meanwhile only moves the rest towards places that are still to come.
  for (std::size_t i = fComponents.size(); i-- > 0;) {
    if (i >= fComponents.size()) continue;
    TComponent* const component = fComponents[i];
    if (component == pComponent || component->fInDestructor) continue;
    component->Notification(pComponent, pOperation);
    if (!self.IsAlive()) return;
  }
}

void TComponent::Notify(TComponent* pComponent, TOperation pOperation) {
  if (!fInDestructor) Notification(pComponent, pOperation);
}

void TComponent::BeginDestruction() noexcept {
  fInDestructor = true;
  fAlive.Expire();
  MarkDestroying();
}

void TComponent::PutState(TComponentStateFlag pFlag, bool pIn) noexcept {
  TComponentState state = GetComponentState();
  state.Put(pFlag, pIn);
  fState.store(state, std::memory_order_release);
}

void TComponent::MarkDestroying() noexcept {
  PutState(TComponentStateFlag::csDestroying, true);
  for (TComponent* component : fComponents) component->MarkDestroying();
}

// What was inserted last goes first.
void TComponent::DestroyComponents() noexcept {
  while (!fComponents.empty()) {
    TComponent* const component = fComponents.back();
    Detach(component);
    // One that is already going ends by itself: this owner is being destroyed from inside its destructor.
    if (!component->fInDestructor) delete component;
  }
}

void TComponent::NotifyLinked() noexcept {
  while (!fLinked.empty()) {
    TComponent* const other = fLinked.back();
    fLinked.pop_back();
    EraseLast(other->fLinked, this);
    try {
      other->Notify(this, TOperation::opRemove);
    } catch (...) {
      ReportException(std::current_exception());
    }
  }
}

void TComponent::LeaveOwner() noexcept {
  if (!fOwner) return;
  try {
    fOwner->RemoveComponent(this);
  } catch (...) {
    ReportException(std::current_exception());
  }
}

} // namespace kiv
