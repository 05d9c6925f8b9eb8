#include <core/PublishedText.h>

#include <cstddef>
#include <cstring>
#include <new>

namespace kiv {

// The text stands behind the node, in the same allocation.
struct TPublishedText::TNode {
  TNode* older = nullptr;
  std::size_t length = 0;

  wchar_t* Text() noexcept { return reinterpret_cast<wchar_t*>(this + 1); }
  std::wstring_view View() const noexcept { return {reinterpret_cast<const wchar_t*>(this + 1), length}; }
};

TPublishedText::~TPublishedText() {
  for (TNode* node = fKept.load(std::memory_order_acquire); node;) {
    TNode* const older = node->older;
    ::operator delete(node);
    node = older;
  }
}

TPublishedText::TSeen TPublishedText::Describe(const TNode* pNode) noexcept {
  if (!pNode) return {};
  return {true, pNode->View(), pNode};
}

TPublishedText::TSeen TPublishedText::Read() const noexcept {
  return Describe(fCurrent.load(std::memory_order_acquire));
}

TPublishedText::TSeen TPublishedText::Publish(const TSeen& pSeen, std::wstring_view pText) {
  if (pSeen.known && pSeen.text == pText) return Read();
  const auto* expected = static_cast<const TNode*>(pSeen.mark);
  const TNode* const wanted = Keep(pText);
  const bool published =
      fCurrent.compare_exchange_strong(expected, wanted, std::memory_order_acq_rel, std::memory_order_acquire);
  return Describe(published ? wanted : expected);
}

void TPublishedText::Set(std::wstring_view pText) {
  fCurrent.store(Keep(pText), std::memory_order_release);
}

void TPublishedText::Forget() noexcept {
  fCurrent.store(nullptr, std::memory_order_release);
}

// The kept text that equals this one, or a new one.
const TPublishedText::TNode* TPublishedText::Keep(std::wstring_view pText) {
  TNode* newest = fKept.load(std::memory_order_acquire);
  for (const TNode* node = newest; node; node = node->older) {
    if (node->View() == pText) return node;
  }
  static_assert(sizeof(TNode) % alignof(wchar_t) == 0);
  const std::size_t bytes = pText.size() * sizeof(wchar_t);
  auto* const node = new (::operator new(sizeof(TNode) + bytes)) TNode;
  node->length = pText.size();
  if (bytes != 0) std::memcpy(node->Text(), pText.data(), bytes);
  node->older = newest;
  while (!fKept.compare_exchange_weak(node->older, node, std::memory_order_acq_rel, std::memory_order_acquire)) {
  }
  return node;
}

} // namespace kiv
