#include <listview/CustomListView.h>
#include <listview/NativeScope.h>

#include <framework/Application.h>

#include <windowsx.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

// How the control is brought in step with the rows.

namespace kiv {

namespace {

// Brings a control to do what waits. Of a number that no host uses for anything else.
UINT WakeUpMessage() {
  static const UINT number = RegisterWindowMessageW(L"Kiv.ListView.WakeUp");
  return number;
}

// More rows than a screen shows are repainted at once.
constexpr std::size_t MostLooks = 64;

// What a round of fetching details may take before input gets its turn.
constexpr std::chrono::milliseconds FetchTime{8};

} // namespace

LRESULT TCustomListView::Send(UINT pMessage, WPARAM pWParam, LPARAM pLParam) {
  return SendMessageW(GetHandle(), pMessage, pWParam, pLParam);
}

LRESULT TCustomListView::Query(UINT pMessage, WPARAM pWParam, LPARAM pLParam) const {
  const TWriteScope scope(const_cast<TCustomListView&>(*this));
  return CallWindowClass(pMessage, pWParam, pLParam);
}

// --- what is noted ---------------------------------------------------------------------------------------------------

void TCustomListView::WakeUp() noexcept {
  if (fIsAwake || !fIsReady) return;
  fIsAwake = PostMessageW(AllocatedHandle(), WakeUpMessage(), 0, 0) != 0;
}

void TCustomListView::RowsChanging() noexcept {
  NoteTop();
}

void TCustomListView::RowsChanged() noexcept {
  fRowsDirty = true;
  if (!fItems->IsUpdating()) WakeUp();
}

void TCustomListView::StateChanged() noexcept {
  fStateDirty = true;
  fReportsDue = true;
  if (!fItems->IsUpdating()) WakeUp();
}

void TCustomListView::SetUpdateState(bool pUpdating) noexcept {
  if (!pUpdating) WakeUp();
}

void TCustomListView::RowLeaving(TListItem& pItem) noexcept {
  if (fTopRow == &pItem) {
    const int index = pItem.GetIndex();
    fTopRow = RowAt(index + 1 < fItems->GetCount() ? index + 1 : index - 1);
  }
  if (fDropTarget == &pItem) fDropTarget = nullptr;
  if (fHotBox == &pItem) fHotBox = nullptr;
  if (fPressedBox == &pItem) fPressedBox = nullptr;
  std::erase(fLooks, &pItem);
  std::erase(fWanted, &pItem);
}

void TCustomListView::RowsLeaving(const TRowBits& pRows) noexcept {
  const auto leaves = [&](const TListItem* row) {
    const int at = fItems->IndexOf(row);
    return at >= 0 && pRows.Test(at);
  };
  if (leaves(fTopRow)) fTopRow = RowAt(pRows.FindClearNear(fTopRow->GetIndex()));
  if (leaves(fDropTarget)) fDropTarget = nullptr;
  if (leaves(fHotBox)) fHotBox = nullptr;
  if (leaves(fPressedBox)) fPressedBox = nullptr;
  std::erase_if(fLooks, leaves);
  std::erase_if(fWanted, leaves);
}

void TCustomListView::ForgetRows() noexcept {
  fTopRow = nullptr;
  fDropTarget = nullptr;
  fHotBox = fPressedBox = nullptr;
  fLooks.clear();
  fWanted.clear();
}

void TCustomListView::RowLookChanged(TListItem& pItem) noexcept {
  // Rows that move are all painted anew.
  if (fRowsDirty || fLooksDirty || !fIsReady || !fItems->WasPainted(pItem)) return;
  if (fLooks.size() >= MostLooks) {
    fLooks.clear();
    fLooksDirty = true;
  } else if (std::find(fLooks.begin(), fLooks.end(), &pItem) == fLooks.end()) {
    fLooks.push_back(&pItem);
  }
  WakeUp();
}

void TCustomListView::PostAction(std::function<void()> pAction) {
  fActions.push_back(std::move(pAction));
  WakeUp();
}

// --- messages --------------------------------------------------------------------------------------------------------

void TCustomListView::WndProc(TMessage& pMessage) {
  if (pMessage.Msg == WakeUpMessage()) {
    HandleWakeUp();
    return;
  }
  const UINT message = pMessage.Msg;
  const bool isPress = message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN;
  if (isPress) fHasSeenRelease = false;
  if (message == WM_LBUTTONDOWN) fPressedBox = BoxAt(GET_X_LPARAM(pMessage.LParam), GET_Y_LPARAM(pMessage.LParam));
  if (message == WM_LBUTTONUP || message == WM_RBUTTONUP) fHasSeenRelease = true;
  const TAliveWatch alive(GetAliveToken());
  TWinControl::WndProc(pMessage);
  if (isPress && alive.IsAlive()) ReleaseSwallowedButton(message);
}

void TCustomListView::DefaultHandler(TMessage& pMessage) {
  if (std::exchange(fIsReleaseTaken, false)) return;
  if (fWriting > 0 || !fIsReady) {
    TWinControl::DefaultHandler(pMessage);
    return;
  }
  const bool isOutermost = fNativeDepth == 0;
  if (isOutermost) CatchUp();
  const TAliveWatch alive(GetAliveToken());
  {
    const TNativeScope scope(*this);
    TWinControl::DefaultHandler(pMessage);
  }
  if (alive.IsAlive() && isOutermost && fIsReady) Settle(pMessage.Msg);
}

// The control's code has done with a message: what it did is taken over and told.
void TCustomListView::Settle(UINT pMessage) {
  // Marks that went by without a report; whatever does no more than paint or ask changes none.
  const bool mayHaveChanged = (pMessage >= WM_KEYFIRST && pMessage <= WM_KEYLAST) ||
                              (pMessage >= WM_MOUSEFIRST && pMessage <= WM_MOUSELAST) || pMessage == WM_TIMER ||
                              pMessage == WM_SETFOCUS || (pMessage >= LVM_FIRST && pMessage < LVM_FIRST + 0x100);
  if (mayHaveChanged && !fRowsDirty && !fStateDirty && Reconcile()) fReportsDue = true;
  if (!fReportsDue || fItems->IsUpdating()) return;
  fReportsDue = false;
  const TAliveWatch alive(GetAliveToken());
  try {
    if (!fItems->ReportChanges()) return;
  } catch (...) {
    // What a handler raises doesn't keep the other rows from being told.
    if (alive.IsAlive()) {
      fReportsDue = true;
      WakeUp();
    }
    throw;
  }
  CatchUp();
}

// Posted, so that it arrives while no code of the platform's runs, or while that runs a message loop: a marquee.
void TCustomListView::HandleWakeUp() {
  fIsAwake = false;
  const TAliveWatch alive(GetAliveToken());
  struct TDepth {
    TCustomListView& view;
    const TAliveWatch& watch;
    int depth;
    ~TDepth() {
      if (watch.IsAlive()) view.fNativeDepth = depth;
    }
  };
  const TDepth depth{*this, alive, std::exchange(fNativeDepth, 0)};
  CatchUp();
  Settle(WM_NULL);
  if (alive.IsAlive()) RunActions();
  if (alive.IsAlive() && fIsReady) FetchDetails();
  if (alive.IsAlive() && fIsReady) MakeWantedImages();
}

void TCustomListView::RunActions() {
  // Those that are posted meanwhile have their own turn.
  std::deque<std::function<void()>> actions;
  actions.swap(fActions);
  const TAliveWatch alive(GetAliveToken());
  for (auto& action : actions) {
    try {
      action();
    } catch (...) {
      ReportException(std::current_exception());
    }
    if (!alive.IsAlive()) return;
  }
}

void TCustomListView::FetchDetails() {
  if (fItems->IsUpdating()) return;
  const TAliveWatch alive(GetAliveToken());
  const auto end = std::chrono::steady_clock::now() + FetchTime;
  RECT client;
  ::GetClientRect(AllocatedHandle(), &client);
  while (!fWanted.empty()) {
    if (std::chrono::steady_clock::now() > end) {
      WakeUp();
      return;
    }
    TListItem* const item = fWanted.front();
    fWanted.pop_front();
    const RECT bounds = RowBounds(item->GetIndex());
    RECT seen;
    if (!IntersectRect(&seen, &bounds, &client)) {
      // Gone from the screen before its turn: it is asked for again when it comes back.
      fItems->WishDetails(item->GetIndex(), item->GetIndex());
      continue;
    }
    const TAliveWatch row(item->GetAliveToken());
    try {
      GetImageIndex(item);
      if (alive.IsAlive() && row.IsAlive() && fViewStyle == TViewStyle::vsReport && fColumns->GetCount() > 1) {
        item->GetSubItems();
      }
    } catch (...) {
      ReportException(std::current_exception());
    }
    if (!alive.IsAlive() || !fIsReady) return;
    CatchUp();
  }
}

// What lists that make their images one by one lacked when rows were painted.
void TCustomListView::MakeWantedImages() {
  if (fWantedImages.empty()) return;
  const TAliveWatch alive(GetAliveToken());
  const auto end = std::chrono::steady_clock::now() + FetchTime;
  bool made = false;
  while (!fWantedImages.empty() && std::chrono::steady_clock::now() < end) {
    const auto [kind, image] = fWantedImages.back();
    fWantedImages.pop_back();
    TCustomImageList* const images = fImages[static_cast<std::size_t>(kind)].images;
    if (images == nullptr || images->IsReady(image)) continue;
    try {
      images->Require(image);
      // One that can't be made isn't painted, and so asked for, again and again.
      made = made || (alive.IsAlive() && images->IsReady(image));
    } catch (...) {
      ReportException(std::current_exception());
    }
    if (!alive.IsAlive()) return;
  }
  if (made) fLooksDirty = true;
  if (made || !fWantedImages.empty()) WakeUp();
}

// --- in step ---------------------------------------------------------------------------------------------------------

void TCustomListView::CatchUp() {
  const bool isDirty = fRowsDirty || fStateDirty || fColumnsDirty || fColumnLooksDirty || fLooksDirty ||
                       !fLooks.empty() || (fTopNoted && !IsEditing() && !fItems->IsUpdating());
  if (!isDirty || fCatchingUp || fNativeDepth > 0 || !fIsReady) return;
  fCatchingUp = true;
  struct TCatching { // also behind what was raised, or nothing would be written any more
    TCustomListView& view;
    ~TCatching() {
      view.EndWriting();
      view.fCatchingUp = false;
    }
  };
  const TWriteScope scope(*this);
  const TCatching catching{*this};
  fWrites = 0;
  if (fColumnsDirty || fColumnLooksDirty) AutoSizeColumns();
  if (!fColumns->IsUpdating()) WriteColumns();
  if (fItems->IsUpdating()) return;
  const bool moved = std::exchange(fRowsDirty, false);
  fStateDirty = false;
  fMirror.Write(*fItems, *this);
  if (moved) {
    fLooksDirty = true;
    PlaceEdit();
  }
  if (fTopNoted && !IsEditing()) RestoreTop();
  RedrawLooks();
}

void TCustomListView::EndWriting() {
  if (!std::exchange(fRedrawOff, false)) return;
  SendMessageW(AllocatedHandle(), WM_SETREDRAW, TRUE, 0);
  InvalidateRect(AllocatedHandle(), nullptr, FALSE);
}

void TCustomListView::PutCount(int pCount) {
  Query(LVM_SETITEMCOUNT, static_cast<WPARAM>(pCount), LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL);
}

void TCustomListView::PutItemState(int pIndex, UINT pState, UINT pMask) {
  // A row's repainting costs more than all of the screen's, once there are several.
  constexpr int few = 3;
  if (++fWrites > few && !fRedrawOff && IsWindowVisible(AllocatedHandle())) {
    fRedrawOff = true;
    SendMessageW(AllocatedHandle(), WM_SETREDRAW, FALSE, 0);
  }
  LVITEMW item{};
  item.state = pState;
  item.stateMask = pMask;
  Query(LVM_SETITEMSTATE, static_cast<WPARAM>(pIndex), reinterpret_cast<LPARAM>(&item));
}

void TCustomListView::PutSelected(int pIndex, bool pSelected) {
  PutItemState(pIndex, pSelected ? LVIS_SELECTED : 0U, LVIS_SELECTED);
}

void TCustomListView::PutAllSelected(bool pSelected) {
  fWrites += 3;
  PutItemState(-1, pSelected ? LVIS_SELECTED : 0U, LVIS_SELECTED);
}

void TCustomListView::PutFocused(int pFormer, int pIndex) {
  if (pIndex < 0)
    PutItemState(pFormer, 0, LVIS_FOCUSED);
  else
    PutItemState(pIndex, LVIS_FOCUSED, LVIS_FOCUSED);
}

void TCustomListView::PutAnchor(int pIndex) {
  Query(LVM_SETSELECTIONMARK, 0, pIndex);
}

void TCustomListView::RedrawLooks() {
  if (std::exchange(fLooksDirty, false)) {
    fLooks.clear();
    InvalidateRect(AllocatedHandle(), nullptr, FALSE);
    return;
  }
  for (const TListItem* item : std::exchange(fLooks, {})) {
    const auto index = static_cast<WPARAM>(item->GetIndex());
    Query(LVM_REDRAWITEMS, index, static_cast<LPARAM>(index));
  }
}

// Counts and marks that went by without a report are found by asking.
bool TCustomListView::Reconcile() {
  bool changed = false;
  if (static_cast<int>(Query(LVM_GETSELECTEDCOUNT)) != fMirror.GetSelectedCount()) {
    ReadSelection();
    changed = true;
  }
  const int focused = static_cast<int>(Query(LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
  if (focused != fMirror.GetFocused()) {
    fMirror.TakeFocused(focused);
    fItems->TakeFocus(RowAt(focused));
    changed = true;
  }
  const int anchor = static_cast<int>(Query(LVM_GETSELECTIONMARK));
  fMirror.TakeAnchor(anchor);
  fItems->TakeAnchor(RowAt(anchor));
  return changed;
}

void TCustomListView::ReadSelection() {
  fMirror.TakeSelected(0, fMirror.GetCount() - 1, false);
  for (int i = -1;;) {
    i = static_cast<int>(Query(LVM_GETNEXTITEM, static_cast<WPARAM>(i), LVNI_SELECTED));
    if (i < 0) break;
    fMirror.TakeSelected(i, i, true);
  }
  for (int i = 0; i < fItems->GetCount(); ++i) {
    if (fMirror.IsSelected(i) != fItems->IsSelected(i)) fItems->TakeSelection(i, i, fMirror.IsSelected(i));
  }
}

std::wstring TCustomListView::DescribeInconsistency() {
  if (!fItems->IsConsistent()) return L"the rows contradict themselves";
  if (!fIsReady || fItems->IsUpdating()) return {};
  CatchUp();
  const int count = fItems->GetCount();
  const auto numbers = [](const wchar_t* what, LRESULT control, LRESULT rows) {
    return std::wstring(what) + L": " + std::to_wstring(control) + L" and not " + std::to_wstring(rows);
  };
  const LRESULT counted = Query(LVM_GETITEMCOUNT);
  if (counted != count) return numbers(L"count", counted, count);
  const LRESULT selected = Query(LVM_GETSELECTEDCOUNT);
  if (selected != fItems->GetSelectedCount()) return numbers(L"selected rows", selected, fItems->GetSelectedCount());
  for (int i = 0; i < count; ++i) {
    const LRESULT state = Query(LVM_GETITEMSTATE, static_cast<WPARAM>(i), LVIS_SELECTED | LVIS_FOCUSED);
    const LRESULT wanted =
        (fItems->IsSelected(i) ? LVIS_SELECTED : 0) | (RowAt(i) == fItems->GetFocused() ? LVIS_FOCUSED : 0);
    if (state != wanted) return numbers((L"state of row " + std::to_wstring(i)).c_str(), state, wanted);
  }
  if ((GetEditControl() != nullptr) != IsEditing()) return IsEditing() ? L"no edit is open" : L"an edit is open";
  return fDropTarget && fItems->IndexOf(fDropTarget) < 0 ? L"the drop target has gone" : L"";
}

// --- place -----------------------------------------------------------------------------------------------------------

RECT TCustomListView::RowBounds(int pIndex, int pPart) const {
  RECT rect{pPart, 0, 0, 0};
  if (!Query(LVM_GETITEMRECT, static_cast<WPARAM>(pIndex), reinterpret_cast<LPARAM>(&rect))) return {};
  return rect;
}

int TCustomListView::FirstVisible() const {
  const int count = fMirror.GetCount();
  if (count == 0) return -1;
  if (fViewStyle == TViewStyle::vsReport || fViewStyle == TViewStyle::vsList) {
    return static_cast<int>(Query(LVM_GETTOPINDEX));
  }
  // Icons stand in lines from the top down.
  int below = 0;
  int above = count;
  while (below < above) {
    const int middle = below + (above - below) / 2;
    if (RowBounds(middle).bottom > 0)
      above = middle;
    else
      below = middle + 1;
  }
  return below < count ? below : count - 1;
}

// A list that stands at its beginning stays there; else the row that stands first stays where it is.
void TCustomListView::NoteTop() noexcept {
  if (fTopNoted || fRowsDirty || !fIsReady) return;
  fTopNoted = true;
  const int top = FirstVisible();
  fTopRow = top > 0 ? RowAt(top) : nullptr;
  if (fTopRow == nullptr) return;
  const RECT bounds = RowBounds(top);
  fTopOffset = fViewStyle == TViewStyle::vsList ? bounds.left : bounds.top;
}

void TCustomListView::RestoreTop() {
  fTopNoted = false;
  const TListItem* const row = std::exchange(fTopRow, nullptr);
  if (row == nullptr) return;
  const RECT bounds = RowBounds(row->GetIndex());
  if (fViewStyle == TViewStyle::vsList) {
    // Scrolled by columns.
    const int width = static_cast<int>(Query(LVM_GETCOLUMNWIDTH));
    const int distance = bounds.left - fTopOffset;
    if (width > 0 && distance / width != 0) Query(LVM_SCROLL, static_cast<WPARAM>(distance / width), 0);
  } else if (bounds.top != fTopOffset) {
    Query(LVM_SCROLL, 0, bounds.top - fTopOffset);
  }
}

// The platform puts the window of an edit over a row once and leaves it there.
void TCustomListView::PlaceEdit() {
  if (!IsEditing()) return;
  const HWND edit = reinterpret_cast<HWND>(Query(LVM_GETEDITCONTROL));
  if (edit == nullptr) return;
  const RECT label = RowBounds(fItems->GetEditing()->GetIndex(), LVIR_LABEL);
  SetWindowPos(edit, nullptr, label.left, label.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace kiv
