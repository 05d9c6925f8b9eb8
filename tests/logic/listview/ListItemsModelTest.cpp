#include <gtest/gtest.h>

#include "RowsHost.h"

#include <algorithm>
#include <random>

namespace kiv {
namespace {

using test::TRowControlFake;
using test::TRowsHost;

struct TPlainRow {
  std::intptr_t id;
  bool selected = false;
  friend bool operator==(const TPlainRow&, const TPlainRow&) = default;
};

/// The same list in the plainest form: what one would write if no row ever moved.
struct TPlainRows {
  std::vector<TPlainRow> rows;
  std::intptr_t focused = -1;

  void Delete(int pIndex) {
    const bool hadFocus = rows[static_cast<std::size_t>(pIndex)].id == focused;
    rows.erase(rows.begin() + pIndex);
    if (!hadFocus) return;
    focused = rows.empty() ? -1 : rows[std::min(static_cast<std::size_t>(pIndex), rows.size() - 1)].id;
  }
  void DeleteSelected() {
    for (int i = 0; i < static_cast<int>(rows.size());) {
      if (rows[static_cast<std::size_t>(i)].selected)
        Delete(i);
      else
        ++i;
    }
  }
  void Move(int pFrom, int pTo) {
    const TPlainRow row = rows[static_cast<std::size_t>(pFrom)];
    rows.erase(rows.begin() + pFrom);
    rows.insert(rows.begin() + pTo, row);
  }
};

class TRandomRun {
public:
  explicit TRandomRun(unsigned pSeed) : fRandom(pSeed) {}

  void Step() {
    const int what = Below(16);
    const int count = Rows().GetCount();
    const int at = count > 0 ? Below(count) : 0;
    const int other = count > 0 ? Below(count) : 0;
    if (count == 0 || what < 4) {
      Insert(Below(count + 1));
    } else if (what < 6) {
      Rows().Delete(at);
      fPlain.Delete(at);
    } else if (what == 6) {
      Rows().Move(at, other);
      fPlain.Move(at, other);
    } else if (what == 7) {
      Sort();
    } else if (what == 8) {
      fBrackets > 0 ? EndUpdate() : BeginUpdate();
    } else if (what == 9) {
      Rows().SetFocused(Rows()[at]);
      fPlain.focused = Plain(at).id;
    } else if (what == 10) {
      UserSelects(std::min(at, other), std::max(at, other), Below(2) == 0);
    } else {
      Select(what, at, other);
    }
    if (Below(200) == 0) Clear();
    if (Below(50) == 0) {
      Rows().DeleteSelected();
      fPlain.DeleteSelected();
    }
  }

  // The control is brought in step whenever no bracket is open.
  void Check() {
    ASSERT_TRUE(Rows().IsConsistent());
    std::vector<TPlainRow> rows;
    for (int i = 0; i < Rows().GetCount(); ++i) rows.push_back({Rows()[i]->GetData(), Rows()[i]->GetSelected()});
    ASSERT_EQ(rows, fPlain.rows);
    ASSERT_EQ(Rows().GetFocused() ? Rows().GetFocused()->GetData() : -1, fPlain.focused);
    if (fBrackets > 0) return;
    fMirror.Write(Rows(), fControl);
    for (int i = 0; i < Rows().GetCount(); ++i) {
      TListItem* const row = Rows()[i];
      ASSERT_EQ(fControl.selected.at(static_cast<std::size_t>(i)), row->GetSelected()) << i;
      const auto heard = fHost.heard.find(row);
      ASSERT_EQ(heard != fHost.heard.end() && heard->second, row->GetSelected()) << i;
    }
    ASSERT_EQ(fControl.focused, Rows().IndexOf(Rows().GetFocused()));
  }

private:
  TListItems& Rows() { return *fHost.rows; }
  TPlainRow& Plain(int pIndex) { return fPlain.rows[static_cast<std::size_t>(pIndex)]; }
  int Below(int pCount) { return static_cast<int>(fRandom() % static_cast<unsigned>(pCount)); }

