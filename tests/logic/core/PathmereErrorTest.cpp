#include <core/HasDebugInfo.h>
#include <core/PathmereError.h>
#include <framework/InterfacedObject.h>
#include <platform/ErrorText.h>

#include <gtest/gtest.h>

namespace kiv {
namespace {

struct TInformant final : TInterfacedObject<IHasDebugInfo> {
  std::wstring GetInfo(TItemIdListInfoLevel pLevel) override {
    return pLevel == TItemIdListInfoLevel::Normal ? L"all about it" : L"too much";
  }
};
struct TMute final : TInterfacedObject<IUnknown> {};

TEST(PathmereError, SaysWhatFailedAndOnWhat) {
  const auto informant = Make<TInformant>();
  const auto mute = Make<TMute>();
  const HRESULT code = HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  const std::wstring platform = GetErrorMessageText(code);
  const struct {
    EPathmereError error;
    std::wstring message;
    DWORD code;
  } cases[] = {
      {{code, L"C:\\gone"}, platform + L" C:\\gone", static_cast<DWORD>(code)},
      {{code, L""}, platform, static_cast<DWORD>(code)},
      {{DWORD{ERROR_PATH_NOT_FOUND}, L"C:\\gone"}, platform + L" C:\\gone", ERROR_PATH_NOT_FOUND},
      {{L"No parent: ", informant.Get()}, L"No parent:  Internal data: all about it", 0},
      {{L"No parent", mute.Get()}, L"No parent", 0},
      {{L"No parent", nullptr}, L"No parent", 0},
      {{code, informant.Get()}, platform + L"  Internal data: all about it", static_cast<DWORD>(code)},
      {{code, mute.Get()}, platform, static_cast<DWORD>(code)},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.error.Message(), c.message);
    EXPECT_EQ(c.error.ErrorCode(), c.code);
  }
}

} // namespace
} // namespace kiv
