#include <core/IdListFromPath.h>

#include <core/FileSystemBindData.h>
#include <doubles/Crash.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/ShellApi.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace kiv {
namespace {

using test::Crash;
using test::ScopedTempFolder;

// A list that belongs to nobody's folder, with one item of the given type.
PIDLIST_ABSOLUTE MakeList(BYTE type) {
  const BYTE bytes[] = {3, 0, type, 0, 0};
  void* const memory = CoTaskMemAlloc(sizeof(bytes));
  std::memcpy(memory, bytes, sizeof(bytes));
  return static_cast<PIDLIST_ABSOLUTE>(memory);
}
std::vector<BYTE> Bytes(const TUniqueItemIdList& list) {
  if (!list) return {};
  const auto* const first = reinterpret_cast<const BYTE*>(list.Get());
  return {first, first + ILGetSize(list.Get())};
}
std::vector<BYTE> Bytes(std::initializer_list<BYTE> items) {
  std::vector<BYTE> bytes;
  for (const BYTE type : items) bytes.insert(bytes.end(), {3, 0, type});
  bytes.insert(bytes.end(), {0, 0});
  return bytes;
}

std::wstring PathOf(const TUniqueItemIdList& list) {
  wchar_t path[MAX_PATH] = L"-";
  if (list) SHGetPathFromIDListW(static_cast<PCIDLIST_ABSOLUTE>(list.Get()), path);
  return path;
}

// A folder that parses as the test says.
class TParserFake final : public TInterfacedObject<IShellFolder> {
public:
  std::function<HRESULT(const std::wstring& name, HWND window, PIDLIST_RELATIVE* list)> parse;
  std::function<HRESULT(PCUIDLIST_RELATIVE list, void** folder)> bind;
  bool crashes = false;

