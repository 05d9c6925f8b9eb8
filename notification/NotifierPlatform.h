#pragma once

#include <core/IItemIdList.h>
#include <notification/NotificationEvent.h>
#include <threading/Cancellation.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace kiv {

/// Whom a source tells of changes. On the main thread.
class IChangeSink {
public:
  /// Whether anybody wants such an event now. What isn't wanted needs no lists.
  virtual bool Accepts(TNotificationEvent pEvent) = 0;
  /// The second list is invalid, or nil, where there is no second object. For neDriveSpaceChange the first one may be
  /// nil.
  virtual void OnChangeArrived(TNotificationEvent pEvent, ComPtr<IItemIdList> pFirst, ComPtr<IItemIdList> pSecond) = 0;

protected:
  ~IChangeSink() = default;
};

/// Where a notifier's events come from. Made, used and destroyed on the main thread, but for Unregister. Register may
/// run foreign code, and that may use the source meanwhile, and close it.
class IChangeSource {
public:
  virtual ~IChangeSource() = default;

  /// Begins to watch a valid list. 0 if it can't be watched.
  virtual std::uint32_t Register(IItemIdList* pItemIdList, bool pRecursive, TNotificationEvents pEvents) = 0;
  /// Ends that. Any thread. An event on its way may still arrive.
  virtual void Unregister(std::uint32_t pHandle) noexcept = 0;
  /// Ends everything: the sink goes. From now on nothing is told and Register answers 0, one that is under way, too.
  virtual void Close() noexcept = 0;
};

/// What a change notifier needs of the platform, so that it runs against a simulated one as well.
class INotifierPlatform {
public:
  virtual ~INotifierPlatform() = default;

  virtual ComPtr<IItemIdList> MakeList(std::wstring_view pPath) = 0;
  /// What a notifier watches that was told nothing: the folder of the drives.
  virtual ComPtr<IItemIdList> DefaultList() = 0;
  /// IItemIdList::Reload within a time in milliseconds. False if there was no answer in time. What will ask a local
  /// disk when it is resolved isn't asked twice.
  virtual bool Reload(IItemIdList* pItemIdList, std::uint64_t pLimit, ComPtr<ICancellationIndicator> pIndicator) = 0;
  /// The same on a worker, where there is no limit.
  virtual void ReloadOnWorker(IItemIdList* pItemIdList) = 0;
  struct TLook {
    bool invalid = false;
    ComPtr<IItemIdList> target;
    bool answered = true; // in time
  };
  /// Whether there is no such object, and the target of a link, otherwise nil or the object itself: within a time in
  /// milliseconds.
  virtual TLook Look(IItemIdList* pItemIdList, std::uint64_t pLimit, ComPtr<ICancellationIndicator> pIndicator) = 0;
  /// Whether the list is a folder; answered by the disk where a path says enough.
  virtual bool IsFolder(IItemIdList* pItemIdList) = 0;
  /// A source that tells `pSink` until it is closed. Nil if there is none.
  virtual std::shared_ptr<IChangeSource> OpenSource(IChangeSink& pSink) = 0;
};

/// The one in use.
KIV_EXPORT INotifierPlatform& NotifierPlatform();

/// Replaces it for as long as this object lives. For tests: no notifier may be left when the scope ends.
class KIV_EXPORT ScopedNotifierPlatform {
public:
  explicit ScopedNotifierPlatform(INotifierPlatform& pPlatform);
  ~ScopedNotifierPlatform();
  ScopedNotifierPlatform(const ScopedNotifierPlatform&) = delete;
  ScopedNotifierPlatform& operator=(const ScopedNotifierPlatform&) = delete;

private:
  INotifierPlatform* fOuter;
};

namespace detail {
/// The platform's own; each platform has its source file.
INotifierPlatform& PlatformOfNotifiers();
} // namespace detail

} // namespace kiv
