#pragma once

#include <framework/Event.h>
#include <framework/Persistent.h>
#include <framework/Set.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

enum class TComponentStateFlag {
  csLoading,   ///< its properties are being read; references to other components don't stand yet
  csDesigning, ///< placed in a designer: shows itself, but does nothing to the outside
  csDestroying ///< it or its owner is on the way out
};
using TComponentState = TSet<TComponentStateFlag>;

enum class TOperation { opInsert, opRemove };

/// Base of everything that an application places, names and links.
///
/// Ownership: a component with an owner is a heap object that the owner deletes, last inserted first. One without an
/// owner belongs to whoever made it, on the stack or in a std::unique_ptr. Deleting an owned component takes it from
/// its owner.
///
/// References: a component that keeps a pointer to another calls `other->FreeNotification(this)` and forgets the
/// pointer in its Notification. That call comes from the other's base class destructor: what it had beyond TComponent
/// is gone by then, so compare pointers and don't cast. What a Notification raises there can't pass out of a destructor
/// and goes to ReportException.
///
/// A Notification may destroy any component, the notified one and the owner included, except the one that it tells of;
/// of an insertion that leaves out all that own the inserted one.
/// Components belong to one thread, as a rule the main thread; others may only ask for the state.
class KIV_EXPORT TComponent : public TPersistent {
public:
  /// Inserts itself into the owner, if there is one. Raises as InsertComponent.
  explicit TComponent(TComponent* pOwner = nullptr);
  TComponent(const TComponent&) = delete;
  TComponent& operator=(const TComponent&) = delete;
  ~TComponent() override;

  std::wstring ClassName() const override;
  /// Class name, " V", version of the library.
  std::wstring GetVersion() const;

  /// Empty, or an identifier (ASCII letters, digits, "_", no digit in front) that no other component of the owner has;
  /// names that differ in case only are the same.
  const std::wstring& GetName() const noexcept { return fName; }
  /// Raises EComponentError for what isn't an identifier and for a name that is taken.
  virtual void SetName(const std::wstring& pName);

  /// Free for the application. The library never looks at it.
  std::intptr_t GetTag() const noexcept { return fTag; }
  void SetTag(std::intptr_t pTag) noexcept { fTag = pTag; }

  /// These four may be asked by any thread, as long as the component is known to live.
  TComponentState GetComponentState() const noexcept { return fState.load(std::memory_order_acquire); }
  bool IsLoading() const noexcept { return GetComponentState().Contains(TComponentStateFlag::csLoading); }
  bool IsDestroying() const noexcept { return GetComponentState().Contains(TComponentStateFlag::csDestroying); }
  bool IsDesigning() const noexcept { return GetComponentState().Contains(TComponentStateFlag::csDesigning); }
  /// For designers: sets or clears csDesigning here and in all components below.
  void SetDesigning(bool pDesigning);

  /// A part that its owner makes itself, in its constructor: it is never saved as a component of its own, since the
  /// owner would make it a second time on loading. Its properties can be saved by publishing it as an object.
  bool IsSubComponent() const noexcept { return fSubComponent; }
  void SetSubComponent(bool pSubComponent) noexcept { fSubComponent = pSubComponent; }

  TComponent* GetOwner() const noexcept { return fOwner; }
  /// What this component owns, in order of insertion. Changes with each insertion and removal: copy it before calling
  /// foreign code in a loop.
  const std::vector<TComponent*>& GetComponents() const noexcept { return fComponents; }
  /// The owned component of that name (in any case), or null.
  TComponent* FindComponent(std::wstring_view pName) const;

  /// Becomes the owner of a component, which leaves its former owner. Raises EComponentError, and changes nothing, if
  /// the name is taken, if `pComponent` is this component or owns it, or if either of the two is being destroyed.
  void InsertComponent(TComponent* pComponent);
  /// Hands a component back to the caller. Nothing happens if it isn't owned here.
  void RemoveComponent(TComponent* pComponent);

  /// `pComponent` will be told by its Notification when this component goes. Twice is once; each end may go first.
  void FreeNotification(TComponent* pComponent);
  /// Takes that back.
  void RemoveFreeNotification(TComponent* pComponent) noexcept;

  /// Reading of properties begins: csLoading is set. Whoever calls it calls EndLoading.
  void BeginLoading() noexcept;
  /// Reading has ended: calls Loaded. What that raises passes out, with csLoading cleared.
  void EndLoading();
  /// Reading failed: clears csLoading without a call of Loaded.
  void CancelLoading() noexcept;

  /// For callers that come back to this component after foreign code has run. Watches that were taken before say "gone"
  /// as soon as BeginDestruction is called: what runs from inside a destructor can't take the rest for a component.
  const TAliveToken& GetAliveToken() const noexcept { return fAlive; }

protected:
  /// A component came to or leaves the owner, or one leaves that this component asked FreeNotification of. Passes it on
  /// to the components owned here. An override calls the base class first, and then touches nothing of itself unless
  /// it lives still (see TAliveWatch), or does its own work first. While the owner is loading insertions aren't
  /// reported (Loaded is the time to look around), and an owner that is destroyed doesn't report that its components
  /// go, except to those that asked for it.
  virtual void Notification(TComponent* pComponent, TOperation pOperation);

  /// All properties have been read and all references stand. Called once after each reading, a component before those
  /// that it owns. Overrides call the base class.
  virtual void Loaded();

  /// Marks this component and all below as going. A destructor of a derived class that may lead to foreign code calls
  /// it first, so that nobody destroys the component a second time.
  void BeginDestruction() noexcept;

private:
  friend class TComponentReader;
  struct TNameIndex;

  void CheckInsertable(const TComponent& pComponent) const;
  void Attach(TComponent* pComponent);
  void Detach(TComponent* pComponent) noexcept;
  void PutState(TComponentStateFlag pFlag, bool pIn) noexcept;
  void MarkDestroying() noexcept;
  void DestroyComponents() noexcept;
  void NotifyLinked() noexcept;
  void LeaveOwner() noexcept;
  void Notify(TComponent* pComponent, TOperation pOperation);

  TComponent* fOwner = nullptr;
  std::wstring fName;
  std::intptr_t fTag = 0;
  std::atomic<TComponentState> fState; // changed by the component's thread only
  bool fInDestructor = false;
  bool fSubComponent = false;
  std::vector<TComponent*> fComponents;
  std::unique_ptr<TNameIndex> fNames; // of fComponents; made with the first name
  std::vector<TComponent*> fLinked;   // who tells whom: each stands in the other's list
  TAliveToken fAlive;
};

/// True for a text that may be a component's name or the name of a property: an ASCII letter or "_", then letters,
/// digits and "_".
KIV_EXPORT bool IsIdentifier(std::wstring_view pText) noexcept;

} // namespace kiv
