#include "SelectionFixture.h"

#include <core/PathList.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/TextCompare.h>
#include <platform/Text.h>
#include <platform/Threads.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace kiv::test {
namespace {

struct TNode {
  std::wstring name;
  bool isFolder = false;
  std::size_t parent = 0; // a drive's is itself
  std::vector<std::size_t> children;
  bool selected = false; // of a file, and of a folder without children
};

struct TStep {
  enum TKind { Add, Remove, RemoveMany, Rename, Clear, SaveAndLoad } kind;
  std::size_t node;
  int form; // how the path is written
  std::wstring name;
};

constexpr const wchar_t* Names[] = {L"a", L"a b",   L"a.b",    L"a-b", L"A1", L"!a",
                                    L"b", L"B.TXT", L"\x00E4", L"a~1", L"(a)"};

/// A tree with a Boolean for each file, beside the selection of the same tree on a disk.
class TTrial {
public:
  explicit TTrial(unsigned pTreeSeed) {
    std::mt19937 random(pTreeSeed);
    for (const wchar_t letter : {L'C', L'D', L'S'}) {
      fFiles.AddDrive(letter);
      fNodes.push_back(
          {letter == L'S' ? std::wstring(L"\\\\srv\\share") : std::wstring(1, letter) + L':', true, fNodes.size(), {}});
    }
    fDisk.ShareDrive(L'S', L"\\\\srv\\share");
    const std::size_t count = CountOf(pTreeSeed);
    while (fNodes.size() < count) {
      const std::size_t parent = random() % fNodes.size();
      const std::wstring name = Names[random() % std::size(Names)];
      if (!fNodes[parent].isFolder || HasChild(parent, name)) continue;
      fNodes.push_back({name, random() % 2 == 0, parent, {}});
      fNodes[parent].children.push_back(fNodes.size() - 1);
      const std::wstring path = DiskPath(fNodes.size() - 1);
      fNodes.back().isFolder ? fFiles.MakeFolder(path) : fFiles.MakeFile(path, 1);
    }
    ScopedSelectionDisk scope(fDisk);
    fList = std::make_unique<TKivSelectionList>();
  }

  /// Odd seeds make the larger trees, and shorter sequences.
  static std::size_t CountOf(unsigned pTreeSeed) { return pTreeSeed % 2 == 0 ? 4 + pTreeSeed % 5 : 8 + pTreeSeed % 6; }

  void Do(const TStep& pStep) {
    const std::wstring path = Written(pStep.node, pStep.form);
    switch (pStep.kind) {
    case TStep::Add:
      fList->AddPathToSelection(path);
      Select(pStep.node, true);
      break;
    case TStep::Remove:
      fList->RemovePathFromSelection(path);
      Select(pStep.node, false);
      break;
    case TStep::RemoveMany: { // it, and those that come behind it
      std::vector<std::wstring> paths;
      for (std::size_t i = pStep.node; i < std::min(pStep.node + 4, fNodes.size()); ++i) {
        paths.push_back(Written(i, pStep.form));
        Select(i, false);
      }
      fList->RemovePaths(std::move(paths));
      break;
    }
    case TStep::Rename: {
      TNode& node = fNodes[pStep.node];
      if (node.parent == pStep.node || HasChild(node.parent, pStep.name)) break;
      const std::wstring old_path = Path(pStep.node);
      fFiles.Rename(DiskPath(pStep.node), pStep.name);
      node.name = pStep.name;
      fList->PathWasRenamed(old_path, Path(pStep.node));
      break;
    }
    case TStep::Clear:
      fList->Clear();
      for (std::size_t i = 0; i < fNodes.size(); ++i) fNodes[i].selected = false;
      break;
    case TStep::SaveAndLoad:
      fList->SaveToIniFile(IniFile(), L"s");
      fList->LoadFromIniFile(IniFile(), L"s");
      break;
    }
  }

