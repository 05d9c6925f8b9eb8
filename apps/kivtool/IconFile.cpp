#include "IconFile.h"

#include <core/ItemIdList.h>
#include <platform/ErrorMode.h>
#include <platform/Exception.h>
#include <platform/FaultGuard.h>
#include <platform/Handles.h>
#include <viewstate/SystemImageList.h>

#include <shellapi.h>

namespace kivtool {

namespace {

// 0 if the object has none.
int OverlayOf(kiv::IItemIdList& list) {
  SHFILEINFOW info{};
  const auto* const raw = reinterpret_cast<const wchar_t*>(list.WindowsPointer());
  const kiv::ScopedErrorMode mode;
  DWORD_PTR answer = 0;
  const HRESULT hr = kiv::GuardedCall([&] { // overlays come from third parties
    answer =
        SHGetFileInfoW(raw, 0, &info, sizeof(info), SHGFI_PIDL | SHGFI_ICON | SHGFI_SMALLICON | SHGFI_OVERLAYINDEX);
  });
  if (FAILED(hr)) return 0;
  const kiv::TUniqueIcon icon(info.hIcon);
  return answer != 0 ? static_cast<int>(static_cast<unsigned>(info.iIcon) >> 24U) : 0;
}

} // namespace

void SaveIcon(const TIconOptions& pOptions) {
  using kiv::TKivSystemImageList;
  const auto list = kiv::TKivItemIdList::Create(pOptions.path);
  const auto size = TKivSystemImageList::PixelsToSize(pOptions.size);
  const int index = TKivSystemImageList::GetIndexFromItemIdList(list.Get(), size, pOptions.opened);
  if (index < 0) throw kiv::EException(L"\"" + pOptions.path + L"\" has no icon");
  TKivSystemImageList images(pOptions.size, nullptr, kiv::TKivImageListSize::si_FreeScaled);
  images.GetBitmap(index, pOptions.overlay ? OverlayOf(*list.Get()) : 0).SaveToFile(pOptions.file);
}

} // namespace kivtool
