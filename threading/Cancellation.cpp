#include <threading/Cancellation.h>

#include <platform/Threads.h>

#include <thread>

namespace kiv {

namespace {

ICancellationToken* PointerOf(std::uintptr_t value) noexcept {
  return reinterpret_cast<ICancellationToken*>(value);
}

} // namespace

TCustomCancellationToken::~TCustomCancellationToken() = default;

TCancellationToken::~TCancellationToken() = default;

ComPtr<ICancellationToken> TCustomCancellationToken::Construct() {
  return Make<TCustomCancellationToken>();
}

void TCustomCancellationToken::Cancel() {
  fCancellationRequested.store(true, std::memory_order_relaxed);
}

bool TCustomCancellationToken::IsCancellationRequested() {
  return fCancellationRequested.load(std::memory_order_relaxed);
}

CancellationToken::~CancellationToken() {
  if (ICancellationToken* const token = PointerOf(fToken.load(std::memory_order_acquire))) token->Release();
}

// The token's address with the lock taken, or 0 with nothing locked.
std::uintptr_t CancellationToken::Lock() noexcept {
  for (unsigned turn = 1;; ++turn) {
    std::uintptr_t value = fToken.load(std::memory_order_acquire);
    if (value == 0) return 0;
    if ((value & Locked) == 0 && fToken.compare_exchange_weak(value, value | Locked, std::memory_order_acquire)) {
      return value;
    }
    if (turn % 64 == 0) {
      std::this_thread::yield();
    } else {
      RelaxProcessor();
    }
  }
}

CancellationToken::operator ComPtr<ICancellationToken>() {
  for (;;) {
    if (const std::uintptr_t value = Lock()) {
      ComPtr<ICancellationToken> token(PointerOf(value));
      fToken.store(value, std::memory_order_release);
      return token;
    }
    ComPtr<ICancellationToken> made = TCustomCancellationToken::Construct();
    std::uintptr_t expected = 0;
    made->AddRef(); // the record's reference
    if (fToken.compare_exchange_strong(expected, reinterpret_cast<std::uintptr_t>(made.Get()),
                                       std::memory_order_acq_rel)) {
      return made;
    }
    made->Release(); // somebody was quicker
  }
}

CancellationToken::operator ComPtr<ICancellationIndicator>() {
  return static_cast<ComPtr<ICancellationToken>>(*this);
}

void CancellationToken::Cancel() {
  const std::uintptr_t value = Lock();
  if (value == 0) return;
  const ComPtr<ICancellationToken> token(PointerOf(value));
  fToken.store(value, std::memory_order_release);
  token->Cancel();
}

void CancellationToken::Reset() {
  const std::uintptr_t value = Lock();
  if (value == 0) return;
  ComPtr<ICancellationToken> token;
  token.Attach(PointerOf(value));
  // Cancelled before it is forgotten, as whoever asks next is to find either this one, cancelled, or a new one.
  token->Cancel();
  fToken.store(0, std::memory_order_release);
}

} // namespace kiv