  HRESULT STDMETHODCALLTYPE ParseDisplayName(HWND window, IBindCtx*, LPWSTR name, ULONG* eaten, PIDLIST_RELATIVE* list,
                                             ULONG* attributes) override {
    if (crashes) Crash();
    if (!eaten || !attributes) return E_POINTER;
    return parse ? parse(name, window, list) : E_INVALIDARG;
  }
  HRESULT STDMETHODCALLTYPE BindToObject(PCUIDLIST_RELATIVE list, IBindCtx*, REFIID, void** object) override {
    return bind ? bind(list, object) : E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE EnumObjects(HWND, SHCONTF, IEnumIDList**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE BindToStorage(PCUIDLIST_RELATIVE, IBindCtx*, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CompareIDs(LPARAM, PCUIDLIST_RELATIVE, PCUIDLIST_RELATIVE) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CreateViewObject(HWND, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetAttributesOf(UINT, PCUITEMID_CHILD_ARRAY, SFGAOF*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetUIObjectOf(HWND, UINT, PCUITEMID_CHILD_ARRAY, REFIID, UINT*, void**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetDisplayNameOf(PCUITEMID_CHILD, SHGDNF, STRRET*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetNameOf(HWND, PCUITEMID_CHILD, LPCWSTR, SHGDNF, PITEMID_CHILD*) override {
    return E_NOTIMPL;
  }
};

TEST(IdListFromPath, GivesTheRealListOfEveryFormOfAPath) {
  ScopedTempFolder temp;
  const std::wstring file = temp.MakeFile(L"Dir\\a file");
  PIDLIST_ABSOLUTE raw = nullptr;
  ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, &raw), S_OK);
  const TUniqueItemIdList drives(raw);
  EXPECT_EQ(Bytes(GetIdListFromPath(nullptr, L"")), Bytes(drives));
  EXPECT_EQ(PathOf(GetIdListFromPath(nullptr, L"C:")), L"C:\\");
  EXPECT_EQ(PathOf(GetIdListFromPath(nullptr, L"c:\\")), L"C:\\");
  EXPECT_EQ(PathOf(GetIdListFromPath(nullptr, file)), file);
  EXPECT_EQ(PathOf(GetIdListFromPath(nullptr, file, GetDesktopWindow())), file);
  wchar_t windows[MAX_PATH];
  GetWindowsDirectoryW(windows, MAX_PATH);
  for (const HWND dialogs : {HWND{}, GetDesktopWindow()}) {
    EXPECT_EQ(PathOf(GetIdListFromPath(nullptr, L"shell:Windows", dialogs)), windows);
    EXPECT_FALSE(GetIdListFromPath(nullptr, L"shell:No such folder", dialogs));
  }
  // In a folder the name is relative, and so is the list.
  const TUniqueItemIdList parent = GetIdListFromPath(nullptr, temp.PathOf(L"Dir"));
  ComPtr<IShellFolder> folder;
  ASSERT_EQ(Desktop()->BindToObject(parent.Get(), nullptr, IID_IShellFolder, reinterpret_cast<void**>(&folder)), S_OK);
  const TUniqueItemIdList child = GetIdListFromPath(folder.Get(), L"a file");
  ASSERT_TRUE(child);
  EXPECT_EQ(child.Get(), reinterpret_cast<PUIDLIST_RELATIVE>(ILFindLastID(child.Get())));
}

TEST(IdListFromPath, WhatNamesNothingGivesNil) {
  ScopedTempFolder temp;
  temp.MakeFile(L"file");
  const std::wstring lone = {static_cast<wchar_t>(0xDC00)};
  const std::wstring null(1, L'\0');
  for (const std::wstring& path :
       {temp.PathOf(L"none"), temp.PathOf(L"none\\below"), temp.PathOf(L"file") + null, null, L"C:\\" + lone,
        L"C:\\" + std::wstring(300, L'x'), L"C:\\" + std::wstring(32764, L'x'), L"C:\\" + std::wstring(40000, L'x'),
        std::wstring(L"::{garbage}"), std::wstring(L"::{00000000-0000-0000-0000-00000000000"), std::wstring(L":"),
        std::wstring(L"\\\\?\\volume{"), std::wstring(L"\\\\?\\Volume{zzzzzzzz-0000-0000-0000-000000000000}\\")}) {
    EXPECT_FALSE(GetIdListFromPath(nullptr, path)) << testing::PrintToString(path.substr(0, 60));
    EXPECT_FALSE(GetIdListFromPath(Desktop().Get(), path)) << testing::PrintToString(path.substr(0, 60));
  }
}

TEST(IdListFromPath, ThePlatformIsAskedInOrderAndMayCrash) {
  static std::vector<std::wstring> asked;
  ScopedShellApi api;
  api->ILCreateFromPathW = [](PCWSTR path) -> PIDLIST_ABSOLUTE {
    asked.push_back(std::wstring(L"create ") + path);
    if (*path == L'1') return MakeList(1);
    if (*path == L'X') Crash();
    return nullptr;
  };
  api->SHParseDisplayName = [](PCWSTR path, IBindCtx* context, PIDLIST_ABSOLUTE* list, SFGAOF, SFGAOF*) -> HRESULT {
    asked.push_back(std::wstring(context ? L"bound " : L"parse ") + path);
    if (path[1] == L'X') Crash();
    if (path[1] == L'2') *list = MakeList(2);
    return *list ? S_OK : E_INVALIDARG;
  };
  const struct {
    const wchar_t* path;
    std::vector<BYTE> bytes;
    std::vector<std::wstring> calls;
  } cases[] = {
      {L"1", Bytes({1}), {L"create 1"}},
      {L"x2", Bytes({2}), {L"create x2", L"parse x2"}},
      {L"X2", Bytes({2}), {L"create X2", L"parse X2"}},
      {L"XX", {}, {L"create XX", L"parse XX"}},
      {L"33", {}, {L"create 33", L"parse 33"}},
      {L"D:", {}, {L"create D:\\", L"parse D:\\"}},
  };
  for (const auto& c : cases) {
    asked.clear();
    EXPECT_EQ(Bytes(GetIdListFromPath(nullptr, c.path)), c.bytes) << c.path;
    EXPECT_EQ(asked, c.calls) << c.path;
  }
  api->ILCreateFromPathW = nullptr;
  api->SHParseDisplayName = nullptr;
  api->SHGetSpecialFolderLocation = nullptr;
  for (const wchar_t* path : {L"", L"x2", L"C:\\windows", L"\\\\?\\volume{00000000-0000-0000-0000-000000000001}"}) {
    EXPECT_FALSE(GetIdListFromPath(nullptr, path)) << path;
  }
}

TEST(IdListFromPath, AFolderOrAWindowGoesByTheFoldersOwnParser) {
  const HWND window = GetDesktopWindow();
  static ComPtr<TParserFake> root;
  root = Make<TParserFake>();
  std::wstring seen;
  const auto answer = [&](const std::wstring& name, HWND dialogs, PIDLIST_RELATIVE* list) -> HRESULT {
    seen = name + (dialogs == window ? L" with window" : L"");
    if (name == L"none") return E_FAIL;
    *list = MakeList(7);
    return name == L"maybe" ? S_FALSE : S_OK;
  };
  root->parse = answer;
  ScopedShellApi api;
  api->SHGetDesktopFolder = [](IShellFolder** folder) -> HRESULT { return root->QueryInterface(IID_PPV_ARGS(folder)); };
  EXPECT_EQ(Bytes(GetIdListFromPath(nullptr, L"C:", window)), Bytes({7}));
  EXPECT_EQ(seen, L"C:\\ with window");
  const auto folder = Make<TParserFake>();
  folder->parse = answer;
  EXPECT_EQ(Bytes(GetIdListFromPath(folder.Get(), L"name")), Bytes({7}));
  EXPECT_EQ(seen, L"name");
  EXPECT_FALSE(GetIdListFromPath(folder.Get(), L"none"));
  EXPECT_FALSE(GetIdListFromPath(folder.Get(), L"maybe")); // not S_OK
  folder->crashes = true;
  EXPECT_FALSE(GetIdListFromPath(folder.Get(), L"name"));
  root.Reset();
}

TEST(IdListFromPath, AVolumeIsAnItemOfItsOwnInTheFolderOfTheDrives) {
  static ComPtr<TParserFake> root;
  root = Make<TParserFake>();
  const auto volume = Make<TParserFake>();
  std::vector<BYTE> bound;
  root->bind = [&](PCUIDLIST_RELATIVE list, void** folder) -> HRESULT {
    const auto* const first = reinterpret_cast<const BYTE*>(list);
    bound.assign(first, first + ILGetSize(list));
    return volume->QueryInterface(IID_IShellFolder, folder);
  };
  volume->parse = [](const std::wstring& name, HWND, PIDLIST_RELATIVE* list) -> HRESULT {
    if (name != L"dir\\file") return E_FAIL;
    *list = MakeList(9);
    return S_OK;
  };
  ScopedShellApi api;
  api->SHGetDesktopFolder = [](IShellFolder** folder) -> HRESULT { return root->QueryInterface(IID_PPV_ARGS(folder)); };
  api->SHGetSpecialFolderLocation = [](HWND, int id, PIDLIST_ABSOLUTE* list) -> HRESULT {
    *list = id == CSIDL_DRIVES ? MakeList(5) : nullptr;
    return *list ? S_OK : E_FAIL;
  };
  api->ILCreateFromPathW = nullptr;
  api->SHParseDisplayName = nullptr;

  std::vector<BYTE> expected = {3, 0, 5, 41, 0, 0x21};
  expected.resize(3 + 25, 0);
  expected.insert(expected.end(), {0xD4, 0xC3, 0xB2, 0xA1, 0x34, 0x12, 0x78, 0x56, 1, 2, 3, 4, 5, 6, 7, 8});
  std::vector<BYTE> below = expected;
  expected.insert(expected.end(), {0, 0});
  below.insert(below.end(), {3, 0, 9, 0, 0});

  const std::wstring id = L"{A1B2C3D4-1234-5678-0102-030405060708}";
  for (const wchar_t* prefix : {L"\\\\?\\Volume", L"\\\\?\\VOLUME"}) {
    EXPECT_EQ(Bytes(GetIdListFromPath(nullptr, prefix + id)), expected);
    EXPECT_EQ(Bytes(GetIdListFromPath(nullptr, prefix + id + L"\\")), expected);
    EXPECT_TRUE(bound.empty());
    EXPECT_EQ(Bytes(GetIdListFromPath(nullptr, prefix + id + L"\\dir\\file")), below);
    EXPECT_EQ(bound, expected);
    EXPECT_FALSE(GetIdListFromPath(nullptr, prefix + id + L"\\dir\\none"));
    bound.clear();
  }
  EXPECT_FALSE(GetIdListFromPath(nullptr, L"\\\\?\\Volume" + id.substr(0, 37)));
  EXPECT_FALSE(GetIdListFromPath(nullptr, L"\\\\?\\Volume{A1B2C3D4_1234-5678-0102-030405060708}"));
  root->bind = nullptr;
  EXPECT_FALSE(GetIdListFromPath(nullptr, L"\\\\?\\Volume" + id + L"\\dir\\file"));
  root.Reset();
}

TEST(IdListFromPath, WhatOnlyTheDiskKnowsIsParsedWithTheDisksData) {
  ScopedTempFolder temp;
  const std::wstring file = temp.MakeFile(L"file", 77);
  static WIN32_FIND_DATAW seen;
  static DWORD mode;
  ScopedShellApi api;
  api->ILCreateFromPathW = nullptr;
  api->SHParseDisplayName = [](PCWSTR, IBindCtx* context, PIDLIST_ABSOLUTE* list, SFGAOF, SFGAOF*) -> HRESULT {
    ComPtr<IUnknown> parameter;
    wchar_t name[] = L"File System Bind Data";
    if (!context || FAILED(context->GetObjectParam(name, &parameter))) return E_INVALIDARG;
    const auto data = parameter.MaybeAs<IFileSystemBindData>();
    BIND_OPTS options{};
    options.cbStruct = sizeof(options);
    if (!data || FAILED(data->GetFindData(&seen)) || FAILED(context->GetBindOptions(&options))) return E_INVALIDARG;
    mode = options.grfMode;
    *list = MakeList(4);
    return S_OK;
  };
  EXPECT_EQ(Bytes(GetIdListFromPath(nullptr, file)), Bytes({4}));
  EXPECT_EQ(seen.nFileSizeLow, 77U);
  EXPECT_EQ(std::wstring(seen.cFileName), L"file");
  EXPECT_EQ(mode, static_cast<DWORD>(STGM_CREATE));
  EXPECT_EQ(Bytes(GetIdListFromPath(nullptr, L"\\\\?\\" + file)), Bytes({4}));
  EXPECT_FALSE(GetIdListFromPath(nullptr, temp.PathOf(L"none")));
  EXPECT_FALSE(GetIdListFromPath(nullptr, temp.PathOf(L"*")));
  // A name in a folder has nothing to do with the current directory.
  const auto folder = Make<TParserFake>();
  wchar_t before[MAX_PATH];
  GetCurrentDirectoryW(MAX_PATH, before);
  ASSERT_TRUE(SetCurrentDirectoryW(temp.Path().c_str()));
  EXPECT_FALSE(GetIdListFromPath(folder.Get(), L".\\file"));
  EXPECT_EQ(Bytes(GetIdListFromPath(folder.Get(), file)), Bytes({4}));
  SetCurrentDirectoryW(before);

  const auto data = Make<TFileSystemBindData>(seen);
  EXPECT_EQ(data->GetFindData(nullptr), E_POINTER);
  EXPECT_EQ(data->SetFindData(nullptr), E_POINTER);
  WIN32_FIND_DATAW other{};
  other.nFileSizeLow = 5;
  EXPECT_EQ(data->SetFindData(&other), S_OK);
  EXPECT_EQ(data->GetFindData(&seen), S_OK);
  EXPECT_EQ(seen.nFileSizeLow, 5U);
}

TEST(IdListFromPath, ErrorModeAndRedirectionAreAsBefore) {
  static int depth;
  static int deepest;
  static DWORD mode;
  depth = deepest = 0;
  ScopedShellApi api;
  api->Wow64DisableWow64FsRedirection = [](PVOID* old) -> WINBOOL {
    *old = &depth;
    deepest = std::max(deepest, ++depth);
    return TRUE;
  };
  api->Wow64RevertWow64FsRedirection = [](PVOID old) -> WINBOOL {
    if (old == &depth) --depth;
    return TRUE;
  };
  api->ILCreateFromPathW = [](PCWSTR) -> PIDLIST_ABSOLUTE {
    mode = GetThreadErrorMode();
    Crash();
    return nullptr;
  };
  const DWORD before = GetThreadErrorMode();
  GetIdListFromPath(nullptr, L"C:\\windows");
  EXPECT_EQ(mode, static_cast<DWORD>(SEM_FAILCRITICALERRORS));
  EXPECT_EQ(GetThreadErrorMode(), before);
  EXPECT_EQ(deepest, 1);
  EXPECT_EQ(depth, 0);
}

} // namespace
} // namespace kiv
