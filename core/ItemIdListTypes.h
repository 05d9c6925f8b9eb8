#pragma once

namespace kiv {

/// Who frees a raw item identifier list that an object is given.
enum class TItemIdListOwnership {
  iloOwnsMemory,   ///< the object takes it over; it is from the task allocator
  iloForeignOwned, ///< somebody else, who keeps it as long as the object lives
  iloCopyMemory    ///< the object makes a copy of its own
};

/// What makes two lists equal.
enum class TItemIdListComparison {
  ilcDisplay, ///< the user would call them the same object; equal paths are enough
  ilcExact    ///< they are the same list
};

/// The names that an object has.
enum class TItemIdListDisplayNameFormat {
  dnfNormal,                ///< `SIGDN_NORMALDISPLAY`
  dnfInFolder,              ///< `SIGDN_PARENTRELATIVE`
  dnfPath,                  ///< `SIGDN_DESKTOPABSOLUTEEDITING`
  dnfPhysicalPath,          ///< `SIGDN_FILESYSPATH`
  dnfRelativeForAddressBar, ///< `SIGDN_PARENTRELATIVEFORADDRESSBAR`
  dnfRelativeParsing,       ///< `SIGDN_PARENTRELATIVEPARSING`
  dnfAbsoluteParsing,       ///< `SIGDN_DESKTOPABSOLUTEPARSING`
  dnfForExplorer,           ///< the names of all levels from the root on, joined with "\"; levels that have none but a
                            ///< class identifier or a device path by those
  dnfPreferPhysical         ///< the path if there is one, else dnfPath, without a trailing delimiter
};

using enum TItemIdListOwnership;
using enum TItemIdListComparison;
using enum TItemIdListDisplayNameFormat;

} // namespace kiv
