#pragma once

#include <platform/Export.h>

#include <atomic>
#include <string_view>

namespace kiv {

/// A text that is filled in late and read by many threads without a lock.
///
/// Readers get either "not known" or a whole text, never a half-done one. Texts that were replaced are kept until the
/// cell dies, so that a view stays valid as long as the cell does; publishing the same text again costs nothing, and a
/// text that returns is found among the kept ones. So a cell grows only with the number of different texts it has held.
class KIV_EXPORT TPublishedText {
public:
  /// What a reader saw. `text` is valid while the cell lives; empty if not known.
  struct TSeen {
    bool known = false;
    std::wstring_view text;
    const void* mark = nullptr; // which text, for Publish
  };

  /// Not known.
  TPublishedText() noexcept = default;
  explicit TPublishedText(std::wstring_view pText) { Set(pText); }
  ~TPublishedText();
  TPublishedText(const TPublishedText&) = delete;
  TPublishedText& operator=(const TPublishedText&) = delete;

  /// Any thread.
  TSeen Read() const noexcept;

  /// Any thread: what was computed from what the caller saw. Goes nowhere if the cell holds something else by now;
  /// threads that compute the same publish the same. Returns what the cell holds then.
  TSeen Publish(const TSeen& pSeen, std::wstring_view pText);
  /// Any thread: replaces the text whatever it was.
  void Set(std::wstring_view pText);
  /// Any thread: not known any more.
  void Forget() noexcept;

private:
  struct TNode;

  static TSeen Describe(const TNode* pNode) noexcept;
  const TNode* Keep(std::wstring_view pText);

  std::atomic<const TNode*> fCurrent{nullptr}; // null: not known
  std::atomic<TNode*> fKept{nullptr};          // all texts that this cell has held, newest first
};

} // namespace kiv
