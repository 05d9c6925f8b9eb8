#include <notification/ChangeNotifier.h>

#include <core/PathFunctions.h>
#include <framework/Application.h>
#include <framework/Exceptions.h>
#include <framework/PropertyRegistry.h>
#include <framework/Thread.h>
#include <platform/MainThread.h>
#include <threading/WorkProcedures.h>

#include <algorithm>
#include <utility>

namespace kiv {

namespace {

[[maybe_unused]] const bool gPublished = (TKivShellChangeNotifier::PublishProperties(), true);

constexpr std::uint64_t LookLimit = 1000; // milliseconds, on the main thread

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
  TKivShellChangeNotifier& owner = fOwner;
  const auto life = owner.fLife;
  owner.Clear();
  for (const std::wstring& path : paths) {
    owner.AddPath(path);
    if (TKivShellChangeNotifier::IsGone(*life)) return;
  }
  owner.GetDirectories();
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
  const auto life = fLife;
  if (GetCount() == 0 && fRecursive) {
    const auto drives = NotifierPlatform().DefaultList();
    {
      const std::lock_guard guard(fUnansweredLock);
      fDefaultItemIdList = drives;
    }
    if (drives) RegisterItemIdList(drives.Get(), true, GetEventFilter());
    if (IsGone(*life)) return;
    InvalidateDirectories();
  }
  Start();
}

// The window of a source belongs to the main thread. At design time there is none.
std::shared_ptr<IChangeSource> TKivShellChangeNotifier::Source() {
  if (!fSource && !IsDesigning()) {
    OnMainThread([this] { fSource = NotifierPlatform().OpenSource(*this); });
  }
  return fSource;
}

// --- what is watched ------------------------------------------------------------------------------------------------

void TKivShellChangeNotifier::AddPath(std::wstring_view pPath) {
  if (const auto list = NotifierPlatform().MakeList(pPath)) AddItemIdList(list.Get());
}

void TKivShellChangeNotifier::RemovePath(std::wstring_view pPath) {
  if (const auto list = NotifierPlatform().MakeList(pPath)) RemoveItemIdList(list.Get());
}

void TKivShellChangeNotifier::Add(const std::vector<ComPtr<IItemIdList>>& pItemIdLists) {
  const auto life = fLife;
  for (const auto& list : pItemIdLists) {
    AddItemIdList(list.Get());
    if (IsGone(*life)) return;
  }
}

void TKivShellChangeNotifier::AddItemIdList(IItemIdList* pItemIdList, bool pRecursive,
                                            TNotificationEvents pEventFilter) {
  if (!pItemIdList) {
    throw EInvalidArgument(L"TKivShellChangeNotifier.AddItemIdList(): Parameter pItemIdList must not be nil.");
  }
  const TNotificationEvents filter = pEventFilter.IsEmpty() ? GetEventFilter() : pEventFilter;
  const ComPtr<IItemIdList> list(pItemIdList);
  if (!MainThread::IsCurrent()) {
    if (list->IsInvalid()) return;
    const ComPtr<ICancellationIndicator> indicator = fCancellationToken;
    TThread::Queue(nullptr, [this, list, pRecursive, filter, indicator] {
      if (!indicator->IsCancellationRequested()) AddItemIdList(list.Get(), pRecursive, filter);
    });
    return;
  }
  const auto life = fLife;
  // First: what doesn't answer mustn't be compared with others either.
  const INotifierPlatform::TLook look = NotifierPlatform().Look(list.Get(), LookLimit, fCancellationToken);
  if (IsGone(*life)) return;
  if (look.answered) {
    AddLooked(list, {0, pRecursive, filter}, look);
  } else {
    AddWhenItAnswers({list, {0, pRecursive, filter}});
  }
}

void TKivShellChangeNotifier::AddLooked(const ComPtr<IItemIdList>& pItemIdList, const TNotificationDetails& pDetails,
                                        const INotifierPlatform::TLook& pLook) {
  if (pLook.invalid) return;
  const auto life = fLife;
  if (fCheckForDuplicates) {
    const auto standing = fNotificationHandles.Find(pItemIdList.Get());
    if (IsGone(*life) || (standing && standing->details.NotificationHandle != 0)) return;
  }
  RegisterItemIdList(pItemIdList.Get(), pDetails.Recursive, pDetails.EventFilter);
  if (IsGone(*life)) return;
  if (pLook.target && pLook.target != pItemIdList && !pLook.target->Equals(pItemIdList.Get(), ilcDisplay)) {
    if (!IsGone(*life)) RegisterItemIdList(pLook.target.Get(), pDetails.Recursive, pDetails.EventFilter);
  }
  if (IsGone(*life)) return;
  CheckAndExcludeDefault();
  InvalidateDirectories();
}

// Of a server that is slow or gone: a worker waits for it, and the main thread goes on.
void TKivShellChangeNotifier::AddWhenItAnswers(const TUnanswered& pUnanswered) {
  {
    const std::lock_guard guard(fUnansweredLock);
    fUnanswered.push_back(pUnanswered);
  }
  const ComPtr<ICancellationIndicator> indicator = fCancellationToken;
  TAsyncProcedure::CreateAndQueue(
      [this, waiting = pUnanswered, indicator] {
        // All that would be asked again: an answer that came once need not come in time the next time.
        INotifierPlatform::TLook look;
        try {
          look.invalid = waiting.list->IsInvalid();
          if (!look.invalid) look.target = waiting.list->LinkTarget();
        } catch (...) {
          ReportException(std::current_exception());
        }
        TThread::Queue(nullptr, [this, waiting, look, indicator] {
          if (!indicator->IsCancellationRequested()) OnAnswered(waiting, look);
        });
      },
      indicator);
}

void TKivShellChangeNotifier::OnAnswered(const TUnanswered& pUnanswered, const INotifierPlatform::TLook& pLook) {
  if (!TakeUnanswered({pUnanswered.list})) return; // removed meanwhile
  const auto life = fLife;
  AddLooked(pUnanswered.list, pUnanswered.details, pLook);
  if (IsGone(*life) || !pUnanswered.details.EventFilter.Contains(neFolderUpdate)) return;
  // Who has listed the folder before it was watched lists it again.
  const auto standing = fNotificationHandles.Find(pUnanswered.list.Get());
  if (IsGone(*life) || !standing || standing->details.NotificationHandle == 0) return;
  OnChangeArrived(neFolderUpdate, pUnanswered.list, nullptr);
}

bool TKivShellChangeNotifier::TakeUnanswered(const std::vector<ComPtr<IItemIdList>>& pItemIdLists) {
  const std::lock_guard guard(fUnansweredLock);
  return std::erase_if(fUnanswered, [&](const TUnanswered& each) {
           return std::find(pItemIdLists.begin(), pItemIdLists.end(), each.list) != pItemIdLists.end();
         }) > 0;
}

// Registering may run foreign code, and that may end watches, begin the same one, or be the notifier's end.
void TKivShellChangeNotifier::RegisterItemIdList(IItemIdList* pItemIdList, bool pRecursive,
                                                 TNotificationEvents pEventFilter) {
  const auto life = fLife;
  TNotificationDetails details{0, pRecursive, pEventFilter};
  const auto source = GetEnabled() ? Source() : nullptr;
  if (source) details.NotificationHandle = source->Register(pItemIdList, pRecursive, pEventFilter);
  if (IsGone(*life)) return;
  const auto standing = fNotificationHandles.Find(pItemIdList);
  if (IsGone(*life)) return;
  const bool doubled = standing && fCheckForDuplicates && standing->details.NotificationHandle != 0;
  if (details.NotificationHandle != 0 && (doubled || !GetEnabled())) {
    source->Unregister(std::exchange(details.NotificationHandle, 0U));
  }
  if (doubled || (standing && fNotificationHandles.Change(standing->id, details))) return;
  fNotificationHandles.Add(pItemIdList, details);
}

// What a notifier watches by default gives way to the first thing that it is told to watch.
void TKivShellChangeNotifier::CheckAndExcludeDefault() {
  if (GetCount() != 2) return;
  ComPtr<IItemIdList> list;
  {
    const std::lock_guard guard(fUnansweredLock);
    std::swap(list, fDefaultItemIdList);
  }
  RemoveItemIdList(list.Get());
}

void TKivShellChangeNotifier::RemoveItemIdList(IItemIdList* pItemIdList) {
  if (!pItemIdList) return;
  const auto life = fLife;
  const ComPtr<IItemIdList> list(pItemIdList);
  // Paths that are known already: nothing is asked here of what may not answer.
  const std::wstring path = list->Path();
  const auto is_of_path = [&](IItemIdList* other) {
    return other == list.Get() || (!path.empty() && SamePath(other->Path(), path));
  };
  std::vector<TUnanswered> waiting;
  {
    const std::lock_guard guard(fUnansweredLock);
    waiting = fUnanswered;
  }
  std::vector<ComPtr<IItemIdList>> removed;
  for (const TUnanswered& each : waiting) {
    if (is_of_path(each.list.Get())) removed.push_back(each.list);
  }
  if (IsGone(*life)) return;
  if (TakeUnanswered(removed)) {
    for (const auto& watch : fNotificationHandles.All()) {
      if (is_of_path(watch.list.Get())) Unregister(fNotificationHandles.Remove(watch.list.Get()));
    }
  } else {
    Unregister(fNotificationHandles.Remove(list.Get()));
  }
  InvalidateDirectories();
}

void TKivShellChangeNotifier::Clear() {
  InvalidateDirectories();
  std::vector<TUnanswered> waiting; // let go behind the lock: that is foreign code
  ComPtr<IItemIdList> list;
  {
    const std::lock_guard guard(fUnansweredLock);
    waiting.swap(fUnanswered);
    std::swap(list, fDefaultItemIdList);
  }
  Unregister(fNotificationHandles.RemoveAll());
}

void TKivShellChangeNotifier::Unregister(const std::vector<TWatchTable::TWatch>& pWatches) {
  for (const auto& watch : pWatches) {
    if (watch.details.NotificationHandle != 0 && fSource) fSource->Unregister(watch.details.NotificationHandle);
  }
}

int TKivShellChangeNotifier::GetCount() const {
  return fNotificationHandles.Count();
}

TKivShellChangeNotifierList& TKivShellChangeNotifier::GetDirectories() {
  if (!fDirectories) fDirectories = std::make_unique<TKivShellChangeNotifierList>(*this);
  if (!fDirectoriesAreCurrent) {
    fDirectoriesAreCurrent = true; // first: what changes meanwhile makes it look again
    std::vector<std::wstring> paths;
    for (const auto& watch : fNotificationHandles.All()) paths.push_back(watch.list->DisplayPath());
    const TKivPathList::ScopedSkipEvents skip(*fDirectories);
    fDirectories->Clear();
    for (const std::wstring& path : paths) fDirectories->Add(path);
  }
  return *fDirectories;
}

// --- start and stop -------------------------------------------------------------------------------------------------

void TKivShellChangeNotifier::Start() {
  if (!GetEnabled() || IsDesigning() || IsLoading()) return;
  const auto life = fLife;
  const auto source = Source();
  fStarted = true;
  if (!source) return;
  for (auto& [id, list, details] : fNotificationHandles.All()) {
    if (details.NotificationHandle != 0) continue;
    details.NotificationHandle = source->Register(list.Get(), details.Recursive, details.EventFilter);
    if (IsGone(*life)) return;
    const bool wanted = fStarted && fNotificationHandles.Change(id, details);
    if (!wanted && details.NotificationHandle != 0) source->Unregister(details.NotificationHandle);
    if (!fStarted) return;
  }
}

void TKivShellChangeNotifier::Stop() {
  if (!fStarted) return;
  fStarted = false;
  Unregister(fNotificationHandles.TakeHandles());
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
