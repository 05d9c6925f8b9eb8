#include <core/NameInFolder.h>

#include <platform/FaultGuard.h>
#include <platform/Handles.h>
#include <platform/ShellApi.h>

namespace kiv {

HRESULT GetNameInFolder(IShellFolder* pFolder, PCUITEMID_CHILD pItem, DWORD pForm, std::wstring& pName) {
  pName.clear();
  STRRET answer{};
  const HRESULT hr = GuardedCall([&] { return pFolder->GetDisplayNameOf(pItem, pForm, &answer); });
  if (FAILED(hr)) return hr;
  TUniqueTaskText text;
  if (answer.uType == STRRET_WSTR) {
    text.Reset(answer.pOleStr);
  } else {
    const auto convert = ShellApi().StrRetToStrW;
    // Guarded: an offset that the folder gave may lead anywhere.
    wchar_t* converted_text = nullptr;
    const HRESULT converted = GuardedExport(convert, &answer, pItem, &converted_text);
    text.Reset(converted_text);
    if (FAILED(converted)) return converted;
  }
  if (!text) return E_UNEXPECTED;
  pName = text.Get();
  return S_OK;
}

} // namespace kiv
