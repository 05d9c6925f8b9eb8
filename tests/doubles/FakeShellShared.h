#pragma once

#include <doubles/Crash.h>
#include <doubles/FakeItemId.h>
#include <doubles/FakeShellFolder.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// Inside of FakeShellFolder: not for tests.
namespace kiv::test {

using TNodeId = SimulatedFileSystem::TNodeId;

// What remains to be done when a fault was looked up: decided under the lock, done without.
struct TShellAnswer {
  TShellFault::TKind kind = TShellFault::TKind::Slow;
  bool given = false; // the method answers `result` without a result
  HRESULT result = S_OK;
  bool stays = false;
};

// The platform's own case of a callee that meets an access violation and handles it. Null it would refuse unread.
inline void CrashAndHandleIt() {
  if (!IsBadReadPtr(reinterpret_cast<const void*>(std::uintptr_t{0x10}), 1)) std::abort();
}

/// What all objects of one fake namespace share.
struct FakeShellNamespace::TShared {
  using TKind = TShellFault::TKind;

  explicit TShared(SimulatedFileSystem& pFileSystem) : fileSystem(pFileSystem) {}

  SimulatedFileSystem& fileSystem;
  std::mutex lock;
  std::multimap<TNodeId, TShellFault> faults;
  std::map<std::pair<TNodeId, TShellMethod>, std::size_t> calls;
  std::map<TNodeId, std::wstring> displayNames;
  std::atomic<bool> offersFolder2{true};
  std::atomic<long> liveObjects{0};
  std::atomic<long> references{0};

  /// Does what is scripted for a step (0: the next call of that method), except for crashing: that is for the method
  /// itself, when nothing is owned any more.
  TShellAnswer Meet(TNodeId node, TShellMethod method, std::size_t step = 0) {
    TShellAnswer answer;
    std::function<void()> action;
    {
      const std::lock_guard guard(lock);
      if (step == 0) step = ++calls[{node, method}];
      const auto [first, last] = faults.equal_range(node);
      for (auto at = first; at != last; ++at) {
        TShellFault& fault = at->second;
        if (fault.method != method || step < fault.step || fault.times == 0) continue;
        if (fault.times != TShellFault::Always) --fault.times;
        if (fault.kind == TKind::Slow) {
          action = fault.action;
        } else if (fault.kind == TKind::SameItem) {
          answer.stays = true;
        } else {
          answer.kind = fault.kind;
          answer.given = fault.kind != TKind::Crash && fault.kind != TKind::HandlesOwnFault;
          answer.result = fault.kind == TKind::Fail ? fault.result : fault.kind == TKind::NoResult ? S_OK : S_FALSE;
        }
      }
    }
    if (action) action();
    if (answer.kind == TKind::HandlesOwnFault) CrashAndHandleIt();
    return answer;
  }

  std::vector<TFakeItem> ItemsTo(const std::wstring& path) const {
    std::vector<TFakeItem> items;
    for (std::size_t end = path.find(L'\\'); !path.empty(); end = path.find(L'\\', end + 1)) {
      TNodeId id = 0;
      TFolderObject object;
      const std::wstring part = path.substr(0, end);
      if (FAILED(fileSystem.IdOf(part, id)) || FAILED(fileSystem.Find(part, object))) return {};
      items.push_back({id, object.name});
      if (end == std::wstring::npos || end + 1 == path.size()) break;
    }
    return items;
  }
};

/// The count of references and objects, for all classes here.
template <typename... I>
class FakeShellNamespace::TCounted : public I... {
public:
  ULONG STDMETHODCALLTYPE AddRef() override {
    ++fShared->references;
    return ++fCount;
  }
  ULONG STDMETHODCALLTYPE Release() override {
    const auto shared = fShared; // the object may end here
    --shared->references;
    const ULONG left = --fCount;
    if (left == 0) delete this;
    return left;
  }

protected:
  explicit TCounted(std::shared_ptr<TShared> pShared) : fShared(std::move(pShared)) {
    ++fShared->liveObjects;
    ++fShared->references;
  }
  virtual ~TCounted() { --fShared->liveObjects; }

  const std::shared_ptr<TShared> fShared;

private:
  std::atomic<ULONG> fCount{1};
};

} // namespace kiv::test
