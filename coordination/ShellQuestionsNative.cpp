#include <coordination/ShellQuestions.h>

namespace kiv::detail {

namespace {

// Nothing here takes its time.
class TNativeQuestions final : public IShellQuestions {
public:
  bool IsPlainlySame(IItemIdList& pFirst, IItemIdList& pSecond) override { return &pFirst == &pSecond; }
  bool Ask(std::function<void()> pQuestion, std::function<void()>) override {
    pQuestion();
    return true;
  }
};

} // namespace

IShellQuestions& PlatformShellQuestions() {
  static TNativeQuestions questions;
  return questions;
}

} // namespace kiv::detail
