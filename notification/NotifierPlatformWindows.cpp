#include <notification/NotifierPlatform.h>

#include <core/ItemIdList.h>
#include <core/ItemIdListHelper.h>
#include <core/ItemIdListHelperThreadPool.h>
#include <core/PathFunctions.h>
#include <core/PathUtils.h>
#include <notification/ShellChangeSource.h>
#include <platform/PathApi.h>

#include <utility>

namespace kiv {

namespace {

class TShellPlatform final : public INotifierPlatform {
public:
  ComPtr<IItemIdList> MakeList(std::wstring_view pPath) override { return TKivItemIdList::Create(pPath); }
  ComPtr<IItemIdList> DefaultList() override { return TKivItemIdList::CreateForSpecialFolder(SF_DRIVES, true); }

  bool Reload(IItemIdList* pItemIdList, std::uint64_t pLimit, ComPtr<ICancellationIndicator> pIndicator) override {
    if (IsFresh(pItemIdList)) return true;
    bool finished = false;
    TItemIdListHelper::TryReload(pItemIdList, pLimit, finished, std::move(pIndicator));
    return finished;
  }

  void ReloadOnWorker(IItemIdList* pItemIdList) override {
    if (!IsFresh(pItemIdList)) pItemIdList->Reload();
  }

  TLook Look(IItemIdList* pItemIdList, std::uint64_t pLimit, ComPtr<ICancellationIndicator> pIndicator) override {
    const auto look = [list = ComPtr<IItemIdList>(pItemIdList)] {
      return list->IsInvalid() ? TLook{true, nullptr} : TLook{false, list->LinkTarget()};
    };
    bool finished = false;
    return AskInTime<TLook>(look, pLimit, TLook{false, nullptr, false}, finished, std::move(pIndicator));
  }

  // A list that was made from a path knows it, and nobody has to parse it for this.
  bool IsFolder(IItemIdList* pItemIdList) override {
    if (pItemIdList->IsResolved()) return pItemIdList->IsFolder();
    const DWORD attributes = PathApi::FileAttributes(TPathUtils::GetUnicodeAPICallPath(pItemIdList->Path()));
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  }

  std::shared_ptr<IChangeSource> OpenSource(IChangeSink& pSink) override {
    return std::make_shared<ShellChangeSource>(pSink);
  }

private:
  // What was made of a path's text alone has nothing to be reloaded.
  static bool IsFresh(IItemIdList* pItemIdList) {
    const auto* const list = dynamic_cast<const TKivItemIdList*>(pItemIdList);
    return list && (list->IsSimple() || (list->IsOfChange() && !pItemIdList->IsResolved()));
  }
};

} // namespace

INotifierPlatform& detail::PlatformOfNotifiers() {
  static TShellPlatform platform;
  return platform;
}

} // namespace kiv
