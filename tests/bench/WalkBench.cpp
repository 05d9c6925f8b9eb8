#include "Benches.h"

#include <core/FolderEnumerator.h>
#include <core/ItemIdList.h>
#include <core/ObjectFacts.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/ShellApi.h>
#include <platform/Threads.h>
#include <walker/Pathmere.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

namespace kiv::bench {

namespace {

constexpr int FileCount = 10'000;

// A folder of 10,000 files, made when the first figure wants it.
class TFolder {
public:
  TFolder() {
    for (int i = 0; i < FileCount; ++i) fTemp.MakeFile(L"file " + std::to_wstring(i) + L".txt", 10);
    PIDLIST_ABSOLUTE raw = nullptr;
    SHParseDisplayName(fTemp.Path().c_str(), nullptr, &raw, 0, nullptr);
    const TUniqueItemIdList list(raw);
    void* found = nullptr;
    Desktop()->BindToObject(list.Get(), nullptr, IidOf<IShellFolder>(), &found);
    fFolder.Attach(static_cast<IShellFolder*>(found));
  }
  const std::wstring& Path() const { return fTemp.Path(); }
  const ComPtr<IShellFolder>& Folder() const { return fFolder; }

private:
  test::ScopedTempFolder fTemp;
  ComPtr<IShellFolder> fFolder;
};

void Require(int count) {
  if (count == FileCount) return;
  std::fprintf(stderr, "kiv_bench: %d objects instead of %d\n", count, FileCount);
  std::abort();
}

double PerFile(const std::function<int()>& walk) {
  int count = 0;
  const double seconds = Seconds([&] { count = walk(); });
  Require(count);
  return seconds * 1e6 / FileCount;
}

int BareEnumeration(IShellFolder* folder) {
  ComPtr<IEnumIDList> objects;
  int count = 0;
  if (folder->EnumObjects(nullptr, TFolderEnumerator::AllObjects, &objects) != S_OK) return 0;
  PITEMID_CHILD item = nullptr;
  while (objects->Next(1, &item, nullptr) == S_OK) {
    ++count;
    CoTaskMemFree(item);
  }
  return count;
}

int Enumerate(const ComPtr<IShellFolder>& folder) {
  TFolderEnumerator enumerator(folder);
  TUniqueItemIdList item;
  int count = 0;
  while (enumerator.Next(item) == TFolderStep::Object) ++count;
  return count;
}

int Walk(TPathmere& walker) {
  int count = 0;
  while (walker.Next()) ++count;
  return count;
}

int BareFind(const std::wstring& path) {
  WIN32_FIND_DATAW data;
  const TUniqueFind find(FindFirstFileW((path + L"\\*").c_str(), &data));
  int count = 0;
  do {
    count += data.cFileName[0] != L'.' && data.nFileSizeLow == 10 && data.ftLastWriteTime.dwHighDateTime != 0 ? 1 : 0;
  } while (FindNextFileW(find.Get(), &data));
  return count;
}

int EnumerateFacts(const TFolder& folder, TFactsPrecision precision) {
  TFolderEnumerator enumerator(folder.Folder());
  TObjectFacts facts(folder.Folder(), folder.Path(), precision);
  TUniqueItemIdList item;
  TFolderObject object;
  int count = 0;
  while (enumerator.Next(item) == TFolderStep::Object) {
    facts.Read(item.Get(), object);
    const bool complete = !object.name.empty() && object.flags.Contains(TObjectFlag::FileSystem) && object.size == 10 &&
                          object.changed != 0;
    count += complete ? 1 : 0;
  }
  return count;
}

std::wstring FilePath(const TFolder& folder, int i) {
  return folder.Path() + L"\\file " + std::to_wstring(i) + L".txt";
}

// From the paths of all files to their raw lists.
int Resolve(const TFolder& folder) {
  int count = 0;
  for (int i = 0; i < FileCount; ++i) count += TKivItemIdList::Parse(FilePath(folder, i))->WindowsPointer() ? 1 : 0;
  return count;
}

// What the platform takes for one of them; for all of them it would take minutes.
double ParseSome(const TFolder& folder) {
  constexpr int step = 50;
  int count = 0;
  const double seconds = Seconds([&] {
    for (int i = 0; i < FileCount; i += step) {
      PIDLIST_ABSOLUTE raw = nullptr;
      SHParseDisplayName(FilePath(folder, i).c_str(), nullptr, &raw, 0, nullptr);
      count += TUniqueItemIdList(raw) ? step : 0;
    }
  });
  Require(count);
  return seconds * 1e6 * step / FileCount;
}

std::atomic<int> gQuestions{0};

// How often the platform is asked for managers, known folders or shell items, to tell of all files what they are.
double Classify(const TFolder& folder) {
  static TShellApi platform;
  platform = ShellApi();
  ScopedShellApi api;
  api->CoCreateInstance = [](REFCLSID id, IUnknown* outer, DWORD context, REFIID iid, void** made) {
    return ++gQuestions, platform.CoCreateInstance(id, outer, context, iid, made);
  };
  api->SHGetSpecialFolderLocation = [](HWND window, int folder, PIDLIST_ABSOLUTE* list) {
    return ++gQuestions, platform.SHGetSpecialFolderLocation(window, folder, list);
  };
  api->SHGetKnownFolderIDList = [](REFKNOWNFOLDERID id, DWORD flags, HANDLE user, PIDLIST_ABSOLUTE* list) {
    return ++gQuestions, platform.SHGetKnownFolderIDList(id, flags, user, list);
  };
  api->SHCreateShellItem = [](PCIDLIST_ABSOLUTE parent, IShellFolder* in, PCUITEMID_CHILD list, IShellItem** item) {
    return ++gQuestions, platform.SHCreateShellItem(parent, in, list, item);
  };
  gQuestions = 0;
  int count = 0;
  std::thread([&] {
    Require(EnterApartment(false) ? FileCount : 0);
    for (int i = 0; i < FileCount; ++i) {
      count += TKivItemIdList::Create(FilePath(folder, i))->SpecialFolder() == SF_FILESYSTEMFOLDER ? 1 : 0;
    }
    LeaveApartment();
  }).join();
  Require(count);
  return gQuestions;
}

} // namespace

std::vector<TFigure> WalkFigures() {
  const auto shared = std::make_shared<std::unique_ptr<TFolder>>();
  const auto folder = [shared]() -> TFolder& {
    if (!*shared) *shared = std::make_unique<TFolder>();
    return **shared;
  };
  const auto bare = [folder] { return PerFile([&] { return BareEnumeration(folder().Folder().Get()); }); };
  const auto find = [folder] { return PerFile([&] { return BareFind(folder().Path()); }); };
  const auto facts = [folder](TFactsPrecision precision) {
    return [folder, precision] { return PerFile([&] { return EnumerateFacts(folder(), precision); }); };
  };
  // The walker on the folder, as an application has it: made once, and told its rules.
  const auto walker = [folder](const wchar_t* filter, bool file_system) {
    const auto made = std::make_shared<std::unique_ptr<TPathmere>>();
    return [=] {
      if (!*made) {
        *made = std::make_unique<TPathmere>();
        (*made)->SetDirectory(folder().Path());
        (*made)->SetFilter(filter);
        (*made)->SetFileSystemOnly(file_system);
      }
      return PerFile([&] { return Walk(**made); });
    };
  };
  return {
      {"walk", "next", "us/file", walker(L"", false), bare, 1.15},
      {"walk", "next_filter", "us/file", walker(L"*.doc;*.txt", false), bare, 1.6},
      {"walk", "next_filesystem", "us/file", walker(L"", true), bare, 1.6},
      {"walk", "walker_bytes", "bytes", [] { return double{sizeof(TPathmere)}; }, [] { return 1024.0; }, 1.0},
      {"walk", "resolve", "us/path", [folder] { return PerFile([&] { return Resolve(folder()); }); },
       [folder] { return ParseSome(folder()); }, 0.5},
      {"walk", "special_folder_questions", "times", [folder] { return Classify(folder()); }, {}, 0},
      {"walk", "step", "us/file", [folder] { return PerFile([&] { return Enumerate(folder().Folder()); }); }, bare,
       1.15},
      {"walk", "facts_listed", "us/file", facts(TFactsPrecision::Listed), find, 2.0},
      {"walk", "facts_exact", "us/file", facts(TFactsPrecision::Exact), find, 0},
  };
}

} // namespace kiv::bench
