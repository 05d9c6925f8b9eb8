#include <doubles/SimulatedFileSystem.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kiv::test {
namespace {

HRESULT Code(DWORD code) {
  return HRESULT_FROM_WIN32(code);
}

std::vector<TFolderObject> List(SimulatedFileSystem& fs, const std::wstring& path) {
  std::vector<TFolderObject> objects;
  std::unique_ptr<IFolderStepper> stepper;
  EXPECT_EQ(fs.OpenFolder(path, stepper), S_OK);
  TFolderObject object;
  while (stepper && stepper->Next(object) == TFolderStep::Object) objects.push_back(object);
  EXPECT_EQ(stepper ? stepper->Status() : E_FAIL, S_FALSE);
  return objects;
}

TEST(SimulatedFileSystem, ListsDrivesFoldersAndFilesWithTheirFacts) {
  SimulatedFileSystem fs;
  fs.AddDrive(L'C');
  const TFileTime start = fs.CurrentTime();
  ASSERT_EQ(fs.MakeFolder(L"C:\\Dir"), S_OK);
  ASSERT_EQ(fs.MakeFile(L"c:\\dir\\B.txt", 7), S_OK);
  ASSERT_EQ(fs.MakeFile(L"C:\\Dir\\a.txt", 1), S_OK);
  ASSERT_EQ(fs.SetAttributes(L"C:\\Dir\\a.txt", {TObjectFlag::Hidden, TObjectFlag::Folder}), S_OK);
  ASSERT_EQ(fs.Write(L"C:\\Dir\\a.txt", 99), S_OK);

  const auto drives = List(fs, L"");
  ASSERT_EQ(drives.size(), 1U);
  EXPECT_EQ(fs.Combine(L"", drives[0].name), L"C:\\");
  EXPECT_EQ(fs.Combine(L"C:\\", L"Dir"), L"C:\\Dir");
  const auto objects = List(fs, L"C:\\Dir");
  ASSERT_EQ(objects.size(), 2U);
  EXPECT_EQ(objects[0].name, L"a.txt"); // by folded name
  EXPECT_EQ(objects[0].size, 99);
  EXPECT_EQ(objects[0].flags, (TObjectFlags{TObjectFlag::FileSystem, TObjectFlag::Stream, TObjectFlag::Hidden}));
  EXPECT_GT(objects[0].created, start);
  EXPECT_GT(objects[0].changed, objects[1].changed);
  EXPECT_EQ(objects[1].name, L"B.txt"); // case as it was made
}

TEST(SimulatedFileSystem, AnswersErrorsAsThePlatformDoes) {
  SimulatedFileSystem fs;
  fs.AddDrive(L'C');
  fs.AddDrive(L'D');
  fs.MakeFolder(L"C:\\Dir");
  fs.MakeFolder(L"C:\\Dir\\Sub");
  fs.MakeFile(L"C:\\File");
  fs.MakeFolder(L"C:\\Closed");
  fs.DenyAccess(L"C:\\Closed");
  fs.MakeFile(L"D:\\File");
  fs.SetMedium(L'D', false);
  const std::wstring too_long = L"C:\\" + std::wstring(SimulatedFileSystem::MaxPath, L'x');
  TFolderObject object;
  std::unique_ptr<IFolderStepper> stepper;
  const struct {
    const char* what;
    HRESULT expected;
    HRESULT got;
  } cases[] = {
      {"open missing", Code(ERROR_PATH_NOT_FOUND), fs.OpenFolder(L"C:\\None", stepper)},
      {"open on missing drive", Code(ERROR_PATH_NOT_FOUND), fs.OpenFolder(L"X:\\", stepper)},
      {"open file", Code(ERROR_DIRECTORY), fs.OpenFolder(L"C:\\File", stepper)},
      {"open in drive without medium", Code(ERROR_NOT_READY), fs.OpenFolder(L"D:\\Dir", stepper)},
      {"open too long", Code(ERROR_FILENAME_EXCED_RANGE), fs.OpenFolder(too_long, stepper)},
      {"find missing", Code(ERROR_FILE_NOT_FOUND), fs.Find(L"C:\\None", object)},
      {"find below missing", Code(ERROR_PATH_NOT_FOUND), fs.Find(L"C:\\None\\x", object)},
      {"find below file", Code(ERROR_PATH_NOT_FOUND), fs.Find(L"C:\\File\\x", object)},
      {"find without medium", Code(ERROR_NOT_READY), fs.Find(L"D:\\File", object)},
      {"make standing", Code(ERROR_ALREADY_EXISTS), fs.MakeFile(L"c:\\dIR")},
      {"make below missing", Code(ERROR_PATH_NOT_FOUND), fs.MakeFile(L"C:\\None\\x")},
      {"make below file", Code(ERROR_PATH_NOT_FOUND), fs.MakeFolder(L"C:\\File\\x")},
      {"make in closed", E_ACCESSDENIED, fs.MakeFile(L"C:\\Closed\\x")},
      {"make without medium", Code(ERROR_NOT_READY), fs.MakeFile(L"D:\\x")},
      {"make too long", Code(ERROR_FILENAME_EXCED_RANGE), fs.MakeFile(too_long)},
      {"make unnamed", Code(123), fs.MakeFile(L"C:\\Dir\\")},
      {"make dots", Code(123), fs.MakeFolder(L"C:\\..")},
      {"make name of 256", Code(123), fs.MakeFile(L"C:\\" + std::wstring(256, L'x'))},
      {"make name of 255", S_OK, fs.MakeFile(L"C:\\" + std::wstring(255, L'x'))},
      {"write folder", E_ACCESSDENIED, fs.Write(L"C:\\Dir", 1)},
      {"rename onto standing", Code(ERROR_ALREADY_EXISTS), fs.Rename(L"C:\\Dir", L"FILE")},
      {"rename to path", Code(123), fs.Rename(L"C:\\Dir", L"a\\b")},
      {"rename drive", E_ACCESSDENIED, fs.Rename(L"C:\\", L"E:")},
      {"move into itself", Code(32), fs.Move(L"C:\\Dir", L"C:\\Dir\\Sub\\Dir")},
      {"move to another drive", Code(ERROR_NOT_READY), fs.Move(L"C:\\File", L"D:\\File")},
      {"delete missing", Code(ERROR_FILE_NOT_FOUND), fs.Delete(L"C:\\None")},
      {"delete drive", E_ACCESSDENIED, fs.Delete(L"C:\\")},
  };
  for (const auto& c : cases) EXPECT_EQ(c.got, c.expected) << c.what;
  EXPECT_FALSE(stepper);

  // These open, and fail when they are listed.
  for (const auto& [path, expected] :
       {std::pair(L"C:\\Closed", E_ACCESSDENIED), std::pair(L"D:\\", Code(ERROR_NOT_READY))}) {
    ASSERT_EQ(fs.OpenFolder(path, stepper), S_OK);
    EXPECT_EQ(stepper->Next(object), TFolderStep::Failed);
    EXPECT_EQ(stepper->Status(), expected);
  }
  fs.SetMedium(L'D', true);
  EXPECT_EQ(fs.Move(L"C:\\File", L"D:\\Other"), Code(17));
  EXPECT_EQ(stepper->Next(object), TFolderStep::Object); // a failed listing starts over
}

TEST(SimulatedFileSystem, NamesMayHoldAnythingAndCompareWithoutCase) {
  SimulatedFileSystem fs;
  fs.AddDrive(L'C');
  const std::wstring high(1, wchar_t{0xD800});
  const std::wstring low(1, wchar_t{0xDC00});
  for (const auto& name : {high, low, std::wstring(L"e\x0301"), std::wstring(L"\x00E9"), std::wstring(L"a\x0001 .")}) {
    EXPECT_EQ(fs.MakeFile(L"C:\\" + name), S_OK);
    EXPECT_EQ(fs.MakeFile(L"C:\\" + name), Code(ERROR_ALREADY_EXISTS));
  }
  TFolderObject object;
  EXPECT_EQ(fs.Find(L"C:\\\x00C9", object), S_OK);
  EXPECT_EQ(object.name, L"\x00E9");
  EXPECT_EQ(FoldName(L"az\x00FF\x00F7\x03C2\x03C3\x0436\x0451"), L"AZ\x00FF\x00F7\x03A3\x03A3\x0416\x0401");
  EXPECT_EQ(fs.Rename(L"C:\\\x00C9", L"\x00C9"), S_OK); // case alone
  EXPECT_EQ(fs.Find(L"C:\\\x00E9", object), S_OK);
  EXPECT_EQ(object.name, L"\x00C9");
}

/// The same tree as the most naive code would keep it: full paths, folded, and everything found by trying all.
class TNaiveModel {
public:
  struct TEntry {
    std::wstring path; // as shown
    bool folder = false;
    std::int64_t size = TFolderObject::UnknownSize;

