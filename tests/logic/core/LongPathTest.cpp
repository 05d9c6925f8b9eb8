#include <core/LongPath.h>

#include <gtest/gtest.h>

#include <string>

namespace kiv {
namespace {

TEST(LongPath, GetsItsPrefixFromTheLengthOnAtWhichPlainPathsFail) {
  const std::wstring tail(300, L'x');
  const struct {
    std::wstring path;
    std::wstring expected;
  } cases[] = {
      {L"", L""},
      {L"C:\\short", L"C:\\short"},
      {L"C:\\" + std::wstring(244, L'x'), L"C:\\" + std::wstring(244, L'x')},
      {L"C:\\" + std::wstring(245, L'x'), L"\\\\?\\C:\\" + std::wstring(245, L'x')},
      {L"C:/a/" + tail, L"\\\\?\\C:\\a\\" + tail},
      {L"\\\\server\\share\\" + tail, L"\\\\?\\UNC\\server\\share\\" + tail},
      {L"\\\\?\\C:\\" + tail, L"\\\\?\\C:\\" + tail},
      {L"\\\\?\\UNC\\server\\" + tail, L"\\\\?\\UNC\\server\\" + tail},
      {L"\\\\.\\pipe\\" + tail, L"\\\\.\\pipe\\" + tail},
      {L"relative\\" + tail, L"relative\\" + tail},
      {L"C:relative" + tail, L"C:relative" + tail},
      {L"1:\\" + tail, L"1:\\" + tail},
  };
  for (const auto& c : cases) EXPECT_EQ(ToLongPath(c.path), c.expected);
}

} // namespace
} // namespace kiv
