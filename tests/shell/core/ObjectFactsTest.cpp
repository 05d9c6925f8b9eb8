#include <core/ObjectFacts.h>

#include <core/FolderEnumerator.h>
#include <core/PathUtils.h>
#include <doubles/FakeShellFolder.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace kiv {
namespace {

using test::FakeShellNamespace;
using test::ScopedTempFolder;
using test::SimulatedFileSystem;
using test::TShellFault;
using test::TShellMethod;

ComPtr<IShellFolder> RealFolder(const std::wstring& path) {
  PIDLIST_ABSOLUTE raw = nullptr;
  EXPECT_EQ(SHParseDisplayName(path.c_str(), nullptr, &raw, 0, nullptr), S_OK);
  const TUniqueItemIdList list(raw);
  ComPtr<IShellFolder> folder;
  void* found = nullptr;
  EXPECT_EQ(Desktop()->BindToObject(list.Get(), nullptr, IidOf<IShellFolder>(), &found), S_OK);
  folder.Attach(static_cast<IShellFolder*>(found));
  return folder;
}

std::map<std::wstring, TFolderObject> ReadAll(const ComPtr<IShellFolder>& folder, TObjectFacts facts) {
  std::map<std::wstring, TFolderObject> all;
  TFolderEnumerator enumerator(folder);
  TUniqueItemIdList item;
  TFolderObject object;
  while (enumerator.Next(item) == TFolderStep::Object) {
    EXPECT_EQ(facts.Read(item.Get(), object), S_OK);
    all[object.name] = object;
  }
  return all;
}

TFileTime DiskTime(const std::wstring& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  EXPECT_TRUE(GetFileAttributesExW(TPathUtils::GetUnicodeAPICallPath(path).c_str(), GetFileExInfoStandard, &data));
  return static_cast<TFileTime>(data.ftLastWriteTime.dwHighDateTime) << 32U | data.ftLastWriteTime.dwLowDateTime;
}

TEST(ObjectFacts, TellTheTruthAboutRealFiles) {
  ScopedTempFolder temp;
  const std::wstring longName(255, L'n');
  temp.MakeFolder(L"folder");
  temp.MakeFile(L"empty");
  temp.MakeFile(L"some.txt", 12345);
  temp.MakeFile(L"\u05D0\u05D1 \U0001F4C1.\u0645", 3);
  temp.MakeFile(longName, 1);
  SetFileAttributesW(temp.PathOf(L"some.txt").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
  const auto folder = RealFolder(temp.Path());
  for (const auto precision : {TFactsPrecision::Listed, TFactsPrecision::Exact}) {
    auto all = ReadAll(folder, TObjectFacts(folder, temp.Path(), precision));
    ASSERT_EQ(all.size(), 5U);
    const TFolderObject& some = all[L"some.txt"];
    EXPECT_EQ(some.size, 12345);
    EXPECT_TRUE(some.flags.ContainsAll({TObjectFlag::FileSystem, TObjectFlag::ReadOnly, TObjectFlag::Hidden}));
    EXPECT_FALSE(some.flags.Contains(TObjectFlag::Folder));
    EXPECT_EQ(all[L"empty"].size, 0);
    EXPECT_FALSE(all[L"empty"].flags.Intersects({TObjectFlag::ReadOnly, TObjectFlag::Hidden}));
    EXPECT_TRUE(all[L"folder"].flags.Contains(TObjectFlag::Folder));
    EXPECT_EQ(all[L"folder"].size, TFolderObject::UnknownSize);
    EXPECT_EQ(all[L"\u05D0\u05D1 \U0001F4C1.\u0645"].size, 3);
    EXPECT_EQ(all[longName].size, 1);
    for (const auto& [name, object] : all) {
      const TFileTime disk = DiskTime(temp.PathOf(name));
      if (precision == TFactsPrecision::Exact) {
        EXPECT_EQ(object.changed, disk);
      } else {
        constexpr TFileTime twoSeconds = 20'000'000;
        EXPECT_LE(disk > object.changed ? disk - object.changed : object.changed - disk, twoSeconds);
      }
    }
  }
}

TEST(ObjectFacts, SizesBeyondFourGigabytesAreExactWhenAskedFor) {
  ScopedTempFolder temp;
  const std::wstring path = temp.MakeFile(L"big");
  constexpr std::int64_t size = (std::int64_t{5} << 30) + 7;
  {
    // Sparse: it takes no room on the disk.
    const TUniqueHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER end;
    end.QuadPart = size;
    ASSERT_TRUE(SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN) && SetEndOfFile(file.Get()));
  }
  const auto folder = RealFolder(temp.Path());
  EXPECT_EQ(ReadAll(folder, TObjectFacts(folder, temp.Path(), TFactsPrecision::Exact))[L"big"].size, size);
}

TEST(ObjectFacts, WhatIsGoneSinceItWasListedKeepsWhatTheFolderSaid) {
  ScopedTempFolder temp;
  temp.MakeFile(L"gone", 77);
  const auto folder = RealFolder(temp.Path());
  TFolderEnumerator enumerator(folder);
  TUniqueItemIdList item;
  ASSERT_EQ(enumerator.Next(item), TFolderStep::Object);
  DeleteFileW(temp.PathOf(L"gone").c_str());
  TFolderObject object;
  EXPECT_EQ(TObjectFacts(folder, temp.Path(), TFactsPrecision::Exact).Read(item.Get(), object), S_OK);
  EXPECT_EQ(object.name, L"gone");
  EXPECT_EQ(object.size, 77);
}

// Objects that are no files: an extension's folder, asked through its own interfaces.
class ExtensionFacts : public testing::Test {
protected:
  void SetUp() override {
    fFiles.AddDrive(L'C');
    fFiles.MakeFolder(L"C:\\Dir");
    fFiles.MakeFile(L"C:\\Dir\\doc", 1234);
    fItem = fShell.ItemIdList(L"C:\\Dir\\doc", true);
  }
  void TearDown() override { EXPECT_EQ(fShell.LiveObjects(), 0); }