    bool operator==(const TEntry&) const = default;
  };
  std::map<std::wstring, TEntry> entries{{L"C:", {L"C:\\", true}}};

  static std::wstring ParentOf(const std::wstring& path) { return path.substr(0, path.rfind(L'\\')); }
  bool IsFolder(const std::wstring& path) const {
    const auto found = entries.find(FoldName(path));
    return found != entries.end() && found->second.folder;
  }
  bool Contains(const std::wstring& path) const { return entries.contains(FoldName(path)); }
  void Erase(const std::wstring& path) {
    const std::wstring key = FoldName(path);
    std::erase_if(entries, [&](const auto& e) { return e.first == key || e.first.starts_with(key + L'\\'); });
  }
  void Move(const std::wstring& from, const std::wstring& to) {
    std::map<std::wstring, TEntry> moved;
    const std::wstring key = FoldName(from);
    for (const auto& [folded, entry] : entries) {
      TEntry now = entry;
      if (folded == key || folded.starts_with(key + L'\\')) now.path = to + entry.path.substr(from.size());
      moved.emplace(FoldName(now.path.ends_with(L'\\') ? L"C:" : now.path), now);
    }
    entries = std::move(moved);
  }
  /// What a watcher knows from notices alone.
  void Apply(const TFileNotice& notice, const SimulatedFileSystem& fs) {
    TFolderObject object;
    switch (notice.change) {
    case TFileChange::FileCreate:
    case TFileChange::FileChange:
      // It may be gone again: then a notice that comes later says so.
      if (FAILED(fs.Find(notice.path1, object))) object.size = TFolderObject::UnknownSize;
      entries[FoldName(notice.path1)] = {notice.path1, false, object.size};
      break;
    case TFileChange::FolderCreate:
      entries[FoldName(notice.path1)] = {notice.path1, true};
      break;
    case TFileChange::FileDelete:
    case TFileChange::FolderDelete:
      Erase(notice.path1);
      break;
    case TFileChange::FileRename:
    case TFileChange::FolderRename:
      Move(notice.path1, notice.path2);
      break;
    default:
      break;
    }
  }
};

std::map<std::wstring, TNaiveModel::TEntry> TreeOf(const SimulatedFileSystem& fs) {
  std::map<std::wstring, TNaiveModel::TEntry> tree;
  for (const auto& [path, object] : fs.Snapshot()) {
    tree.emplace(FoldName(path == L"C:\\" ? L"C:" : path),
                 TNaiveModel::TEntry{path, object.flags.Contains(TObjectFlag::Folder), object.size});
  }
  return tree;
}

std::uint32_t Seed() {
  const std::uint32_t seed = std::random_device{}();
  testing::Test::RecordProperty("seed", std::to_string(seed));
  return seed;
}

/// Random changes on the simulated tree and on a model.
class TRandomChanges {
public:
  TRandomChanges(SimulatedFileSystem& pFileSystem, std::uint32_t pSeed) : fFileSystem(pFileSystem), fRandom(pSeed) {}

