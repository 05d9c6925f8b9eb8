#include "PublishedGadget.h"

#include <framework/ComponentText.h>
#include <framework/ComponentTextLexer.h>
#include <platform/Text.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace kiv {

// Enumerations that can't be published: a name that isn't one, a value that no set has room for.
enum class TPrice { prDear };
template <>
struct TEnumNames<TPrice> {
  static constexpr TEnumName<TPrice> Values[] = {{TPrice::prDear, L"pr dear"}};
};
enum class TMark { maFar = 64 };
template <>
struct TEnumNames<TMark> {
  static constexpr TEnumName<TMark> Values[] = {{TMark::maFar, L"maFar"}};
};

namespace {

class ComponentText : public testing::Test {
protected:
  ComponentText() { PublishGadgets(); }
  void TearDown() override { EXPECT_EQ(TGadget::Living, 0) << "a component was left over"; }

  static std::unique_ptr<TGadget> Load(const std::wstring& pText) {
    std::unique_ptr<TComponent> root = LoadComponentText(pText);
    return std::unique_ptr<TGadget>(dynamic_cast<TGadget*>(root.release()));
  }
};

TEST_F(ComponentText, ATreeWithEveryKindOfPropertySurvives) {
  const std::wstring text = LR"(component TGadgetBox box1 {
  Tag = -7
  Enabled = false
  Count = 255
  Big = -9223372036854775808
  Ratio = 0.1
  Short = 0.5
  Filter = "*.txt;*.doc"
  Mode = gmFast
  Modes = [gmOff, gmSlow]
  Link = @child1.inner
  Font = {
    Name = "Segoe UI"
    Size = 9
  }
  Lines = ("one", "", "two \"2\"")
  Parts = (
    {
      Name = "first"
      Parts = (
        {
        }
      )
    }
    {
    }
  )
  Caption = ""
  component TGadget child1 {
    Mode = gmOff
    Link = root
    component TGadget inner {
      Mode = gmOff
      Link = @child1
    }
    component TComponent {
    }
  }
}
)";
  const auto root = Load(text);
  EXPECT_EQ(SaveComponentText(*root), text);
  EXPECT_EQ(root->GetName(), L"box1");
  EXPECT_EQ(root->GetTag(), -7);
  EXPECT_EQ(root->GetBig(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(root->GetRatio(), 0.1);
  EXPECT_EQ(root->GetModes(), (TGadgetModes{TGadgetMode::gmOff, TGadgetMode::gmSlow}));
  EXPECT_EQ(root->GetFont().GetSize(), 9);
  EXPECT_EQ(root->GetLines()->Get(2), L"two \"2\"");
  EXPECT_EQ(root->GetLink()->GetOwner()->GetName(), L"child1");
  // The same with other blanks.
  std::wstring dense = text;
  for (wchar_t& c : dense) c = c == L'\n' ? L' ' : c;
  EXPECT_EQ(SaveComponentText(*Load(dense)), text);
}

TEST_F(ComponentText, LoadedComesOnceToEachWhenAllReferencesStand) {
  const auto root = Load(L"component TGadget { Link = @late component TGadget early { Link = @late } "
                         L"component TGadget late { Link = root } }");
  std::vector<TGadget*> all{root.get()};
  for (TComponent* child : root->GetComponents()) all.push_back(dynamic_cast<TGadget*>(child));
  ASSERT_EQ(all.size(), 3U);
  for (const TGadget* gadget : all) {
    EXPECT_EQ(gadget->LoadedCalls, 1);
    EXPECT_TRUE(gadget->LinkStoodWhenLoaded);
    EXPECT_TRUE(gadget->WasLinkedWhileLoading);
    EXPECT_FALSE(gadget->IsLoading());
  }
}

TEST_F(ComponentText, OddStringsAndNumbersSurviveTheWayThroughUtf8) {
  std::wstring everything;
  for (unsigned c = 0; c < 0x300; ++c) everything.push_back(static_cast<wchar_t>(c));
  const std::wstring high(1, static_cast<wchar_t>(0xD83D));
  const std::wstring low(1, static_cast<wchar_t>(0xDE00));
  for (const std::wstring& odd :
       {everything, high, low, low + high, high + low, high + L"0", L"\xFEFF\xFFFF\x2028" + high,
        std::wstring(L"\0\\u{0}", 6), FromUtf8("\xF0\x9F\x93\x81")}) {
    TGadget gadget;
    gadget.SetFilter(odd);
    gadget.GetLines()->Add(odd);
    const auto again = Load(FromUtf8(ToUtf8(SaveComponentText(gadget))));
    EXPECT_EQ(again->GetFilter(), odd);
    EXPECT_EQ(again->GetLines()->Get(0), odd);
  }
  for (const double number : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), -1e300,
                              std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::max(), 1.0 / 3}) {
    TGadget gadget;
    gadget.SetRatio(number);
    gadget.SetShort(std::numeric_limits<float>::min());
    const auto again = Load(SaveComponentText(gadget));
    EXPECT_EQ(again->GetRatio(), number);
    EXPECT_EQ(again->GetShort(), std::numeric_limits<float>::min());
  }
  EXPECT_TRUE(std::isnan(Load(L"component TGadget { Ratio = nan }")->GetRatio()));
  EXPECT_EQ(Load(L"\xFEFF"
                 L"component TGadget { Filter = \"\\u{1f4c1}\" }")
                ->GetFilter(),
            FromUtf8("\xF0\x9F\x93\x81"));
}

