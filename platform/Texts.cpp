#include <platform/Texts.h>

namespace kiv {

const TResourceText _sNewFolder(L"NewFolder", L"New Folder");
const TResourceText _sInFolder(L"InFolder", L"In Folder");
const TResourceText _sArrangeIconsBy(L"ArrangeIconsBy", L"Arrange Icons By");

} // namespace kiv
