#include <coordination/ShellQuestions.h>

namespace kiv {

namespace {

IShellQuestions* gQuestions = nullptr;

} // namespace

IShellQuestions& ShellQuestions() noexcept {
  return gQuestions ? *gQuestions : detail::PlatformShellQuestions();
}

ScopedShellQuestions::ScopedShellQuestions(IShellQuestions& pQuestions) noexcept
    : fOuter(std::exchange(gQuestions, &pQuestions)) {}

ScopedShellQuestions::~ScopedShellQuestions() {
  gQuestions = fOuter;
}

bool IsSameInTime(const ComPtr<IItemIdList>& pFirst, const ComPtr<IItemIdList>& pSecond,
                  TItemIdListComparison pComparison) {
  if (!pFirst || !pSecond) return pFirst == pSecond;
  IShellQuestions& questions = ShellQuestions();
  if (questions.IsPlainlySame(*pFirst.Get(), *pSecond.Get())) return true;
  const auto same = std::make_shared<bool>(false);
  const auto ask = [=] { *same = pFirst->Equals(pSecond.Get(), pComparison); };
  return questions.Ask(ask, nullptr) && *same;
}

} // namespace kiv
