#include <core/KnownFolder.h>

#include <core/ItemIdListHelperThreadPool.h>
#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>

#include <shobjidl.h>

#include <atomic>
#include <string>

namespace kiv {

namespace {

using TKind = TKnownFolder::TKind;

constexpr CLSID ManagerClass = ParseGuid("{4DF0C730-DF9D-4AE3-9153-AA6B82E9795A}"); // CLSID_KnownFolderManager
constexpr std::uint32_t NotImplementedCode = 0x80000100; // of an export or a method that isn't there
constexpr std::uint64_t MostTime = 1000;                 // milliseconds

std::atomic<bool> gNotImplemented{false};

// A manager is made for each question: it belongs to the apartment that it was made in, and costs less than one call.
ComPtr<IKnownFolderManager> MakeManager() {
  void* made = nullptr;
  ComPtr<IKnownFolderManager> manager;
  if (SUCCEEDED(GuardedExport(ShellApi().CoCreateInstance, ManagerClass, nullptr, DWORD{CLSCTX_INPROC_SERVER},
                              IidOf<IKnownFolderManager>(), &made))) {
    manager.Attach(static_cast<IKnownFolderManager*>(made));
  }
  return manager;
}

// `find` is one of the manager's methods.
template <typename F>
TKnownFolder AskManager(F&& find) {
  const auto manager = MakeManager();
  if (!manager) return {TKind::NoManager};
  IKnownFolder* raw = nullptr;
  TFault fault;
  const HRESULT hr = GuardedCall([&] { return find(*manager.Get(), &raw); }, &fault);
  ComPtr<IKnownFolder> folder;
  folder.Attach(raw);
  if (hr == E_NOTIMPL || fault.code == NotImplementedCode) {
    gNotImplemented.store(true, std::memory_order_relaxed);
    return {TKind::NoManager};
  }
  TKnownFolder found{TKind::Found};
  if (FAILED(hr) || !folder || FAILED(GuardedCall([&] { return folder->GetId(&found.id); }))) return {};
  return found;
}

} // namespace

TKnownFolder FindKnownFolder(IItemIdList* pItemIdList) {
  if (gNotImplemented.load(std::memory_order_relaxed)) return {TKind::NoManager};
  bool finished = false;
  const TKnownFolder by_list = AskInTime<TKnownFolder>(
      [list = ComPtr<IItemIdList>(pItemIdList)] {
        const PCIDLIST_ABSOLUTE raw = list->WindowsPointer();
        return AskManager([&](IKnownFolderManager& manager, IKnownFolder** folder) {
          return manager.FindFolderFromIDList(raw, folder);
        });
      },
      MostTime, {}, finished);
  if (by_list.kind != TKind::None) return by_list;
  const std::wstring path = pItemIdList->Path();
  if (path.empty()) return {};
  return AskManager([&](IKnownFolderManager& manager, IKnownFolder** folder) {
    return manager.FindFolderFromPath(path.c_str(), FFFP_EXACTMATCH, folder);
  });
}

void ForgetKnownFolderManager() noexcept {
  gNotImplemented.store(false, std::memory_order_relaxed);
}

} // namespace kiv
