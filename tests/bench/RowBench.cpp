#include "Benches.h"

#include <doubles/GuiDriver.h>
#include <listview/CustomListView.h>
#include <platform/ActivationContext.h>

#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace kiv::bench {

namespace {

constexpr int Many = 50'000;
constexpr int Several = 10'000;
constexpr int VeryMany = 1'000'000;
constexpr int Sorted = 100'000;

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "kiv_bench: %s\n", what);
  std::abort();
}

// The rows' texts, ready before anything is measured.
const std::vector<std::wstring>& Texts() {
  static const std::vector<std::wstring> texts = [] {
    std::vector<std::wstring> made;
    std::mt19937 random(3);
    made.reserve(VeryMany);
    for (int i = 0; i < VeryMany; ++i) made.push_back(L"file " + std::to_wstring(random() % 1'000'000) + L".txt");
    return made;
  }();
  return texts;
}

/// A row whose text stands elsewhere.
class TReadyRow : public TListItem {
public:
  using TListItem::TListItem;
  std::wstring GetCaption() const override { return Texts()[static_cast<std::size_t>(GetData())]; }
};

class TReadyList : public TListView {
public:
  using TListView::TListView;

  void Fill(int pCount) {
    const ScopedRowUpdate update(GetItems());
    for (int i = 0; i < pCount; ++i) GetItems().Add()->SetData(i);
  }

protected:
  std::unique_ptr<TListItem> CreateListItem(TListItems& pItems) override {
    return std::make_unique<TReadyRow>(&pItems);
  }
};

/// The platform's virtual list view as a program of its own would use it.
class TRawList {
public:
  TRawList() : fHost(420, 340) {
    fHost.onMessage = [this](UINT message, WPARAM, LPARAM data, LRESULT&) {
      return message == WM_NOTIFY && Answer(reinterpret_cast<NMHDR*>(data));
    };
    const ScopedCommonControls scope;
    fWindow = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE | LVS_OWNERDATA | LVS_REPORT, 0, 0, 400, 300,
                              fHost.Get(), nullptr, nullptr, nullptr);
    Require(fWindow != nullptr, "no list view");
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH;
    column.cx = 200;
    SendMessageW(fWindow, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
  }

  void Fill(int pCount) {
    SendMessageW(fWindow, LVM_SETITEMCOUNT, static_cast<WPARAM>(pCount), 0);
    UpdateWindow(fWindow);
  }
  void SetState(int pRow, bool pSelected) {
    LVITEMW item{};
    item.state = pSelected ? LVIS_SELECTED : 0U;
    item.stateMask = LVIS_SELECTED;
    SendMessageW(fWindow, LVM_SETITEMSTATE, static_cast<WPARAM>(pRow), reinterpret_cast<LPARAM>(&item));
  }
  // A host that is somebody else's can't be heard otherwise.
  void SubclassHost(bool pSubclass) {
    const TCommonControlsApi& api = CommonControlsApi();
    const auto list = reinterpret_cast<DWORD_PTR>(this);
    const bool isDone = pSubclass ? api.SetWindowSubclass(fHost.Get(), &HearHost, 1, list)
                                  : api.RemoveWindowSubclass(fHost.Get(), &HearHost, 1);
    Require(isDone, "the host can't be subclassed");
  }
  // Drawing held while it does.
  template <typename F>
  void Quietly(F&& pWork) {
    SendMessageW(fWindow, WM_SETREDRAW, FALSE, 0);
    pWork();
    SendMessageW(fWindow, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(fWindow, nullptr, FALSE);
  }

private:
  static LRESULT CALLBACK HearHost(HWND pWindow, UINT pMessage, WPARAM pWParam, LPARAM pLParam, UINT_PTR,
                                   DWORD_PTR pList) {
    auto* const list = reinterpret_cast<TRawList*>(pList);
    if (pMessage == WM_NOTIFY && reinterpret_cast<const NMHDR*>(pLParam)->hwndFrom == list->fWindow) {
      list->Answer(reinterpret_cast<NMHDR*>(pLParam));
      return 0;
    }
    return CommonControlsApi().DefSubclassProc(pWindow, pMessage, pWParam, pLParam);
  }
  bool Answer(NMHDR* pHeader) {
    if (pHeader->code != LVN_GETDISPINFOW) return false;
    LVITEMW& item = reinterpret_cast<NMLVDISPINFOW*>(pHeader)->item;
    if ((item.mask & LVIF_TEXT) != 0) {
      const std::wstring& text = Texts()[static_cast<std::size_t>(item.iItem)];
      std::wcsncpy(item.pszText, text.c_str(), static_cast<std::size_t>(item.cchTextMax));
    }
    return true;
  }

  test::THostWindow fHost;
  HWND fWindow = nullptr;
};

struct TLists {
  TLists() : host(420, 340), ours(std::make_unique<TReadyList>()) {
    ours->SetMultiSelect(true);
    ours->SetViewStyle(TViewStyle::vsReport);
    ours->GetColumns().Add()->SetWidth(200);
    ours->SetBounds(0, 0, 400, 300);
    ours->CreateParented(host.Get());
    test::PumpMessages();
  }

