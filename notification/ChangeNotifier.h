#pragma once

#include <core/BaseComponent.h>
#include <core/IItemIdList.h>
#include <core/ItemIdListSink.h>
#include <core/PathList.h>
#include <notification/DuplicateFilter.h>
#include <notification/NotificationEvent.h>
#include <notification/NotifierPlatform.h>
#include <notification/WatchTable.h>
#include <threading/Cancellation.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

class TKivShellChangeNotifier;

/// An event with the paths of its objects; the second one is empty unless the object got a new place.
using TKivShellNotifierEvent = TEvent<TPersistent*, TNotificationEvent, const std::wstring&, const std::wstring&>;
/// The same with lists. The second one may be nil or invalid.
using TKivShellNotifierEventPIDL = TEvent<TPersistent*, TNotificationEvent, IItemIdList*, IItemIdList*>;

/// Two lists of one event.
struct TChangedLists {
  ComPtr<IItemIdList> first;
  ComPtr<IItemIdList> second;
};

/// The paths that a notifier watches. Adding a path makes it watch, deleting one makes it stop. Main thread.
class KIV_EXPORT TKivShellChangeNotifierList : public TKivPathList {
public:
  explicit TKivShellChangeNotifierList(TKivShellChangeNotifier& pOwner);
  ~TKivShellChangeNotifierList() override;

  std::wstring ClassName() const override;
  /// Ends all watches, and begins one for each path of another list.
  void Assign(const TPersistent* pSource) override;

private:
  TKivShellChangeNotifier& fOwner;
};

/// Watches folders and other objects of the namespace, and tells of what changes there.
///
/// The road of an event: the source (the shell's registration, or the file system's own where the shell says nothing
/// of other processes) brings it to the main thread; what the filter doesn't hold ends there. Then, on the main thread
/// or, with NotifyAsynchronously, on a worker of the global pool, ProcessChangeEvent refreshes the lists, drops
/// duplicates, and calls OnChange with paths and OnChangePIDL with lists.
///
/// What would surprise you:
/// - On the main thread an event whose object doesn't answer within a second is dropped: nothing hangs on a dead share.
/// - With NotifyAsynchronously a subscriber is called by any worker, several at a time, in no order. If workers don't
///   get to 10,000 events, the rest is lost, and one neFolderUpdate of each watch follows.
/// - What doesn't say within a second whether it exists is watched when it has answered; until then it isn't counted.
/// - neFileChange of a folder arrives as neFolderUpdate.
/// - A handler may throw, end its own watch or destroy the notifier; so may what runs while a watch begins, which asks
///   the shell. The destructor waits for handlers that run on workers, and serves the queue to the main thread
///   meanwhile; no handler is called after it. A derived class that overrides how events are told begins its own
///   destructor with EndEvents.
///
/// A notifier that was loaded with nothing to watch watches the drives until it is given something. Main thread, but
/// for what says otherwise.
class KIV_EXPORT TKivShellChangeNotifier : public TKivBaseComponent, public IItemIdListSink, private IChangeSink {
public:
  explicit TKivShellChangeNotifier(TComponent* pOwner = nullptr);
  /// `pCheckForDuplicates` false: a list that is watched already is watched once more.
  explicit TKivShellChangeNotifier(bool pCheckForDuplicates);
  ~TKivShellChangeNotifier() override;

  std::wstring ClassName() const override;

  // What is watched. An empty filter stands for the component's.

  void AddPath(std::wstring_view pPath);
  void RemovePath(std::wstring_view pPath);
  /// As below, with an empty filter.
  void AddItemIdList(IItemIdList* pItemIdList) override { AddItemIdList(pItemIdList, {}); }
  void AddItemIdList(IItemIdList* pItemIdList, TNotificationEvents pEventFilter) {
    AddItemIdList(pItemIdList, fRecursive, pEventFilter);
  }
  /// Any thread; from others than the main thread it happens a little later. A link's target is watched with it. An
  /// invalid list is passed over. Raises EInvalidArgument for nil.
  void AddItemIdList(IItemIdList* pItemIdList, bool pRecursive, TNotificationEvents pEventFilter);
  void Add(const std::vector<ComPtr<IItemIdList>>& pItemIdLists);
  void RemoveItemIdList(IItemIdList* pItemIdList);
  void Clear();
  /// How many watches there are.
  int GetCount() const;
  /// The watched paths, as they are now. Changes of the list change the watches.
  TKivShellChangeNotifierList& GetDirectories();
  /// Makes GetDirectories look again.
  void InvalidateDirectories() noexcept { fDirectoriesAreCurrent = false; }

  /// Begins to watch what isn't watched yet. Nothing while disabled, loading or designing.
  void Start();
  /// Ends watching; what is to be watched stays known, with its filters.
  void Stop();
  /// Both, if it was started.
  void Restart();
  bool IsStarted() const noexcept { return fStarted; }