  TNaiveModel model;

  void Step() {
    const std::wstring path = AnyPath();
    const std::wstring other = AnyPath();
    const bool there = model.Contains(path);
    const bool place = !there && model.IsFolder(TNaiveModel::ParentOf(path));
    switch (fRandom() % 6) {
    case 0: // make a folder
      ASSERT_EQ(SUCCEEDED(fFileSystem.MakeFolder(path)), place);
      if (place) model.entries[FoldName(path)] = {path, true};
      break;
    case 1: { // make a file
      const auto size = static_cast<std::int64_t>(fRandom() % 1000);
      ASSERT_EQ(SUCCEEDED(fFileSystem.MakeFile(path, size)), place);
      if (place) model.entries[FoldName(path)] = {path, false, size};
      break;
    }
    case 2: { // write
      const bool file = there && !model.IsFolder(path);
      const auto size = static_cast<std::int64_t>(fRandom() % 1000);
      ASSERT_EQ(SUCCEEDED(fFileSystem.Write(path, size)), file);
      if (file) model.entries[FoldName(path)].size = size;
      break;
    }
    case 3:
      if (fRandom() % 2 == 0) break; // deletes take much along: fewer of them
      ASSERT_EQ(SUCCEEDED(fFileSystem.Delete(path)), there);
      model.Erase(path);
      break;
    default:
      Move(path, other);
    }
  }

private:
  // Few names, in both cases, so that paths meet.
  std::wstring AnyPath() {
    std::wstring path = L"C:";
    for (auto depth = 1 + fRandom() % 3; depth != 0; --depth) path += {L'\\', L"aAbBcC"[fRandom() % 6]};
    return path;
  }

