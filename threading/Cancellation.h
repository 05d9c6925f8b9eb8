#pragma once

#include <framework/InterfacedObject.h>
#include <platform/ComPtr.h>
#include <platform/Export.h>
#include <platform/InterfaceId.h>

#include <atomic>
#include <cstdint>

namespace kiv {

/// Tells work whether its result is still wanted.
struct ICancellationIndicator : IUnknown {
  /// Any thread. Once true, always true.
  virtual bool IsCancellationRequested() = 0;
};
KIV_INTERFACE_ID(ICancellationIndicator, "{5D11F052-46B1-4DC6-A9E5-5E625A689CE3}");

/// The same for those who withdraw the work.
struct ICancellationToken : ICancellationIndicator {
  /// Any thread. For ever.
  virtual void Cancel() = 0;
};
KIV_INTERFACE_ID(ICancellationToken, "{1CFC2594-FA88-4F17-B7E0-5746B5307AB9}");

/// A flag that can be set once. Derived classes may cancel for reasons of their own (a time limit, another token).
class KIV_EXPORT TCustomCancellationToken : public TInterfacedObject<ICancellationToken, ICancellationIndicator> {
public:
  TCustomCancellationToken() = default;
  static ComPtr<ICancellationToken> Construct();

  void Cancel() override;
  bool IsCancellationRequested() override;

protected:
  ~TCustomCancellationToken() override;

private:
  std::atomic<bool> fCancellationRequested{false};
};

class KIV_EXPORT TCancellationToken : public TCustomCancellationToken {
protected:
  ~TCancellationToken() override;
};

/// The token of whoever owns a run of work: a member of a control, a tree node, a list item. One pointer; nothing is
/// allocated until work is given the token. Any thread may use it. Its owner's end doesn't cancel: who wants that calls
/// `Cancel` or `Reset`.
class KIV_EXPORT CancellationToken {
public:
  CancellationToken() noexcept = default;
  ~CancellationToken();
  CancellationToken(const CancellationToken&) = delete;
  CancellationToken& operator=(const CancellationToken&) = delete;

  /// The token, made at the first conversion. Whoever converts between two calls of `Reset` gets the same one.
  operator ComPtr<ICancellationToken>();
  operator ComPtr<ICancellationIndicator>();

  /// Cancels the token, if there is one.
  void Cancel();
  /// Cancels the token and forgets it: all that runs for it is withdrawn for good, and the next conversion makes a new
  /// one.
  void Reset();
  /// Whether a token was made and not forgotten since.
  bool IsEmpty() const noexcept { return fToken.load(std::memory_order_relaxed) == 0; }

private:
  // A pointer and, in its lowest bit, a lock: a token that is about to be counted must not be released meanwhile.
  static constexpr std::uintptr_t Locked = 1;

  std::uintptr_t Lock() noexcept;

  std::atomic<std::uintptr_t> fToken{0};
};
static_assert(sizeof(CancellationToken) == sizeof(void*));

} // namespace kiv
