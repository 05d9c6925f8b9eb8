#include <core/DataObjectFiles.h>

#include <platform/FaultGuard.h>
#include <platform/FileFormats.h>

#include <ole2.h>

namespace kiv {

namespace {

// A block of memory that a data object hands out, in one format.
class TMedium {
public:
  TMedium(IDataObject* pData, CLIPFORMAT pFormat) {
    FORMATETC format = HDropFormatEtc;
    format.cfFormat = pFormat;
    const HRESULT hr = GuardedCall([&] { return pData->GetData(&format, &fMedium); });
    if (hr != S_OK) fMedium = {}; // what is in it then is nobody's
  }
  ~TMedium() {
    if (fMedium.tymed != TYMED_NULL) ReleaseStgMedium(&fMedium);
  }
  TMedium(const TMedium&) = delete;
  TMedium& operator=(const TMedium&) = delete;

  HGLOBAL Memory() const { return fMedium.tymed == TYMED_HGLOBAL ? fMedium.hGlobal : nullptr; }

private:
  STGMEDIUM fMedium{};
};

} // namespace

std::vector<std::wstring> GetFilenamesFromDataObject(IDataObject* pData) {
  if (!pData) return {};
  if (const TMedium drop(pData, CF_HDROP); drop.Memory()) {
    return GetFilenamesFromHandle(static_cast<HDROP>(drop.Memory()));
  }
  if (const TMedium wide(pData, CF_FILEDESCRIPTORW()); wide.Memory()) {
    return GetFilenamesFromFileDescriptorW(wide.Memory());
  }
  const TMedium narrow(pData, CF_FILEDESCRIPTORA());
  return narrow.Memory() ? GetFilenamesFromFileDescriptorA(narrow.Memory()) : std::vector<std::wstring>();
}

} // namespace kiv
