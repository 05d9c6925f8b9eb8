#include <gtest/gtest.h>

#include "RowsHost.h"

#include <framework/TextCompare.h>

#include <stdexcept>

namespace kiv {
namespace {

using test::TRowsHost;

TEST(ListItems, ReportsEachRowOnceAndOneChangeForAnAction) {
  TRowsHost host;
  host.Fill({L"a", L"b", L"c", L"d"});
  TListItems& rows = *host.rows;
  const auto said = [&](auto&& action) {
    action();
    return host.TakeLog();
  };
  EXPECT_EQ(said([&] { rows[1]->SetSelected(true); }), L"+b =b ");
  EXPECT_EQ(said([&] { rows[1]->SetSelected(true); }), L"");
  EXPECT_EQ(said([&] { rows.SetFocused(rows[2]); }), L"=c ");
  EXPECT_EQ(said([&] { rows.SelectAll(); }), L"+a +c +d =c ");
  EXPECT_EQ(said([&] { rows.SelectRange(0, 1, false); }), L"-a -b =a ");
  EXPECT_EQ(said([&] {
              const ScopedRowUpdate update(rows);
              rows.InvertSelection();
              rows.InvertSelection();
              rows[3]->SetSelected(false);
              rows.SetFocused(rows[3]);
            }),
            L"-d =d ");
  EXPECT_EQ(said([&] { rows.Delete(2); }), L"=none ") << "a row that goes isn't deselected";
  EXPECT_EQ(said([&] { rows.Delete(2); }), L"=b ") << "the focus went on to the row before";
  EXPECT_EQ(said([&] { rows.SetMultiSelect(false); }), L"");
  EXPECT_EQ(said([&] { rows[0]->SetSelected(true); }), L"+a =a ");
  EXPECT_EQ(said([&] { rows[1]->SetSelected(true); }), L"-a +b =b ");
  EXPECT_EQ(said([&] { rows.SelectAll(); }), L"") << "without multi-selection";
  // Reports of the control wait until it has done.
  host.deferred = true;
  rows.TakeSelection(0, 0, true);
  rows.TakeFocus(rows[0]);
  EXPECT_EQ(said([&] { rows.Add()->SetCaption(L"e"); }), L"");
  EXPECT_EQ(said([&] { rows.ReportChanges(); }), L"+a -b =a ");
}

TEST(ListItems, OfMarksThatGoWithTheirRowsOneChangeTells) {
  struct TCase {
    const char* name;
    std::function<void(TListItems&)> act;
    const wchar_t* log;
  };
  const std::vector<TCase> cases{
      {"neither selected nor focused", [](auto& rows) { rows.Delete(0); }, L"xa "},
      {"selected", [](auto& rows) { rows.Delete(1); }, L"xb =none "},
      {"focused", [](auto& rows) { rows.Delete(2); }, L"xc =d "},
      {"selected ones", [](auto& rows) { rows.DeleteSelected(); }, L"xb xc =d "},
      {"all", [](auto& rows) { rows.Clear(); }, L"xa xb xc xd =none "},
      {"all, which were not reported yet",
       [](auto& rows) {
         const ScopedRowUpdate update(rows);
         rows.SelectAll();
         rows.SetFocused(rows[0]);
         rows.DeleteSelected();
       },
       L"xa xb xc xd =none "},
      {"twice",
       [](auto& rows) {
         rows.Clear();
         rows.Clear();
         rows.DeleteSelected();
       },
       L"xa xb xc xd =none "},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.name);
    TRowsHost host;
    host.Fill({L"a", L"b", L"c", L"d"});
    host.rows->SelectRange(1, 2, true);
    host.rows->SetFocused(host.rows->GetItem(2));
    host.TakeLog();
    host.onDelete = [&](TListItem* item) { host.log += L"x" + item->GetCaption() + L" "; };
    test.act(*host.rows);
    EXPECT_EQ(host.TakeLog(), test.log);
    EXPECT_TRUE(host.rows->IsConsistent());
  }
}

TEST(ListItems, HandlersMayChangeAllAndDestroyTheList) {
  using TAction = std::function<void(TRowsHost&)>;
  struct TCase {
    const wchar_t* name;
    TAction inSelect;
    std::wstring captions;
  };
  const std::vector<TCase> cases{
      {L"delete the next", [](TRowsHost& h) { h.rows->Delete(h.rows->GetCount() - 1); }, L""},
      {L"delete the first", [](TRowsHost& h) { h.rows->Delete(0); }, L""},
      {L"clear", [](TRowsHost& h) { h.rows->Clear(); }, L""},
      {L"insert",
       [](TRowsHost& h) {
         if (h.rows->GetCount() < 6) h.rows->Insert(0)->SetCaption(L"x");
       },
       L"xxabcd"},
      {L"take back", [](TRowsHost& h) { h.rows->ClearSelection(); }, L"abcd"},
      {L"reverse",
       [](TRowsHost& h) {
         for (int i = 1; i < 4; ++i) h.rows->Move(i, 0);
       },
       L""},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.name);
    TRowsHost host;
    host.Fill({L"a", L"b", L"c", L"d"});
    host.onSelect = [&](TListItem*) {
      if (host.rows->GetCount() > 0) test.inSelect(host);
    };
    host.rows->SelectAll();
    EXPECT_TRUE(host.rows->IsConsistent());
    if (!test.captions.empty()) {
      EXPECT_EQ(host.Captions(), test.captions);
    }
    for (const auto& [row, selected] : host.heard) EXPECT_EQ(row->GetSelected(), selected);
  }
  for (auto TRowsHost::*event : {&TRowsHost::onSelect, &TRowsHost::onChange, &TRowsHost::onDelete}) {
    TRowsHost host;
    host.Fill({L"a", L"b"});
    host.*event = [&](TListItem*) { host.rows.reset(); };
    host.rows->SelectAll();
    if (host.rows) host.rows->Clear();
    EXPECT_EQ(host.rows, nullptr);
  }
}