TEST_F(ComponentText, EveryErrorSaysWhereAndWhat) {
  const std::wstring deep = [] {
    std::wstring text;
    for (int i = 0; i < 65; ++i) text += L"component TGadget { ";
    return text;
  }();
  // In each the error stands on the second line.
  const struct {
    std::wstring text;
    std::wstring message;
  } cases[] = {
      {L"", L"Line 2, column 1: Expected \"component\", found the end of the text."},
      {L"component {", L"Line 2, column 11: Expected the name of a class, found {."},
      {L"component TGadget g }", L"Line 2, column 21: Expected '{', found }."},
      {L"component TGadget g { Count 5", L"Line 2, column 29: Expected '=', found 5."},
      {L"component TGadget g { 5 }", L"Line 2, column 23: Expected a property, \"component\" or '}', found 5."},
      {L"component TGadget g { Font = { component", L"g.Font.component (line 2): a TGadgetFont has no such property."},
      {L"component TGadget g { Font = { 5", L"Line 2, column 32: Expected a property or '}', found 5."},
      {L"component TGadget g { } }", L"Line 2, column 25: Expected the end of the text, found }."},
      {L"component TGadget g { Lines = (\"a\" \"b\")", L"Line 2, column 36: Expected ',', found \"b\"."},
      {L"component TGadget g { Lines = (5)", L"Line 2, column 32: Expected a string or ')', found 5."},
      {L"component TGadget g { Filter = \"open", L"Line 2, column 37: Expected '\"' before the end of the line."},
      {L"component TGadget g { Filter = \"\\x\"", L"Line 2, column 34: Expected one of \" \\ n r t u behind '\\'."},
      {L"component TGadget g { Filter = \"\\u12\"", L"Line 2, column 35: Expected '{' behind \\u."},
      {L"component TGadget g { Filter = \"\\u{}\"", L"Line 2, column 36: Expected a hexadecimal digit."},
      {L"component TGadget g { Filter = \"\\u{12\"", L"Line 2, column 38: Expected '}'."},
      {L"component TGadget g { Filter = \"\\u{123456789}\"",
       L"Line 2, column 44: Expected at most 8 hexadecimal digits."},
      {L"component TGadget g { Link = @ }", L"Line 2, column 31: Expected the name of a component."},
      {L"component TGadget g { ? }", L"Line 2, column 23: Unexpected character \"?\"."},
      {deep, L"Line 2, column 1281: Expected at most 64 levels of nesting."},
      {L"component TNobody g {}", L"TNobody (line 2): the class isn't registered."},
      {L"component TGadgetFont g {}", L"TGadgetFont (line 2): A TGadgetFont can't be created by its name."},
      {L"component TGadget g { Colour = 5 }", L"g.Colour (line 2): a TGadget has no such property."},
      {L"component TGadget { Colour = 5 }", L"TGadget.Colour (line 2): a TGadget has no such property."},
      {L"component TGadget g { Version = \"1\" }", L"g.Version (line 2): the property is read-only."},
      {L"component TGadget g { Filter = 5 }", L"g.Filter (line 2): expected a string, found 5."},
      {L"component TGadget g { Enabled = 1 }", L"g.Enabled (line 2): expected true or false, found 1."},
      {L"component TGadget g { Count = 5.5 }", L"g.Count (line 2): expected a whole number, found 5.5."},
      {L"component TGadget g { Count = \"5\" }", L"g.Count (line 2): expected a whole number, found \"5\"."},
      {L"component TGadget g { Count = 256 }", L"g.Count (line 2): 256 is out of range 0..255."},
      {L"component TGadget g { Font = { Size = -129 } }", L"g.Font.Size (line 2): -129 is out of range -128..127."},
      {L"component TGadget g { Big = 9223372036854775808 }",
       L"g.Big (line 2): 9223372036854775808 is out of range -9223372036854775808..9223372036854775807."},
      {L"component TGadget g { Ratio = 1e999 }", L"g.Ratio (line 2): 1e999 is out of range."},
      {L"component TGadget g { Ratio = \"-inf\" }", L"g.Ratio (line 2): expected a number, found \"-inf\"."},
      {L"component TGadget g { Ratio = true }", L"g.Ratio (line 2): expected a number, found true."},
      {L"component TGadget g { Mode = gmUnnamed }",
       L"g.Mode (line 2): expected one of gmOff, gmSlow, gmFast, found gmUnnamed."},
      {L"component TGadget g { Modes = gmOff }", L"g.Modes (line 2): expected '[', found gmOff."},
      {L"component TGadget g { Modes = [gmOff,] }",
       L"g.Modes (line 2): expected one of gmOff, gmSlow, gmFast, found ]."},
      {L"component TGadget g { Modes = [gmOff gmSlow]", L"Line 2, column 38: Expected ',', found gmSlow."},
      {L"component TGadget g { Font = 5 }", L"g.Font (line 2): expected '{', found 5."},
      {L"component TGadget g { Lines = \"a\" }", L"g.Lines (line 2): expected '(', found \"a\"."},
      {L"component TGadget g { Parts = 5 }", L"g.Parts (line 2): expected '(', found 5."},
      {L"component TGadget g { Parts = ({} 5) }", L"Line 2, column 35: Expected '{' or ')', found 5."},
      {L"component TGadget g { Parts = ({} {Name = \"bad\"})}", L"g.Parts[1].Name (line 2): a bad part"},
      {L"component TGadget g { Parts = ({Link = root})}",
       L"g.Parts[0].Link (line 2): a reference can't stand in a collection."},
      {L"component TGadget g { Link = \"a\" }",
       L"g.Link (line 2): expected a reference (@name, root or nil), found \"a\"."},
      {L"component TGadget g { Link = @a.b component TGadget a {} }", L"g.Link (line 2): there is no component @a.b."},
      {L"component TGadget g { Link = @a component TComponent a {} }",
       L"g.Link (line 2): a TComponent doesn't fit here."},
      {L"component TGadget g { Short = 1e39 }", L"g.Short (line 2): the number is out of range."},
      {L"component TGadget g { Count = 13 }", L"g.Count (line 2): thirteen brings bad luck"},
      {L"component TGadget g { Count = 14 }", L"g.Count (line 2): not by this library"},
      {L"component TGadget g { component TGadget a {} component TGadget A {} }",
       L"A (line 2): A component named A already exists."},
      {L"component TGadget g { component TGadget a {} component TGadget b { Filter = \"raise when loaded\" } }",
       L"as told"},
  };
  for (const auto& c : cases) {
    TGadget standing;
    new TGadget(&standing);
    for (const bool intoStanding : {false, true}) {
      if (intoStanding && c.text.find(L"component TGadget ") != 0) continue;
      std::wstring message = L"nothing raised";
      try {
        if (intoStanding) {
          LoadComponentText(L"\n" + c.text, standing);
        } else {
          LoadComponentText(L"\n" + c.text).reset();
        }
      } catch (const EParserError& e) {
        EXPECT_EQ(e.Line(), 2);
        message = e.Message();
      } catch (const EPropertyError& e) {
        EXPECT_EQ(e.Line(), 2);
        message = e.Message();
      } catch (const EInvalidOperation& e) {
        message = e.Message();
      }
      EXPECT_EQ(message, c.message) << testing::PrintToString(c.text);
      // Nothing that was made is left, and nothing waits for an end of loading.
      EXPECT_EQ(standing.GetComponents().size(), 1U);
      EXPECT_FALSE(standing.IsLoading());
    }
    EXPECT_EQ(TGadget::Living, 2);
  }
}

