#include <core/FolderSizeSource.h>

#include <utility>

namespace kiv {

namespace {

IFolderSizeSource* gSource = nullptr;

} // namespace

IFolderSizeSource* FolderSizeSource() noexcept {
  return gSource;
}

IFolderSizeSource* SetFolderSizeSource(IFolderSizeSource* pSource) noexcept {
  return std::exchange(gSource, pSource);
}

} // namespace kiv