  /// What is wrong; nothing if all is as the model says.
  std::wstring Complaint() {
    for (std::size_t i = 0; i < fNodes.size(); ++i) {
      bool sub = false;
      const TKivSelectionState state = fList->PathSelected(Path(i), sub);
      if (state != State(i)) {
        return Path(i) + L" is " + std::to_wstring(static_cast<int>(state)) + L", not " +
               std::to_wstring(static_cast<int>(State(i)));
      }
      const bool parent_selected = fNodes[i].parent != i && State(fNodes[i].parent) == ssChecked;
      if (sub != (state == ssChecked && parent_selected)) return Path(i) + L" has or lacks an entry of its own";
    }
    for (int i = 0; i < fList->GetCount(); ++i) {
      const std::wstring entry = fList->GetListItem(i);
      if (i > 0 && CompareText(fList->GetListItem(i - 1), entry) >= 0) return L"The order at " + entry;
      for (int j = 0; entry.ends_with(L'*') && j < fList->GetCount(); ++j) {
        const std::wstring folder = entry.substr(0, entry.size() - 1);
        if (j != i && TKivPathList::IsSubPathOf(folder, fList->GetListItem(j))) return entry + L" covers another entry";
      }
    }
    std::multiset<std::wstring> walked;
    std::multiset<std::wstring> files;
    fList->ResetFindNext();
    for (std::wstring file = fList->FindNext(); !file.empty(); file = fList->FindNext()) walked.insert(FoldName(file));
    for (std::size_t i = 0; i < fNodes.size(); ++i) {
      if (!fNodes[i].isFolder && fNodes[i].selected) files.insert(FoldName(Path(i)));
    }
    return walked == files ? L"" : L"The walk over the files";
  }

  std::wstring Describe(const TStep& pStep) const {
    static constexpr const wchar_t* kinds[] = {L"add",    L"remove", L"remove from",
                                               L"rename", L"clear",  L"save and load"};
    return std::wstring(kinds[pStep.kind]) + L" " + Written(pStep.node, pStep.form) + L" " + pStep.name + L"\n";
  }
  std::wstring DescribeTree() const {
    std::wstring text;
    for (std::size_t i = 0; i < fNodes.size(); ++i) text += Path(i) + (fNodes[i].isFolder ? L"\\\n" : L"\n");
    return text;
  }

private:
  static std::wstring IniFile() {
    static const ScopedTempFolder folder;
    return folder.PathOf(L"model.ini");
  }

  bool HasChild(std::size_t pParent, const std::wstring& pName) const {
    return std::any_of(fNodes[pParent].children.begin(), fNodes[pParent].children.end(),
                       [&](std::size_t child) { return FoldName(fNodes[child].name) == FoldName(pName); });
  }
  std::wstring Path(std::size_t pNode) const {
    const TNode& node = fNodes[pNode];
    return node.parent == pNode ? node.name : Path(node.parent) + L"\\" + node.name;
  }
  std::wstring DiskPath(std::size_t pNode) const {
    const std::wstring path = Path(pNode);
    return path.starts_with(L"\\\\") ? L"S:" + path.substr(std::size(L"\\\\srv\\share") - 1) : path;
  }
  std::wstring Written(std::size_t pNode, int pForm) const {
    std::wstring path = Path(pNode);
    if (pForm % 2 == 1)
      std::transform(path.begin(), path.end(), path.begin(),
                     [](wchar_t c) { return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - 32) : c; });
    if (fNodes[pNode].isFolder && pForm / 2 == 1) path += L"\\";
    if (fNodes[pNode].isFolder && pForm / 2 == 2) path += L"\\*";
    return path;
  }

  void Select(std::size_t pNode, bool pSelected) {
    fNodes[pNode].selected = pSelected;
    for (const std::size_t child : fNodes[pNode].children) Select(child, pSelected);
  }
  TKivSelectionState State(std::size_t pNode) const {
    const TNode& node = fNodes[pNode];
    if (node.children.empty()) return node.selected ? ssChecked : ssUnChecked;
    const TKivSelectionState first = State(node.children.front());
    const bool same = std::all_of(node.children.begin(), node.children.end(),
                                  [&](std::size_t child) { return State(child) == first; });
    return same ? first : ssGrayed;
  }

  SimulatedFileSystem fFiles;
  SimulatedDisk fDisk{fFiles};
  std::vector<TNode> fNodes;
  std::unique_ptr<TKivSelectionList> fList;
};

