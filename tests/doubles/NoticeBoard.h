#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace kiv::test {

enum class TFileChange {
  FileCreate,
  FileDelete,
  FileRename, ///< path2 is the new path, which may lie in another folder
  FileChange,
  FolderCreate,
  FolderDelete, ///< with all content
  FolderRename, ///< with all content; path2 as for files
  FolderUpdate, ///< something in the folder changed
  AttributesChange,
  MediaInsert,
  MediaRemove
};

struct TFileNotice {
  TFileChange change;
  std::wstring path1;
  std::wstring path2;

  friend bool operator==(const TFileNotice&, const TFileNotice&) = default;
};

/// Change notices on their way to subscribers, and what can happen to them there.
///
/// Notices keep the order of the changes, whichever threads make them: one thread delivers at a time, and others leave
/// theirs with it. So a change's notice may be delivered by another thread, after the changing call came back. No lock
/// is held while a subscriber runs; it may change the tree, subscribe and unsubscribe. What it raises passes out of the
/// call that delivered; the notices behind it wait for the next delivery.
class TNoticeBoard {
public:
  using TCallback = std::function<void(const TFileNotice&)>;
  using TToken = std::uint64_t;

  struct TFaults {
    bool doubled = false;      ///< each notice comes twice
    std::size_t loseEvery = 0; ///< each so-manieth is lost; 0: none
    std::optional<std::uint32_t> shuffledWith =
        std::nullopt; ///< notices that were held back come in an order that this seed gives
  };

  /// Notices for a folder's objects and for the folder itself; for everything below it, if `pRecursive`; all notices
  /// for an empty path.
  TToken Subscribe(const std::wstring& pFolder, bool pRecursive, TCallback pCallback);
  /// A delivery under way on another thread may still arrive.
  void Unsubscribe(TToken pToken);

  void SetFaults(TFaults pFaults);
  /// From now on notices are late: they wait for Release.
  void HoldBack();
  /// Delivers what was held back, and holds nothing back any more.
  void Release();

  /// In two parts for who announces under a lock of his own: Post keeps the order and calls nobody.
  void Post(TFileNotice pNotice);
  void Deliver();

private:
  struct TSubscription {
    std::wstring folder; // folded, without a delimiter at its end
    bool recursive = false;
    TCallback callback;
  };

  void DeliverOne(const TFileNotice& pNotice, std::unique_lock<std::mutex>& pGuard);
  static bool IsOf(const TSubscription& pSubscription, const TFileNotice& pNotice);

  std::mutex fLock;
  std::map<TToken, std::shared_ptr<const TSubscription>> fSubscriptions;
  TToken fLastToken = 0;
  std::deque<TFileNotice> fPosted;
  TFaults fFaults;
  std::size_t fCount = 0;
  bool fHeldBack = false;
  bool fDelivering = false;
};

} // namespace kiv::test
