#include "ListFixture.h"

#include <algorithm>
#include <random>
#include <set>
#include <string>

namespace kiv {
namespace {

using test::PumpMessages;
using test::TListFixture;

/// Keys held down for messages that are sent to this thread.
class THeldKey {
public:
  explicit THeldKey(int pKey) : fKey(pKey) { Put(pKey, true); }
  ~THeldKey() { Put(fKey, false); }

private:
  static void Put(int pKey, bool pDown) {
    if (pKey == 0) return;
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[pKey] = pDown ? 0x80 : 0;
    SetKeyboardState(keys);
  }
  int fKey;
};

class TRandomList : public TListFixture {
public:
  explicit TRandomList(unsigned pSeed) : fRandom(pSeed) { Show(); }

  /// What went lost in this step that was to survive it; empty if nothing did.
  std::string Step() {
    const int count = Rows().GetCount();
    const int what = Below(20);
    if (count == 0 || what < 9) {
      PumpMessages();
      const TSeen before = See();
      Change(count == 0 ? 7 : what, count);
      PumpMessages();
      return WhatWentLost(before, See());
    }
    if (what == 9 && Below(3) == 0) {
      list->SetViewStyle(static_cast<TViewStyle>(Below(4)));
    } else if (what < 14) {
      Program(Below(7), Below(count), Below(count));
    } else if (what < 18) {
      User(Below(5), Below(count));
    } else {
      PumpMessages();
    }
    return {};
  }

  std::vector<std::intptr_t> Ids() {
    std::vector<std::intptr_t> ids;
    for (int i = 0; i < Rows().GetCount(); ++i) ids.push_back(Row(i).GetData());
    return ids;
  }
  const std::vector<std::intptr_t>& Expected() const { return fIds; }

private:
  /// What the user has before him, by the rows' own numbers; -1 is none.
  struct TSeen {
    std::set<std::intptr_t> rows;
    std::set<std::intptr_t> selected;
    std::intptr_t focused = -1;
    std::intptr_t edited = -1;
    std::wstring text;
    std::intptr_t top = -1; // of a report that is scrolled
  };

  TSeen See() {
    TSeen seen;
    for (const std::intptr_t id : fIds) seen.rows.insert(id);
    for (int i = 0; i < Rows().GetCount(); ++i) {
      if (Rows().IsSelected(i)) seen.selected.insert(Row(i).GetData());
    }
    if (const TListItem* const row = list->GetItemFocused()) seen.focused = row->GetData();
    if (const TListItem* const row = Rows().GetEditing()) seen.edited = row->GetData();
    if (const HWND edit = list->GetEditControl()) {
      wchar_t text[64]{};
      GetWindowTextW(edit, text, 64);
      seen.text = text;
    }
    const TListItem* const top = list->GetTopItem();
    if (top && top->GetIndex() > 0 && list->GetViewStyle() == TViewStyle::vsReport) seen.top = top->GetData();
    return seen;
  }

  std::string WhatWentLost(const TSeen& pBefore, const TSeen& pAfter) {
    const auto survives = [&](std::intptr_t id) { return pBefore.rows.count(id) == 1 && pAfter.rows.count(id) == 1; };
    for (const std::intptr_t id : pAfter.rows) {
      if (survives(id) && pBefore.selected.count(id) != pAfter.selected.count(id)) return "the selection";
    }
    // An edit that comes back takes the focus along.
    const bool isEditsFocus = pAfter.edited >= 0 && pAfter.focused == pAfter.edited;
    if (survives(pBefore.focused) && pAfter.focused != pBefore.focused && !isEditsFocus) return "the focus";
    if (survives(pBefore.edited) && pAfter.edited != pBefore.edited) return "the edit";
    if (survives(pBefore.edited) && pAfter.text != pBefore.text) return "what was typed";
    // Near the end there may be nothing left to scroll to, and under an edit nothing is scrolled.
    if (!survives(pBefore.top) || pBefore.edited >= 0 || pAfter.top == pBefore.top) return {};
    const int place = static_cast<int>(std::find(fIds.begin(), fIds.end(), pBefore.top) - fIds.begin());
    return place > 0 && place < Rows().GetCount() - list->GetVisibleRowCount() ? "the place" : "";
  }