  // Emptied before and after, unmeasured.
  double FillOurs(int pCount) {
    Empty();
    const double seconds = Seconds([&] {
      ours->Fill(pCount);
      ours->Update();
    });
    Empty();
    return seconds * 1e3;
  }
  double FillRaw(int pCount) {
    raw.Fill(0);
    test::PumpMessages();
    const double seconds = Seconds([&] { raw.Fill(pCount); });
    raw.Fill(0);
    test::PumpMessages();
    return seconds * 1e3;
  }
  void Refill(int pCount) {
    Empty();
    ours->Fill(pCount);
  }
  void Empty() {
    ours->Clear();
    ours->Update();
    test::PumpMessages();
  }

  test::THostWindow host;
  std::unique_ptr<TReadyList> ours;
  TRawList raw;
};

TLists& Lists() {
  static auto& lists = *new TLists; // windows go with the process
  return lists;
}

// What it takes to make the objects alone, without a window.
double MakeRows(int pCount) {
  TReadyList list;
  return Seconds([&] { list.Fill(pCount); }) * 1e3;
}

double SelectAllOurs() {
  TLists& lists = Lists();
  if (lists.ours->GetItems().GetCount() != Many) lists.Refill(Many);
  lists.ours->Update();
  return Seconds([&] {
           lists.ours->SelectAll();
           lists.ours->CatchUp();
           lists.ours->InvertSelection();
           lists.ours->CatchUp();
         }) *
         1e3;
}

double SelectAllRaw() {
  TRawList& raw = Lists().raw;
  raw.Fill(Many);
  return Seconds([&] {
           raw.Quietly([&] { raw.SetState(-1, true); });
           raw.Quietly([&] { raw.SetState(-1, false); });
         }) *
         1e3;
}

// Every second row is selected: nothing that one message could do.
double InvertOurs() {
  TLists& lists = Lists();
  if (lists.ours->GetItems().GetCount() != Several) lists.Refill(Several);
  {
    const ScopedRowUpdate update(lists.ours->GetItems());
    lists.ours->ClearSelection();
    for (int i = 0; i < Several; i += 2) lists.ours->GetItems().SetSelected(i, true);
  }
  lists.ours->Update();
  lists.ours->CatchUp();
  return Seconds([&] {
           lists.ours->InvertSelection();
           lists.ours->CatchUp();
         }) *
         1e3;
}

double InvertRawInOwnHost() {
  TRawList& raw = Lists().raw;
  raw.Fill(Several);
  raw.Quietly([&] {
    raw.SetState(-1, false);
    for (int i = 0; i < Several; i += 2) raw.SetState(i, true);
  });
  const double seconds = Seconds([&] {
    raw.Quietly([&] {
      for (int i = 0; i < Several; ++i) raw.SetState(i, i % 2 == 1);
    });
  });
  raw.SetState(-1, false);
  return seconds * 1e3;
}

double InvertRaw() {
  Lists().raw.SubclassHost(true);
  const double time = InvertRawInOwnHost();
  Lists().raw.SubclassHost(false);
  return time;
}

double SortOurs() {
  TReadyList list;
  list.Fill(Sorted);
  return Seconds([&] {
           list.CustomSort([](TListItem& first, TListItem& second, std::intptr_t) {
             const auto text = [](const TListItem& row) -> const std::wstring& {
               return Texts()[static_cast<std::size_t>(row.GetData())];
             };
             return text(first).compare(text(second));
           });
         }) *
         1e3;
}

double SortOursByKey() {
  TReadyList list;
  list.Fill(Sorted);
  return Seconds([&] {
           list.GetItems().SortByKey([](const TListItem& row) -> const std::wstring& {
             return Texts()[static_cast<std::size_t>(row.GetData())];
           });
         }) *
         1e3;
}

double SortKeys() {
  std::vector<std::wstring> keys(Texts().begin(), Texts().begin() + Sorted);
  return Seconds([&] { std::stable_sort(keys.begin(), keys.end()); }) * 1e3;
}

std::size_t MemoryInUse() {
  PROCESS_MEMORY_COUNTERS counters{};
  counters.cb = sizeof(counters);
  Require(K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)) != 0, "no memory counters");
  return counters.PagefileUsage;
}

double BytesOfRow() {
  const std::size_t before = MemoryInUse();
  TReadyList list;
  list.Fill(VeryMany);
  const std::size_t after = MemoryInUse();
  // What an earlier round left behind may serve again.
  const auto least = static_cast<double>(sizeof(TListItem) + sizeof(void*));
  return std::max(least, static_cast<double>(after) - static_cast<double>(before)) / (after > before ? VeryMany : 1);
}

} // namespace

std::vector<TFigure> RowFigures() {
  return {
      {"rows", "bytes", "bytes a row", &BytesOfRow, [] { return 200.0; }, 1.0},
      {"rows", "fill_and_paint_50000", "ms", [] { return Lists().FillOurs(Many); },
       [] { return Lists().FillRaw(Many); }, 1.5},
      {"rows", "fill_and_paint_1000000", "ms", [] { return Lists().FillOurs(VeryMany); },
       [] { return Lists().FillRaw(VeryMany) + MakeRows(VeryMany); }, 1.1},
      {"rows", "select_all_and_none_50000", "ms", &SelectAllOurs, &SelectAllRaw, 2.0},
      {"rows", "invert_every_second_10000", "ms", &InvertOurs, &InvertRaw, 2.0},
      {"rows", "invert_every_second_to_own_host", "ms", &InvertOurs, &InvertRawInOwnHost, 0},
      {"rows", "custom_sort_100000", "ms", &SortOurs, &SortKeys, 0},
      {"rows", "sort_by_key_100000", "ms", &SortOursByKey, &SortKeys, 1.5},
  };
}

} // namespace kiv::bench