std::vector<TStep> StepsOf(unsigned pSeed) {
  std::mt19937 random(pSeed);
  const std::size_t nodes = TTrial::CountOf(pSeed);
  std::vector<TStep> steps(pSeed % 2 == 0 ? 4 + random() % 6 : 2 + random() % 5);
  for (TStep& step : steps) {
    static constexpr TStep::TKind kinds[] = {TStep::Add,    TStep::Add,        TStep::Add,        TStep::Add,
                                             TStep::Remove, TStep::Remove,     TStep::RemoveMany, TStep::Rename,
                                             TStep::Clear,  TStep::SaveAndLoad};
    step = {kinds[random() % std::size(kinds)], random() % nodes, static_cast<int>(random() % 6), {}};
    if (step.kind == TStep::Clear && random() % 3 != 0) step.kind = TStep::Add;
    if (step.kind == TStep::Rename) step.name = Names[random() % std::size(Names)];
  }
  return steps;
}

std::wstring ComplaintOf(unsigned pSeed, const std::vector<TStep>& pSteps) {
  TTrial trial(pSeed);
  std::wstring complaint;
  for (std::size_t i = 0; i < pSteps.size() && complaint.empty(); ++i) {
    trial.Do(pSteps[i]);
    complaint = trial.Complaint();
  }
  return complaint;
}

// Without one step after the other, as long as something is still wrong.
template <typename F>
std::vector<TStep> Shrunk(std::vector<TStep> steps, F&& is_wrong) {
  for (std::size_t i = 0; i < steps.size();) {
    std::vector<TStep> fewer = steps;
    fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
    if (is_wrong(fewer)) {
      steps = std::move(fewer);
      i = 0;
    } else {
      ++i;
    }
  }
  return steps;
}

unsigned Number(const wchar_t* name, unsigned otherwise) {
  const auto text = EnvironmentVariable(name);
  return text ? static_cast<unsigned>(std::stoul(ToUtf8(*text))) : otherwise;
}

// KIV_MODEL_SEQUENCES says how many sequences; KIV_MODEL_SEED repeats a run from its first one.
void Compare(unsigned pOdd) {
#if defined(_WIN32)
  const unsigned sequences = Number(L"KIV_MODEL_SEQUENCES", 200);
#else
  const unsigned sequences = Number(L"KIV_MODEL_SEQUENCES", 5000);
#endif
  const unsigned first = (Number(L"KIV_MODEL_SEED", std::random_device{}()) & ~1U) | pOdd;
  std::size_t steps_done = 0;
  for (unsigned i = 0; i < sequences; ++i) {
    const unsigned seed = first + 2 * i;
    std::vector<TStep> steps = StepsOf(seed);
    steps_done += steps.size();
    const std::wstring complaint = ComplaintOf(seed, steps);
    if (complaint.empty()) continue;
    steps = Shrunk(std::move(steps), [seed](const auto& fewer) { return !ComplaintOf(seed, fewer).empty(); });
    const TTrial trial(seed);
    std::wstring text = trial.DescribeTree();
    for (const TStep& step : steps) text += trial.Describe(step);
    FAIL() << "KIV_MODEL_SEED=" << seed << "\n" << ToUtf8(text) << ToUtf8(ComplaintOf(seed, steps));
  }
  std::printf("%u sequences, %zu steps, first seed %u\n", sequences, steps_done, first);
}

TEST(SelectionModel, AgreesWithABooleanForEachFile) {
  Compare(0);
}

TEST(SelectionModelOfLargerTrees, AgreesWithABooleanForEachFile) {
  Compare(1);
}

TEST(SelectionModel, ShrinksWhatFails) {
  std::vector<TStep> steps = StepsOf(1);
  steps.resize(9, {TStep::Add, 0, 0, {}});
  steps[2] = steps[6] = {TStep::Clear, 0, 0, {}};
  const auto two_clears = [](const std::vector<TStep>& fewer) {
    return std::count_if(fewer.begin(), fewer.end(), [](const TStep& step) { return step.kind == TStep::Clear; }) >= 2;
  };
  EXPECT_EQ(Shrunk(steps, two_clears).size(), 2U);
}

} // namespace
} // namespace kiv::test
