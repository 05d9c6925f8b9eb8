#include <core/DebugLog.h>

#include <core/HasDebugInfo.h>
#include <framework/InterfacedObject.h>
#include <platform/DebugOutput.h>
#include <platform/ErrorText.h>
#include <platform/Exception.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace kiv {
namespace {

class TInformant final : public TInterfacedObject<IHasDebugInfo> {
public:
  explicit TInformant(bool pFails) : fFails(pFails) {}
  std::wstring GetInfo(TItemIdListInfoLevel pLevel) override {
    if (fFails) throw std::runtime_error("can't tell");
    return pLevel == TItemIdListInfoLevel::Normal ? L"all about it" : L"too much";
  }

private:
  bool fFails;
};

TEST(DebugLog, WritesOneLineInTheStatedForm) {
  std::vector<std::wstring> lines;
  const ScopedDebugSink sink([&](const std::wstring& line) { lines.push_back(line); });
  const std::wstring thread = L"Thread " + std::to_wstring(CurrentThreadNumber()) + L": ";
  const auto informant = Make<TInformant>(false);
  const auto mute = Make<TInformant>(true);

  TDebugLog::LogMessage(L"plain");
  TDebugLog::LogMessage(L"about", informant.Get());
  TDebugLog::LogException(L"failed", EException(L"the \x20AC reason"));
  TDebugLog::LogException(L"failed", std::runtime_error("foreign"), informant.Get());
  TDebugLog::LogHResult(L"refused", E_ACCESSDENIED, informant.Get());
  TDebugLog::LogDebugMessage(L"silent", mute.Get());
  TDebugLog::LogDebugVerboseMessage(L"silent", mute.Get());
  TDebugLog::LogMessage(L"about", mute.Get()); // must not raise

  const std::wstring data = L" Internal data: all about it";
  const std::wstring denied = GetErrorMessageText(HRESULT{E_ACCESSDENIED});
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_EQ(lines[0], thread + L"plain");
  EXPECT_EQ(lines[1], thread + L"about" + data);
  EXPECT_EQ(lines[2], thread + L"failed: the \x20AC reason");
  EXPECT_EQ(lines[3], thread + L"failed" + data + L": foreign");
  EXPECT_EQ(lines[4], thread + L"refused" + data + L": -2147024891 (\"" + denied + L"\")");
}

} // namespace
} // namespace kiv
