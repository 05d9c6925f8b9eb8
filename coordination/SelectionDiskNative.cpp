#include <coordination/SelectionDisk.h>

namespace kiv::detail {

namespace {

// Where there is no Windows there are no paths of its own: nothing is on this disk.
class TNoDisk final : public ISelectionDisk {
public:
  bool IsDriveReady(const std::wstring&) override { return false; }
  TDiskObject ObjectAt(const std::wstring&) override { return TDiskObject::Nothing; }
  std::int64_t FileSize(const std::wstring&) override { return -1; }
  std::unique_ptr<IDiskSearch> Search(const std::wstring&) override { return nullptr; }
  std::wstring LinkTarget(const std::wstring&) override { return {}; }
  ComPtr<IItemIdList> MakeItemIdList(const std::wstring&) override { return {}; }
};

} // namespace

ISelectionDisk& PlatformSelectionDisk() {
  static TNoDisk disk;
  return disk;
}

} // namespace kiv::detail
