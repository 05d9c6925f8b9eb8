#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace kiv {

class TPersistent;

/// An event: what the owner calls when something happens. A member with getter and setter; empty when nobody listens.
template <typename... TArgs>
using TEvent = std::function<void(TArgs...)>;

/// An event that says no more than who raised it.
using TNotifyEvent = TEvent<TPersistent*>;

/// Tells others whether an object still lives. A member of the object; a copy of the object has a life of its own.
///
/// The handler of an event may destroy the object that fired it. Whoever touches the object after a call into foreign
/// code takes a TAliveWatch before and asks it after.
class TAliveToken {
public:
  TAliveToken() noexcept = default;
  TAliveToken(const TAliveToken&) noexcept {}
  TAliveToken& operator=(const TAliveToken&) noexcept { return *this; }
  ~TAliveToken() = default;

  /// For the head of a destructor that still calls foreign code: watches say "gone" from here on.
  void Expire() noexcept { fLife.reset(); }

private:
  friend class TAliveWatch;

  // Made when first watched: most objects never are.
  mutable std::shared_ptr<const char> fLife;
};

/// The other end of a TAliveToken. May be copied into closures and outlive the object. Taken on the object's thread;
/// the answer is worth something on that thread only.
class TAliveWatch {
public:
  explicit TAliveWatch(const TAliveToken& pToken) {
    if (!pToken.fLife) pToken.fLife = std::make_shared<const char>('\0');
    fLife = pToken.fLife;
  }
  bool IsAlive() const noexcept { return !fLife.expired(); }

private:
  std::weak_ptr<const char> fLife;
};

/// Fires an event of the object that `pToken` belongs to, and says whether that object still lives: on false, nothing
/// of it may be touched. The function is copied first, since the handler may replace itself. What it raises passes out.
template <typename... TParams, typename... TArgs>
[[nodiscard]] bool FireEvent(const TAliveToken& pToken, const TEvent<TParams...>& pEvent, TArgs&&... pArgs) {
  if (!pEvent) return true;
  const TAliveWatch watch(pToken);
  const TEvent<TParams...> event = pEvent;
  event(std::forward<TArgs>(pArgs)...);
  return watch.IsAlive();
}

} // namespace kiv