  bool GetRecursive() const noexcept { return fRecursive; }
  /// For watches to come that aren't told.
  void SetRecursive(bool pRecursive);
  TNotificationEvents GetEventFilter() const noexcept { return fEventFilter.load(std::memory_order_relaxed); }
  void SetEventFilter(TNotificationEvents pEventFilter);
  bool GetNotificationEvent(TNotificationEvent pEvent) const noexcept { return GetEventFilter().Contains(pEvent); }
  void SetNotificationEvent(TNotificationEvent pEvent, bool pIn);
  bool GetNotifyAsynchronously() const noexcept { return fNotifyAsynchronously; }
  void SetNotifyAsynchronously(bool pAsynchronously) noexcept { fNotifyAsynchronously = pAsynchronously; }
  /// Disabled, it passes events by, and new watches wait for the next Start.
  void SetEnabled(bool pEnabled) override;

  /// While no event can be on a worker, here and below.
  const TKivShellNotifierEvent& GetOnChange() const noexcept { return fOnChange; }
  void SetOnChange(TKivShellNotifierEvent pEvent) { fOnChange = std::move(pEvent); }
  /// Isn't called for an object whose list is invalid.
  const TKivShellNotifierEventPIDL& GetOnChangePIDL() const noexcept { return fOnChangePIDL; }
  void SetOnChangePIDL(TKivShellNotifierEventPIDL pEvent) { fOnChangePIDL = std::move(pEvent); }

  /// Cancelled when the notifier goes. Any thread.
  ComPtr<ICancellationIndicator> GetCancellationIndicator() { return fCancellationToken; }

  /// Registers the class's properties, once.
  static void PublishProperties();

protected:
  /// All that happens to an event that passed the filter. On the main thread or a worker, where the lists have been
  /// reloaded by then.
  virtual void ProcessChangeEvent(TNotificationEvent pEvent, const TChangedLists& pItemIdLists);
  virtual void DoOnChange(TNotificationEvent pEvent, const std::wstring& pPath1, const std::wstring& pPath2);
  virtual void DoOnChangePidl(TNotificationEvent pEvent, IItemIdList* pFirst, IItemIdList* pSecond);
  void Loaded() override;
  /// From now on no event is told. Waits for those that are being told on workers. More than once does no harm.
  void EndEvents();

private:
  friend class TKivShellChangeNotifierList;
  struct TLife;
  struct TUnanswered {
    ComPtr<IItemIdList> list;
    TNotificationDetails details;
  };

  TKivShellChangeNotifier(TComponent* pOwner, bool pCheckForDuplicates);

  bool Accepts(TNotificationEvent pEvent) override;
  void OnChangeArrived(TNotificationEvent pEvent, ComPtr<IItemIdList> pFirst, ComPtr<IItemIdList> pSecond) override;
  void ProcessOnWorker(TNotificationEvent pEvent, const TChangedLists& pItemIdLists);
  void VisitOnWorker(const std::shared_ptr<TLife>& pLife, const ComPtr<ICancellationIndicator>& pIndicator,
                     TNotificationEvent pEvent, const TChangedLists& pItemIdLists);
  void TellUpdates();
  static bool TellPath(TNotificationEvent pEvent, const TChangedLists& pItemIdLists, std::wstring& pPath);

  static bool IsGone(TLife& pLife);
  std::shared_ptr<IChangeSource> Source();
  void RegisterItemIdList(IItemIdList* pItemIdList, bool pRecursive, TNotificationEvents pEventFilter);
  void AddLooked(const ComPtr<IItemIdList>& pItemIdList, const TNotificationDetails& pDetails,
                 const INotifierPlatform::TLook& pLook);
  void AddWhenItAnswers(const TUnanswered& pUnanswered);
  void OnAnswered(const TUnanswered& pUnanswered, const INotifierPlatform::TLook& pLook);
  bool TakeUnanswered(const std::vector<ComPtr<IItemIdList>>& pItemIdLists);
  void CheckAndExcludeDefault();
  void Unregister(const std::vector<TWatchTable::TWatch>& pWatches);

  CancellationToken fCancellationToken;
  const bool fCheckForDuplicates;
  std::atomic<bool> fRecursive{true};
  std::atomic<TNotificationEvents> fEventFilter{DefaultNotificationEvents};
  bool fNotifyAsynchronously = false;
  bool fStarted = false;
  TKivShellNotifierEvent fOnChange;
  TKivShellNotifierEventPIDL fOnChangePIDL;
  std::shared_ptr<TDuplicateFilter> fDuplicates = std::make_shared<TDuplicateFilter>();

  TWatchTable fNotificationHandles;
  std::mutex fUnansweredLock;
  std::vector<TUnanswered> fUnanswered;   // guarded by fUnansweredLock
  ComPtr<IItemIdList> fDefaultItemIdList; // guarded by fUnansweredLock
  std::atomic<bool> fDirectoriesAreCurrent{false};
  std::unique_ptr<TKivShellChangeNotifierList> fDirectories;
  std::shared_ptr<TLife> fLife;
  std::shared_ptr<IChangeSource> fSource; // made with the first need
};

} // namespace kiv
