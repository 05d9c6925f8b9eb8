#include "Benches.h"

#include <core/ItemIdList.h>
#include <doubles/GuiDriver.h>
#include <doubles/ScopedTempFolder.h>
#include <folder_view/FolderView.h>
#include <platform/ShellApi.h>

#include <shobjidl.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace kiv::bench {

namespace {

constexpr int FileCount = 10'000;
constexpr int KindCount = 200;

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "kiv_bench: %s\n", what);
  std::abort();
}

/// A large folder, an empty one, and some in which each file is of a kind of its own.
class TFolders {
public:
  TFolders() {
    for (int i = 0; i < FileCount; ++i) fTemp.MakeFile(L"large\\file " + std::to_wstring(i) + L".txt", 10);
    fTemp.MakeFolder(L"empty");
    large = Resolved(L"large");
    empty = Resolved(L"empty");
  }

  ComPtr<IItemIdList> large;
  ComPtr<IItemIdList> empty;
  /// A new one each time, with extensions that nobody has asked for yet.
  ComPtr<IItemIdList> MakeKinds() {
    const std::wstring folder = L"kinds " + std::to_wstring(++fLastKinds);
    for (int i = 0; i < KindCount; ++i) {
      fTemp.MakeFile(folder + L"\\file.k" + std::to_wstring(fLastKinds) + L"x" + std::to_wstring(i), 10);
    }
    return Resolved(folder.c_str());
  }

private:
  ComPtr<IItemIdList> Resolved(const wchar_t* name) const {
    const ComPtr<IItemIdList> list = TKivItemIdList::Create(fTemp.PathOf(name));
    Require(!list->IsInvalid(), "a folder can't be found");
    return list;
  }

  test::ScopedTempFolder fTemp;
  int fLastKinds = 0;
};

TFolders& Folders() {
  static auto* const folders = new TFolders;
  static const bool registered = [] {
    std::atexit([] { delete folders; });
    return true;
  }();
  static_cast<void>(registered);
  return *folders;
}

test::THostWindow& Host() {
  static auto& host = *new test::THostWindow(900, 600);
  return host;
}

/// Ours.
class TOurs {
public:
  TOurs() {
    fView.SetBounds(0, 0, 880, 560);
    fView.CreateParented(Host().Get());
    test::PumpMessages();
  }
  sample::TFolderView& View() { return fView; }
  void Show(const ComPtr<IItemIdList>& folder, int count) {
    fView.GoTo(folder);
    const auto shown = [&] { return !fView.IsListing() && fView.GetItems().GetCount() == count; };
    Require(test::PumpUntil(shown), "the folder isn't shown");
    fView.CatchUp();
    UpdateWindow(fView.GetHandle());
  }

private:
  sample::TFolderView fView;
};

/// The platform's own view, in a window as plain.
class TPlatforms {
public:
  TPlatforms() {
    const RECT place{0, 0, 880, 560};
    FOLDERSETTINGS settings{FVM_DETAILS, 0};
    void* made = nullptr;
    Require(SUCCEEDED(CoCreateInstance(CLSID_ExplorerBrowser, nullptr, CLSCTX_INPROC_SERVER, IidOf<IExplorerBrowser>(),
                                       &made)),
            "the platform has no view of folders");
    fBrowser.Attach(static_cast<IExplorerBrowser*>(made));
    Require(SUCCEEDED(fBrowser->Initialize(Host().Get(), &place, &settings)), "the platform's view can't be shown");
  }
  ~TPlatforms() { fBrowser->Destroy(); }
  TPlatforms(const TPlatforms&) = delete;
  TPlatforms& operator=(const TPlatforms&) = delete;

  void Show(const ComPtr<IItemIdList>& folder, int count) {
    Require(SUCCEEDED(fBrowser->BrowseToIDList(folder->WindowsPointer(), SBSP_ABSOLUTE)), "it can't go there");
    Require(test::PumpUntil([&] {
              HWND list = nullptr;
              EnumChildWindows(
                  Host().Get(),
                  [](HWND window, LPARAM found) -> BOOL {
                    wchar_t name[40];
                    GetClassNameW(window, name, 40);
                    const bool right = std::wstring_view(name) == L"SysListView32" && !FindControl(window);
                    if (right) *reinterpret_cast<HWND*>(found) = window;
                    return !right;
                  },
                  reinterpret_cast<LPARAM>(&list));
              const bool shown = list && SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) == count;
              if (shown) UpdateWindow(list);
              return shown;
            }),
            "the platform's view doesn't show the folder");
  }

private:
  ComPtr<IExplorerBrowser> fBrowser;
};

// One browser goes from an empty folder to the large one.
template <typename T>
double Open() {
  T browser;
  browser.Show(Folders().empty, 0);
  return Seconds([&] { browser.Show(Folders().large, FileCount); }) * 1e3;
}

// And back, until the window takes input again.
double Leave() {
  TOurs ours;
  ours.Show(Folders().large, FileCount);
  return Seconds([&] {
           ours.View().GoTo(Folders().empty);
           ours.View().CatchUp();
         }) *
         1e3;
}

std::atomic<int> gQuestions{0};

// How often the platform is asked for icons and types until the first rows are painted, for each row that is seen.
double Questions() {
  static TShellApi platform;
  platform = ShellApi();
  ScopedShellApi api;
  api->SHGetFileInfoW = [](LPCWSTR path, DWORD attributes, SHFILEINFOW* info, UINT size, UINT flags) {
    return ++gQuestions, platform.SHGetFileInfoW(path, attributes, info, size, flags);
  };
  const ComPtr<IItemIdList> kinds = Folders().MakeKinds();
  TOurs ours;
  ours.Show(Folders().empty, 0);
  gQuestions = 0;
  ours.View().GoTo(kinds);
  Require(test::PumpUntil([&] { return ours.View().GetItems().GetCount() > 0; }), "the folder isn't shown");
  ours.View().CatchUp();
  UpdateWindow(ours.View().GetHandle());
  int seen = 0;
  while (ours.View().GetRow(seen)->DisplayRect(TDisplayCode::drBounds).top < ours.View().GetClientHeight()) ++seen;
  return static_cast<double>(gQuestions) / seen;
}

} // namespace

std::vector<TFigure> BrowserFigures() {
  return {
      {"browser", "open_10000", "ms", &Open<TOurs>, &Open<TPlatforms>, 0.9},
      {"browser", "leave_10000", "ms", &Leave, [] { return 50.0; }, 1},
      {"browser", "asked_before_first_paint", "per row seen", &Questions, [] { return 2.0; }, 1},
  };
}

} // namespace kiv::bench
