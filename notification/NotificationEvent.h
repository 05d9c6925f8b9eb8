#pragma once

#include <framework/PropertyValue.h>
#include <framework/Set.h>
#include <platform/Export.h>

#include <cstdint>
#include <string>

namespace kiv {

/// What happened to an object of the namespace. The first 19 come from the shell ("SHCNE_..." in the platform's
/// documentation of SHChangeNotify), the last two from an enumeration in the background.
enum class TNotificationEvent : std::uint8_t {
  neAssociationChange,
  neAttributesChange,
  neFileChange,
  neFileCreate,
  neFileDelete,
  neFileRename, ///< the second object is the new one; this one may have moved to another folder with it
  neDriveAdd,
  neDriveRemove,
  neShellDriveAdd,
  neDriveSpaceChange,
  neMediaInsert,
  neMediaRemove,
  neFolderCreate,
  neFolderDelete,
  neFolderRename,
  neFolderUpdate, ///< something in the folder changed: whoever shows it lists it anew
  neNetShare,
  neServerDisconnect,
  neImageListChange,
  neUnknown,
  neAsyncResult,
  nePopulated
};
using TNotificationEvents = TSet<TNotificationEvent>;
using enum TNotificationEvent;

/// What notifiers watch for unless told otherwise: all that the shell announces.
inline constexpr TNotificationEvents DefaultNotificationEvents = TNotificationEvents::FromBits(524287);

class KIV_EXPORT TNotificationEventHelper {
public:
  TNotificationEventHelper() = delete;

  /// The name of an event from neAssociationChange to neServerDisconnect; empty for the others.
  static std::wstring ToString(TNotificationEvent pEvent);
  /// The shell's events that make up a set, as bits for a registration.
  static std::uint32_t ToShellEvents(TNotificationEvents pEvents) noexcept;
  /// The event for one that arrived from the shell.
  static TNotificationEvent FromShellEvent(std::uint32_t pShellEvent) noexcept;
};

template <>
struct TEnumNames<TNotificationEvent> {
  static constexpr TEnumName<TNotificationEvent> Values[] = {{neAssociationChange, L"neAssociationChange"},
                                                             {neAttributesChange, L"neAttributesChange"},
                                                             {neFileChange, L"neFileChange"},
                                                             {neFileCreate, L"neFileCreate"},
                                                             {neFileDelete, L"neFileDelete"},
                                                             {neFileRename, L"neFileRename"},
                                                             {neDriveAdd, L"neDriveAdd"},
                                                             {neDriveRemove, L"neDriveRemove"},
                                                             {neShellDriveAdd, L"neShellDriveAdd"},
                                                             {neDriveSpaceChange, L"neDriveSpaceChange"},
                                                             {neMediaInsert, L"neMediaInsert"},
                                                             {neMediaRemove, L"neMediaRemove"},
                                                             {neFolderCreate, L"neFolderCreate"},
                                                             {neFolderDelete, L"neFolderDelete"},
                                                             {neFolderRename, L"neFolderRename"},
                                                             {neFolderUpdate, L"neFolderUpdate"},
                                                             {neNetShare, L"neNetShare"},
                                                             {neServerDisconnect, L"neServerDisconnect"},
                                                             {neImageListChange, L"neImageListChange"},
                                                             {neUnknown, L"neUnknown"},
                                                             {neAsyncResult, L"neAsyncResult"},
                                                             {nePopulated, L"nePopulated"}};
};

} // namespace kiv