  void Insert(int pIndex) {
    Rows().Insert(pIndex)->SetData(fNextId);
    fPlain.rows.insert(fPlain.rows.begin() + pIndex, {fNextId++});
  }
  void BeginUpdate() {
    Rows().BeginUpdate();
    ++fBrackets;
  }
  void EndUpdate() {
    Rows().EndUpdate();
    --fBrackets;
  }
  void Clear() {
    Rows().Clear();
    fPlain = {};
  }
  void Sort() {
    const std::intptr_t modulus = 1 + Below(7);
    const auto key = [modulus](std::intptr_t id) { return id % modulus; };
    if (Below(2) == 0) {
      Rows().SortByKey([&](const TListItem& row) { return key(row.GetData()); });
    } else {
      Rows().CustomSort([&](const TListItem& a, const TListItem& b, std::intptr_t) {
        return static_cast<int>(key(a.GetData()) - key(b.GetData()));
      });
    }
    std::stable_sort(fPlain.rows.begin(), fPlain.rows.end(),
                     [&](const TPlainRow& a, const TPlainRow& b) { return key(a.id) < key(b.id); });
  }
  // The way the control reports what the user did; it can, once it is in step.
  void UserSelects(int pFirst, int pLast, bool pSelected) {
    if (fBrackets > 0) return;
    fMirror.TakeSelected(pFirst, pLast, pSelected);
    for (int i = pFirst; i <= pLast; ++i) fControl.selected.at(static_cast<std::size_t>(i)) = pSelected;
    Rows().TakeSelection(pFirst, pLast, pSelected);
    Rows().ReportChanges();
    for (int i = pFirst; i <= pLast; ++i) Plain(i).selected = pSelected;
  }
  void Select(int pWhat, int pAt, int pOther) {
    if (pWhat == 11) Rows().SelectAll();
    if (pWhat == 12) Rows().ClearSelection();
    if (pWhat == 13) Rows().InvertSelection();
    if (pWhat == 14) Rows().SelectRange(pAt, pOther, true);
    if (pWhat == 15) Rows()[pAt]->SetSelected(!Rows()[pAt]->GetSelected());
    for (int i = 0; i < static_cast<int>(fPlain.rows.size()); ++i) {
      bool& selected = Plain(i).selected;
      if (pWhat == 11 || pWhat == 12) selected = pWhat == 11;
      if (pWhat == 13) selected = !selected;
      if (pWhat == 14 && i >= std::min(pAt, pOther) && i <= std::max(pAt, pOther)) selected = true;
      if (pWhat == 15 && i == pAt) selected = !selected;
    }
  }

  std::mt19937 fRandom;
  TRowsHost fHost;
  TRowControlFake fControl;
  TControlMirror fMirror;
  TPlainRows fPlain;
  std::intptr_t fNextId = 0;
  int fBrackets = 0;
};

TEST(ListItemsModel, RandomOperationsFollowThePlainListAndTheControlFollowsTheRows) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    TRandomRun run(seed);
    for (int step = 0; step < 1000; ++step) {
      run.Step();
      ASSERT_NO_FATAL_FAILURE(run.Check()) << "step " << step;
    }
  }
}

// What a mass change costs a control that takes one message for each row, or one for all.
TEST(ListItemsModel, MassChangesTakeFewMessages) {
  TRowsHost host;
  TRowControlFake control;
  TControlMirror mirror;
  for (int i = 0; i < 1000; ++i) host.rows->Add();
  const auto messages = [&](auto&& change) {
    change();
    control.messages = 0;
    mirror.Write(*host.rows, control);
    return control.messages;
  };
  TListItems& rows = *host.rows;
  EXPECT_EQ(messages([&] { rows.SelectAll(); }), 1);
  EXPECT_EQ(messages([&] { rows.InvertSelection(); }), 1);
  EXPECT_EQ(messages([&] { rows.SetSelected(7, true); }), 1);
  EXPECT_EQ(messages([&] { rows.InvertSelection(); }), 2);
  EXPECT_EQ(messages([&] { rows.SelectRange(0, 9, false); }), 9);
  EXPECT_EQ(messages([&] { rows.Move(0, 500); }), 2) << "the marks stand where the rows stand now";
}

} // namespace
} // namespace kiv
