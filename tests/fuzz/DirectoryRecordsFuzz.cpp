#include <platform/fill/WatchedTree.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace {

/// A disk on which the first letter of a name says what it is.
class TFolders final : public kiv::IWatchedFolders {
public:
  std::uint64_t Open(std::uint64_t pFolder, const std::wstring& pPath, bool) override {
    if (pPath.size() % 5 == 0) return 0;
    return fOpen.insert(pFolder).second ? NumberOf(pPath) : 0;
  }
  void Close(std::uint64_t pFolder) noexcept override {
    if (fOpen.erase(pFolder) == 0) std::abort();
  }
  std::uint64_t Reopen(std::uint64_t pFolder, const std::wstring& pPath) override {
    if (pPath.size() % 2 == 0) return NumberOf(pPath);
    Close(pFolder);
    return 0;
  }
  // Now and then another folder stands there.
  std::uint64_t NumberOf(const std::wstring& pPath) override { return pPath.size() + (++fLooks % 7 == 0 ? 1 : 0); }
  std::uint64_t List(const std::wstring& pPath, bool, std::vector<TEntry>& pEntries) override {
    if (pPath.size() <= 12) pEntries = {{L"d", TKind::Folder}, {L"f", TKind::File}, {L"l", TKind::Link}};
    return NumberOf(pPath);
  }
  TKind KindOf(const std::wstring& pPath) override {
    const wchar_t letter = pPath[pPath.find_last_of(L'\\') + 1];
    return letter == L'd' ? TKind::Folder : letter == L'l' ? TKind::Link : letter == L'n' ? TKind::None : TKind::File;
  }
  bool IsEmpty(const std::wstring& pPath) override { return pPath.size() > 12; }
  bool AreClosed() const { return fOpen.empty(); }

private:
  std::set<std::uint64_t> fOpen;
  int fLooks = 0;
};

} // namespace

// Whatever a buffer holds: whole names are read and nothing else, every event lies in the watched folder, and each
// folder that was opened is closed. The first byte says how the folder is watched.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize) {
  if (pSize == 0) return 0;
  const std::span<const std::byte> bytes(reinterpret_cast<const std::byte*>(pData) + 1, pSize - 1);
  std::vector<kiv::TDirectoryRecord> records;
  static_cast<void>(kiv::ParseDirectoryRecords(bytes, records));
  std::size_t length = 0;
  for (const auto& record : records) length += 12 + 2 * record.name.size();
  if (length > bytes.size()) std::abort();

  TFolders folders;
  {
    const std::wstring root = L"C:\\w";
    kiv::TWatchedTree tree(root, {(pData[0] & 1) != 0, (pData[0] & 2) != 0}, folders,
                           [&root](const kiv::TDirectoryNotice& notice) {
                             if (!notice.path1.starts_with(root)) std::abort();
                           });
    if (!tree.Open()) std::abort();
    while (tree.ScanSome()) {
    }
    for (std::uint64_t folder = 1; folder < 4; ++folder) tree.OnRecords(folder, records);
    for (int i = 0; i < 3; ++i) tree.OnIdle();
    tree.LetGoOfEmpty();
    tree.OnOverflow(2);
    tree.OnRecords(kiv::TWatchedTree::RootFolder, records);
  }
  if (!folders.AreClosed()) std::abort();
  return 0;
}
