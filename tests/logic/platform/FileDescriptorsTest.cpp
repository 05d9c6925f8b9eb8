#include <platform/FileDescriptors.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kiv {
namespace {

using TBlock = std::vector<std::byte>;

void Append(TBlock& block, std::uint64_t value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) block.push_back(static_cast<std::byte>(value >> (8 * i)));
}

// A block with the names in fields of 260 units; what the other fields hold must not matter.
template <typename TText>
TBlock Block(std::uint32_t count, const std::vector<TText>& names, std::size_t unit_size) {
  TBlock block;
  Append(block, count, 4);
  for (const TText& name : names) {
    block.resize(block.size() + 72, std::byte{0xEE});
    for (std::size_t i = 0; i < 260; ++i)
      Append(block, i < name.size() ? static_cast<std::uint64_t>(name[i]) : 0, unit_size);
  }
  return block;
}

TEST(FileDescriptors, GiveTheNamesInOrder) {
  const std::vector<std::wstring> wide = {L"a.txt", L"", L"dir\\b.txt", L"\xD83D\xDE00", std::wstring(259, L'x')};
  EXPECT_EQ(DecodeFileDescriptorsW(Block(5, wide, 2)), wide);
  const std::vector<std::string> narrow = {"a.txt", "", "\xE4\xF6", std::string(259, 'x')};
  EXPECT_EQ(DecodeFileDescriptorsA(Block(4, narrow, 1)), narrow);
}

TEST(FileDescriptors, NeverReadBeyondTheBlockOrTheField) {
  const std::wstring endless(260, L'x');
  for (const std::uint32_t count : {1U, 2U, 3U, 1000U, 0xFFFFFFFFU}) {
    const auto names = DecodeFileDescriptorsW(Block<std::wstring>(count, {endless, L"b"}, 2));
    ASSERT_EQ(names.size(), count == 1 ? 1U : 2U) << count;
    EXPECT_EQ(names[0], endless);
  }
  EXPECT_TRUE(DecodeFileDescriptorsW(Block<std::wstring>(0, {L"a"}, 2)).empty());
  TBlock block = Block<std::wstring>(2, {L"a", L"b"}, 2);
  for (; !block.empty(); block.pop_back()) {
    const std::size_t whole = block.size() < 4 ? 0 : (block.size() - 4) / 592;
    ASSERT_EQ(DecodeFileDescriptorsW(block).size(), whole) << block.size();
  }
  EXPECT_TRUE(DecodeFileDescriptorsA(block).empty());
}

} // namespace
} // namespace kiv
