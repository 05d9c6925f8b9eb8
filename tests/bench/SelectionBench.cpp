#include "Benches.h"

#include <coordination/ShellLink.h>
#include <doubles/ScopedTempFolder.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <core/FolderFunctions.h>
#else
#include <doubles/PlainItemIdList.h>
#endif

namespace kiv::bench {

namespace {

#if !defined(_WIN32)

constexpr int Folders = 100;
constexpr int FilesInEach = 1000;

std::wstring FolderPath(int folder) {
  return L"C:\\Users\\somebody\\Documents\\" + std::to_wstring(1000 + folder);
}
std::wstring FilePath(int folder, int file) {
  return FolderPath(folder) + L"\\a picture " + std::to_wstring(1000 + file) + L".jpeg";
}

/// As many folders with as many files each, and one more that is never selected. Answers at once.
class TBenchDisk : public ISelectionDisk {
public:
  bool IsDriveReady(const std::wstring&) override { return true; }
  TDiskObject ObjectAt(const std::wstring& pPath) override {
    if (pPath.ends_with(L".lnk")) return TDiskObject::Nothing;
    return pPath.ends_with(L".jpeg") ? TDiskObject::File : TDiskObject::Folder;
  }
  std::int64_t FileSize(const std::wstring&) override { return 1; }
  std::unique_ptr<IDiskSearch> Search(const std::wstring&) override { return std::make_unique<TSearch>(); }
  std::wstring LinkTarget(const std::wstring&) override { return {}; }
  ComPtr<IItemIdList> MakeItemIdList(const std::wstring&) override { return {}; }

private:
  class TSearch : public IDiskSearch {
  public:
    bool Next(TDiskEntry& pEntry) override {
      pEntry.name = L"a picture " + std::to_wstring(1000 + fStep) + L".jpeg";
      if (fStep == FilesInEach) pEntry.name = L"z.jpeg";
      return fStep++ <= FilesInEach;
    }

  private:
    int fStep = 0;
  };
};

TBenchDisk& Disk() {
  static TBenchDisk disk;
  return disk;
}

std::vector<std::wstring> ManyPaths() {
  std::vector<std::wstring> paths;
  for (int folder = 0; folder < Folders; ++folder) {
    for (int file = 0; file < FilesInEach; ++file) paths.push_back(FilePath(folder, file));
  }
  return paths;
}

// Microseconds that the state of one path takes.
double StateTime(TSelectionStates& pStates, const std::wstring& pEntry, TKivSelectionState pExpected) {
  constexpr int rounds = 5000;
  bool sub = false;
  const double seconds = Seconds([&] {
    for (int i = 0; i < rounds; ++i) {
      if (pStates.IsItemSelected(pEntry, sub) != pExpected) std::abort();
    }
  });
  return seconds * 1e6 / rounds;
}

TSelectionStates& ManyStates() {
  static TSelectionStates states(Disk());
  if (states.Entries().IsEmpty()) {
    states.Entries().InsertAll(ManyPaths());
    states.Entries().Insert(L"C:\\Windows\\*");
  }
  return states;
}

double CoveredTime() {
  return StateTime(ManyStates(), L"C:\\Windows\\System32\\drivers\\etc\\hosts", ssChecked);
}

double UncoveredTime() {
  return StateTime(ManyStates(), FolderPath(50) + L"\\not this one.jpeg", ssUnChecked) / 1000;
}

double UncoveredOfHundredTime() {
  static TSelectionStates states(Disk());
  if (states.Entries().IsEmpty()) {
    for (int i = 0; i < 100; ++i) states.Entries().Insert(FilePath(i, i));
  }
  return StateTime(states, FolderPath(50) + L"\\not this one.jpeg", ssUnChecked);
}

TKivSelectionList& ManyList() {
  static std::unique_ptr<TKivSelectionList> list = [] {
    const ScopedSelectionDisk scope(Disk());
    auto made = std::make_unique<TKivSelectionList>();
    made->SetPaths(ManyPaths());
    return made;
  }();
  if (list->GetCount() != Folders * FilesInEach) std::abort();
  return *list;
}

std::wstring IniFile() {
  static const test::ScopedTempFolder folder;
  return folder.PathOf(L"many.ini");
}

double SaveTime() {
  TKivSelectionList& list = ManyList();
  return Seconds([&] { list.SaveToIniFile(IniFile(), L"s"); });
}

double LoadTime() {
  ManyList().SaveToIniFile(IniFile(), L"s");
  return Seconds([] { ManyList().LoadFromIniFile(IniFile(), L"s"); });
}

/// A control that does nothing.
class TIdleControl : public IKivShellControl {
public:
  explicit TIdleControl(TKivShellLink& pLink) : fLink(pLink) { fLink.RegisterShellControl(this); }
  virtual ~TIdleControl() { fLink.UnregisterShellControl(this); }
  TIdleControl(const TIdleControl&) = delete;
  TIdleControl& operator=(const TIdleControl&) = delete;
  void SetShellLink(TKivShellLink*) override {}
  TKivShellLink* GetShellLink() override { return nullptr; }
  void PathChanged(IItemIdList*) override {}
  void FileChanged(IItemIdList*, IItemIdList*) override {}
  void SelectAll() override {}
  void Refresh(TRefreshLevel, IItemIdList*) override {}
  bool GoUp() override { return false; }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** pObject) override {
    *pObject = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(-1); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(-1); }

private:
  TKivShellLink& fLink;
};

double PathChangedTime() {
  constexpr int rounds = 1000;
  TKivShellLink link;
  std::vector<std::unique_ptr<TIdleControl>> controls;
  for (int i = 0; i < 20; ++i) controls.push_back(std::make_unique<TIdleControl>(link));
  const ComPtr<IItemIdList> folders[] = {Make<test::PlainItemIdList>(L"C:\\one"),
                                         Make<test::PlainItemIdList>(L"C:\\two")};
  const double seconds = Seconds([&] {
    for (int i = 0; i < rounds; ++i) link.PathChanged(controls[7].get(), folders[i % 2].Get());
  });
  if (link.GetCount() != rounds) std::abort();
  return seconds * 1e6 / rounds;
}

#else

/// A folder of many files on the disk, under a selection of its whole drive.
struct TRealFolder {
  static constexpr int Files = 10'000;

