#include <forms/Form.h>
#include <framework/ComponentText.h>
#include <graphics/ImageList.h>
#include <listview/CustomListView.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kiv {
namespace {

TEST(ListViewPublished, AListComesBackFromItsText) {
  TForm form;
  form.SetName(L"Form");
  auto* const images = new TImageList(&form);
  images->SetName(L"Images");
  auto* const list = new TListView(&form);
  list->SetName(L"List");
  list->SetParent(&form);
  list->SetViewStyle(TViewStyle::vsReport);
  list->SetMultiSelect(true);
  list->SetHideSelection(false);
  list->SetCheckBoxes(true);
  list->SetSmallImages(images);
  TListColumn* const name = list->GetColumns().Add();
  name->SetCaption(L"Name");
  name->SetMinWidth(80);
  name->SetMaxWidth(90);
  name->SetWidth(85);
  TListColumn* const size = list->GetColumns().Add();
  size->SetAlignment(TColumnAlignment::taRightJustify);
  size->SetVisible(false);
  size->SetWidth(300);
  const std::wstring text = SaveComponentText(form);

  TForm copy;
  LoadComponentText(text, copy);
  auto* const made = dynamic_cast<TListView*>(copy.FindComponent(L"List"));
  ASSERT_TRUE(made);
  EXPECT_TRUE(made->IsMultiSelect() && made->IsCheckBoxes() && !made->IsHideSelection());
  EXPECT_EQ(made->GetSmallImages(), copy.FindComponent(L"Images"));
  ASSERT_EQ(made->GetColumns().GetCount(), 2);
  EXPECT_EQ(made->GetColumn(0)->GetCaption(), L"Name");
  EXPECT_EQ(made->GetColumn(0)->GetWidth(), 85);
  EXPECT_EQ(made->GetColumn(0)->GetMaxWidth(), 90);
  EXPECT_FALSE(made->GetColumn(1)->GetVisible());
  EXPECT_EQ(SaveComponentText(copy), text);

  // What is wrong with the columns is said, and nothing of the text is left.
  for (const auto& [right, wrong] :
       std::vector<std::pair<std::wstring, std::wstring>>{{L"Width = 85", L"Width = wide"},
                                                          {L"Width = 85", L"Breadth = 85"},
                                                          {L"Width = 85", L"Width = 85 }"},
                                                          {L"taRightJustify", L"taLost"},
                                                          {L"Columns = (", L"Columns = {"},
                                                          {L"Columns = (", L"Columns = 3"}}) {
    std::wstring bad = text;
    const std::size_t at = bad.find(right, bad.find(L"Columns"));
    ASSERT_NE(at, std::wstring::npos) << std::string(right.begin(), right.end());
    bad.replace(at, right.size(), wrong);
    TForm root;
    EXPECT_THROW(LoadComponentText(bad, root), EException) << std::string(wrong.begin(), wrong.end());
    EXPECT_EQ(root.FindComponent(L"List"), nullptr);
  }

  TForm plain;
  auto* const untouched = new TListView(&plain);
  untouched->SetParent(&plain);
  const std::wstring defaults = SaveComponentText(plain);
  EXPECT_EQ(defaults.find(L"ViewStyle"), std::wstring::npos);
  EXPECT_EQ(defaults.find(L"Columns"), std::wstring::npos);
}

} // namespace
} // namespace kiv
