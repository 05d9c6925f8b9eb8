#include <coordination/SelectionEntries.h>

#include <framework/TextCompare.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace kiv::test {
namespace {

struct TBefore {
  bool operator()(const std::wstring& a, const std::wstring& b) const { return CompareText(a, b) < 0; }
};

// Random changes, one by one and many at once, beside a set.
TEST(SelectionEntries, AreASortedSetThatIgnoresCase) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const auto text = [&random] {
    static constexpr wchar_t letters[] = L"aAbB\\ .-*!\x00E4\x00C4";
    std::wstring value = random() % 4 == 0 ? L"" : L"C:\\";
    for (unsigned i = random() % 4; i-- > 0;) value += letters[random() % (std::size(letters) - 1)];
    return value;
  };
  TSelectionEntries entries;
  std::set<std::wstring, TBefore> model;
  for (int step = 0; step < 3000; ++step) {
    const std::wstring one = text();
    std::vector<std::wstring> many(random() % 6);
    std::generate(many.begin(), many.end(), text);
    switch (random() % 4) {
    case 0:
      EXPECT_EQ(entries.Insert(one), model.insert(one).second);
      break;
    case 1:
      entries.InsertAll(many);
      model.insert(many.begin(), many.end());
      break;
    default:
      entries.Erase(entries.StartingWith(one));
      std::erase_if(model, [&](const std::wstring& entry) { return StartsText(one, entry); });
      entries.InsertAll(many);
      model.insert(many.begin(), many.end());
    }
    ASSERT_TRUE(std::equal(entries.All().begin(), entries.All().end(), model.begin(), model.end(), &SameText));
    const std::wstring asked = text();
    std::size_t hint = random() % 8;
    EXPECT_EQ(entries.Contains(asked), model.contains(asked));
    EXPECT_EQ(entries.ContainsNear(asked, hint), model.contains(asked));
  }
}

TEST(SelectionEntries, AreSearchedForTextAnywhere) {
  TSelectionEntries entries;
  entries.InsertAll({L"C:\\dir\\file", L"C:\\other\\*", L"\\\\srv\\x\\*"});
  for (const wchar_t* text : {L"C:\\", L"c:\\DIR\\", L"\\\\SRV\\", L"dir\\f", L"x\\*"}) {
    EXPECT_TRUE(entries.AnyHolds(text)) << testing::PrintToString(text);
  }
  for (const wchar_t* text : {L"C:\\d\\", L"D:\\", L"\\\\srv2\\", L"dirx"}) {
    EXPECT_FALSE(entries.AnyHolds(text)) << testing::PrintToString(text);
  }
  // A root inside of an entry, for as long as that is there.
  entries.InsertAll({L"\\\\srv\\C:\\d\\x"});
  entries.Insert(L"C:\\a\\\\s\\b\\f");
  EXPECT_TRUE(entries.AnyHolds(L"c:\\d\\"));
  EXPECT_TRUE(entries.AnyHolds(L"\\\\S\\B\\"));
  entries.Erase(entries.StartingWith(L"\\\\srv\\C:"));
  EXPECT_FALSE(entries.AnyHolds(L"c:\\d\\"));
  EXPECT_TRUE(entries.AnyHolds(L"\\\\S\\B\\"));
}

} // namespace
} // namespace kiv::test
