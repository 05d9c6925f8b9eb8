// Where there is no shell, nothing is watched.
#include <notification/NotifierPlatform.h>

namespace kiv {

namespace {

class TNoPlatform final : public INotifierPlatform {
public:
  ComPtr<IItemIdList> MakeList(std::wstring_view) override { return nullptr; }
  ComPtr<IItemIdList> DefaultList() override { return nullptr; }
  bool Reload(IItemIdList*, std::uint64_t, ComPtr<ICancellationIndicator>) override { return true; }
  void ReloadOnWorker(IItemIdList*) override {}
  TLook Look(IItemIdList*, std::uint64_t, ComPtr<ICancellationIndicator>) override { return {}; }
  bool IsFolder(IItemIdList*) override { return false; }
  std::shared_ptr<IChangeSource> OpenSource(IChangeSink&) override { return nullptr; }
};

} // namespace

INotifierPlatform& detail::PlatformOfNotifiers() {
  static TNoPlatform platform;
  return platform;
}

} // namespace kiv
