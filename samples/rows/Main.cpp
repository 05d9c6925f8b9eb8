// 100,000 rows of a made-up folder, each with an icon that a worker finds, in a program that knows nothing of the
// library but this list: its own window class, its own message loop.
//
//   rows [--count N] [--icons] [--rtl] [--dpi N] [--dark]

#include <framework/Application.h>
#include <graphics/Bitmap.h>
#include <graphics/ImageList.h>
#include <graphics/StyleServices.h>
#include <listview/CustomListView.h>
#include <platform/DpiAwareness.h>
#include <platform/Lifecycle.h>
#include <threading/Cancellation.h>
#include <threading/WorkProcedures.h>
#include <threading/WorkerPool.h>

#include <ole2.h>

#include <array>
#include <cwchar>
#include <memory>
#include <string>

namespace {

using namespace kiv;

struct TOptions {
  int count = 100'000;
  int dpi = 0;
  bool icons = false;
  bool rtl = false;
  bool dark = false;
};

constexpr int Kinds = 8;
constexpr std::array<const wchar_t*, Kinds> KindNames{L"Text",  L"Picture", L"Sound", L"Archive",
                                                      L"Table", L"Program", L"Font",  L"Letter"};
constexpr std::array<TColor, Kinds> KindColors{clNavy, clGreen, clPurple, clOlive, clTeal, clMaroon, clGray, clBlue};

// What stands in for asking a disk: some work that has the same outcome each time.
int KindOf(int number) {
  unsigned value = static_cast<unsigned>(number) + 1;
  for (int i = 0; i < 2000; ++i) value = value * 1664525U + 1013904223U;
  return static_cast<int>((value >> 8) % Kinds);
}

std::int64_t SizeOf(int number) {
  return (static_cast<std::int64_t>(number) * 7919) % 1'000'003;
}

class TRow : public TListItem {
public:
  explicit TRow(TListItems* pOwner) : TListItem(pOwner) {}
  // What is on its way to this row is withdrawn with it.
  ~TRow() override { fToken.Reset(); }

  int Number() const { return static_cast<int>(GetData()); }

  /// Has a worker find the icon, before all others if it shows.
  void FindIcon(bool pShows) {
    if (GetImageIndex() >= 0) return;
    auto kind = std::make_shared<int>(-1);
    const auto find = [kind, number = Number()] { *kind = KindOf(number); };
    const auto show = [this, kind] {
      SetImageIndex(*kind);
      if (GetExistingSubItems() != nullptr) GetSubItems().Put(1, KindNames[static_cast<std::size_t>(*kind)]);
    };
    TWorkerPool::GlobalInstance().AddWorkItem(TAsyncProcedure::Create(find, fToken, show),
                                              pShows ? TPriority::Highest : TPriority::Normal);
  }

  TStrings& GetSubItems() override {
    TStrings& texts = TListItem::GetSubItems();
    if (texts.GetCount() == 0) {
      const int kind = GetImageIndex();
      texts.SetStrings({std::to_wstring(SizeOf(Number())), kind < 0 ? L"" : KindNames[static_cast<std::size_t>(kind)]});
    }
    return texts;
  }

private:
  CancellationToken fToken;
};

void AddIcons(TImageList& images, int size) {
  images.SetSize(size, size);
  for (const TColor color : KindColors) {
    TBitmap bitmap(size, size);
    TCanvas& canvas = bitmap.GetCanvas();
    canvas.FillRect({0, 0, size, size}, clWhite);
    canvas.FillRect({size / 8, size / 8, size - size / 8, size - size / 8}, color);
    canvas.FillRect({size / 4, size / 4, size - size / 4, size / 2}, clWhite);
    bitmap.MakeOpaque();
    images.Add(bitmap);
  }
}

class TRows {
public:
  TRows(HWND pHost, const TOptions& pOptions) : fList(std::make_unique<TListView>()) {
    if (pOptions.rtl) fList->SetBiDiMode(TBiDiMode::bdRightToLeft);
    fList->SetMultiSelect(true);
    fList->SetRowSelect(true);
    fList->SetFullDrag(true);
    fList->SetHideSelection(false);
    fList->SetCheckBoxes(true);
    fList->SetOnCreateItemClass([](TPersistent*, TListItemClass& itemClass) {
      itemClass = [](TListItems& rows) { return std::make_unique<TRow>(&rows); };
    });
    fList->SetOnGetImageIndex([](TPersistent*, TListItem* item) { static_cast<TRow*>(item)->FindIcon(true); });
    fList->SetOnColumnClick([this](TPersistent*, TListColumn* column) { Sort(*column); });
    fList->SetParentWindow(pHost);
    if (pOptions.dpi > 0) fList->ScaleForPPI(pOptions.dpi);
    AddColumn(L"Name", 220, TColumnAlignment::taLeftJustify);
    AddColumn(L"Size", 90, TColumnAlignment::taRightJustify);
    AddColumn(L"Kind", 120, TColumnAlignment::taLeftJustify);
    fList->SetViewStyle(pOptions.icons ? TViewStyle::vsIcon : TViewStyle::vsReport);
    Fill(pOptions.count);
    fList->CreateParented(pHost);
    AddIcons(fSmall, fList->ScaledPixels(16));
    AddIcons(fLarge, fList->ScaledPixels(32));
    fList->SetSmallImages(&fSmall);
    fList->SetLargeImages(&fLarge);
  }