TEST(ListItems, AnEditIsLetGoBeforeItsRowGoes) {
  TRowsHost host;
  host.Fill({L"a", L"b", L"c"});
  host.rows->SetEditing(host.rows->GetItem(1));
  host.rows->Move(1, 0);
  host.rows->Delete(2);
  EXPECT_EQ(host.TakeLog(), L"");
  // The handler takes out the row that was about to go, and the one that takes its place must stay.
  host.onCancelEdit = [&](TListItem* item) { item->Delete(); };
  host.rows->Delete(0);
  EXPECT_EQ(host.TakeLog(), L"cancel:b ");
  EXPECT_EQ(host.Captions(), L"a");
  host.onCancelEdit = nullptr;
  host.Fill({L"b"});
  host.rows->SetEditing(host.rows->GetItem(0));
  host.rows->SetSelected(1, true);
  host.TakeLog();
  host.rows->DeleteSelected();
  EXPECT_EQ(host.TakeLog(), L"=none ") << "of another row";
  host.rows->Clear();
  EXPECT_EQ(host.TakeLog(), L"cancel:a ");
  EXPECT_TRUE(host.rows->IsConsistent());
}

TEST(ListItems, SortsSurviveComparisonsOfAllKinds) {
  TRowsHost host;
  host.Fill({L"d", L"b", L"a", L"c", L"B"});
  TListItems& rows = *host.rows;
  rows[0]->SetSelected(true);
  rows.SetFocused(rows[2]);
  host.TakeLog();
  const auto byCaption = [](const TListItem& a, const TListItem& b, std::intptr_t sign) {
    return static_cast<int>(sign) * CompareText(a.GetCaption(), b.GetCaption());
  };
  rows.CustomSort(byCaption, 1);
  EXPECT_EQ(host.Captions(), L"abBcd");
  rows.CustomSort(byCaption, -1);
  EXPECT_EQ(host.Captions(), L"dcbBa") << "equals keep their order";
  rows.SortByKey([](const TListItem& row) { return row.GetCaption(); }, true);
  EXPECT_EQ(host.Captions(), L"dcbaB");
  EXPECT_EQ(host.TakeLog(), L"") << "no state changed";
  EXPECT_TRUE(rows[0]->GetSelected());
  EXPECT_EQ(rows.GetFocused()->GetCaption(), L"a");

  int calls = 0;
  EXPECT_THROW(rows.CustomSort([&](TListItem&, TListItem&, std::intptr_t) -> int {
    if (++calls == 3) throw std::runtime_error("no");
    return 1;
  }),
               std::runtime_error);
  EXPECT_EQ(host.Captions(), L"dcbaB");
  EXPECT_THROW(rows.CustomSort([&](TListItem&, TListItem&, std::intptr_t) -> int {
    rows.Delete(0);
    return 0;
  }),
               EInvalidOperation);
  EXPECT_EQ(rows.GetCount(), 5);
  rows.CustomSort([](TListItem&, TListItem&, std::intptr_t) { return -1; });
  EXPECT_EQ(rows.GetCount(), 5);
  EXPECT_TRUE(rows.IsConsistent());
  rows.Delete(0);
  EXPECT_THROW(rows.CustomSort([&](TListItem&, TListItem&, std::intptr_t) {
    host.rows.reset();
    return 0;
  }),
               EAbort);
}

