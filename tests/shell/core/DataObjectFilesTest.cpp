#include <core/DataObjectFiles.h>

#include <doubles/Crash.h>
#include <platform/FileFormats.h>
#include <platform/InterfacedObject.h>

#include <gtest/gtest.h>

#include <shlobj.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kiv {
namespace {

using TNames = std::vector<std::wstring>;

template <typename THead>
HGLOBAL Memory(const THead& head, std::wstring_view text = {}) {
  const HGLOBAL memory = GlobalAlloc(GHND, sizeof(head) + text.size() * sizeof(wchar_t));
  auto* const bytes = static_cast<char*>(GlobalLock(memory));
  std::memcpy(bytes, &head, sizeof(head));
  if (!text.empty()) std::memcpy(bytes + sizeof(head), text.data(), text.size() * sizeof(wchar_t));
  GlobalUnlock(memory);
  return memory;
}

HGLOBAL Drop() {
  return Memory(DROPFILES{.pFiles = sizeof(DROPFILES), .pt = {}, .fNC = FALSE, .fWide = TRUE},
                std::wstring_view(L"C:\\a\0C:\\b\0", 11));
}

HGLOBAL Wide() {
  FILEGROUPDESCRIPTORW group{};
  group.cItems = 1;
  std::wcscpy(group.fgd[0].cFileName, L"dir\\wide");
  return Memory(group);
}

HGLOBAL Narrow() {
  FILEGROUPDESCRIPTORA group{};
  group.cItems = 1;
  std::strcpy(group.fgd[0].cFileName, "narrow");
  return Memory(group);
}

// Gives what is scripted for a format, and counts what of it was given back.
class TDataObjectFake final : public TInterfacedObject<IDataObject> {
public:
  std::map<CLIPFORMAT, std::function<HRESULT(STGMEDIUM&)>> offers;

  HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* medium) override {
    const auto offer = offers.find(format->cfFormat);
    const bool asked_rightly = format->tymed == TYMED_HGLOBAL && format->lindex == -1;
    return offer == offers.end() || !asked_rightly ? DV_E_FORMATETC : offer->second(*medium);
  }
  HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC*, FORMATETC*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD, IEnumFORMATETC**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DUnadvise(DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }
};

auto Give(HGLOBAL (*make)()) {
  return [make](STGMEDIUM& medium) {
    medium = {};
    medium.tymed = TYMED_HGLOBAL;
    medium.hGlobal = make();
    return S_OK;
  };
}

TEST(DataObjectFiles, TheBestFormatOfferedGivesTheNames) {
  EXPECT_TRUE(GetFilenamesFromDataObject(nullptr).empty());
  const long before = LiveObjects();
  {
    // What its owner gets back when nobody needs it any more.
    const auto owner = Make<TDataObjectFake>();
    const auto data = Make<TDataObjectFake>();
    EXPECT_TRUE(GetFilenamesFromDataObject(data.Get()).empty());
    data->offers[CF_FILEDESCRIPTORA()] = Give(&Narrow);
    EXPECT_EQ(GetFilenamesFromDataObject(data.Get()), TNames{L"narrow"});
    data->offers[CF_FILEDESCRIPTORW()] = Give(&Wide);
    EXPECT_EQ(GetFilenamesFromDataObject(data.Get()), TNames{L"dir\\wide"});
    data->offers[CF_HDROP] = [&owner](STGMEDIUM& medium) {
      Give (&Drop)(medium);
      (medium.pUnkForRelease = owner.Get())->AddRef();
      return S_OK;
    };
    EXPECT_EQ(GetFilenamesFromDataObject(data.Get()), (TNames{L"C:\\a", L"C:\\b"}));
    owner->AddRef();
    EXPECT_EQ(owner->Release(), 1U);
    // A crash, a failure that leaves something behind, and a medium that wasn't asked for.
    data->offers[CF_HDROP] = [](STGMEDIUM&) -> HRESULT {
      test::Crash();
      return S_OK;
    };
    EXPECT_EQ(GetFilenamesFromDataObject(data.Get()), TNames{L"dir\\wide"});
    data->offers[CF_HDROP] = [](STGMEDIUM& medium) {
      medium.tymed = TYMED_HGLOBAL;
      medium.hGlobal = reinterpret_cast<HGLOBAL>(std::uintptr_t{0x1234});
      return E_OUTOFMEMORY;
    };
    EXPECT_EQ(GetFilenamesFromDataObject(data.Get()), TNames{L"dir\\wide"});
    data->offers[CF_HDROP] = [](STGMEDIUM& medium) {
      medium.tymed = TYMED_ISTREAM;
      return CreateStreamOnHGlobal(nullptr, TRUE, &medium.pstm);
    };
    EXPECT_EQ(GetFilenamesFromDataObject(data.Get()), TNames{L"dir\\wide"});
  }
  EXPECT_EQ(LiveObjects(), before);
}

} // namespace
} // namespace kiv