  HRESULT Read(TFolderObject& object) { return TObjectFacts(fShell.Folder(L"C:\\Dir")).Read(fItem.Get(), object); }

  SimulatedFileSystem fFiles;
  FakeShellNamespace fShell{fFiles};
  TUniqueItemIdList fItem;
};

TEST_F(ExtensionFacts, ComeThroughTheFoldersDetails) {
  fShell.SetDisplayName(L"C:\\Dir\\doc", L"The document");
  TFolderObject expected;
  ASSERT_EQ(fFiles.Find(L"C:\\Dir\\doc", expected), S_OK);
  TFolderObject object;
  EXPECT_EQ(Read(object), S_OK);
  EXPECT_EQ(object.name, L"The document");
  EXPECT_EQ(object.size, 1234);
  // A date in a variant counts days in a double: good to about a millisecond.
  constexpr TFileTime millisecond = 10'000;
  EXPECT_LE(std::max(object.changed, expected.changed) - std::min(object.changed, expected.changed), millisecond);
  EXPECT_TRUE(object.flags.ContainsAll({TObjectFlag::FileSystem, TObjectFlag::Stream}));

  fShell.SetOffersFolder2(false);
  EXPECT_EQ(Read(object), S_OK);
  EXPECT_EQ(object.size, TFolderObject::UnknownSize);
  EXPECT_EQ(object.changed, 0U);
}

TEST_F(ExtensionFacts, ThatCannotBeHadAreLeftUnknown) {
  TFolderObject object;
  fShell.AddFault(L"C:\\Dir", {TShellFault::TKind::Crash, TShellMethod::GetAttributesOf});
  EXPECT_EQ(Read(object), S_OK);
  EXPECT_EQ(object.name, L"doc");
  EXPECT_TRUE(object.flags.IsEmpty());

  // Attributes of a drive may ask for its medium: no dialog may come of it.
  fShell.ClearFaults();
  DWORD inside = 0;
  fShell.AddFault(L"C:\\Dir", {TShellFault::TKind::Slow, TShellMethod::GetAttributesOf, 1, TShellFault::Always, E_FAIL,
                               [&] { inside = GetThreadErrorMode(); }});
  EXPECT_EQ(Read(object), S_OK);
  EXPECT_NE(inside & SEM_FAILCRITICALERRORS, 0U);

  fShell.ClearFaults();
  fShell.AddFault(L"C:\\Dir", {TShellFault::TKind::Crash, TShellMethod::GetDisplayNameOf});
  object.name = L"left over";
  object.size = 9;
  EXPECT_EQ(Read(object), E_FAIL);
  EXPECT_EQ(object.name, L"");
  EXPECT_EQ(object.size, TFolderObject::UnknownSize);

  fShell.ClearFaults();
  fFiles.Delete(L"C:\\Dir\\doc");
  EXPECT_EQ(Read(object), S_OK);
  EXPECT_EQ(object.name, L"doc");
  EXPECT_EQ(object.size, TFolderObject::UnknownSize);

  // Without the call that reads file data nothing but that is lost.
  ScopedShellApi api;
  api->SHGetDataFromIDListW = nullptr;
  EXPECT_EQ(Read(object), S_OK);
}

} // namespace
} // namespace kiv
