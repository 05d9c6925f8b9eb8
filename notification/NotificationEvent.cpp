#include <notification/NotificationEvent.h>

#include <iterator>

namespace kiv {

namespace {

// By the event's number; "SHChangeNotify". The shell sends the two halves of neNetShare one by one.
constexpr std::uint32_t ShellEvents[] = {0x8000000, 0x800,   0x2000,  0x2,    0x4,    0x1,       0x100,
                                         0x80,      0x10000, 0x40000, 0x20,   0x40,   0x8,       0x10,
                                         0x20000,   0x1000,  0x600,   0x4000, 0x8000, 0x7fffffff};
constexpr std::uint32_t Interrupt = 0x80000000; // goes with other bits

constexpr std::uint32_t NumberOf(TNotificationEvent event) {
  return static_cast<std::uint32_t>(event);
}
static_assert(std::size(ShellEvents) == NumberOf(neUnknown) + 1);

} // namespace

std::wstring TNotificationEventHelper::ToString(TNotificationEvent pEvent) {
  return pEvent <= neServerDisconnect ? TEnumNames<TNotificationEvent>::Values[NumberOf(pEvent)].name : L"";
}

std::uint32_t TNotificationEventHelper::ToShellEvents(TNotificationEvents pEvents) noexcept {
  std::uint32_t mask = 0;
  for (std::uint32_t i = 0; i < std::size(ShellEvents); ++i) {
    if (pEvents.Contains(static_cast<TNotificationEvent>(i))) mask |= ShellEvents[i];
  }
  return mask;
}

TNotificationEvent TNotificationEventHelper::FromShellEvent(std::uint32_t pShellEvent) noexcept {
  const std::uint32_t event = pShellEvent & ~Interrupt;
  const std::uint32_t net_share = ShellEvents[NumberOf(neNetShare)];
  if (event == 0x200 || event == 0x400) return neNetShare;
  for (std::uint32_t i = 0; i < NumberOf(neUnknown); ++i) {
    if (ShellEvents[i] == event && event != net_share) return static_cast<TNotificationEvent>(i);
  }
  return neUnknown;
}

} // namespace kiv
