#include <notification/ChangeNotifier.h>

#include <framework/Exceptions.h>
#include <framework/PropertyRegistry.h>
#include <framework/Thread.h>
#include <platform/MainThread.h>

#include <utility>

namespace kiv {

namespace {

[[maybe_unused]] const bool gPublished = (TKivShellChangeNotifier::PublishProperties(), true);

void OnMainThread(const std::function<void()>& procedure) {
  if (MainThread::IsCurrent()) {
    procedure();
  } else {
    TThread::Synchronize(procedure);
  }
}

} // namespace

// --- the list of paths ----------------------------------------------------------------------------------------------

TKivShellChangeNotifierList::TKivShellChangeNotifierList(TKivShellChangeNotifier& pOwner) : fOwner(pOwner) {
  SetOnAdd([this](const std::wstring& path, int) { fOwner.AddPath(path); });
  SetOnRemove([this](const std::wstring& path, int) { fOwner.RemovePath(path); });
}

TKivShellChangeNotifierList::~TKivShellChangeNotifierList() = default;

std::wstring TKivShellChangeNotifierList::ClassName() const {
  return L"TKivShellChangeNotifierList";
}

void TKivShellChangeNotifierList::Assign(const TPersistent* pSource) {
  const auto* const source = dynamic_cast<const TStrings*>(pSource);
  if (!source) return TKivPathList::Assign(pSource);
  std::vector<std::wstring> paths;
  for (int i = 0; i < source->GetCount(); ++i) paths.push_back(source->Get(i));
  fOwner.Clear();
  for (const std::wstring& path : paths) fOwner.AddPath(path);
  fOwner.GetDirectories();
}

// --- life -----------------------------------------------------------------------------------------------------------

TKivShellChangeNotifier::TKivShellChangeNotifier(TComponent* pOwner) : TKivShellChangeNotifier(pOwner, true) {}

TKivShellChangeNotifier::TKivShellChangeNotifier(bool pCheckForDuplicates)
    : TKivShellChangeNotifier(nullptr, pCheckForDuplicates) {}

std::wstring TKivShellChangeNotifier::ClassName() const {
  return L"TKivShellChangeNotifier";
}

void TKivShellChangeNotifier::PublishProperties() {
  TKivBaseComponent::PublishProperties();
  [[maybe_unused]] static const bool published = [] {
    using TThis = TKivShellChangeNotifier;
    PublishClass<TThis, TKivBaseComponent>(L"TKivShellChangeNotifier", L"Tells of changes in the namespace.")
        .Property(L"Recursive", &TThis::GetRecursive, &TThis::SetRecursive, true,
                  L"Whether folders are watched with all that lies below them.")
        .Property(L"EventFilter", &TThis::GetEventFilter, &TThis::SetEventFilter, DefaultNotificationEvents,
                  L"The kinds of events that are told.")
        .Property(L"NotifyAsynchronously", &TThis::GetNotifyAsynchronously, &TThis::SetNotifyAsynchronously, false,
                  L"Whether events are told on worker threads.");
    return true;
  }();
}

void TKivShellChangeNotifier::Loaded() {
  TKivBaseComponent::Loaded();
  if (GetCount() == 0 && fRecursive) {
    fDefaultItemIdList = NotifierPlatform().DefaultList();
    if (fDefaultItemIdList) RegisterItemIdList(fDefaultItemIdList.Get(), true, GetEventFilter());
    InvalidateDirectories();
  }
  Start();
}

// The window of a source belongs to the main thread. At design time there is none.
IChangeSource* TKivShellChangeNotifier::Source() {
  if (!fSource && !IsDesigning()) {
    OnMainThread([this] { fSource = NotifierPlatform().OpenSource(*this); });
  }
  return fSource.get();
}

// --- what is watched ------------------------------------------------------------------------------------------------

void TKivShellChangeNotifier::AddPath(std::wstring_view pPath) {
  if (const auto list = NotifierPlatform().MakeList(pPath)) AddItemIdList(list.Get());
}

void TKivShellChangeNotifier::RemovePath(std::wstring_view pPath) {
  if (const auto list = NotifierPlatform().MakeList(pPath)) RemoveItemIdList(list.Get());
}

void TKivShellChangeNotifier::Add(const std::vector<ComPtr<IItemIdList>>& pItemIdLists) {
  for (const auto& list : pItemIdLists) AddItemIdList(list.Get());
}

void TKivShellChangeNotifier::AddItemIdList(IItemIdList* pItemIdList, bool pRecursive,
                                            TNotificationEvents pEventFilter) {
  if (!pItemIdList) {
    throw EInvalidArgument(L"TKivShellChangeNotifier.AddItemIdList(): Parameter pItemIdList must not be nil.");
  }
  if (pItemIdList->IsInvalid()) return;
  const TNotificationEvents filter = pEventFilter.IsEmpty() ? GetEventFilter() : pEventFilter;
  if (!MainThread::IsCurrent()) {
    const ComPtr<IItemIdList> list(pItemIdList);
    const ComPtr<ICancellationIndicator> indicator = fCancellationToken;
    TThread::Queue(nullptr, [this, list, pRecursive, filter, indicator] {
      if (!indicator->IsCancellationRequested()) AddItemIdList(list.Get(), pRecursive, filter);
    });
    return;
  }
  if (fCheckForDuplicates) {
    const std::lock_guard guard(fListLock);
    const auto* const standing = fNotificationHandles.Find(pItemIdList);
    if (standing && standing->details.NotificationHandle != 0) return;
  }
  RegisterItemIdList(pItemIdList, pRecursive, filter);
  const ComPtr<IItemIdList> target = pItemIdList->LinkTarget();
  if (target && target.Get() != pItemIdList && !target->Equals(pItemIdList, ilcDisplay)) {
    RegisterItemIdList(target.Get(), pRecursive, filter);
  }
  CheckAndExcludeDefault();
  InvalidateDirectories();
}

void TKivShellChangeNotifier::RegisterItemIdList(IItemIdList* pItemIdList, bool pRecursive,
                                                 TNotificationEvents pEventFilter) {
  TNotificationDetails details{0, pRecursive, pEventFilter};
  if (GetEnabled() && !pItemIdList->IsInvalid()) {
    if (IChangeSource* const source = Source()) {
      details.NotificationHandle = source->Register(pItemIdList, pRecursive, pEventFilter);
    }
  }
  const std::lock_guard guard(fListLock);
  fNotificationHandles.Store(pItemIdList, details);
}

// What a notifier watches by default gives way to the first thing that it is told to watch.
void TKivShellChangeNotifier::CheckAndExcludeDefault() {
  if (!fDefaultItemIdList || GetCount() != 2) return;
  const ComPtr<IItemIdList> list = std::move(fDefaultItemIdList);
  fDefaultItemIdList.Reset();
  RemoveItemIdList(list.Get());
}

void TKivShellChangeNotifier::RemoveItemIdList(IItemIdList* pItemIdList) {
  if (!pItemIdList) return;
  std::vector<TWatchTable::TWatch> removed;
  {
    const std::lock_guard guard(fListLock);
    removed = fNotificationHandles.Remove(pItemIdList);
  }
  Unregister(removed);
  InvalidateDirectories();
}

void TKivShellChangeNotifier::Clear() {
  InvalidateDirectories();
  std::vector<TWatchTable::TWatch> removed;
  {
    const std::lock_guard guard(fListLock);
    removed = fNotificationHandles.RemoveAll();
  }
  Unregister(removed);
}

void TKivShellChangeNotifier::Unregister(const std::vector<TWatchTable::TWatch>& pWatches) {
  for (const auto& watch : pWatches) {
    if (watch.details.NotificationHandle != 0 && fSource) fSource->Unregister(watch.details.NotificationHandle);
  }
}

int TKivShellChangeNotifier::GetCount() const {
  const std::lock_guard guard(fListLock);
  return fNotificationHandles.Count();
}

TKivShellChangeNotifierList& TKivShellChangeNotifier::GetDirectories() {
  if (!fDirectories) fDirectories = std::make_unique<TKivShellChangeNotifierList>(*this);
  if (!fDirectoriesAreCurrent) {
    const TKivPathList::ScopedSkipEvents skip(*fDirectories);
    const std::lock_guard guard(fListLock);
    fDirectories->Clear();
    for (const auto& watch : fNotificationHandles.All()) fDirectories->Add(watch.list->DisplayPath());
    fDirectoriesAreCurrent = true;
  }
  return *fDirectories;
}

// --- start and stop -------------------------------------------------------------------------------------------------

void TKivShellChangeNotifier::Start() {
  if (!GetEnabled() || IsDesigning() || IsLoading()) return;
  IChangeSource* const source = Source();
  const std::lock_guard guard(fListLock);
  for (auto& watch : fNotificationHandles.All()) {
    TNotificationDetails& details = watch.details;
    if (details.NotificationHandle == 0 && source) {
      details.NotificationHandle = source->Register(watch.list.Get(), details.Recursive, details.EventFilter);
    }
  }
  fStarted = true;
}

void TKivShellChangeNotifier::Stop() {
  if (!fStarted) return;
  const std::lock_guard guard(fListLock);
  fStarted = false;
  Unregister(fNotificationHandles.All());
  for (auto& watch : fNotificationHandles.All()) watch.details.NotificationHandle = 0;
}

void TKivShellChangeNotifier::Restart() {
  if (!fStarted) return;
  Stop();
  Start();
}

void TKivShellChangeNotifier::SetRecursive(bool pRecursive) {
  if (pRecursive == fRecursive) return;
  fRecursive = pRecursive;
  Restart();
}

void TKivShellChangeNotifier::SetEventFilter(TNotificationEvents pEventFilter) {
  if (pEventFilter == GetEventFilter()) return;
  Stop();
  fEventFilter.store(pEventFilter, std::memory_order_relaxed);
  Start();
}

void TKivShellChangeNotifier::SetNotificationEvent(TNotificationEvent pEvent, bool pIn) {
  TNotificationEvents filter = GetEventFilter();
  filter.Put(pEvent, pIn);
  SetEventFilter(filter);
}

void TKivShellChangeNotifier::SetEnabled(bool pEnabled) {
  if (pEnabled == GetEnabled() && GetCount() > 0) return;
  TKivBaseComponent::SetEnabled(pEnabled);
  if (pEnabled) {
    Start();
  } else {
    Stop();
  }
}

} // namespace kiv
