#include <doubles/FakeShellFolder.h>

#include <gtest/gtest.h>

#include <oleauto.h>
#include <shlwapi.h>

#include <cstring>
#include <string>
#include <vector>

namespace kiv::test {
namespace {

constexpr SHCONTF All = SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN | SHCONTF_INCLUDESUPERHIDDEN;
constexpr HRESULT NotFound = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
// "System.Size" and "System.DateModified".
constexpr GUID Storage = ParseGuid("{B725F130-47EF-101A-A5F1-02608C9EEBAC}");
constexpr SHCOLUMNID SizeColumn{Storage, 12};
constexpr SHCOLUMNID ModifiedColumn{Storage, 14};

PCUITEMID_CHILD Child(const TUniqueItemIdList& list) {
  return reinterpret_cast<PCUITEMID_CHILD>(list.Get());
}

std::vector<TUniqueItemIdList> Enumerate(IShellFolder& folder, SHCONTF flags = All, std::size_t limit = 100) {
  std::vector<TUniqueItemIdList> items;
  ComPtr<IEnumIDList> objects;
  EXPECT_EQ(folder.EnumObjects(nullptr, flags, &objects), S_OK);
  if (!objects) return items;
  PITEMID_CHILD item = nullptr;
  ULONG fetched = 0;
  while (items.size() < limit && objects->Next(1, &item, &fetched) == S_OK) {
    EXPECT_EQ(fetched, 1U);
    items.emplace_back(item);
  }
  return items;
}

std::wstring NameOf(IShellFolder& folder, PCUITEMID_CHILD item, SHGDNF flags) {
  STRRET text;
  wchar_t* name = nullptr;
  if (FAILED(folder.GetDisplayNameOf(item, flags, &text)) || FAILED(StrRetToStrW(&text, item, &name))) return L"(none)";
  const TUniqueTaskText owner(name);
  return name;
}

class FakeShellFolderTest : public testing::Test {
protected:
  FakeShellFolderTest() : shell(fs) {
    fs.AddDrive(L'C');
    fs.MakeFolder(L"C:\\Dir");
    fs.MakeFolder(L"C:\\Dir\\Sub");
    fs.MakeFolder(L"C:\\Dir\\Sub\\Deep");
    fs.MakeFile(L"C:\\Dir\\b.txt", 5'000'000'000);
    fs.MakeFile(L"C:\\Dir\\hidden", 1);
    fs.SetAttributes(L"C:\\Dir\\hidden", {TObjectFlag::Hidden, TObjectFlag::ReadOnly});
    fs.MakeFile(L"C:\\Dir\\super", 2);
    fs.SetAttributes(L"C:\\Dir\\super", {TObjectFlag::Hidden, TObjectFlag::System});
    fs.MakeFile(std::wstring(L"C:\\Dir\\") + wchar_t{0xD800}, 3);
    fs.MakeFile(L"C:\\Dir\\" + std::wstring(255, L'x'), 4);
  }
  // Whatever a test did, every reference was given back.
  void TearDown() override {
    EXPECT_EQ(shell.LiveObjects(), 0);
    EXPECT_EQ(shell.References(), 0);
  }

  /// All objects below a folder as the shell's interfaces tell of them, in the order of SimulatedFileSystem::Snapshot.
  void Collect(IShellFolder& folder, SimulatedFileSystem::TSnapshot& all) {
    const auto items = Enumerate(folder);
    const ComPtr<IShellFolder> self(&folder);
    const auto details = self.MaybeAs<IShellFolder2>();
    ASSERT_TRUE(details);
    for (const auto& item : items) all.emplace_back(Describe(*details.Get(), Child(item)));
    for (const auto& item : items) {
      ComPtr<IShellFolder> below;
      void* found = nullptr;
      if (FAILED(folder.BindToObject(item.Get(), nullptr, IID_IShellFolder, &found))) continue;
      below.Attach(static_cast<IShellFolder*>(found));
      Collect(*below.Get(), all);
    }
  }

  static std::pair<std::wstring, TFolderObject> Describe(IShellFolder2& folder, PCUITEMID_CHILD item) {
    TFolderObject object;
    object.name = NameOf(folder, item, SHGDN_FORPARSING | SHGDN_INFOLDER);
    SFGAOF attributes = SFGAO_FOLDER | SFGAO_FILESYSTEM | SFGAO_STREAM | SFGAO_HIDDEN | SFGAO_SYSTEM | SFGAO_READONLY;
    EXPECT_EQ(folder.GetAttributesOf(1, &item, &attributes), S_OK);
    object.flags.Put(TObjectFlag::Folder, attributes & SFGAO_FOLDER);
    object.flags.Put(TObjectFlag::FileSystem, attributes & SFGAO_FILESYSTEM);
    object.flags.Put(TObjectFlag::Stream, attributes & SFGAO_STREAM);
    object.flags.Put(TObjectFlag::Hidden, attributes & SFGAO_HIDDEN);
    object.flags.Put(TObjectFlag::System, attributes & SFGAO_SYSTEM);
    object.flags.Put(TObjectFlag::ReadOnly, attributes & SFGAO_READONLY);
    VARIANT value;
    EXPECT_EQ(folder.GetDetailsEx(item, &SizeColumn, &value), S_OK);
    if (value.vt == VT_UI8) object.size = static_cast<std::int64_t>(value.ullVal);
    EXPECT_EQ(folder.GetDetailsEx(item, &ModifiedColumn, &value), S_OK);
    EXPECT_EQ(value.vt, VT_DATE);
    SYSTEMTIME time{};
    FILETIME file_time{};
    EXPECT_TRUE(VariantTimeToSystemTime(value.date, &time) && SystemTimeToFileTime(&time, &file_time));
    object.changed = static_cast<TFileTime>(file_time.dwHighDateTime) << 32U | file_time.dwLowDateTime;
    return {NameOf(folder, item, SHGDN_FORPARSING), object};
  }

  SimulatedFileSystem fs;
  FakeShellNamespace shell;
};

TEST_F(FakeShellFolderTest, TellsTheSameTreeAsTheFileSystem) {
  SimulatedFileSystem::TSnapshot told;
  Collect(*shell.Folder(L"").Get(), told);
  auto tree = fs.Snapshot();
  for (auto& [path, object] : tree) object.created = object.accessed = 0; // not asked for
  ASSERT_EQ(told.size(), tree.size());
  for (std::size_t i = 0; i < tree.size(); ++i) {
    EXPECT_EQ(told[i].first, tree[i].first);
    EXPECT_EQ(told[i].second, tree[i].second) << i;
  }
}

TEST_F(FakeShellFolderTest, EnumeratesWhatTheFlagsAskFor) {
  const auto folder = shell.Folder(L"C:\\Dir");
  const struct {
    SHCONTF flags;
    std::size_t count;
  } cases[] = {{All, 6},
               {SHCONTF_FOLDERS, 1},
               {SHCONTF_NONFOLDERS, 3},
               {SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN, 4},
               {SHCONTF_NONFOLDERS | SHCONTF_INCLUDESUPERHIDDEN, 4}};
  for (const auto& c : cases) EXPECT_EQ(Enumerate(*folder.Get(), c.flags).size(), c.count) << c.flags;

  ComPtr<IEnumIDList> objects;
  ASSERT_EQ(folder->EnumObjects(nullptr, All, &objects), S_OK);
  PITEMID_CHILD items[8] = {};
  ULONG fetched = 0;
  EXPECT_EQ(objects->Skip(1), S_OK);
  EXPECT_EQ(objects->Next(2, items, &fetched), S_OK);
  ComPtr<IEnumIDList> copy;
  EXPECT_EQ(objects->Clone(&copy), S_OK);
  for (ULONG i = 0; i < fetched; ++i) CoTaskMemFree(items[i]);
  EXPECT_EQ(copy->Next(8, items, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 3U);
  for (ULONG i = 0; i < fetched; ++i) CoTaskMemFree(items[i]);
  EXPECT_EQ(objects->Skip(4), S_FALSE);
  EXPECT_EQ(objects->Reset(), S_OK);
  EXPECT_EQ(objects->Skip(6), S_OK);
}

TEST_F(FakeShellFolderTest, ParsesWhatItNamesAndComparesInOrder) {
  const auto computer = shell.Folder(L"");
  const auto folder = shell.Folder(L"C:\\Dir");
  wchar_t name[] = L"c:\\dir\\SUB\\deep";
  TUniqueItemIdList parsed;
  ULONG eaten = 0;
  SFGAOF attributes = SFGAO_FOLDER | SFGAO_STREAM;
  ASSERT_EQ(computer->ParseDisplayName(nullptr, nullptr, name, &eaten, parsed.ReleaseAndGetAddressOf(), &attributes),
            S_OK);
  EXPECT_EQ(eaten, wcslen(name));
  EXPECT_EQ(attributes, static_cast<SFGAOF>(SFGAO_FOLDER));
  // Well formed for the shell's own functions: four items, and equal to what the tree says.
  const TUniqueItemIdList whole = shell.ItemIdList(L"C:\\Dir\\Sub\\Deep");
  EXPECT_EQ(ILGetSize(whole.Get()), ILGetSize(parsed.Get()));
  EXPECT_EQ(std::memcmp(whole.Get(), parsed.Get(), ILGetSize(whole.Get())), 0);
  const TUniqueItemIdList last = shell.ItemIdList(L"C:\\Dir\\Sub\\Deep", true);
  EXPECT_EQ(FakeShellNamespace::MaybeNodeOf(ILFindLastID(whole.Get())), FakeShellNamespace::MaybeNodeOf(last.Get()));
  EXPECT_EQ(computer->CompareIDs(0, whole.Get(), parsed.Get()), S_OK);
  wchar_t missing[] = L"none";
  EXPECT_EQ(folder->ParseDisplayName(nullptr, nullptr, missing, nullptr, parsed.ReleaseAndGetAddressOf(), nullptr),
            NotFound);
  EXPECT_FALSE(parsed);

  const TUniqueItemIdList b = shell.ItemIdList(L"C:\\Dir\\b.txt", true);
  const TUniqueItemIdList sub = shell.ItemIdList(L"C:\\Dir\\Sub", true);
  const auto order = [&](LPARAM column) {
    return static_cast<short>(HRESULT_CODE(folder->CompareIDs(column, b.Get(), sub.Get())));
  };
  EXPECT_LT(order(0), 0); // by name
  EXPECT_GT(order(1), 0); // by size
  EXPECT_GT(order(2), 0); // by time: made later
  EXPECT_LT(static_cast<short>(HRESULT_CODE(computer->CompareIDs(0, shell.ItemIdList(L"C:\\Dir").Get(), whole.Get()))),
            0);

  ComPtr<IPersistFolder2> persist;
  ASSERT_EQ(folder.As(persist), S_OK);
  PIDLIST_ABSOLUTE current = nullptr;
  ASSERT_EQ(persist->GetCurFolder(&current), S_OK);
  const TUniqueItemIdList owner(current);
  EXPECT_EQ(FakeShellNamespace::MaybeNodeOf(current),
            FakeShellNamespace::MaybeNodeOf(shell.ItemIdList(L"C:\\Dir").Get()));
}

} // namespace
} // namespace kiv::test
