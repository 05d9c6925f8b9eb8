#include <forms/Form.h>
#include <forms/StdControls.h>
#include <framework/ComponentText.h>

#include <gtest/gtest.h>

#include <memory>

namespace kiv::test {
namespace {

TEST(Published, AFormComesBackFromItsText) {
  TForm form;
  form.SetName(L"Form");
  form.SetText(L"A form");
  form.SetBounds(1, 2, 300, 200);
  form.GetFont().SetFontName(L"Tahoma");
  auto* const panel = new TPanel(&form);
  panel->SetName(L"Panel");
  panel->SetParent(&form);
  panel->SetAlign(TAlign::alTop);
  panel->SetAlignWithMargins(true);
  panel->SetMargins({1, 2, 3, -4});
  panel->SetPadding({5, 6, 7, 8});
  panel->SetStyleElements({TStyleElement::seFont});
  auto* const edit = new TEdit(&form);
  edit->SetName(L"Edit");
  edit->SetParent(panel);
  edit->SetBounds(10, 11, 120, 25);
  edit->SetText(L"text");
  auto* const label = new TLabel(&form);
  label->SetName(L"Label");
  label->SetParent(panel);
  label->SetText(L"&Label");
  label->GetFont().SetStyle({TFontStyle::fsBold});
  label->SetFocusControl(edit);
  const std::wstring text = SaveComponentText(form);

  TForm copy;
  LoadComponentText(text, copy);
  EXPECT_EQ(copy.GetText(), L"A form");
  EXPECT_EQ(copy.GetWidth(), 300);
  EXPECT_FALSE(copy.HandleAllocated()); // not visible: no window for it
  auto* const newPanel = dynamic_cast<TPanel*>(copy.FindComponent(L"Panel"));
  auto* const newEdit = dynamic_cast<TEdit*>(copy.FindComponent(L"Edit"));
  auto* const newLabel = dynamic_cast<TLabel*>(copy.FindComponent(L"Label"));
  ASSERT_TRUE(newPanel && newEdit && newLabel);
  EXPECT_EQ(newPanel->GetParent(), &copy);
  EXPECT_EQ(newPanel->GetWidth(), panel->GetWidth());
  EXPECT_EQ(newPanel->GetMargins(), (TMargins{1, 2, 3, -4}));
  EXPECT_EQ(newPanel->GetPadding(), (TMargins{5, 6, 7, 8}));
  EXPECT_EQ(newPanel->GetStyleElements(), TStyleElements{TStyleElement::seFont});
  EXPECT_EQ(newEdit->GetParent(), newPanel);
  EXPECT_EQ(newEdit->GetText(), L"text");
  EXPECT_EQ(newEdit->GetLeft(), 10);
  EXPECT_TRUE(newEdit->IsParentFont());
  EXPECT_EQ(newEdit->GetFont().GetFontName(), L"Tahoma");
  EXPECT_EQ(newLabel->GetFocusControl(), newEdit);
  EXPECT_EQ(newLabel->GetFont().GetStyle(), TFontStyles{TFontStyle::fsBold});
  EXPECT_EQ(SaveComponentText(copy), text);
}

} // namespace
} // namespace kiv::test
