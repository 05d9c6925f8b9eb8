#include <platform/ErrorText.h>

#include <gtest/gtest.h>

namespace kiv {
namespace {

TEST(ErrorText, GivesThePlatformsTextWithoutItsLineEnd) {
  const std::wstring text = GetErrorMessageText(DWORD{ERROR_PATH_NOT_FOUND});
  ASSERT_FALSE(text.empty());
  EXPECT_EQ(text.find_first_of(L"\r\n"), std::wstring::npos);
  EXPECT_NE(text, GetErrorMessageText(DWORD{ERROR_FILE_NOT_FOUND}));
  // The same failure in both forms has one text.
  EXPECT_EQ(GetErrorMessageText(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)), text);
  EXPECT_EQ(DescribeError(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)), text);
}

TEST(ErrorText, IsEmptyForWhatThePlatformDoesNotKnowAndThenDescribedByNumber) {
  EXPECT_EQ(GetErrorMessageText(static_cast<HRESULT>(0xA0551234)), L"");
  EXPECT_EQ(DescribeError(static_cast<HRESULT>(0xA0551234)), L"Error 0xA0551234");
}

TEST(ErrorText, ExpandsNoInsertions) {
  // "%1 is not a valid Win32 application.": with nothing to insert, the mark stays.
  EXPECT_NE(GetErrorMessageText(DWORD{ERROR_BAD_EXE_FORMAT}).find(L"%1"), std::wstring::npos);
}

} // namespace
} // namespace kiv
