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
/// so reading takes no lock, and workers that read all the time don't wait for one another. Any thread, but for Clear
/// and the destructor.
template <typename V>
class TGrowingTextMap {
public:
  TGrowingTextMap() = default;
  TGrowingTextMap(const TGrowingTextMap&) = delete;
  TGrowingTextMap& operator=(const TGrowingTextMap&) = delete;
  ~TGrowingTextMap() { Clear(); }

  /// Null if it isn't there. Good until Clear.
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
        TEntry{hash, pNumber, std::wstring(pText), std::move(pValue), bucket.load(std::memory_order_relaxed)});
    bucket.store(entry.get(), std::memory_order_release);
    return entry.release()->value;
  }

  /// While no other thread is inside.
  void Clear() noexcept {
    for (std::atomic<TEntry*>& bucket : fBuckets) {
      TEntry* entry = bucket.exchange(nullptr);
      while (entry) delete std::exchange(entry, entry->next);
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
  std::mutex fLock; // of Add
};

} // namespace kiv
