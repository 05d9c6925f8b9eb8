#include <platform/fill/DirectoryChange.h>
#include <platform/fill/NoticeQueue.h>
#include <platform/fill/UnreadReports.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace kiv {
namespace {

using enum TDirectoryAction;
using TRecords = std::vector<TDirectoryRecord>;
using TChanges = std::vector<TDirectoryChange>;

// A buffer as the platform fills it.
class TBuffer {
public:
  TBuffer& Add(std::uint32_t pAction, const std::u16string& pName) {
    if (!fBytes.empty()) {
      fBytes.resize((fBytes.size() + 3) / 4 * 4);
      Put(fLast, static_cast<std::uint32_t>(fBytes.size() - fLast));
    }
    fLast = fBytes.size();
    fBytes.resize(fLast + 12 + 2 * pName.size());
    Put(fLast + 4, pAction);
    Put(fLast + 8, static_cast<std::uint32_t>(2 * pName.size()));
    std::memcpy(fBytes.data() + fLast + 12, pName.data(), 2 * pName.size());
    return *this;
  }
  TBuffer& Put(std::size_t pOffset, std::uint32_t pValue) {
    std::memcpy(fBytes.data() + pOffset, &pValue, sizeof(pValue));
    return *this;
  }
  const std::vector<std::byte>& Bytes() const { return fBytes; }

private:
  std::vector<std::byte> fBytes;
  std::size_t fLast = 0;
};

TEST(DirectoryRecords, AreReadAsTheyAre) {
  const std::u16string longest(255, u'x');
  const TBuffer buffer = TBuffer().Add(1, u"a\xD83D\xDE00").Add(77, u"unknown").Add(4, u"\xD800").Add(5, longest);
  TRecords records;
  EXPECT_TRUE(ParseDirectoryRecords(buffer.Bytes(), records));
  const std::wstring emoji = {L'a', static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)};
  const TRecords expected = {
      {Added, emoji}, {RenamedFrom, {static_cast<wchar_t>(0xD800)}}, {RenamedTo, std::wstring(255, L'x')}};
  EXPECT_EQ(records, expected);
}

TEST(DirectoryRecords, EndWhereTheBufferIsBroken) {
  const auto two = [] { return TBuffer().Add(1, u"ab").Add(2, u"cd"); };
  const TBuffer broken[] = {
      two().Put(0, 8),                           // the next one lies in this one
      two().Put(0, 1000),                        // and behind the end
      two().Put(8, 1000),                        // a name beyond the end
      two().Put(8, 0xFFFFFFFF), two().Put(8, 3), // half a character
      two().Put(8, 0),
  };
  for (const TBuffer& buffer : broken) {
    TRecords records;
    EXPECT_FALSE(ParseDirectoryRecords(buffer.Bytes(), records));
    EXPECT_TRUE(records.empty());
  }
  TRecords records;
  EXPECT_FALSE(ParseDirectoryRecords(two().Put(24, 1000).Bytes(), records));
  EXPECT_EQ(records, (TRecords{{Added, L"ab"}}));
  EXPECT_FALSE(ParseDirectoryRecords({}, records));
}

TEST(RenamePairer, JoinsHalvesAndLetsOthersAlone) {
  const struct {
    std::vector<TRecords> buffers;
    TChanges changes;
    bool pending;
  } cases[] = {
      {{{{RenamedFrom, L"a"}, {RenamedTo, L"b"}}}, {{RenamedTo, L"a", L"b"}}, false},
      {{{{RenamedFrom, L"a"}}, {{RenamedTo, L"b"}, {Modified, L"b"}}},
       {{RenamedTo, L"a", L"b"}, {Modified, L"b", L""}},
       false},
      {{{{RenamedTo, L"b"}}}, {{Added, L"b", L""}}, false},
      {{{{RenamedFrom, L"a"}, {Added, L"c"}, {RenamedTo, L"b"}}},
       {{Removed, L"a", L""}, {Added, L"c", L""}, {Added, L"b", L""}},
       false},
      {{{{RenamedFrom, L"a"}, {RenamedFrom, L"b"}, {RenamedTo, L"c"}}},
       {{Removed, L"a", L""}, {RenamedTo, L"b", L"c"}},
       false},
      {{{{Added, L"a"}, {RenamedFrom, L"a"}}}, {{Added, L"a", L""}}, true},
  };
  for (const auto& c : cases) {
    TRenamePairer pairer;
    TChanges changes;
    for (const TRecords& records : c.buffers) pairer.Add(records, changes);
    EXPECT_EQ(changes, c.changes);
    EXPECT_EQ(pairer.IsPending(), c.pending);
    changes.clear();
    pairer.Flush(changes);
    EXPECT_EQ(changes, c.pending ? TChanges({{Removed, L"a", L""}}) : TChanges());
  }
}