TEST_F(ComponentText, AStandingRootTakesTextOfItsOwnOrABaseClass) {
  TGadgetBox root;
  auto* const before = new TGadget(&root);
  before->SetName(L"before");
  LoadComponentText(L"component TGadget root1 { Link = @before component TGadget after { Link = @before } }", root);
  EXPECT_EQ(root.GetName(), L"root1");
  EXPECT_EQ(root.GetLink(), before);
  EXPECT_EQ(root.GetComponents().size(), 2U);
  EXPECT_EQ(root.LoadedCalls, 1);
  EXPECT_EQ(before->LoadedCalls, 0);
  // What failed leaves no pointer to what was removed.
  TGadget plain;
  EXPECT_THROW(LoadComponentText(L"component TGadgetBox { }", plain), EPropertyError);
  EXPECT_THROW(LoadComponentText(L"component TGadget { Link = @a component TGadget a { } Link = @a "
                                 L"component TGadget b { Filter = \"raise when loaded\" } }",
                                 plain),
               EInvalidOperation);
  EXPECT_EQ(plain.GetLink(), nullptr);
}

// Destroys its owner when it is loaded.
class TRegicide : public TGadget {
public:
  using TGadget::TGadget;
  std::wstring ClassName() const override { return L"TRegicide"; }

protected:
  void Loaded() override { delete GetOwner(); }
};