  TListView& List() { return *fList; }

private:
  void AddColumn(const wchar_t* pCaption, int pWidth, TColumnAlignment pAlignment) {
    TListColumn* const column = fList->GetColumns().Add();
    column->SetCaption(pCaption);
    column->SetWidth(fList->ScaledPixels(pWidth));
    column->SetAlignment(pAlignment);
  }

  void Fill(int pCount) {
    const ScopedRowUpdate update(fList->GetItems());
    fList->SetAllocBy(pCount);
    for (int i = 0; i < pCount; ++i) {
      TListItem* const row = fList->GetItems().Add();
      row->SetData(i);
      row->SetCaption(L"File number " + std::to_wstring(i));
      row->SetCut(i % 17 == 5);
      row->SetChecked(i % 3 == 1);
      row->SetCheckMixed(i % 5 == 3);
      row->SetCheckEnabled(i % 7 != 4);
      static_cast<TRow*>(row)->FindIcon(false);
    }
  }

  void Sort(TListColumn& pColumn) {
    const bool down = pColumn.GetSortMark() == TSortMark::Up;
    for (int i = 0; i < fList->GetColumns().GetCount(); ++i) fList->GetColumn(i)->SetSortMark(TSortMark::None);
    pColumn.SetSortMark(down ? TSortMark::Down : TSortMark::Up);
    const int index = pColumn.GetIndex();
    fList->GetItems().SortByKey(
        [index](const TListItem& row) -> std::int64_t {
          const auto number = static_cast<int>(row.GetData());
          if (index == 0) return number;
          return index == 1 ? SizeOf(number) : row.GetImageIndex();
        },
        down);
  }

  TImageList fSmall;
  TImageList fLarge;
  std::unique_ptr<TListView> fList;
};

std::unique_ptr<TRows> gRows;

LRESULT CALLBACK HostProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
  case WM_SIZE:
    if (gRows) gRows->List().SetBounds(0, 0, LOWORD(lParam), HIWORD(lParam));
    return 0;
  case WM_SETFOCUS:
    if (gRows) gRows->List().SetFocus();
    return 0;
  case WM_DESTROY:
    gRows.reset();
    PostQuitMessage(0);
    return 0;
  default:
    return DefWindowProcW(window, message, wParam, lParam);
  }
}

HWND MakeHost(HINSTANCE instance, int dpi) {
  WNDCLASSEXW info{};
  info.cbSize = sizeof(info);
  info.lpfnWndProc = &HostProc;
  info.hInstance = instance;
  info.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  info.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
  info.lpszClassName = L"RowsSample";
  RegisterClassExW(&info);
  return CreateWindowExW(0, info.lpszClassName, L"Rows", WS_OVERLAPPEDWINDOW, 40, 40, MulDiv(600, dpi, 96),
                         MulDiv(440, dpi, 96), nullptr, nullptr, instance, nullptr);
}

} // namespace

int WINAPI wWinMain(HINSTANCE pInstance, HINSTANCE, LPWSTR, int pShow) {
  TOptions options;
  const auto number = [](const wchar_t* text) { return static_cast<int>(std::wcstol(text, nullptr, 10)); };
  for (int i = 1; i < __argc; ++i) {
    const std::wstring argument = __wargv[i];
    if (argument == L"--icons") options.icons = true;
    if (argument == L"--rtl") options.rtl = true;
    if (argument == L"--dark") options.dark = true;
    if (argument == L"--count" && i + 1 < __argc) options.count = number(__wargv[++i]);
    if (argument == L"--dpi" && i + 1 < __argc) options.dpi = number(__wargv[++i]);
  }
  SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
  OleInitialize(nullptr);
  kiv::Application();
  if (options.dark) StyleServices().SetDarkMode(TDarkMode::dmDark);
  const HWND host = MakeHost(pInstance, options.dpi > 0 ? options.dpi : GetSystemDpi());
  gRows = std::make_unique<TRows>(host, options);
  ShowWindow(host, pShow);
  RECT client;
  GetClientRect(host, &client);
  gRows->List().SetBounds(0, 0, client.right, client.bottom);
  gRows->List().SetFocus();
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  kiv::Shutdown();
  OleUninitialize();
  return 0;
}