  void Change(int pWhat, int pCount) {
    if (pWhat < 4) {
      const int at = Below(pCount + 1);
      Rows().Insert(at)->SetData(fNextId);
      fIds.insert(fIds.begin() + at, fNextId++);
    } else if (pWhat < 6) {
      const int at = Below(pCount);
      Rows().Delete(at);
      fIds.erase(fIds.begin() + at);
    } else if (pWhat == 6) {
      Sort();
    } else if (pWhat == 7 && (pCount == 0 || Below(6) == 0)) {
      Refill();
    } else if (pWhat == 8 && Below(4) == 0) {
      list->RecreateWnd();
    }
  }

  int Below(int pCount) { return static_cast<int>(fRandom() % static_cast<unsigned>(pCount)); }

  void Sort() {
    list->CustomSort(
        [](TListItem& a, TListItem& b, std::intptr_t) { return static_cast<int>(a.GetData() % 5 - b.GetData() % 5); });
    std::stable_sort(fIds.begin(), fIds.end(), [](std::intptr_t a, std::intptr_t b) { return a % 5 < b % 5; });
  }
  void Refill() {
    const ScopedRowUpdate update(Rows());
    Rows().Clear();
    fIds.clear();
    for (int i = 0; i < 60; ++i) {
      Rows().Add()->SetData(fNextId);
      fIds.push_back(fNextId++);
    }
    Row(3).SetSelected(true);
  }
  void Program(int pWhat, int pAt, int pOther) {
    if (pWhat == 0) list->SelectAll();
    if (pWhat == 1) list->InvertSelection();
    if (pWhat == 2) list->SetSelected(&Row(pAt));
    if (pWhat == 3) Row(pAt).SetFocused(true);
    if (pWhat == 4) Rows().SelectRange(pAt, pOther, true);
    if (pWhat == 5 && Row(pAt).EditCaption()) {
      SetWindowTextW(list->GetEditControl(), (L"typed " + std::to_wstring(pAt)).c_str());
    }
    if (pWhat == 6) Row(pAt).MakeVisible(false);
  }
  // By messages, as other programs send them and the window system does.
  void User(int pWhat, int pAt) {
    constexpr WPARAM keys[] = {VK_DOWN, VK_UP, VK_END, VK_HOME, VK_SPACE};
    constexpr int held[] = {0, VK_SHIFT, VK_CONTROL};
    if (pWhat < 2) {
      const THeldKey key(held[Below(3)]);
      Send(WM_KEYDOWN, keys[Below(5)], 1);
      return;
    }
    LVITEMW item{};
    item.state = Below(2) == 0 ? LVIS_SELECTED : 0U;
    item.stateMask = LVIS_SELECTED;
    Send(LVM_SETITEMSTATE, pWhat == 2 ? static_cast<WPARAM>(-1) : static_cast<WPARAM>(pAt),
         reinterpret_cast<LPARAM>(&item));
  }

  std::mt19937 fRandom;
  std::vector<std::intptr_t> fIds;
  std::intptr_t fNextId = 0;
};

TEST(ListViewModel, TheControlShowsTheRowsAfterEachStep) {
  for (unsigned seed = 1; seed <= 2; ++seed) {
    SCOPED_TRACE(seed);
    TRandomList run(seed);
    for (int step = 0; step < 200; ++step) {
      ASSERT_EQ(run.Step(), "") << "went lost in step " << step;
      ASSERT_EQ(run.list->DescribeInconsistency(), L"") << "step " << step;
      ASSERT_TRUE(run.HeardAll()) << "step " << step;
      ASSERT_EQ(run.Ids(), run.Expected()) << "step " << step;
    }
  }
}

} // namespace
} // namespace kiv
