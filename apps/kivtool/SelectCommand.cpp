#include "SelectCommand.h"

#include "ObjectText.h"

#include <coordination/SelectionList.h>
#include <core/FolderSizeSource.h>
#include <platform/Text.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace kivtool {

namespace {

using kiv::TKivSelectionList;

constexpr wchar_t Section[] = L"Selection";

struct TAction {
  const wchar_t* name;
  bool takesPaths;
};
constexpr TAction Actions[] = {{L"add", true},   {L"remove", true}, {L"state", true},
                               {L"list", false}, {L"files", false}, {L"totals", false}};

/// Measures on the spot: this program has nothing else to do meanwhile. Links aren't entered.
class TSizesOnTheSpot final : public kiv::IFolderSizeSource {
public:
  explicit TSizesOnTheSpot(TEnvironment& pEnvironment)
      : fEnvironment(pEnvironment), fDisk(kiv::SelectionDisk()), fOuter(kiv::SetFolderSizeSource(this)) {}
  ~TSizesOnTheSpot() override { kiv::SetFolderSizeSource(fOuter); }

  void Measure(std::vector<std::wstring> pPaths, bool, kiv::ComPtr<kiv::ICancellationIndicator>,
               std::function<void(const kiv::TFolderSize&)> pDone) override {
    for (const std::wstring& path : pPaths) pDone(SizeOf(path));
  }

private:
  kiv::TFolderSize SizeOf(const std::wstring& pFolder) const {
    kiv::TFolderSize size;
    std::vector<std::wstring> pending{pFolder};
    while (!pending.empty() && !fEnvironment.isStopped()) {
      const std::wstring folder = std::exchange(pending.back(), {});
      pending.pop_back();
      ++size.folderCount;
      const std::unique_ptr<kiv::IDiskSearch> search = fDisk.Search(folder);
      for (kiv::TDiskEntry entry; search && search->Next(entry);) {
        if (entry.isFolder && !entry.isLink) pending.push_back(folder + L'\\' + entry.name);
        if (!entry.isFolder) {
          size.size += entry.size;
          ++size.fileCount;
        }
      }
    }
    return size;
  }

  TEnvironment& fEnvironment;
  kiv::ISelectionDisk& fDisk;
  kiv::IFolderSizeSource* const fOuter;
};

const char* StateText(kiv::TKivSelectionState state) {
  switch (state) {
  case kiv::ssChecked:
    return "checked\t";
  case kiv::ssUnChecked:
    return "unchecked\t";
  case kiv::ssGrayed:
    return "grayed\t";
  default:
    return "disabled\t";
  }
}

/// One run of the command.
class TSelect {
public:
  TSelect(std::wstring pFile, TEnvironment& pEnvironment) : fFile(std::move(pFile)), fEnvironment(pEnvironment) {}

  int Run(const std::wstring& pAction, const std::vector<std::wstring>& pPaths) {
    Load(pAction == L"totals");
    if (pAction == L"list") {
      for (int i = 0; i < fList.GetCount(); ++i) Print("", fList.GetListItem(i));
    } else if (pAction == L"files") {
      PrintFiles();
    } else if (pAction == L"totals") {
      PrintTotals();
    } else {
      Change(pAction, pPaths);
    }
    if (!fGoesOn || fEnvironment.isStopped()) return Interrupted;
    return fFailed ? Failed : Succeeded;
  }

private:
  // What isn't there stays in the file: it may be back for the next call.
  void Load(bool pMeasure) {
    fList.SetCalculateSelectedFiles(pMeasure);
    fList.SetRemoveInvalidPaths(false);
    fList.LoadFromIniFile(fFile, Section);
    fList.SetRemoveInvalidPaths(true);
    fList.SetOnInvalidPath([this](kiv::TPersistent*, const std::wstring& path) {
      fFailed = true;
      fEnvironment.err("kivtool: there is no \"" + Printable(Excerpt(path)) + "\"\n");
    });
  }

  void Change(const std::wstring& pAction, const std::vector<std::wstring>& pPaths) {
    std::vector<std::wstring> paths;
    std::transform(pPaths.begin(), pPaths.end(), std::back_inserter(paths), fEnvironment.toFullPath);
    for (const std::wstring& path : paths) {
      if (pAction == L"add") fList.AddPathToSelection(path);
      if (pAction == L"remove") fList.RemovePathFromSelection(path);
    }
    if (pAction != L"state") fList.SaveToIniFile(fFile, Section);
    for (const std::wstring& path : paths) Print(StateText(fList.IsPathSelected(path)), path);
  }

  void PrintFiles() {
    while (fGoesOn && !fEnvironment.isStopped()) {
      const std::wstring file = fList.FindNext();
      if (file.empty()) return;
      Print("", file);
    }
  }

  void PrintTotals() {
    const auto line = [](std::int64_t number, const char* what) {
      return Grouped(static_cast<std::uint64_t>(number)) + ' ' + what + (number == 1 ? "" : "s");
    };
    fGoesOn = fEnvironment.out(line(fList.GetFileCount(), "file") + ", " + line(fList.GetFolderCount(), "folder") +
                               ", " + line(fList.GetSize(), "byte") + '\n');
  }

  void Print(const char* pWhat, const std::wstring& pPath) {
    fGoesOn = fGoesOn && fEnvironment.out(pWhat + Printable(pPath) + '\n');
  }

  const std::wstring fFile;
  TEnvironment& fEnvironment;
  TSizesOnTheSpot fSizes{fEnvironment};
  TKivSelectionList fList;
  bool fGoesOn = true;
  bool fFailed = false;
};

} // namespace

std::string SelectActionNames() {
  std::string names;
  for (const TAction& action : Actions) names += (names.empty() ? "" : ", ") + kiv::ToUtf8(action.name);
  return names;
}

bool IsSelectAction(const std::wstring& pAction, std::size_t pPaths) {
  return std::any_of(std::begin(Actions), std::end(Actions), [&](const TAction& action) {
    return action.name == pAction && action.takesPaths == (pPaths > 0);
  });
}

int RunSelect(const std::wstring& pFile, const std::wstring& pAction, const std::vector<std::wstring>& pPaths,
              TEnvironment& pEnvironment) {
  return TSelect(pEnvironment.toFullPath(pFile), pEnvironment).Run(pAction, pPaths);
}

} // namespace kivtool
