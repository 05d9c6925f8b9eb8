#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace kiv {

/// Values by a text and a small number: what is dear to find out and doesn't change. Nothing is removed before Clear,
/// so reading takes no lock, and workers that read all the time don't wait for one another. Any thread, but for the
/// destructor.
template <typename V>
class TGrowingTextMap {
public:
  TGrowingTextMap() = default;
  TGrowingTextMap(const TGrowingTextMap&) = delete;
  TGrowingTextMap& operator=(const TGrowingTextMap&) = delete;
  ~TGrowingTextMap() {
    Clear();
    for (TEntry* head = fCleared; head;) {
      TEntry* entry = head;
      head = head->nextCleared;
      while (entry) delete std::exchange(entry, entry->next);
    }
  }

  /// Null if it isn't there. Good as long as the map.
  const V* Find(std::uint32_t pNumber, std::wstring_view pText) const noexcept {
    return Search(Hash(pNumber, pText), pNumber, pText);
  }

  /// Stores a value unless another thread was faster; returns what is stored.
  const V& Add(std::uint32_t pNumber, std::wstring_view pText, V pValue) {
    const std::size_t hash = Hash(pNumber, pText);
    const std::lock_guard guard(fLock);
    if (const V* const standing = Search(hash, pNumber, pText)) return *standing;
    std::atomic<TEntry*>& bucket = fBuckets[hash % Buckets];
    auto entry = std::make_unique<TEntry>(
        TEntry{hash, pNumber, std::wstring(pText), std::move(pValue), bucket.load(std::memory_order_relaxed), nullptr});
    bucket.store(entry.get(), std::memory_order_release);
    return entry.release()->value;
  }

  /// Nothing is found any more. What others may still read goes with the map.
  void Clear() noexcept {
    const std::lock_guard guard(fLock);
    for (std::atomic<TEntry*>& bucket : fBuckets) {
      TEntry* const head = bucket.exchange(nullptr, std::memory_order_relaxed);
      if (head) head->nextCleared = std::exchange(fCleared, head);
    }
  }

private:
  static constexpr std::size_t Buckets = 2048;

  struct TEntry {
    std::size_t hash;
    std::uint32_t number;
    std::wstring text;
    V value;
    TEntry* next;
    TEntry* nextCleared; // guarded by fLock: of the first entry of a bucket that was cleared, the next one like it
  };

  static std::size_t Hash(std::uint32_t number, std::wstring_view text) noexcept {
    std::uint64_t hash = 0xCBF29CE484222325U ^ number;
    for (const wchar_t each : text) hash = (hash ^ static_cast<std::uint32_t>(each)) * 0x100000001B3U;
    return static_cast<std::size_t>(hash ^ hash >> 32U);
  }

  const V* Search(std::size_t hash, std::uint32_t number, std::wstring_view text) const noexcept {
    for (const TEntry* entry = fBuckets[hash % Buckets].load(std::memory_order_acquire); entry; entry = entry->next) {
      if (entry->hash == hash && entry->number == number && entry->text == text) return &entry->value;
    }
    return nullptr;
  }

  std::array<std::atomic<TEntry*>, Buckets> fBuckets{};
  std::mutex fLock;           // of whatever writes
  TEntry* fCleared = nullptr; // guarded by fLock
};

} // namespace kiv
