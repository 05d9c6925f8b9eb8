#include <core/FileSystemBindData.h>

#include <algorithm>
#include <iterator>

namespace kiv {

TFileSystemBindData::TFileSystemBindData(const WIN32_FIND_DATAW& pFindData) noexcept : fFindData(pFindData) {}

TFileSystemBindData::~TFileSystemBindData() = default;

HRESULT TFileSystemBindData::SetFindData(const WIN32_FIND_DATAW* pFindData) {
  if (!pFindData) return E_POINTER;
  fFindData = *pFindData;
  return S_OK;
}

HRESULT TFileSystemBindData::GetFindData(WIN32_FIND_DATAW* pFindData) {
  if (!pFindData) return E_POINTER;
  *pFindData = fFindData;
  return S_OK;
}

HRESULT CreateFileSystemBindContext(const WIN32_FIND_DATAW& pFindData, ComPtr<IBindCtx>& pContext) {
  HRESULT hr = CreateBindCtx(0, &pContext);
  if (FAILED(hr)) return hr;
  // "Create": the parser takes the data's word for it that there is such a file.
  BIND_OPTS options{};
  options.cbStruct = sizeof(options);
  options.grfMode = STGM_CREATE;
  hr = pContext->SetBindOptions(&options);
  wchar_t name[std::size(TFileSystemBindData::Name)];
  std::copy(std::begin(TFileSystemBindData::Name), std::end(TFileSystemBindData::Name), name);
  if (SUCCEEDED(hr)) hr = pContext->RegisterObjectParam(name, Make<TFileSystemBindData>(pFindData).Get());
  if (FAILED(hr)) pContext.Reset();
  return hr;
}

} // namespace kiv