TEST(NoticeQueue, WakesOnceABurstAndLosesNothingUnsaid) {
  int woken = 0;
  bool wakes = false;
  TNoticeQueue queue([&] { return ++woken, wakes; }, 3);
  TNoticeQueue::TEntry entry;
  const auto notice = [](const std::wstring& name) {
    return std::vector<TDirectoryNotice>{{TDirectoryEvent::FileCreate, name, {}}};
  };
  const auto all = [&] {
    std::wstring text;
    while (queue.Pop(entry)) {
      text += std::to_wstring(entry.watch) + entry.notice.path1 +
              (entry.notice.event == TDirectoryEvent::FolderUpdate ? L"! " : L" ");
    }
    return text;
  };
  queue.Push(1, notice(L"nobody's"));
  queue.Begin(1, L"one");
  queue.Begin(2, L"two");
  EXPECT_TRUE(queue.Wake()) << "for nothing";
  EXPECT_FALSE(queue.Push(1, notice(L"a")));
  wakes = true; // from the second time on
  EXPECT_TRUE(queue.Wake());
  EXPECT_TRUE(queue.Push(2, {{TDirectoryEvent::FileCreate, L"b", {}}, {TDirectoryEvent::FileCreate, L"c", {}}}));
  EXPECT_EQ(woken, 2);
  EXPECT_EQ(all(), L"1a 2b 2c ");
  for (const wchar_t* name : {L"a", L"b", L"c", L"d", L"e"}) queue.Push(1, notice(name));
  queue.Push(2, notice(L"x"));
  EXPECT_EQ(woken, 3);
  EXPECT_EQ(all(), L"1a 1b 1c 1one! 2two! ");
  queue.Push(1, notice(L"f"));
  queue.Push(2, notice(L"g"));
  queue.End(1);
  queue.Push(1, notice(L"h"));
  EXPECT_EQ(all(), L"2g ") << "it tells again, and an ended watch is forgotten";
  const TDirectoryNotice update{TDirectoryEvent::FolderUpdate, L"two", {}};
  const TDirectoryNotice below{TDirectoryEvent::FolderUpdate, L"two\\sub", {}};
  queue.Push(2, {below, below, update, update});
  queue.Push(2, {update});
  EXPECT_EQ(all(), L"2two\\sub! 2two\\sub! 2two! ");
  queue.Push(2, {update, {TDirectoryEvent::FolderRename, L"r", L"s"}, {TDirectoryEvent::FileCreate, L"t", {}}});
  EXPECT_EQ(all(), L"2two! 2r 2t 2two! ") << "a folder that was renamed before the update was taken";
  queue.Close();
  queue.Push(2, notice(L"i"));
  EXPECT_EQ(all(), L"");
  EXPECT_EQ(woken, 6);
}

TEST(UnreadReports, LoseAWatchsReportsTogetherAndSayItOnce) {
  using enum TDirectoryReport::TKind;
  const char owners[] = "ab";
  const auto owner = [&](int i) { return const_cast<char*>(owners + i); };
  TUnreadReports unread(6);
  TDirectoryReport report;
  const auto taken = [&](std::size_t most) {
    std::string text;
    while (unread.Take(most, report)) {
      text += *static_cast<const char*>(report.owner) + std::to_string(report.folder) + "OF "[report.kind == Failed];
      if (report.kind == Records) text.back() = ':';
      for (const auto& record : report.records) text += static_cast<char>(record.name[0]);
      text += ' ';
    }
    return text;
  };
  const auto add = [&](int of, std::uint64_t folder, const std::wstring& names) {
    TDirectoryReport made{Records, owner(of), folder, {}};
    for (const wchar_t name : names) made.records.push_back({Added, std::wstring(1, name)});
    unread.Add(std::move(made));
  };
  add(0, 1, L"xyz");
  add(1, 2, L"v");
  EXPECT_EQ(taken(2), "a1:xy a1:z b2:v ") << "in parts";
  add(0, 1, L"xyz");
  unread.Take(1, report);
  add(0, 2, L"w");
  unread.Add({Failed, owner(0), 1, {}});
  unread.Drop(owner(0), 2);
  EXPECT_EQ(taken(9), "a1:yz a1F ");
  add(0, 1, L"xyz");
  unread.Take(2, report);
  add(1, 5, L"u");
  add(0, 3, L"w");
  unread.Add({Failed, owner(0), 3, {}});
  for (int i = 0; i < 3; ++i) add(0, 4, L"stuvw");
  EXPECT_TRUE(unread.HasOf(owner(1)));
  EXPECT_EQ(taken(9), "b5:u a3F a1O ") << "what comes behind it is in it";
  EXPECT_FALSE(unread.HasOf(owner(0)));
}

} // namespace
} // namespace kiv