  TRealFolder() {
    for (int i = 0; i < Files; ++i) temp.MakeFile(L"file " + std::to_wstring(10'000 + i) + L".txt");
    file = temp.PathOf(L"file 15000.txt");
    list.AddPathToSelection(file.substr(0, 3));
  }
  test::ScopedTempFolder temp;
  std::wstring file;
  TKivSelectionList list;
};

TRealFolder& RealFolder() {
  static TRealFolder folder;
  return folder;
}

double UntickTime() {
  TRealFolder& folder = RealFolder();
  const double seconds = Seconds([&] { folder.list.RemovePathFromSelection(folder.file); });
  if (folder.list.GetCount() < TRealFolder::Files - 1) std::abort();
  folder.list.AddPathToSelection(folder.file);
  return seconds * 1e3;
}

double TickTime() {
  TRealFolder& folder = RealFolder();
  folder.list.RemovePathFromSelection(folder.file);
  const double seconds = Seconds([&] { folder.list.AddPathToSelection(folder.file); });
  if (folder.list.GetCount() != 1) std::abort();
  return seconds * 1e3;
}

double ListingTime() {
  int count = 0;
  const double seconds = Seconds([&] {
    WIN32_FIND_DATAW data;
    const TUniqueFind find = FindFirst(RealFolder().temp.Path() + L"\\*", data);
    do ++count;
    while (FindNextFileW(find.Get(), &data));
  });
  if (count < TRealFolder::Files) std::abort();
  return seconds * 1e3;
}

constexpr int Questions = 200;

double PathSelectedTime() {
  TRealFolder& folder = RealFolder();
  const double seconds = Seconds([&] {
    for (int i = 0; i < Questions; ++i) {
      if (folder.list.IsPathSelected(folder.file) != ssChecked) std::abort();
    }
  });
  return seconds * 1e6 / Questions;
}

double PlatformCallsTime() {
  const std::wstring file = RealFolder().file;
  const double seconds = Seconds([&] {
    for (int i = 0; i < Questions; ++i) {
      ULARGE_INTEGER free;
      ULARGE_INTEGER total;
      GetDiskFreeSpaceExW(file.substr(0, 3).c_str(), &free, &total, nullptr);
      if (GetFileAttributesW((file + L"\\target.lnk").c_str()) != INVALID_FILE_ATTRIBUTES) std::abort();
      if (GetFileAttributesW(file.c_str()) == INVALID_FILE_ATTRIBUTES) std::abort();
    }
  });
  return seconds * 1e6 / Questions;
}

#endif

} // namespace

std::vector<TFigure> SelectionFigures() {
#if defined(_WIN32)
  return {
      {"selection", "path_selected", "us", &PathSelectedTime, &PlatformCallsTime, 1.1},
      {"selection", "untick_in_10000", "ms", &UntickTime, &ListingTime, 1.3},
      {"selection", "tick_in_10000", "ms", &TickTime, &ListingTime, 1.3},
  };
#else
  return {
      {"selection", "covered_by_one_of_100000", "us", &CoveredTime, [] { return 2.0; }, 1},
      {"selection", "not_in_100000", "ms", &UncoveredTime, [] { return 5.0; }, 1},
      {"selection", "not_in_100", "us", &UncoveredOfHundredTime, [] { return 5.0; }, 1},
      {"selection", "save_100000", "s", &SaveTime, [] { return 0.5; }, 1},
      {"selection", "load_100000", "s", &LoadTime, [] { return 0.5; }, 1},
      {"selection", "path_changed_20_controls", "us", &PathChangedTime, [] { return 20.0; }, 1},
  };
#endif
}

} // namespace kiv::bench
