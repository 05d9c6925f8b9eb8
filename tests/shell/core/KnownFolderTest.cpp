// Which special folder a list is, by the word of a known folder manager that answers as the test says.
#include <core/ItemIdList.h>

#include <core/ItemIdListHelper.h>
#include <core/KnownFolder.h>
#include <core/SpecialFolders.h>
#include <doubles/FakeShellItem.h>
#include <doubles/Gate.h>
#include <doubles/ScopedTempFolder.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

namespace kiv {
namespace {

constexpr GUID Documents = ParseGuid("{FDD39AD0-238F-46AF-ADB4-6C85480369C7}");
constexpr GUID LocalDocuments = ParseGuid("{F42EE2D3-909F-4907-8871-4C22FC0BF756}");
constexpr GUID DesktopId = ParseGuid("{B4BFCC3A-DB2C-424C-B029-7FE99A87C641}");
constexpr GUID Drives = ParseGuid("{0AC0837C-BBF8-452A-850D-79D08E667CA7}");
constexpr GUID Favorites = ParseGuid("{1777F761-68AD-4D8A-87BD-30B759FA33DD}");
constexpr GUID Unlisted = ParseGuid("{4C5C32FF-BB9D-43B0-B5B4-2D72E54EAAA4}");

class FakeFolder final : public TInterfacedObject<IKnownFolder> {
public:
  explicit FakeFolder(const GUID& pId) : fId(pId) {}
  HRESULT STDMETHODCALLTYPE GetId(KNOWNFOLDERID* id) override { return *id = fId, S_OK; }
  HRESULT STDMETHODCALLTYPE GetCategory(KF_CATEGORY*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetShellItem(DWORD, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetPath(DWORD, LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetPath(DWORD, LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDList(DWORD, PIDLIST_ABSOLUTE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolderType(FOLDERTYPEID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetRedirectionCapabilities(KF_REDIRECTION_CAPABILITIES*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolderDefinition(KNOWNFOLDER_DEFINITION*) override { return E_NOTIMPL; }

private:
  const GUID fId;
};

// What the managers answer; pool threads ask.
struct TScript {
  std::function<HRESULT(GUID&)> byList = [](GUID&) { return E_FAIL; };
  std::function<HRESULT(const std::wstring&, GUID&)> byPath = [](const std::wstring&, GUID&) { return E_FAIL; };
  std::atomic<int> made{0};
  std::atomic<int> pathQuestions{0};
};
std::shared_ptr<TScript> gScript;

HRESULT Answer(HRESULT hr, const GUID& id, IKnownFolder** folder) {
  *folder = nullptr;
  return hr == S_OK ? ComPtr<IKnownFolder>(Make<FakeFolder>(id)).CopyTo(folder) : hr;
}

class FakeManager final : public TInterfacedObject<IKnownFolderManager> {
public:
  HRESULT STDMETHODCALLTYPE FindFolderFromPath(LPCWSTR path, FFFP_MODE mode, IKnownFolder** folder) override {
    EXPECT_EQ(mode, FFFP_EXACTMATCH);
    ++fScript->pathQuestions;
    GUID id{};
    return Answer(fScript->byPath(path, id), id, folder);
  }
  HRESULT STDMETHODCALLTYPE FindFolderFromIDList(PCIDLIST_ABSOLUTE, IKnownFolder** folder) override {
    GUID id{};
    return Answer(fScript->byList(id), id, folder);
  }
  HRESULT STDMETHODCALLTYPE FolderIdFromCsidl(int, KNOWNFOLDERID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FolderIdToCsidl(REFKNOWNFOLDERID, int*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolderIds(KNOWNFOLDERID**, UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolder(REFKNOWNFOLDERID, IKnownFolder**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolderByName(LPCWSTR, IKnownFolder**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RegisterFolder(REFKNOWNFOLDERID, KNOWNFOLDER_DEFINITION const*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE UnregisterFolder(REFKNOWNFOLDERID) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Redirect(REFKNOWNFOLDERID, HWND, KF_REDIRECT_FLAGS, LPCWSTR, UINT, const KNOWNFOLDERID*,
                                     LPWSTR*) override {
    return E_NOTIMPL;
  }

private:
  const std::shared_ptr<TScript> fScript = gScript;
};

class KnownFolder : public testing::Test {
protected:
  static void SetUpTestSuite() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    MainThread::Attach();
  }
  void SetUp() override {
    gScript = std::make_shared<TScript>();
    SpecialFolders::Clear();
    static const auto original = ShellApi().CoCreateInstance;
    fShell->CoCreateInstance = [](REFCLSID id, IUnknown* outer, DWORD context, REFIID iid, void** made) -> HRESULT {
      if (id != CLSID_KnownFolderManager) return original(id, outer, context, iid, made);
      ++gScript->made;
      return fNoManager ? REGDB_E_CLASSNOTREG : Make<FakeManager>()->QueryInterface(iid, made);
    };
    fNoManager = false;
    fPath = LR"(Q:\folder)";
  }
  void TearDown() override {
    auto* const pool = static_cast<TWorkerThreadPoolRefCounted*>(TItemIdListHelperThreadPool::Instance().Get());
    while (pool->GetWorkItemsActive()) std::this_thread::yield(); // it uses what ends here
  }
  static ComPtr<TKivItemIdList> List(int depth = 3) {
    return TKivItemIdList::Create(TUniqueItemIdList(test::MakeUpList(depth)));
  }
  static void AnswerByList(const GUID& id) {
    gScript->byList = [id](GUID& answer) { return answer = id, S_OK; };
  }

  static inline bool fNoManager;
  static inline std::wstring fPath; // of every list
  test::ScopedFakeShell fShell{{.path = [](PCIDLIST_ABSOLUTE) { return fPath; }}};
};

TEST_F(KnownFolder, IsWhatItsIdentifierSays) {
  const struct {
    GUID id;
    TKivShellFolders asked;
    const wchar_t* path;
    TKivShellFolder expected;
  } cases[] = {
      {Documents, {}, LR"(Q:\x)", SF_PERSONAL},
      {LocalDocuments, {}, LR"(Q:\x)", SF_PERSONAL},
      {LocalDocuments, {SF_PERSONAL, SF_FONTS}, LR"(Q:\x)", SF_PERSONAL},
      {LocalDocuments, {SF_FONTS}, LR"(Q:\x)", SF_UNKNOWN},
      {Documents, {SF_FONTS}, LR"(Q:\x)", SF_UNKNOWN},
      {Drives, {}, L"", SF_DRIVES},
      {DesktopId, {}, LR"(Q:\x)", SF_DESKTOPDIRECTORY},
      {Favorites, {}, LR"(Q:\x)", SF_FAVORITES},
      {Favorites, {SF_COMMON_FAVORITES}, LR"(Q:\x)", SF_COMMON_FAVORITES},
      {Unlisted, {}, LR"(Q:\x)", SF_FILESYSTEMFOLDER},
      {Unlisted, {}, L"", SF_UNKNOWN},
      {Unlisted, {SF_FONTS}, LR"(Q:\x)", SF_UNKNOWN},
  };
  for (const auto& c : cases) {
    AnswerByList(c.id);
    fPath = c.path;
    EXPECT_EQ(List()->TestForSpecialFolder(c.asked), c.expected) << &c - cases;
  }
  AnswerByList(Documents);
  EXPECT_EQ(List(0)->TestForSpecialFolder({}), SF_DESKTOP) << "the root is what it is";
  EXPECT_EQ(List(0)->TestForSpecialFolder({SF_PERSONAL}), SF_UNKNOWN);
  EXPECT_EQ(EmptyIdList()->SpecialFolder(), SF_INVALID);
}

TEST_F(KnownFolder, IsAskedForByPathIfTheListIsNotKnown) {
  gScript->byPath = [](const std::wstring& path, GUID& id) {
    EXPECT_EQ(path, fPath);
    return id = Documents, S_OK;
  };
  EXPECT_EQ(List()->TestForSpecialFolder({}), SF_PERSONAL);
  fPath.clear();
  EXPECT_EQ(List()->TestForSpecialFolder({}), SF_UNKNOWN);
  EXPECT_EQ(gScript->pathQuestions, 1) << "what has no path isn't asked for by one";
}

TEST_F(KnownFolder, IsComparedWithAllWhereTheManagerCanNotTell) {
  for (const HRESULT by_list : {E_NOTIMPL, E_FAIL}) {
    SpecialFolders::Clear();
    gScript->byList = [by_list](GUID&) { return by_list; };
    gScript->byPath = [](const std::wstring&, GUID&) { return E_NOTIMPL; };
    EXPECT_EQ(List()->TestForSpecialFolder({}), SF_BITBUCKET) << "the first one: all have the same path here";
    const int made = gScript->made;
    EXPECT_EQ(List()->TestForSpecialFolder({SF_FONTS}), SF_FONTS);
    EXPECT_EQ(gScript->made, made) << "it isn't asked twice";
  }
  SpecialFolders::Clear();
  fNoManager = true;
  EXPECT_EQ(List()->TestForSpecialFolder({}), SF_BITBUCKET);
}

TEST_F(KnownFolder, IsNotWaitedForWithoutLimit) {
  test::TGate gate;
  gScript->byList = [&](GUID& id) { return gate.Pass(), id = Documents, S_OK; };
  EXPECT_EQ(List()->TestForSpecialFolder({}), SF_FILESYSTEMFOLDER) << "by the path, which is none";
  EXPECT_EQ(gScript->pathQuestions, 1);
  bool finished = true;
  EXPECT_EQ(TItemIdListHelper::TryGetSpecialFolder(List().Get(), 1, finished), SF_UNKNOWN);
  EXPECT_FALSE(finished);
  gate.Open();
}

TEST_F(KnownFolder, IsAskedAtOnceOnTheHelpersThreads) {
  std::thread::id asked;
  gScript->byList = [&](GUID& id) {
    EXPECT_TRUE(TItemIdListHelperThreadPool::IsCurrentThread());
    asked = std::this_thread::get_id();
    return id = Documents, S_OK;
  };
  EXPECT_FALSE(TItemIdListHelperThreadPool::IsCurrentThread());
  bool finished = false;
  const auto asks = AskInTime<std::thread::id>(
      [] {
        EXPECT_EQ(List()->TestForSpecialFolder({}), SF_PERSONAL);
        return std::this_thread::get_id();
      },
      100'000, {}, finished);
  EXPECT_TRUE(finished);
  EXPECT_EQ(asks, asked);
}

TEST_F(KnownFolder, IsNotAskedForForAPlainFile) {
  test::ScopedTempFolder temp;
  fPath = temp.MakeFile(L"file");
  EXPECT_EQ(List()->TestForSpecialFolder({}), SF_FILESYSTEMFOLDER);
  EXPECT_EQ(List()->TestForSpecialFolder({SF_PERSONAL}), SF_UNKNOWN);
  EXPECT_EQ(gScript->made, 0);
  AnswerByList(ParseGuid("{7B0DB17D-9CD2-4A93-9733-46CC89022E7C}"));
  fPath = temp.MakeFile(L"Documents.library-ms");
  EXPECT_EQ(List()->TestForSpecialFolder({}), SF_LIBRARY_DOCUMENTS) << "a library is a file";
}

} // namespace
} // namespace kiv