TEST(ListItems, FindsRows) {
  TRowsHost host;
  host.Fill({L"Alpha", L"beta", L"ALPine", L"gamma", L"alpha"});
  TListItems& rows = *host.rows;
  struct TCase {
    int start;
    const wchar_t* text;
    bool partial, inclusive, wrap;
    int found;
  };
  for (const TCase& test : std::vector<TCase>{{-1, L"alp", true, false, false, 0},
                                              {0, L"alp", true, false, false, 2},
                                              {0, L"alp", true, true, false, 0},
                                              {2, L"ALPHA", false, false, true, 4},
                                              {4, L"beta", false, false, false, -1},
                                              {4, L"BETA", false, false, true, 1},
                                              {4, L"alpha", false, false, true, 0},
                                              {-9, L"gamma", false, false, true, 3},
                                              {99, L"gamma", false, false, true, 3},
                                              {99, L"gamma", false, false, false, -1},
                                              {0, L"delta", true, true, true, -1}}) {
    EXPECT_EQ(rows.IndexOf(rows.FindCaption(test.start, test.text, test.partial, test.inclusive, test.wrap)),
              test.found)
        << test.start << " " << std::string(test.text, test.text + std::char_traits<wchar_t>::length(test.text));
  }
  rows[3]->SetData(7);
  EXPECT_EQ(rows.FindData(3, 7, true, false), rows[3]);
  EXPECT_EQ(rows.FindData(3, 7, false, true), nullptr) << "the search ends before the row that it started from";

  rows[1]->SetSelected(true);
  rows[3]->SetSelected(true);
  rows[3]->SetCut(true);
  const auto next = [&](int from, TSearchDirection direction, TItemStates states) {
    return rows.IndexOf(rows.GetNextItem(from < 0 ? nullptr : rows[from], direction, states));
  };
  using enum TSearchDirection;
  using enum TItemStateFlag;
  EXPECT_EQ(next(-1, sdAll, {isSelected}), 1);
  EXPECT_EQ(next(1, sdAll, {isSelected}), 3);
  EXPECT_EQ(next(3, sdAll, {isSelected}), -1);
  EXPECT_EQ(next(-1, sdAll, {isSelected, isCut}), 3);
  EXPECT_EQ(next(-1, sdAll, {isCut}), 3);
  EXPECT_EQ(next(1, sdAll, {isNone}), 2);
  EXPECT_EQ(next(3, sdAbove, {isSelected}), 1);
  EXPECT_EQ(next(1, sdAbove, {isSelected}), -1);
  EXPECT_EQ(next(1, sdBelow, {isCut}), 3);
}

TEST(ListItems, KeepsRowsOfTheClassThatIsChosenSmallAndRefusesOthers) {
  TRowsHost host;
  TRowsHost other;
  EXPECT_LE(sizeof(TListItem) + 16 + sizeof(void*) + 1, 200U) << "with the heap's head and the row's place";
  host.make = [](TListItems&) { return nullptr; };
  EXPECT_THROW(host.rows->Add(), EInvalidArgument);
  host.make = [&](TListItems&) { return std::make_unique<TListItem>(other.rows.get()); };
  EXPECT_THROW(host.rows->Add(), EInvalidArgument);
  EXPECT_THROW(host.rows->Insert(1), EListError);
  EXPECT_THROW(host.rows->GetItem(0), EListError);
  host.make = nullptr;
  host.onInsert = [](TListItem* item) { item->Delete(); };
  EXPECT_EQ(host.rows->Add(), nullptr) << "a handler deleted it";
  host.onInsert = nullptr;
  EXPECT_THROW(host.rows->SetFocused(other.rows->Add()), EInvalidArgument);
  EXPECT_THROW(host.rows->EndUpdate(), EInvalidOperation);
}

TEST(ListItems, ARowTellsWhenItLooksDifferent) {
  TRowsHost host;
  host.Fill({L"a"});
  TListItem& row = *host.rows->GetItem(0);
  const std::vector<std::function<void()>> changes{
      [&] { row.SetCaption(L"b"); },      [&] { row.SetImageIndex(3); },
      [&] { row.SetOverlayIndex(2); },    [&] { row.SetStateIndex(1); },
      [&] { row.SetIndent(1); },          [&] { row.SetChecked(true); },
      [&] { row.SetCut(true); },          [&] { row.SetDropTarget(true); },
      [&] { row.SetSubItemImage(1, 4); }, [&] { row.SetSubItems(TStringList()); }};
  for (std::size_t i = 0; i + 1 < changes.size(); ++i) {
    for (const int expected : {1, 0}) {
      host.looks = 0;
      changes[i]();
      EXPECT_EQ(host.looks, expected) << "change " << i;
    }
  }
  host.looks = 0;
  row.GetSubItems().Add(L"one");
  row.GetSubItems().Put(0, L"two");
  EXPECT_EQ(host.looks, 2);
  EXPECT_THROW(row.SetStateIndex(15), EArgumentOutOfRange);
  EXPECT_THROW(row.SetOverlayIndex(-2), EArgumentOutOfRange);

  row.SetDropTarget(false);
  TListItem& copy = *host.rows->Add();
  copy.Assign(&row);
  EXPECT_EQ(copy.GetCaption(), L"b");
  EXPECT_EQ(copy.GetSubItems().Get(0), L"two");
  EXPECT_EQ(copy.GetSubItemImage(1), 4);
  EXPECT_TRUE(copy.GetStates() == row.GetStates());
}

} // namespace
} // namespace kiv