  void Move(const std::wstring& from, const std::wstring& to) {
    const bool there = model.Contains(from);
    const bool inside = FoldName(to).starts_with(FoldName(from) + L'\\');
    const bool itself = FoldName(to) == FoldName(from);
    const bool parent = model.IsFolder(TNaiveModel::ParentOf(to));
    const bool works = there && parent && !inside && (itself || !model.Contains(to));
    ASSERT_EQ(SUCCEEDED(fFileSystem.Move(from, to)), works);
    if (works) {
      const std::wstring shown_parent = model.entries[FoldName(TNaiveModel::ParentOf(to))].path;
      model.Move(model.entries[FoldName(from)].path, fFileSystem.Combine(shown_parent, to.substr(to.rfind(L'\\') + 1)));
    }
  }

  SimulatedFileSystem& fFileSystem;
  std::mt19937 fRandom;
};

TEST(SimulatedFileSystem, RandomChangesAgreeWithANaiveModelAndWithTheirNotices) {
  const std::uint32_t seed = Seed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  SimulatedFileSystem fs;
  fs.AddDrive(L'C');
  TRandomChanges changes(fs, seed);
  TNaiveModel watcher;
  fs.Notices().Subscribe(L"C:\\", true, [&](const TFileNotice& notice) { watcher.Apply(notice, fs); });
  for (int i = 0; i < 3000; ++i) {
    changes.Step();
    if (testing::Test::HasFatalFailure()) return;
    if (i % 50 != 0) continue;
    const auto tree = TreeOf(fs);
    ASSERT_EQ(tree.size(), changes.model.entries.size()) << "step " << i;
    for (const auto& [key, entry] : changes.model.entries) {
      ASSERT_TRUE(tree.contains(key));
      ASSERT_EQ(tree.at(key).size, entry.size);
      ASSERT_EQ(tree.at(key).folder, entry.folder);
    }
    ASSERT_EQ(watcher.entries, tree) << "step " << i;
  }
}

TEST(SimulatedFileSystem, ListingGoesOnWhileOthersChangeTheTree) {
  SimulatedFileSystem fs;
  fs.AddDrive(L'C');
  fs.MakeFile(L"C:\\kept-first");
  fs.MakeFile(L"C:\\zzz-kept-last");
  TNaiveModel watcher;
  watcher.entries = TreeOf(fs);
  fs.Notices().Subscribe(L"", true, [&](const TFileNotice& notice) { watcher.Apply(notice, fs); });
  std::vector<std::jthread> changers;
  std::atomic<int> running{3};
  for (int t = 0; t < 3; ++t) {
    changers.emplace_back([&fs, &running, t] {
      const std::wstring own = L"C:\\own" + std::to_wstring(t);
      for (int i = 0; i < 300; ++i) {
        fs.MakeFolder(own);
        fs.MakeFile(own + L"\\file", i);
        fs.Rename(own, L"renamed" + std::to_wstring(t));
        if (i != 299) fs.Delete(L"C:\\renamed" + std::to_wstring(t));
      }
      --running;
    });
  }
  do {
    const auto objects = List(fs, L"C:\\");
    ASSERT_GE(objects.size(), 2U);
    EXPECT_TRUE(std::any_of(objects.begin(), objects.end(), [](const auto& o) { return o.name == L"kept-first"; }));
    EXPECT_EQ(objects.back().name, L"zzz-kept-last");
  } while (running != 0);
  changers.clear();
  // Whoever delivered, the notices came in the order of the changes. Sizes were asked for when things had moved on.
  auto tree = TreeOf(fs);
  for (auto* entries : {&tree, &watcher.entries}) {
    for (auto& [key, entry] : *entries) entry.size = 0;
  }
  EXPECT_EQ(watcher.entries, tree);
}

} // namespace
} // namespace kiv::test
