#pragma once

#include <core/IItemIdList.h>

#include <shobjidl.h>

#include <string_view>

namespace kiv {

/// Shell links: files with the extension ".lnk", and the folders that stand for network places. Any thread with COM.
/// Nothing here raises for a link that is missing or broken.
class KIV_EXPORT TShellLinkHelper {
public:
  TShellLinkHelper() = delete;

  /// The link in a file; nil if it isn't one or can't be read.
  static ComPtr<IShellLinkW> GetIShellLink(std::wstring_view pPath);
  static ComPtr<IShellLinkW> GetIShellLink(IItemIdList* pItemIdList);
  /// What the link was made for, whether that is still there or not; nil without a link, or if it holds no list.
  /// Doesn't search for what was moved.
  static ComPtr<IItemIdList> Resolve(std::wstring_view pPath);
  static ComPtr<IItemIdList> Resolve(IItemIdList* pSourceItemIdList);
  /// Makes a link to an object in a folder of the file system: a file with the name and ".lnk". Nil if it can't be
  /// written, the name can't be one, or a file of that name is there already, which stays.
  static ComPtr<IItemIdList> AddLinkTo(IItemIdList* pSourceItemIdList, IItemIdList* pDestination,
                                       std::wstring_view pLinkName);
};

} // namespace kiv
