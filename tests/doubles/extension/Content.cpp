#include "Content.h"

#include <iterator>
#include <utility>

namespace kiv::test {

namespace {

constexpr std::uint64_t FileId = 0;
constexpr std::uint64_t FolderId = 1;
constexpr std::wstring_view ObjectPrefix = L"object ";
constexpr std::wstring_view LevelsSuffix = L" levels";

// What the root lists: nothing that never ends by itself.
constexpr const wchar_t* Examples[] = {L"3 objects",
                                       L"1000 objects",
                                       L"50 levels",
                                       L"2 objects, 2 levels, no folder2",
                                       L"5 objects, crash next 3",
                                       L"5 objects, crash next 3 twice",
                                       L"5 objects, own next 2",
                                       L"5 objects, fail next 3",
                                       L"5 objects, empty next 3",
                                       L"5 objects, slow next 1",
                                       L"2 objects, crash names",
                                       L"2 objects, crash attributes",
                                       L"crash enum",
                                       L"fail enum",
                                       L"empty enum",
                                       L"crash bind",
                                       L"fail bind"};

} // namespace

TContent::TContent(std::wstring pName)
    : fName(std::move(pName)), fScript(TScript::FromName(fName).value_or(TScript{})) {}

std::size_t TContent::Count() const {
  return IsRoot() ? std::size(Examples) : fScript.objects + (fScript.levels > 1 ? 1 : 0);
}

TFakeItem TContent::At(std::size_t pIndex) const {
  if (IsRoot()) return {FolderId, Examples[pIndex]};
  if (pIndex == fScript.objects) return {FolderId, NextLevel()};
  return {FileId, std::wstring(ObjectPrefix) + std::to_wstring(pIndex + 1)};
}

std::optional<TFakeItem> TContent::Find(std::wstring_view pName) const {
  if (IsRoot()) {
    if (!TScript::FromName(pName)) return std::nullopt;
    return TFakeItem{FolderId, std::wstring(pName)};
  }
  for (std::size_t i = 0; i < Count(); ++i) {
    if (TFakeItem item = At(i); item.name == pName) return item;
  }
  return std::nullopt;
}

// The name with one level less.
std::wstring TContent::NextLevel() const {
  const std::wstring levels = std::to_wstring(fScript.levels);
  std::wstring name = fName;
  const std::size_t at = name.find(levels + std::wstring(LevelsSuffix));
  return name.replace(at, levels.size(), std::to_wstring(fScript.levels - 1));
}

bool IsFolder(const TFakeItem& pItem) {
  return pItem.id == FolderId;
}

std::wstring ShownName(const TFakeItem& pItem) {
  return L"Shown: " + pItem.name;
}

SFGAOF AttributesOf(const TFakeItem& pItem) {
  if (!IsFolder(pItem)) return SFGAO_CANCOPY | SFGAO_CANRENAME;
  const TScript script = TScript::FromName(pItem.name).value_or(TScript{});
  return SFGAO_FOLDER | SFGAO_BROWSABLE | (script.levels > 1 ? SFGAO_HASSUBFOLDER : 0) |
         (script.DeedOf(TMethod::Storage) ? SFGAO_STORAGE : 0);
}

} // namespace kiv::test
