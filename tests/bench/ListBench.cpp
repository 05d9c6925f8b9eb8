#include "Allocations.h"
#include "Benches.h"

#include <core/ItemIdList.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/ShellApi.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace kiv::bench {

namespace {

constexpr int ListCount = 1'000'000;
constexpr int ParseCount = 200;
constexpr int QueryCount = 100'000;
constexpr wchar_t SamplePath[] = LR"(C:\users\somebody\Documents\Projects\a file of the usual length.txt)";

// A file to be parsed, made when the first figure wants it.
class TFile {
public:
  TFile() : fPath(fTemp.MakeFile(LR"(a folder\some file.txt)", 10)) {}
  const std::wstring& Path() const { return fPath; }

private:
  test::ScopedTempFolder fTemp;
  std::wstring fPath;
};

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "kiv_bench: %s\n", what);
  std::abort();
}

double MakeLists() {
  const std::wstring path = SamplePath;
  return Seconds([&] {
           for (int i = 0; i < ListCount; ++i) {
             const auto list = TKivItemIdList::Create(path);
             Require(!list->IsResolved(), "a list was resolved");
           }
         }) *
         1e9 / ListCount;
}

double ListAllocations() {
  const std::wstring path = SamplePath;
  const long before = AllocationCount();
  const auto list = TKivItemIdList::Create(path);
  Require(!list->IsResolved(), "a list was resolved");
  return static_cast<double>(AllocationCount() - before);
}

double MakeTexts() {
  const std::wstring path = SamplePath;
  return Seconds([&] {
           for (int i = 0; i < ListCount; ++i) {
             const auto text = std::make_shared<std::wstring>(path);
             Require(text->size() == path.size(), "a text is short");
           }
         }) *
         1e9 / ListCount;
}

double ResolveLists(const std::wstring& path) {
  return Seconds([&] {
           for (int i = 0; i < ParseCount; ++i) {
             Require(TKivItemIdList::Create(path)->WindowsPointer() != nullptr, "a path was not parsed");
           }
         }) *
         1e6 / ParseCount;
}

double ParseNames(const std::wstring& path) {
  const auto parse = ShellApi().SHParseDisplayName;
  return Seconds([&] {
           for (int i = 0; i < ParseCount; ++i) {
             PIDLIST_ABSOLUTE raw = nullptr;
             parse(path.c_str(), nullptr, &raw, 0, nullptr);
             const TUniqueItemIdList list(raw);
             Require(list.Get() != nullptr, "a path was not parsed");
           }
         }) *
         1e6 / ParseCount;
}

// By the names that are shown, as users type them: the folder of the path before is remembered.
double ParseShownNames(const std::wstring& path) {
  const std::wstring drives = TKivItemIdList::CreateForSpecialFolder(SF_DRIVES, true)->DisplayName(dnfNormal);
  const std::wstring drive = TKivItemIdList::Create(path.substr(0, 3))->DisplayName(dnfInFolder);
  const std::wstring text = drives + L'\\' + drive + path.substr(2);
  return Seconds([&] {
           for (int i = 0; i < ParseCount; ++i) {
             Require(!TKivItemIdList::Parse(text)->IsInvalid(), "a text was not parsed");
           }
         }) *
         1e6 / ParseCount;
}

double ClassifyFiles(const std::wstring& path) {
  const auto list = TKivItemIdList::Create(path);
  list->Path();
  return Seconds([&] {
           for (int i = 0; i < ParseCount; ++i) {
             Require(list->TestForSpecialFolder({}) == SF_FILESYSTEMFOLDER, "a file is a special folder");
           }
         }) *
         1e6 / ParseCount;
}

double AskAttributes(const std::wstring& path) {
  return Seconds([&] {
           for (int i = 0; i < ParseCount; ++i) {
             Require(GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES, "a file has gone");
           }
         }) *
         1e6 / ParseCount;
}

double QueryResolved(const std::wstring& path) {
  const auto list = TKivItemIdList::Create(path);
  list->SpecialFolder();
  return Seconds([&] {
           for (int i = 0; i < QueryCount; ++i) {
             const bool holds = list->Path().size() == path.size() && list->Depth() > 2 &&
                                list->SpecialFolder() == SF_FILESYSTEMFOLDER;
             Require(holds, "a list tells another story");
           }
         }) *
         1e9 / QueryCount;
}

double CopyText(const std::wstring& path) {
  return Seconds([&] {
           for (int i = 0; i < QueryCount; ++i) {
             const std::wstring copy(path);
             Require(copy.c_str()[0] != 0, "a copy is empty");
           }
         }) *
         1e9 / QueryCount;
}

} // namespace

std::vector<TFigure> ListFigures() {
  const auto shared = std::make_shared<std::unique_ptr<TFile>>();
  const auto path = [shared]() -> const std::wstring& {
    if (!*shared) *shared = std::make_unique<TFile>();
    return (*shared)->Path();
  };
  return {
      {"lists", "make", "ns/list", &MakeLists, &MakeTexts, 3.0},
      {"lists", "make_allocations", "times a list", &ListAllocations, [] { return 1.0; }, 2.0},
      {"lists", "resolve", "us/path", [path] { return ResolveLists(path()); }, [path] { return ParseNames(path()); },
       1.10},
      {"lists", "parse_shown_names", "us/text", [path] { return ParseShownNames(path()); },
       [path] { return ParseNames(path()); }, 0},
      {"lists", "classify_file", "us/file", [path] { return ClassifyFiles(path()); },
       [path] { return AskAttributes(path()); }, 0},
      {"lists", "resolved_path_depth_folder", "ns", [path] { return QueryResolved(path()); },
       [path] { return CopyText(path()); }, 0},
  };
}

} // namespace kiv::bench
