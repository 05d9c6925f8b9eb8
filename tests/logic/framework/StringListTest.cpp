#include <framework/StringList.h>

#include <framework/Exceptions.h>
#include <framework/TextCompare.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace kiv {
namespace {

struct TEntry {
  std::wstring text;
  std::intptr_t object;
  friend bool operator==(const TEntry&, const TEntry&) = default;
};
using TModel = std::vector<TEntry>;

TModel Content(const TStrings& pList) {
  TModel content;
  for (int i = 0; i < pList.GetCount(); ++i) content.push_back({pList.Get(i), pList.GetObjectAt(i)});
  return content;
}

std::vector<std::wstring> Texts(const TStrings& pList) {
  std::vector<std::wstring> texts;
  for (int i = 0; i < pList.GetCount(); ++i) texts.push_back(pList.Get(i));
  return texts;
}

std::wstring Message(const std::function<void()>& pCall) {
  try {
    pCall();
  } catch (const EStringListError& e) {
    return e.Message();
  }
  return L"nothing raised";
}

TEST(StringList, RandomOperationsFollowTheModel) {
  std::mt19937 random(7);
  TStringList list;
  TModel model;
  const auto below = [&](std::size_t count) { return static_cast<std::ptrdiff_t>(random() % count); };
  for (std::intptr_t step = 0; step < 8000; ++step) {
    const std::wstring text = L"t" + std::to_wstring(random() % 50);
    const auto what = random() % 10;
    if (model.empty() || what < 3) {
      EXPECT_EQ(list.AddObject(text, step), static_cast<int>(model.size()));
      model.push_back({text, step});
      continue;
    }
    const auto at = below(model.size());
    const auto to = below(model.size());
    const int index = static_cast<int>(at);
    if (what == 3) {
      list.InsertObject(index, text, step);
      model.insert(model.begin() + at, {text, step});
    } else if (what < 6) {
      list.Delete(index);
      model.erase(model.begin() + at);
    } else if (what == 6) {
      list.Put(index, text);
      list.PutObjectAt(index, -step);
      model[static_cast<std::size_t>(at)] = {text, -step};
    } else if (what == 7) {
      list.Exchange(index, static_cast<int>(to));
      std::swap(model[static_cast<std::size_t>(at)], model[static_cast<std::size_t>(to)]);
    } else if (what == 8) {
      list.Move(index, static_cast<int>(to));
      const TEntry moved = model[static_cast<std::size_t>(at)];
      model.erase(model.begin() + at);
      model.insert(model.begin() + to, moved);
    } else {
      const auto found = std::find_if(model.begin(), model.end(), [&](const TEntry& e) { return e.text == text; });
      EXPECT_EQ(list.IndexOf(text), found == model.end() ? -1 : static_cast<int>(found - model.begin()));
    }
    if (step % 64 == 0) {
      ASSERT_EQ(Content(list), model);
    }
  }
  EXPECT_EQ(Content(list), model);
}

TEST(StringList, SortedListsFollowTheModelInEveryDuplicatesMode) {
  for (const bool caseSensitive : {false, true}) {
    for (const auto mode : {TDuplicates::dupIgnore, TDuplicates::dupAccept, TDuplicates::dupError}) {
      std::mt19937 random(11);
      TStringList list;
      list.SetCaseSensitive(caseSensitive);
      list.SetSorted(true);
      list.SetDuplicates(mode);
      TModel model;
      const auto compare = [&](const std::wstring& a, const std::wstring& b) {
        return caseSensitive ? a.compare(b) : CompareText(a, b);
      };
      for (std::intptr_t step = 0; step < 400; ++step) {
        std::wstring text(1 + random() % 2, L'a');
        for (wchar_t& c : text) c = L"aAbB_Z"[random() % 6];
        const auto equal = [&](const TEntry& e) { return compare(e.text, text) == 0; };
        if (random() % 3 == 0) {
          const auto found = std::find_if(model.begin(), model.end(), equal);
          const int index = list.IndexOf(text);
          ASSERT_EQ(index, found == model.end() ? -1 : static_cast<int>(found - model.begin()));
          if (index >= 0 && random() % 2) list.Delete(index), model.erase(found);
          continue;
        }
        const bool standing = std::any_of(model.begin(), model.end(), equal);
        if (standing && mode == TDuplicates::dupError) {
          EXPECT_THROW(list.AddObject(text, step), EStringListError);
        } else {
          const int index = list.AddObject(text, step);
          if (!standing || mode == TDuplicates::dupAccept) {
            model.push_back({text, step});
            std::stable_sort(model.begin(), model.end(),
                             [&](const TEntry& a, const TEntry& b) { return compare(a.text, b.text) < 0; });
            EXPECT_EQ(list.GetObjectAt(index), step);
          } else {
            EXPECT_EQ(compare(list.Get(index), text), 0);
          }
        }
        ASSERT_EQ(Content(list), model);
      }
    }
  }
}

TEST(StringList, ErrorsNameIndexAndCount) {
  TStringList list;
  list.Add(L"b");
  const std::wstring outside = L"List index out of bounds (1). TStringList has 1 entries.";
  EXPECT_EQ(Message([&] { list.Get(1); }), outside);
  EXPECT_EQ(Message([&] { list.Delete(1); }), outside);
  EXPECT_EQ(Message([&] { list.Put(1, L""); }), outside);
  EXPECT_EQ(Message([&] { list.PutObjectAt(1, 0); }), outside);
  EXPECT_EQ(Message([&] { list.Exchange(0, 1); }), outside);
  EXPECT_EQ(Message([&] { list.Move(0, 1); }), outside);
  EXPECT_EQ(Message([&] { list.Insert(-1, L""); }), L"List index out of bounds (-1). TStringList has 1 entries.");
  int index = 0;
  EXPECT_EQ(Message([&] { list.Find(L"b", index); }), L"Operation not allowed on unsorted list");
  list.SetSorted(true);
  list.Add(L"c");
  const std::wstring sorted = L"Operation not allowed on sorted list";
  EXPECT_EQ(Message([&] { list.Insert(0, L"a"); }), sorted);
  EXPECT_EQ(Message([&] { list.Put(0, L"a"); }), sorted);
  EXPECT_EQ(Message([&] { list.Exchange(0, 1); }), sorted);
  EXPECT_EQ(Message([&] { list.Move(0, 1); }), sorted);
  list.SetDuplicates(TDuplicates::dupError);
  EXPECT_EQ(Message([&] { list.Add(L"B"); }), L"String list does not allow duplicates: \"B\"");
  EXPECT_EQ(Texts(list), (std::vector<std::wstring>{L"b", L"c"}));
}

TEST(StringList, SettingsReorderAndCustomSortSurvivesBadComparisons) {
  TStringList list;
  list.SetStrings({L"b", L"B", L"a", L"A"});
  list.SetSorted(true);
  EXPECT_EQ(Texts(list), (std::vector<std::wstring>{L"a", L"A", L"b", L"B"}));
  list.SetCaseSensitive(true);
  EXPECT_EQ(Texts(list), (std::vector<std::wstring>{L"A", L"B", L"a", L"b"}));
  list.SetSorted(false);
  list.CustomSort([](const TStringList& l, int a, int b) { return l.Get(b).compare(l.Get(a)); });
  const std::vector<std::wstring> backwards{L"b", L"a", L"B", L"A"};
  EXPECT_EQ(Texts(list), backwards);
  EXPECT_THROW(list.CustomSort([](const TStringList&, int, int) -> int { throw EInvalidOperation(L"x"); }),
               EInvalidOperation);
  EXPECT_EQ(Texts(list), backwards);
  // Many enough for a sort that trusts what it was told before.
  while (list.GetCount() < 300) list.Add(std::to_wstring(list.GetCount()));
  auto before = Texts(list);
  std::sort(before.begin(), before.end());
  for (unsigned seed = 0; seed < 20; ++seed) {
    std::mt19937 random(seed);
    list.CustomSort([&](const TStringList& l, int a, int b) {
      EXPECT_TRUE(a >= 0 && a < l.GetCount() && b >= 0 && b < l.GetCount());
      return static_cast<int>(random() % 3) - 1;
    });
    auto texts = Texts(list);
    std::sort(texts.begin(), texts.end());
    ASSERT_EQ(texts, before) << seed;
  }
  // Equals keep their order.
  list.CustomSort([](const TStringList& l, int a, int b) { return l.Get(a).compare(l.Get(b)); });
  for (int i = 0; i < list.GetCount(); ++i) list.PutObjectAt(i, i);
  list.CustomSort([](const TStringList& l, int a, int b) { return l.Get(a)[0] - l.Get(b)[0]; });
  EXPECT_EQ(Texts(list), before);
  for (int i = 0; i < list.GetCount(); ++i) ASSERT_EQ(list.GetObjectAt(i), i);
}

TEST(StringList, ReportsEachChangeOnceAndAtTheOutermostEnd) {
  auto list = std::make_unique<TStringList>();
  int changes = 0;
  int changings = 0;
  list->SetOnChange([&](TPersistent* sender) {
    EXPECT_EQ(sender, list.get());
    ++changes;
  });
  list->SetOnChanging([&](TPersistent*) { ++changings; });
  list->Add(L"a");
  EXPECT_EQ(changes, 1);
  list->BeginUpdate();
  list->SetCommaText(L"x,y,z");
  list->Delete(0);
  EXPECT_EQ(changes, 1);
  list->EndUpdate();
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(changings, 2);
  EXPECT_THROW(list->EndUpdate(), EInvalidOperation);
  // An error inside leaves no update open.
  list->SetSorted(true);
  list->SetDuplicates(TDuplicates::dupError);
  changes = 0;
  EXPECT_THROW(list->SetCommaText(L"a,a"), EStringListError);
  EXPECT_FALSE(list->IsUpdating());
  EXPECT_EQ(changes, 1);
  // An OnChanging that raises prevents the change, also that of a setting which the order hangs on.
  list->SetSorted(false);
  list->SetCommaText(L"b,A");
  const auto refuse = [](TPersistent*) { throw EInvalidOperation(L"no"); };
  list->SetOnChanging(refuse);
  EXPECT_THROW(list->SetSorted(true), EInvalidOperation);
  EXPECT_FALSE(list->GetSorted());
  list->SetOnChanging(nullptr);
  list->SetSorted(true);
  list->SetOnChanging(refuse);
  EXPECT_THROW(list->SetCaseSensitive(true), EInvalidOperation);
  EXPECT_THROW(list->Add(L"c"), EInvalidOperation);
  EXPECT_EQ(list->IndexOf(L"B"), 1);
  EXPECT_EQ(list->GetCount(), 2);
  list->SetOnChanging(nullptr);
  // The handler may end the list.
  list->SetOnChange([&](TPersistent*) { list.reset(); });
  list->SetText(L"one\ntwo");
  EXPECT_EQ(list, nullptr);
}

TEST(StringList, ReadsEveryLineEnd) {
  const struct {
    std::wstring text;
    std::vector<std::wstring> lines;
  } cases[] = {
      {L"", {}},
      {L"a", {L"a"}},
      {L"a\r\nb\rc\nd", {L"a", L"b", L"c", L"d"}},
      {L"a\n", {L"a"}},
      {L"\n\r\n\r", {L"", L"", L""}},
      {L"\r\r\n", {L"", L""}},
      {std::wstring(L"n\0l\nx", 5), {std::wstring(L"n\0l", 3), L"x"}},
  };
  for (const auto& c : cases) {
    TStringList list;
    list.SetText(c.text);
    EXPECT_EQ(Texts(list), c.lines);
    TStringList again;
    again.SetText(list.GetText());
    EXPECT_TRUE(again.Equals(list));
  }
}

TEST(StringList, AssignTakesEntriesObjectsAndSettings) {
  TStringList source;
  source.SetSorted(true);
  source.SetDuplicates(TDuplicates::dupAccept);
  source.SetDelimiter(L';');
  source.AddObject(L"b", 2);
  source.AddObject(L"a", 1);
  source.AddObject(L"B", 3);
  TStringList target;
  target.Add(L"old");
  target.Assign(&source);
  EXPECT_EQ(Content(target), Content(source));
  EXPECT_TRUE(target.GetSorted());
  EXPECT_EQ(target.GetDelimitedText(), L"a;b;B");
  target.AddStrings(target);
  EXPECT_EQ(target.GetCount(), 6);
  target.Assign(&target);
  EXPECT_EQ(target.GetCount(), 6);
  struct TOther : TPersistent {
    std::wstring ClassName() const override { return L"TOther"; }
  } other;
  const auto message = [&](const TPersistent* from) -> std::wstring {
    try {
      target.Assign(from);
    } catch (const EConvertError& e) {
      return e.Message();
    }
    return {};
  };
  EXPECT_EQ(message(&other), L"Cannot assign a TOther to a TStringList.");
  EXPECT_EQ(message(nullptr), L"Cannot assign a nil to a TStringList.");
}

TEST(StringList, NamesAndValues) {
  TStringList list;
  list.SetStrings({L"plain", L"Color=red", L"=nameless", L"eq=a=b"});
  EXPECT_EQ(list.GetValue(L"COLOR"), L"red");
  EXPECT_EQ(list.GetValue(L"plain"), L"");
  EXPECT_EQ(list.GetValue(L"eq"), L"a=b");
  EXPECT_EQ(list.GetNameAt(0), L"");
  EXPECT_EQ(list.IndexOfName(L""), 2);
  list.SetValue(L"color", L"blue");
  list.SetValue(L"new", L"1");
  list.SetValue(L"eq", L"");
  EXPECT_EQ(Texts(list), (std::vector<std::wstring>{L"plain", L"color=blue", L"=nameless", L"new=1"}));
}

TEST(DelimitedText, WhatIsWrittenReadsBackForEverySetting) {
  std::mt19937 random(5);
  const std::wstring letters(L"ab \t\r\n\0\"',;", 11);
  for (const bool strict : {false, true}) {
    for (const wchar_t delimiter : {L',', L';', L' ', L'\t', L'\0'}) {
      for (const wchar_t quote : {L'"', L'\''}) {
        TStringList list;
        list.SetStrictDelimiter(strict);
        list.SetDelimiter(delimiter);
        list.SetQuoteChar(quote);
        for (int round = 0; round < 300; ++round) {
          std::vector<std::wstring> texts(random() % 5);
          for (std::wstring& text : texts) {
            text.resize(random() % 4);
            for (wchar_t& c : text) c = letters[random() % letters.size()];
          }
          list.SetStrings(texts);
          const std::wstring written = list.GetDelimitedText();
          list.SetDelimitedText(written);
          ASSERT_EQ(Texts(list), texts) << testing::PrintToString(written) << " strict " << strict << " delimiter "
                                        << static_cast<int>(delimiter);
          list.SetCommaText(list.GetCommaText());
          ASSERT_EQ(Texts(list), texts);
        }
      }
    }
  }
}

TEST(DelimitedText, ReadsWhatPeopleWrite) {
  const struct {
    bool strict;
    std::wstring text;
    std::vector<std::wstring> entries;
  } cases[] = {
      {false, L"", {}},
      {false, L"  ", {}},
      {false, L" a , b c ", {L"a", L"b", L"c"}},
      {false, L"a,,b,", {L"a", L"", L"b", L""}},
      {false, L",", {L"", L""}},
      {false, L"\"a \"\"b\"\"\" , c", {L"a \"b\"", L"c"}},
      {false, L"\"a\"b", {L"a", L"b"}},
      {false, L"\"never closed, x", {L"never closed, x"}},
      {false, L"a\"b\"", {L"a\"b\""}},
      {true, L" a , b c ", {L" a ", L" b c "}},
      {true, L"  ", {L"  "}},
      {true, L"\"a,b\",c", {L"a,b", L"c"}},
      {true, L"\"a\"b,c", {L"ab", L"c"}},
      {true, L"a\r\n,b", {L"a\r\n", L"b"}},
      {true, L",,", {L"", L"", L""}},
  };
  for (const auto& c : cases) {
    TStringList list;
    list.SetStrictDelimiter(c.strict);
    list.SetDelimitedText(c.text);
    EXPECT_EQ(Texts(list), c.entries) << testing::PrintToString(c.text) << " strict " << c.strict;
  }
}

TEST(TextCompare, IsATotalOrderThatIgnoresCase) {
  const std::vector<std::wstring> ordered = {L"",
                                             L"A",
                                             L"ab",
                                             L"AC",
                                             L"Z",
                                             L"_",
                                             L"\x00C9"
                                             L"a",
                                             L"\x00E9z",
                                             L"\x0131",
                                             std::wstring(1, static_cast<wchar_t>(0xD800))};
  for (std::size_t i = 0; i < ordered.size(); ++i) {
    for (std::size_t j = 0; j < ordered.size(); ++j) {
      EXPECT_EQ(CompareText(ordered[i], ordered[j]), i < j ? -1 : i > j ? 1 : 0) << i << ' ' << j;
    }
  }
  EXPECT_TRUE(SameText(L"\x00C4pfel\x0416", L"\x00E4PFEL\x0436"));
  EXPECT_FALSE(SameText(L"i", L"\x0131"));
  EXPECT_FALSE(SameText(L"stra\x00DF"
                        L"e",
                        L"STRASSE"));
}

} // namespace
} // namespace kiv