TEST_F(ComponentText, ALoadedThatDestroysTheRootLeavesNothing) {
  PublishClass<TRegicide, TGadget>(L"TRegicide", L"");
  const std::wstring text =
      L"component TGadget { component TGadget { } component TRegicide { } component TGadget { } }";
  EXPECT_THROW(static_cast<void>(LoadComponentText(text)), EComponentError);
  LoadComponentText(text, *new TGadget);
}

TEST_F(ComponentText, WhatCannotBeReadBackIsNotSaved) {
  struct TUnknown : TComponent {
    explicit TUnknown(TComponent* pOwner = nullptr) : TComponent(pOwner) {}
    std::wstring ClassName() const override { return L"TUnknown"; }
  };
  TGadget stranger;
  stranger.SetName(L"stranger");
  const auto message = [](const std::function<void(TGadget&)>& prepare) -> std::wstring {
    TGadget root;
    root.SetName(L"g");
    prepare(root);
    try {
      SaveComponentText(root);
    } catch (const EPropertyError& e) {
      return e.Message();
    }
    return L"nothing raised";
  };
  EXPECT_EQ(message([](TGadget& g) { g.SetMode(TGadgetMode::gmUnnamed); }), L"g.Mode: the value 3 has no name.");
  EXPECT_EQ(message([](TGadget& g) { g.SetModes({TGadgetMode::gmUnnamed}); }),
            L"g.Modes: a value of the set has no name.");
  EXPECT_EQ(message([](TGadget& g) { g.SetLink(new TGadget(&g)); }),
            L"g.Link: refers to a component that has no name.");
  EXPECT_EQ(message([&](TGadget& g) { g.SetLink(&stranger); }), L"g.Link: stranger isn't part of what is saved.");
  EXPECT_EQ(message([](TGadget& g) { static_cast<TGadgetPart*>(g.GetParts().Add())->SetLink(&g); }),
            L"g.Parts[0].Link: a reference can't stand in a collection.");
  EXPECT_EQ(message([](TGadget& g) { new TUnknown(&g); }), L"TUnknown: the class TUnknown isn't registered.");
  EXPECT_EQ(message([](TGadget& g) {
              TComponent* at = &g;
              for (int i = 0; i < MaxComponentTextDepth; ++i) at = new TGadget(at);
            }),
            L"TGadget is nested more than 64 deep.");
}

// A component that makes a part of its own, and saves its caption only while it has a name.
class TAssembly : public TGadgetBox {
public:
  explicit TAssembly(TComponent* pOwner = nullptr) : TGadgetBox(pOwner), fPart(new TGadget(this)) {
    fPart->SetName(L"part");
    fPart->SetSubComponent(true);
  }
  std::wstring ClassName() const override { return L"TAssembly"; }
  TGadget& GetPart() { return *fPart; }
  bool HasName() const { return !GetName().empty(); }

private:
  TGadget* fPart;
};

