#include <platform/fill/FileStorage.h>

#include <doubles/ScopedTempFolder.h>
#include <platform/Handles.h>
#include <platform/InterfacedObject.h>

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace kiv {
namespace {

using test::ScopedTempFolder;

bool Exists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

class FileStorage : public testing::Test {
protected:
  void SetUp() override { ASSERT_EQ(CreateFileStorage(fTemp.Path(), fStorage), S_OK); }
  void TearDown() override {
    fStorage.Reset();
    EXPECT_EQ(LiveObjects(), fBefore);
  }

  void Write(IStorage* storage, const wchar_t* name, const std::string& text) {
    ComPtr<IStream> stream;
    ASSERT_EQ(storage->CreateStream(name, STGM_WRITE | STGM_CREATE, 0, 0, &stream), S_OK);
    EXPECT_EQ(stream->Write(text.data(), static_cast<ULONG>(text.size()), nullptr), S_OK);
  }
  std::string Read(IStorage* storage, const wchar_t* name) {
    ComPtr<IStream> stream;
    const HRESULT hr = storage->OpenStream(name, nullptr, STGM_READ, 0, &stream);
    if (FAILED(hr)) return "error " + std::to_string(static_cast<DWORD>(hr));
    char buffer[100];
    ULONG count = 0;
    stream->Read(buffer, sizeof(buffer), &count);
    return {buffer, count};
  }
  ComPtr<IStorage> Below(IStorage* storage, const wchar_t* name) {
    ComPtr<IStorage> below;
    EXPECT_EQ(storage->OpenStorage(name, nullptr, STGM_READWRITE, nullptr, 0, &below), S_OK) << name;
    return below;
  }
  static std::map<std::wstring, DWORD> Elements(IStorage* storage) {
    std::map<std::wstring, DWORD> elements;
    ComPtr<IEnumSTATSTG> all;
    EXPECT_EQ(storage->EnumElements(0, nullptr, 0, &all), S_OK);
    STATSTG stat;
    ULONG count = 0;
    while (all && all->Next(1, &stat, &count) == S_OK) {
      const TUniqueTaskText name(stat.pwcsName);
      elements[name.Get()] = stat.type;
    }
    return elements;
  }

  const long fBefore = LiveObjects();
  ScopedTempFolder fTemp;
  ComPtr<IStorage> fStorage;
};

constexpr DWORD Storage = STGTY_STORAGE;
constexpr DWORD Stream = STGTY_STREAM;

TEST_F(FileStorage, MakesOpensAndListsElements) {
  ComPtr<IStorage> made;
  ASSERT_EQ(fStorage->CreateStorage(L"New Folder", 0, 0, 0, &made), S_OK);
  Write(made.Get(), L"inner", "inner text");
  Write(fStorage.Get(), L"file.txt", "text");
  EXPECT_EQ(Read(fStorage.Get(), L"file.txt"), "text");
  EXPECT_EQ(Read(Below(fStorage.Get(), L"new folder").Get(), L"inner"), "inner text");
  EXPECT_EQ(Elements(fStorage.Get()), (std::map<std::wstring, DWORD>{{L"New Folder", Storage}, {L"file.txt", Stream}}));
  EXPECT_TRUE(Elements(Below(fStorage.Get(), L"New Folder").Get()).contains(L"inner"));

  ComPtr<IStorage> again;
  for (const DWORD mode : {0UL, static_cast<DWORD>(STGM_CREATE)}) {
    EXPECT_EQ(fStorage->CreateStorage(L"New Folder", mode, 0, 0, &again), STG_E_FILEALREADYEXISTS);
    EXPECT_EQ(fStorage->CreateStorage(L"file.txt", mode, 0, 0, &again), STG_E_FILEALREADYEXISTS);
  }
  ComPtr<IStream> stream;
  EXPECT_EQ(fStorage->CreateStream(L"file.txt", STGM_WRITE, 0, 0, &stream), STG_E_FILEALREADYEXISTS);
  EXPECT_EQ(fStorage->OpenStream(L"none", nullptr, STGM_READ, 0, &stream), STG_E_FILENOTFOUND);
  EXPECT_EQ(fStorage->OpenStream(L"New Folder", nullptr, STGM_READ, 0, &stream), STG_E_FILENOTFOUND);
  EXPECT_EQ(fStorage->OpenStorage(L"file.txt", nullptr, 0, nullptr, 0, &again), STG_E_FILENOTFOUND);
  EXPECT_EQ(fStorage->OpenStorage(L"none", nullptr, 0, nullptr, 0, &again), STG_E_FILENOTFOUND);
  EXPECT_FALSE(stream || again);
}

TEST_F(FileStorage, NamesNeverLeaveTheFolder) {
  fTemp.MakeFile(L"dir\\file");
  const auto dir = Below(fStorage.Get(), L"dir");
  fTemp.MakeFile(L"outside");
  ComPtr<IStream> stream;
  ComPtr<IStorage> storage;
  for (const wchar_t* name :
       {L"", L".", L"..", L"..\\outside", L"a\\b", L"a/b", L"file:stream", L"*", L"C:\\outside"}) {
    EXPECT_EQ(dir->CreateStream(name, STGM_WRITE, 0, 0, &stream), STG_E_INVALIDNAME) << name;
    EXPECT_EQ(dir->OpenStream(name, nullptr, STGM_READ, 0, &stream), STG_E_INVALIDNAME) << name;
    EXPECT_EQ(dir->CreateStorage(name, 0, 0, 0, &storage), STG_E_INVALIDNAME) << name;
    EXPECT_EQ(dir->OpenStorage(name, nullptr, 0, nullptr, 0, &storage), STG_E_INVALIDNAME) << name;
    EXPECT_EQ(dir->DestroyElement(name), STG_E_INVALIDNAME) << name;
    EXPECT_EQ(dir->RenameElement(L"file", name), STG_E_INVALIDNAME) << name;
    EXPECT_EQ(dir->RenameElement(name, L"x"), STG_E_INVALIDNAME) << name;
    EXPECT_EQ(dir->MoveElementTo(name, fStorage.Get(), L"x", STGMOVE_MOVE), STG_E_INVALIDNAME) << name;
    EXPECT_EQ(dir->MoveElementTo(L"file", fStorage.Get(), name, STGMOVE_COPY), STG_E_INVALIDNAME) << name;
    EXPECT_EQ(dir->SetElementTimes(name, nullptr, nullptr, nullptr), STG_E_INVALIDNAME) << name;
  }
  EXPECT_EQ(dir->DestroyElement(nullptr), STG_E_INVALIDPOINTER);
  EXPECT_EQ(dir->RenameElement(L"file", L"nul"), STG_E_INVALIDNAME);
  EXPECT_EQ(Elements(dir.Get()).size(), 1U);
}

TEST_F(FileStorage, DestroysATreeReadOnlyThingsIncluded) {
  fTemp.MakeFile(L"dir\\a\\b\\deep");
  SetFileAttributesW(fTemp.MakeFile(L"dir\\a\\readonly").c_str(), FILE_ATTRIBUTE_READONLY);
  SetFileAttributesW(fTemp.PathOf(L"dir\\a\\b").c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(fStorage->DestroyElement(L"dir"), S_OK);
  EXPECT_FALSE(Exists(fTemp.PathOf(L"dir")));
  EXPECT_EQ(fStorage->DestroyElement(L"dir"), STG_E_FILENOTFOUND);

  const std::wstring held = fTemp.MakeFile(L"held\\file");
  {
    const TUniqueHandle lock(CreateFileW(held.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(fStorage->DestroyElement(L"held"), STG_E_SHAREVIOLATION);
    EXPECT_TRUE(Exists(held));
  }
  EXPECT_EQ(fStorage->DestroyElement(L"held"), S_OK);
}

TEST_F(FileStorage, FollowsNoLinkToAFolder) {
  fTemp.MakeFile(L"kept\\file");
  fTemp.MakeFile(L"dir\\file");
  constexpr DWORD flags = SYMBOLIC_LINK_FLAG_DIRECTORY | SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE;
  if (!CreateSymbolicLinkW(fTemp.PathOf(L"dir\\link").c_str(), fTemp.PathOf(L"kept").c_str(), flags)) {
    GTEST_SKIP() << "this user may not make links";
  }
  fTemp.MakeFolder(L"to");
  const auto dir = Below(fStorage.Get(), L"dir");
  const auto to = Below(fStorage.Get(), L"to");
  EXPECT_EQ(dir->CopyTo(0, nullptr, nullptr, to.Get()), S_OK);
  EXPECT_EQ(Elements(to.Get()), (std::map<std::wstring, DWORD>{{L"file", Stream}}));
  EXPECT_EQ(dir->MoveElementTo(L"link", to.Get(), nullptr, STGMOVE_COPY), STG_E_ACCESSDENIED);
  EXPECT_EQ(fStorage->DestroyElement(L"dir"), S_OK);
  EXPECT_FALSE(Exists(fTemp.PathOf(L"dir")));
  EXPECT_TRUE(Exists(fTemp.PathOf(L"kept\\file")));
}

TEST_F(FileStorage, RenamesWithoutReplacing) {
  Write(fStorage.Get(), L"a", "A");
  Write(fStorage.Get(), L"b", "B");
  EXPECT_EQ(fStorage->RenameElement(L"a", L"b"), STG_E_FILEALREADYEXISTS);
  EXPECT_EQ(fStorage->RenameElement(L"none", L"c"), STG_E_FILENOTFOUND);
  EXPECT_EQ(fStorage->RenameElement(L"a", L"c"), S_OK);
  EXPECT_EQ(fStorage->RenameElement(L"b", L"B"), S_OK); // a change of case only
  EXPECT_EQ(Read(fStorage.Get(), L"c"), "A");
  EXPECT_EQ(Read(fStorage.Get(), L"b"), "B");
}

TEST_F(FileStorage, CopiesAndMovesTrees) {
  fTemp.MakeFolder(L"from\\empty");
  const auto from = Below(fStorage.Get(), L"from");
  Write(from.Get(), L"one", "1");
  fTemp.MakeFolder(L"from\\sub");
  Write(Below(from.Get(), L"sub").Get(), L"two", "2");
  fTemp.MakeFolder(L"to\\sub");
  const auto to = Below(fStorage.Get(), L"to");
  Write(to.Get(), L"one", "old");
  Write(Below(to.Get(), L"sub").Get(), L"kept", "k");

  EXPECT_EQ(from->CopyTo(0, nullptr, nullptr, to.Get()), S_OK);
  EXPECT_EQ(Read(to.Get(), L"one"), "1");
  EXPECT_EQ(Read(Below(to.Get(), L"sub").Get(), L"two"), "2");
  EXPECT_EQ(Read(Below(to.Get(), L"sub").Get(), L"kept"), "k");
  EXPECT_TRUE(Elements(to.Get()).contains(L"empty"));
  // A folder can't go into itself, whatever the case of the road there.
  EXPECT_EQ(from->CopyTo(0, nullptr, nullptr, Below(Below(fStorage.Get(), L"FROM").Get(), L"sub").Get()),
            STG_E_ACCESSDENIED);
  for (const DWORD how : {STGMOVE_MOVE, STGMOVE_COPY}) {
    EXPECT_EQ(fStorage->MoveElementTo(L"from", Below(from.Get(), L"sub").Get(), L"x", how), STG_E_ACCESSDENIED);
    EXPECT_EQ(from->MoveElementTo(L"one", to.Get(), nullptr, how), STG_E_FILEALREADYEXISTS);
    EXPECT_EQ(from->MoveElementTo(L"sub", to.Get(), L"sub", how), STG_E_FILEALREADYEXISTS);
    EXPECT_EQ(from->MoveElementTo(L"none", to.Get(), nullptr, how), STG_E_FILENOTFOUND);
  }
  EXPECT_EQ(from->MoveElementTo(L"sub", to.Get(), L"moved", STGMOVE_MOVE), S_OK);
  EXPECT_EQ(from->MoveElementTo(L"one", to.Get(), L"copy", STGMOVE_COPY), S_OK);
  EXPECT_EQ(Read(Below(to.Get(), L"moved").Get(), L"two"), "2");
  EXPECT_EQ(Read(to.Get(), L"copy"), "1");
  EXPECT_EQ(Elements(from.Get()), (std::map<std::wstring, DWORD>{{L"empty", Storage}, {L"one", Stream}}));
}

TEST_F(FileStorage, KnowsAFolderUnderItsShortName) {
  const std::wstring folder = fTemp.MakeFolder(L"folder with a long name");
  Write(Below(fStorage.Get(), L"folder with a long name").Get(), L"one", "1");
  const std::wstring inside = fTemp.MakeFolder(L"folder with a long name\\sub");
  wchar_t short_path[MAX_PATH];
  ASSERT_LT(GetShortPathNameW(inside.c_str(), short_path, MAX_PATH), DWORD{MAX_PATH});
  ComPtr<IStorage> from;
  ComPtr<IStorage> to;
  ASSERT_EQ(CreateFileStorage(folder, from), S_OK);
  ASSERT_EQ(CreateFileStorage(short_path, to), S_OK);
  EXPECT_EQ(from->CopyTo(0, nullptr, nullptr, to.Get()), STG_E_ACCESSDENIED);
  EXPECT_EQ(fStorage->MoveElementTo(L"folder with a long name", to.Get(), L"x", STGMOVE_COPY), STG_E_ACCESSDENIED);
  EXPECT_TRUE(Elements(to.Get()).empty());
}

TEST_F(FileStorage, LeavesOutWhatIsExcluded) {
  fTemp.MakeFile(L"from\\one");
  fTemp.MakeFile(L"from\\two");
  fTemp.MakeFile(L"from\\sub\\one");
  const auto from = Below(fStorage.Get(), L"from");
  wchar_t one[] = L"ONE";
  LPOLESTR names[] = {one, nullptr};
  const struct {
    std::vector<IID> kinds;
    SNB names;
    std::set<std::wstring> expected;
  } cases[] = {
      {{}, names, {L"two", L"sub"}},
      {{IID_IStorage}, nullptr, {L"one", L"two"}},
      {{IID_IStream}, nullptr, {L"sub"}},
      {{IID_IStream, IID_IStorage}, nullptr, {}},
  };
  int i = 0;
  for (const auto& c : cases) {
    ComPtr<IStorage> to;
    ASSERT_EQ(fStorage->CreateStorage(std::to_wstring(i++).c_str(), 0, 0, 0, &to), S_OK);
    EXPECT_EQ(from->CopyTo(static_cast<DWORD>(c.kinds.size()), c.kinds.data(), c.names, to.Get()), S_OK);
    std::set<std::wstring> found;
    for (const auto& [name, type] : Elements(to.Get())) found.insert(name);
    EXPECT_EQ(found, c.expected) << i;
    // What is below is taken whatever its name.
    EXPECT_TRUE(!found.contains(L"sub") || Elements(Below(to.Get(), L"sub").Get()).contains(L"one"));
  }
}

TEST_F(FileStorage, CopiesIntoAStorageOfAnotherKind) {
  fTemp.MakeFolder(L"from\\sub");
  const auto from = Below(fStorage.Get(), L"from");
  Write(from.Get(), L"one", "1");
  Write(Below(from.Get(), L"sub").Get(), L"two", "2");
  ComPtr<IStorage> compound;
  ASSERT_EQ(StgCreateDocfile(fTemp.PathOf(L"compound").c_str(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0,
                             &compound),
            S_OK);
  EXPECT_EQ(from->CopyTo(0, nullptr, nullptr, compound.Get()), S_OK);
  ComPtr<IStorage> sub;
  constexpr DWORD mode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
  ASSERT_EQ(compound->OpenStorage(L"sub", nullptr, mode, nullptr, 0, &sub), S_OK);
  ComPtr<IStream> two;
  ASSERT_EQ(sub->OpenStream(L"two", nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &two), S_OK);
  char text = 0;
  EXPECT_EQ(two->Read(&text, 1, nullptr), S_OK);
  EXPECT_EQ(text, '2');
  EXPECT_EQ(fStorage->MoveElementTo(L"from", compound.Get(), L"moved", STGMOVE_MOVE), S_OK);
  EXPECT_EQ(compound->OpenStorage(L"moved", nullptr, mode, nullptr, 0, &sub), S_OK);
  EXPECT_FALSE(Exists(fTemp.PathOf(L"from")));
}

TEST_F(FileStorage, EnumeratesInStepsOfAnySize) {
  for (const wchar_t* name : {L"a", L"b", L"c", L"d", L"e"}) fTemp.MakeFile(name);
  ComPtr<IEnumSTATSTG> all;
  ASSERT_EQ(fStorage->EnumElements(0, nullptr, 0, &all), S_OK);
  STATSTG stats[5] = {};
  ULONG count = 0;
  const auto next = [&](IEnumSTATSTG* from, ULONG wanted) {
    const HRESULT hr = from->Next(wanted, stats, &count);
    for (ULONG i = 0; i < count; ++i) CoTaskMemFree(stats[i].pwcsName);
    return hr;
  };
  EXPECT_EQ(next(all.Get(), 2), S_OK);
  ComPtr<IEnumSTATSTG> clone;
  ASSERT_EQ(all->Clone(&clone), S_OK);
  EXPECT_EQ(all->Skip(1), S_OK);
  EXPECT_EQ(next(all.Get(), 5), S_FALSE);
  EXPECT_EQ(count, 2U);
  EXPECT_EQ(next(all.Get(), 1), S_FALSE);
  EXPECT_EQ(next(clone.Get(), 3), S_OK);
  EXPECT_EQ(all->Skip(1), S_FALSE);
  EXPECT_EQ(all->Reset(), S_OK);
  EXPECT_EQ(next(all.Get(), 5), S_OK);
  EXPECT_EQ(all->Next(2, stats, nullptr), STG_E_INVALIDPOINTER);
}

TEST_F(FileStorage, TellsAndSetsTimes) {
  fTemp.MakeFile(L"dir\\file", 9);
  const FILETIME when{0, 0x01D80000};
  const auto dir = Below(fStorage.Get(), L"dir");
  EXPECT_EQ(dir->SetElementTimes(L"file", nullptr, nullptr, &when), S_OK);
  EXPECT_EQ(dir->SetElementTimes(nullptr, nullptr, nullptr, &when), S_OK);
  EXPECT_EQ(dir->SetElementTimes(L"none", nullptr, nullptr, &when), STG_E_FILENOTFOUND);
  STATSTG stat;
  ASSERT_EQ(dir->Stat(&stat, STATFLAG_DEFAULT), S_OK);
  const TUniqueTaskText name(stat.pwcsName);
  EXPECT_EQ(std::wstring(name.Get()), L"dir");
  EXPECT_EQ(stat.type, Storage);
  EXPECT_EQ(CompareFileTime(&stat.mtime, &when), 0);
  ComPtr<IStream> file;
  ASSERT_EQ(dir->OpenStream(L"file", nullptr, STGM_READ, 0, &file), S_OK);
  ASSERT_EQ(file->Stat(&stat, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(CompareFileTime(&stat.mtime, &when), 0);
  EXPECT_EQ(stat.cbSize.QuadPart, 9U);
}

TEST_F(FileStorage, WorksFarBeyondTheClassicLimitOfPaths) {
  ComPtr<IStorage> at = fStorage;
  const std::wstring name(200, L'n');
  for (int depth = 0; depth < 15; ++depth) {
    ComPtr<IStorage> below;
    ASSERT_EQ(at->CreateStorage(name.c_str(), 0, 0, 0, &below), S_OK) << depth;
    at = below;
  }
  Write(at.Get(), L"leaf", "leaf");
  EXPECT_EQ(Read(at.Get(), L"leaf"), "leaf");
  EXPECT_EQ(at->RenameElement(L"leaf", L"renamed"), S_OK);
  EXPECT_EQ(fStorage->DestroyElement(name.c_str()), S_OK);
  EXPECT_TRUE(Elements(fStorage.Get()).empty());
}

TEST_F(FileStorage, AFolderThatIsGoneOrNoneIsAnError) {
  fTemp.MakeFile(L"file");
  fTemp.MakeFolder(L"dir");
  const auto dir = Below(fStorage.Get(), L"dir");
  ASSERT_TRUE(RemoveDirectoryW(fTemp.PathOf(L"dir").c_str()));
  ComPtr<IStorage> storage;
  ComPtr<IStream> stream;
  ComPtr<IEnumSTATSTG> all;
  STATSTG stat;
  EXPECT_EQ(dir->CreateStorage(L"x", 0, 0, 0, &storage), STG_E_PATHNOTFOUND);
  EXPECT_EQ(dir->CreateStream(L"x", STGM_WRITE, 0, 0, &stream), STG_E_PATHNOTFOUND);
  EXPECT_TRUE(FAILED(dir->EnumElements(0, nullptr, 0, &all)));
  EXPECT_TRUE(FAILED(dir->Stat(&stat, STATFLAG_DEFAULT)));
  EXPECT_EQ(CreateFileStorage(fTemp.PathOf(L"none"), storage), STG_E_PATHNOTFOUND);
  EXPECT_EQ(CreateFileStorage(fTemp.PathOf(L"file"), storage), STG_E_PATHNOTFOUND);
  EXPECT_EQ(CreateFileStorage(L"", storage), STG_E_INVALIDNAME);
  EXPECT_FALSE(storage || stream || all);
  EXPECT_EQ(CreateFileStorage(L"C:\\", storage), S_OK);
  EXPECT_TRUE(Elements(storage.Get()).contains(L"windows"));
}

} // namespace
} // namespace kiv
