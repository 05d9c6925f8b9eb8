#include <doubles/NoticeBoard.h>

#include <doubles/SimulatedFileSystem.h>

#include <random>
#include <utility>

namespace kiv::test {

namespace {

std::wstring FoldedFolder(const std::wstring& path) {
  std::wstring folded = FoldName(path);
  if (folded.ends_with(L'\\')) folded.pop_back();
  return folded;
}

bool IsInFolder(const std::wstring& folder, bool recursive, const std::wstring& path) {
  const std::wstring folded = FoldedFolder(path);
  if (folded == folder) return true;
  if (folded.size() <= folder.size() + 1 || !folded.starts_with(folder) || folded[folder.size()] != L'\\') return false;
  return recursive || folded.find(L'\\', folder.size() + 1) == std::wstring::npos;
}

} // namespace

TNoticeBoard::TToken TNoticeBoard::Subscribe(const std::wstring& pFolder, bool pRecursive, TCallback pCallback) {
  const std::lock_guard guard(fLock);
  fSubscriptions.emplace(++fLastToken, std::make_shared<const TSubscription>(
                                           TSubscription{FoldedFolder(pFolder), pRecursive, std::move(pCallback)}));
  return fLastToken;
}

void TNoticeBoard::Unsubscribe(TToken pToken) {
  const std::lock_guard guard(fLock);
  fSubscriptions.erase(pToken);
}

void TNoticeBoard::SetFaults(TFaults pFaults) {
  const std::lock_guard guard(fLock);
  fFaults = pFaults;
  fCount = 0;
}

void TNoticeBoard::HoldBack() {
  const std::lock_guard guard(fLock);
  fHeldBack = true;
}

void TNoticeBoard::Release() {
  {
    const std::lock_guard guard(fLock);
    fHeldBack = false;
    if (fFaults.shuffledWith) {
      // Written out: the library's shuffle differs between compilers, and a seed must not.
      std::mt19937 random(*fFaults.shuffledWith);
      for (std::size_t i = fPosted.size(); i > 1; --i) std::swap(fPosted[i - 1], fPosted[random() % i]);
    }
  }
  Deliver();
}

void TNoticeBoard::Post(TFileNotice pNotice) {
  const std::lock_guard guard(fLock);
  ++fCount;
  if (fFaults.loseEvery != 0 && fCount % fFaults.loseEvery == 0) return;
  if (fFaults.doubled) fPosted.push_back(pNotice);
  fPosted.push_back(std::move(pNotice));
}

void TNoticeBoard::Deliver() {
  std::unique_lock guard(fLock);
  if (fDelivering) return; // that delivery takes ours along
  fDelivering = true;
  try {
    while (!fHeldBack && !fPosted.empty()) {
      const TFileNotice notice = std::move(fPosted.front());
      fPosted.pop_front();
      DeliverOne(notice, guard);
    }
  } catch (...) {
    if (!guard.owns_lock()) guard.lock();
    fDelivering = false;
    throw;
  }
  fDelivering = false;
}

void TNoticeBoard::DeliverOne(const TFileNotice& pNotice, std::unique_lock<std::mutex>& pGuard) {
  // By token: a subscriber that runs may subscribe and unsubscribe others.
  TToken last = 0;
  for (auto at = fSubscriptions.begin(); at != fSubscriptions.end(); at = fSubscriptions.upper_bound(last)) {
    last = at->first;
    const auto subscription = at->second;
    if (!IsOf(*subscription, pNotice)) continue;
    pGuard.unlock();
    subscription->callback(pNotice);
    pGuard.lock();
  }
}

bool TNoticeBoard::IsOf(const TSubscription& pSubscription, const TFileNotice& pNotice) {
  if (pSubscription.folder.empty()) return true;
  return IsInFolder(pSubscription.folder, pSubscription.recursive, pNotice.path1) ||
         (!pNotice.path2.empty() && IsInFolder(pSubscription.folder, pSubscription.recursive, pNotice.path2));
}

} // namespace kiv::test