TEST_F(ComponentText, PartsAreNotMadeTwiceAndConditionsDecideWhatIsSaved) {
  PublishClass<TAssembly, TGadgetBox>(L"TAssembly", L"")
      .Property(L"Label", &TAssembly::GetCaption, &TAssembly::SetCaption, L"Box", L"")
      .StoredIf(&TAssembly::HasName)
      .Object(L"Part", &TAssembly::GetPart, L"");
  TAssembly assembly;
  assembly.SetCaption(L"changed");
  assembly.GetPart().SetCount(7);
  EXPECT_EQ(SaveComponentText(assembly).find(L"Label"), std::wstring::npos);
  assembly.SetName(L"one");
  const std::wstring text = SaveComponentText(assembly);
  EXPECT_NE(text.find(L"Label = \"changed\""), std::wstring::npos);

  const std::unique_ptr<TGadget> loaded = Load(text);
  auto& copy = dynamic_cast<TAssembly&>(*loaded);
  EXPECT_EQ(copy.GetComponents().size(), 1U);
  EXPECT_EQ(copy.GetPart().GetCount(), 7);
  EXPECT_EQ(SaveComponentText(copy), text);
}

TEST_F(ComponentText, TheDeepestTreeThatLoadsIsSaved) {
  std::wstring text;
  for (int i = 0; i < MaxComponentTextDepth; ++i) text += L"component TGadget { ";
  for (int i = 0; i < MaxComponentTextDepth; ++i) text += L"} ";
  const auto root = Load(text);
  const std::wstring saved = SaveComponentText(*root);
  EXPECT_EQ(SaveComponentText(*Load(saved)), saved);
  // One object inside the innermost component is one level too many.
  TComponent* innermost = root.get();
  while (!innermost->GetComponents().empty()) innermost = innermost->GetComponents().front();
  dynamic_cast<TGadget*>(innermost)->GetFont().SetSize(1);
  EXPECT_THROW(SaveComponentText(*root), EPropertyError);
}

TEST_F(ComponentText, RegistryListsInheritedPropertiesAndRefusesDoubles) {
  TPropertyRegistry& registry = TPropertyRegistry::Instance();
  const TPublishedClass* const box = registry.FindClass(L"TGadgetBox");
  ASSERT_NE(box, nullptr);
  std::vector<std::wstring> names;
  for (const TProperty* property : TPropertyRegistry::PropertiesOf(*box)) names.push_back(property->name);
  EXPECT_EQ(names,
            (std::vector<std::wstring>{L"Tag", L"Version", L"Enabled", L"Count", L"Big", L"Ratio", L"Short", L"Filter",
                                       L"Mode", L"Modes", L"Link", L"Font", L"Lines", L"Parts", L"Caption"}));
  EXPECT_TRUE(box->FindProperty(L"Version")->IsReadOnly());
  // An unregistered class goes by the nearest name it gives itself, and only if it is one.
  struct TUnregistered : TGadget {
  } gadget;
  EXPECT_EQ(registry.ClassOf(gadget), registry.FindClass(L"TGadget"));
  struct TLiar : TComponent {
    std::wstring ClassName() const override { return L"TGadget"; }
  } liar;
  EXPECT_EQ(registry.ClassOf(liar), nullptr);

  struct TPrivateGadget : TGadget {};
  auto publisher = PublishClass<TPrivateGadget, TGadget>(L"TPrivateGadget", L"");
  EXPECT_THROW(publisher.ReadOnly(L"Tag", &TGadget::GetTag, L""), EPropertyError);
  EXPECT_THROW(publisher.ReadOnly(L"component", &TGadget::GetTag, L""), EPropertyError);
  EXPECT_THROW(publisher.ReadOnly(
                   L"Worth", [](const TPrivateGadget&) { return TPrice::prDear; }, L""),
               EPropertyError);
  const auto marks = [](const TPrivateGadget&) { return TSet<TMark>{}; };
  EXPECT_THROW(publisher.ReadOnly(L"Marks", marks, L""), EPropertyError);
  EXPECT_THROW((PublishClass<TLiar>(L"TGadget", L"")), EPropertyError);
  struct TChild : TLiar {};
  EXPECT_THROW((PublishClass<TChild, TLiar>(L"TChild", L"")), EPropertyError);
}

} // namespace
} // namespace kiv
