#include <platform/RegistryReader.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kiv {
namespace {

using namespace std::string_literals;

constexpr wchar_t TestKey[] = L"Software\\KivTests\\RegistryReader";

// A key of the test's own, gone at its end.
class RegistryReader : public testing::Test {
protected:
  void SetUp() override {
    RegDeleteTreeW(HKEY_CURRENT_USER, TestKey);
    RegCreateKeyExW(HKEY_CURRENT_USER, TestKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, fKey.ReleaseAndGetAddressOf(),
                    nullptr);
    ASSERT_TRUE(fKey);
  }
  void TearDown() override {
    fKey.Reset();
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\KivTests");
  }

  void Put(const wchar_t* name, DWORD type, const void* data, std::size_t size) {
    ASSERT_EQ(RegSetValueExW(fKey.Get(), name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)),
              ERROR_SUCCESS);
  }
  void PutText(const wchar_t* name, DWORD type, const std::wstring& text) {
    Put(name, type, text.data(), text.size() * sizeof(wchar_t));
  }

  TUniqueRegistryKey fKey;
};

TEST_F(RegistryReader, ReadsEachKindAndNothingOfAnother) {
  const std::wstring longText(5000, L'x');
  const DWORD number = 0xFEDCBA98;
  PutText(L"", REG_SZ, L"own\0"s);
  PutText(L"text", REG_SZ, L"a\u4E2Db");
  PutText(L"long", REG_SZ, longText);
  PutText(L"expand", REG_EXPAND_SZ, L"%SystemRoot%\\x");
  PutText(L"list", REG_MULTI_SZ, L"one\0two\0\0"s);
  Put(L"number", REG_DWORD, &number, sizeof(number));
  const TRegistryReader reader(HKEY_CURRENT_USER, TestKey);
  ASSERT_TRUE(reader.Exists());
  EXPECT_EQ(reader.Text(L""), L"own");
  EXPECT_EQ(reader.Text(L"text"), L"a\u4E2Db");
  EXPECT_EQ(reader.Text(L"long"), longText);
  EXPECT_EQ(reader.Number(L"number"), number);
  EXPECT_EQ(reader.Texts(L"list"), (std::vector<std::wstring>{L"one", L"two"}));
  EXPECT_EQ(reader.Bytes(L"number"), (std::vector<std::uint8_t>{0x98, 0xBA, 0xDC, 0xFE}));
  const auto expanded = reader.Text(L"expand");
  ASSERT_TRUE(expanded);
  EXPECT_EQ(expanded->find(L'%'), std::wstring::npos);
  EXPECT_TRUE(expanded->ends_with(L"\\x"));

  EXPECT_EQ(reader.Number(L"text"), std::nullopt);
  EXPECT_EQ(reader.Text(L"number"), std::nullopt);
  EXPECT_EQ(reader.Texts(L"text"), std::nullopt);
  EXPECT_EQ(reader.Text(L"missing"), std::nullopt);
  EXPECT_TRUE(reader.HasValue(L"text"));
  EXPECT_FALSE(reader.HasValue(L"missing"));
}

TEST_F(RegistryReader, TakesWhatOtherProgramsLeaveBehind) {
  const std::uint8_t odd[] = {'a', 0, 'b', 0, 'c'};
  const std::uint16_t half = 7;
  Put(L"odd", REG_SZ, odd, sizeof(odd));
  Put(L"none", REG_SZ, odd, 0);
  Put(L"short", REG_DWORD, &half, sizeof(half));
  PutText(L"zeros", REG_SZ, L"ab\0\0\0"s);
  PutText(L"open", REG_MULTI_SZ, L"one\0two"s);
  const TRegistryReader reader(HKEY_CURRENT_USER, TestKey);
  EXPECT_EQ(reader.Text(L"odd"), L"ab");
  EXPECT_EQ(reader.Text(L"none"), L"");
  EXPECT_EQ(reader.Number(L"short"), std::nullopt);
  EXPECT_EQ(reader.Text(L"zeros"), L"ab");
  EXPECT_EQ(reader.Texts(L"open"), (std::vector<std::wstring>{L"one", L"two"}));
}

TEST_F(RegistryReader, ListsNamesAndAnswersNothingForAMissingKey) {
  PutText(L"v1", REG_SZ, L"");
  for (const wchar_t* name : {L"k1", L"k2"}) {
    TUniqueRegistryKey child;
    RegCreateKeyExW(fKey.Get(), name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, child.ReleaseAndGetAddressOf(), nullptr);
  }
  const TRegistryReader reader(HKEY_CURRENT_USER, TestKey);
  EXPECT_EQ(reader.KeyNames(), (std::vector<std::wstring>{L"k1", L"k2"}));
  EXPECT_EQ(reader.ValueNames(), (std::vector<std::wstring>{L"v1"}));

  const TRegistryReader missing(HKEY_CURRENT_USER, std::wstring(TestKey) + L"\\none");
  EXPECT_FALSE(missing.Exists());
  EXPECT_EQ(missing.Text(L""), std::nullopt);
  EXPECT_TRUE(missing.KeyNames().empty());
  EXPECT_TRUE(missing.ValueNames().empty());
  EXPECT_FALSE(missing.HasValue(L""));
}

} // namespace
} // namespace kiv
