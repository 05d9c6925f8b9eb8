#include <core/PathList.h>

#include <doubles/ScopedTempFolder.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kiv {
namespace {

std::wstring TextOf(const TStrings& list) {
  return list.GetDelimitedText();
}

TEST(PathList, KeepsEachPathOnceInOneForm) {
  TKivPathList list;
  const std::wstring deep = L"C:\\" + std::wstring(400, L'x');
  const std::pair<std::wstring, int> additions[] = {
      {L"C:\\b", 0}, {L"c:\\B\\", 0}, {L"C:", 0},        {L"c:\\", 0},         {L"-C:\\a\\", 0},
      {L"C:\\a", 2}, {deep, 4},       {deep + L"\\", 4}, {L"\\\\s\\x y\\", 5}, {L"\\\\S\\X Y", 5},
  };
  for (const auto& [path, index] : additions) EXPECT_EQ(list.Add(path), index) << path;
  EXPECT_EQ(TextOf(list), L"-C:\\a;C:\\;C:\\a;C:\\b;" + deep + L";\\\\s\\x y");
  EXPECT_EQ(list.IndexOfPath(L"c:\\B\\"), 3);
  EXPECT_EQ(list.IndexOfPath(L"C:\\bb"), -1);
  EXPECT_TRUE(list.ContainsPath(L"-c:\\A"));
  EXPECT_FALSE(list.ContainsPath(L"-c:\\b"));

  TStringList plain;
  for (const wchar_t* path : {L"D:\\x\\", L"D:\\x", L"C:\\"}) plain.Add(path);
  list.Assign(&plain);
  EXPECT_EQ(TextOf(list), L"C:\\;D:\\x");
  list.Assign(&list);
  EXPECT_EQ(list.GetCount(), 2);
  list.SetDelimitedText(L"E:\\c d;E:\\a;E:\\a\\");
  EXPECT_EQ(TextOf(list), L"E:\\a;E:\\c d");
}

TEST(PathList, RefusesWhatDoesNotExistIfToldSo) {
  test::ScopedTempFolder folder;
  const std::wstring file = folder.MakeFile(L"there");
  TKivPathList list;
  list.SetCheckIfExists(true);
  EXPECT_EQ(list.Add(folder.PathOf(L"none")), -1);
  EXPECT_EQ(list.Add(std::wstring(L"a\0b", 3)), -1);
  EXPECT_EQ(list.Add(file), 0);
  EXPECT_EQ(list.GetCount(), 1);
}

TEST(PathList, RemembersThatItHeldANetworkPath) {
  for (const wchar_t* path : {L"\\\\server\\share", L"\\\\?\\UNC\\server\\share", L"-\\\\server\\share"}) {
    TKivPathList list;
    list.Add(L"C:\\a");
    list.Add(L"\\\\?\\C:\\a");
    EXPECT_FALSE(list.ContainsNetworkPath());
    list.Add(path);
    EXPECT_TRUE(list.ContainsNetworkPath()) << path;
    list.Clear();
    EXPECT_TRUE(list.ContainsNetworkPath()) << path;
  }
}

TEST(PathList, TellsOfEachPathThatComesOrGoes) {
  auto list = std::make_unique<TKivPathList>();
  std::wstring told;
  const auto tell = [&told](const wchar_t* what) {
    return [&told, what](const std::wstring& path, int index) { told += what + path + std::to_wstring(index) + L" "; };
  };
  list->SetOnAdd(tell(L"+"));
  list->SetOnRemove(tell(L"-"));
  list->Add(L"C:\\b\\");
  list->Add(L"C:\\a");
  list->Add(L"C:\\A");
  list->Delete(1);
  list->Add(L"C:\\c");
  list->Clear();
  list->Clear();
  EXPECT_EQ(told, L"+C:\\b0 +C:\\a0 -C:\\b1 +C:\\c1 -C:\\c1 -C:\\a0 ");
  told.clear();
  {
    const TKivPathList::ScopedSkipEvents skip(*list);
    list->Add(L"C:\\x");
    list->Add(L"C:\\y");
    list->Delete(0);
  }
  EXPECT_EQ(told, L"");
  // A handler may end the list.
  list->Add(L"C:\\z");
  list->SetOnRemove([&list](const std::wstring&, int) { list.reset(); });
  list->Clear();
  EXPECT_EQ(list, nullptr);
}

TEST(PathList, MakesTheFormForPlatformCalls) {
  const auto bytes = [](TKivPathList& list, std::size_t length) {
    return std::wstring(list.GetStringPointer(), length);
  };
  TKivPathList list;
  EXPECT_EQ(bytes(list, 2), std::wstring(2, L'\0'));
  list.Add(L"C:\\b");
  list.Add(L"C:\\");
  EXPECT_EQ(bytes(list, 10), std::wstring(L"C:\\\0C:\\b\0\0", 10));
  list.Delete(0);
  EXPECT_EQ(bytes(list, 6), std::wstring(L"C:\\b\0\0", 6));

  TWideStringBuilder builder(false, 3);
  std::wstring all;
  for (int i = 0; i < 1000; ++i) {
    builder.Append(std::to_wstring(i));
    all += std::to_wstring(i);
  }
  EXPECT_EQ(builder.GetSize(), all.size() * sizeof(wchar_t));
  EXPECT_EQ(builder.GetString(), all);
}

TEST(PathList, TakesPathsApart) {
  using TParts = std::vector<std::wstring>;
  const std::pair<const wchar_t*, TParts> paths[] = {
      {L"", {}},
      {L"C:", {L"C:"}},
      {L"C:\\a b\\\\c\\", {L"C:", L"a b", L"c"}},
      {L"\\\\s\\share\\x", {L"\\\\s", L"share", L"x"}},
      {L"\\\\?\\UNC\\s\\x", {L"\\\\s", L"x"}},
      {L"\\\\?\\C:\\x", {L"C:", L"x"}},
      {L"\\\\", {}},
  };
  for (const auto& [path, parts] : paths) EXPECT_EQ(TKivPathList::SplitPath(path), parts) << path;
  EXPECT_EQ(TKivPathList::SplitPathByDelimiter(L"/a/b//c\\d/", L'/'), (TParts{L"a", L"b", L"c\\d"}));

  const std::pair<const wchar_t*, bool> roots[] = {
      {L"", true},
      {L"C:\\a;c:\\b;\\\\?\\C:\\c", true},
      {L"C:\\a;D:\\a", false},
      {L"\\\\s\\x\\a;\\\\S\\X\\b", true},
      {L"\\\\s\\x\\a;\\\\s\\y\\a", false},
      {L"a;b", false},
  };
  for (const auto& [texts, shared] : roots) {
    TStringList list;
    list.SetDelimiter(L';');
    list.SetDelimitedText(texts);
    EXPECT_EQ(TKivPathList::ShareSameRoot(list), shared) << texts;
  }
}

} // namespace
} // namespace kiv
