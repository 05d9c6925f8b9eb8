#pragma once

#include <doubles/SimulatedFileSystem.h>
#include <platform/ComPtr.h>
#include <platform/Handles.h>

#include <shlobj.h>
#include <shobjidl.h>

#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace kiv::test {

/// Where a fake folder can misbehave. A step of `Next` is the place of the item that it is about to give, from 1, so
/// that a second attempt is the same step; of the others it is the count of calls on that folder.
enum class TShellMethod { EnumObjects, Next, GetAttributesOf, GetDisplayNameOf, BindToObject };

/// What a fake folder does wrong, from a step on, so many times.
struct TShellFault {
  enum class TKind {
    Slow,            ///< runs a function of the test's, then answers
    HandlesOwnFault, ///< an access violation that the folder handles itself, then answers
    Crash,           ///< an access violation that nobody here handles
    Fail,            ///< answers `result`
    NoResult,        ///< answers S_OK without a result: no enumerator, no item, no object, an empty name
    FalseNoResult,   ///< answers S_FALSE without a result
    SameItem         ///< `Next`: doesn't move on
  };
  static constexpr int Always = std::numeric_limits<int>::max();

  TKind kind = TKind::Crash;
  TShellMethod method = TShellMethod::Next;
  std::size_t step = 1;
  int times = Always;
  HRESULT result = E_FAIL;
  std::function<void()> action = nullptr;
};

/// A simulated file system as folders of the shell: IShellFolder2 and IPersistFolder2 over its tree, with item lists of
/// their own layout, and with what third parties' folders really do to their callers.
///
/// What would surprise you:
/// - `Crash` is a real access violation inside the COM method, on the caller's thread. Without a guard around the call
///   it ends the test program. No lock is held at that point and nothing is owned, so a guard leaks nothing.
/// - Item lists carry a node's number and its name as listed. They outlive the object: then names still come from the
///   item, and everything else fails with ERROR_FILE_NOT_FOUND.
/// - An enumerator has read the folder when EnumObjects returns. Faults that the tree itself scripts for steppers don't
///   happen here.
/// - The shell's own functions that look into item lists (`SHGetDataFromIDListW`) can't know these. Size and dates come
///   by GetDetailsEx, dates as VT_DATE in UTC: a VARIANT can't hold a FILETIME.
/// - Ask `LiveObjects` at the end of a test: it is 0 when every reference was released.
///
/// Any thread; the objects are free-threaded. Must outlive no one: its objects keep what they need. The file system
/// must outlive them.
class FakeShellNamespace {
public:
  explicit FakeShellNamespace(SimulatedFileSystem& pFileSystem);
  ~FakeShellNamespace();
  FakeShellNamespace(const FakeShellNamespace&) = delete;
  FakeShellNamespace& operator=(const FakeShellNamespace&) = delete;

  /// The folder object for a path; nil if there is no such folder.
  ComPtr<IShellFolder> Folder(const std::wstring& pPath);
  /// An item list from the computer down to an object; with `pLastOnly` relative to its folder. Nil if it isn't there.
  TUniqueItemIdList ItemIdList(const std::wstring& pPath, bool pLastOnly = false) const;
  /// The node behind the last item of a list, if it is of this layout and well formed.
  static std::optional<SimulatedFileSystem::TNodeId> MaybeNodeOf(PCUIDLIST_RELATIVE pList);

  /// For a folder that stands; faults stay with it when it is renamed.
  void AddFault(const std::wstring& pFolder, TShellFault pFault);
  void ClearFaults();
  /// A name for display that differs from the parsing name, as localized folders and hidden extensions make it.
  void SetDisplayName(const std::wstring& pPath, std::wstring pName);
  /// From now on folders don't know IShellFolder2.
  void SetOffersFolder2(bool pOffers);

  /// Folders and enumerators that stand, and the references on them.
  long LiveObjects() const;
  long References() const;

private:
  struct TShared;
  template <typename... I>
  class TCounted;
  class TFolder;
  class TEnumerator;

  std::shared_ptr<TShared> fShared;
};

} // namespace kiv::test
