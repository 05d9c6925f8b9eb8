#include <listview/Published.h>

#include <forms/Published.h>
#include <framework/PropertyRegistry.h>
#include <listview/CustomListView.h>

namespace kiv {

template <>
struct TEnumNames<TViewStyle> {
  static constexpr TEnumName<TViewStyle> Values[] = {{TViewStyle::vsIcon, L"vsIcon"},
                                                     {TViewStyle::vsSmallIcon, L"vsSmallIcon"},
                                                     {TViewStyle::vsList, L"vsList"},
                                                     {TViewStyle::vsReport, L"vsReport"}};
};
template <>
struct TEnumNames<TColumnAlignment> {
  static constexpr TEnumName<TColumnAlignment> Values[] = {{TColumnAlignment::taLeftJustify, L"taLeftJustify"},
                                                           {TColumnAlignment::taRightJustify, L"taRightJustify"},
                                                           {TColumnAlignment::taCenter, L"taCenter"}};
};

namespace {

TListColumns& ColumnsOf(TListView& view) {
  return view.GetColumns();
}

// The limits before the width that they limit.
void PublishColumns() {
  PublishClass<TListColumn, TPersistent>(L"TListColumn", L"A column of a list.")
      .Property(L"Caption", &TListColumn::GetCaption, &TListColumn::SetCaption, L"", L"What its header says.")
      .Property(L"MinWidth", &TListColumn::GetMinWidth, &TListColumn::SetMinWidth, 0, L"In pixels; 0: no limit.")
      .Property(L"MaxWidth", &TListColumn::GetMaxWidth, &TListColumn::SetMaxWidth, 0, L"In pixels; 0: no limit.")
      .Property(L"Width", &TListColumn::GetWidth, &TListColumn::SetWidth, 50, L"In pixels.")
      .Property(L"AutoSize", &TListColumn::IsAutoSize, &TListColumn::SetAutoSize, false, L"Takes what others leave.")
      .Property(L"Alignment", &TListColumn::GetAlignment, &TListColumn::SetAlignment, TColumnAlignment::taLeftJustify,
                L"Of its texts.")
      .Property(L"ImageIndex", &TListColumn::GetImageIndex, &TListColumn::SetImageIndex, -1,
                L"The image in its header; -1: none.")
      .Property(L"Visible", &TListColumn::GetVisible, &TListColumn::SetVisible, true, L"It is shown.")
      .Property(L"Tag", &TListColumn::GetTag, &TListColumn::SetTag, 0, L"Free for the application.");
}

void PublishView() {
  PublishClass<TCustomListView, TWinControl>(L"TCustomListView", L"A list of rows.");
  PublishClass<TListView, TCustomListView>(L"TListView", L"A list of rows.")
      .Property(L"ViewStyle", &TListView::GetViewStyle, &TListView::SetViewStyle, TViewStyle::vsIcon,
                L"How the rows are shown.")
      .Property(L"BorderStyle", &TListView::GetBorderStyle, &TListView::SetBorderStyle, TBorderStyle::bsSingle,
                L"A sunken edge.")
      .Property(L"MultiSelect", &TListView::IsMultiSelect, &TListView::SetMultiSelect, false,
                L"More than one row can be selected.")
      .Property(L"HideSelection", &TListView::IsHideSelection, &TListView::SetHideSelection, true,
                L"The selection shows with the focus only.")
      .Property(L"RowSelect", &TListView::IsRowSelect, &TListView::SetRowSelect, false,
                L"A row of a report is selected over its whole width.")
      .Property(L"ReadOnly", &TListView::GetReadOnly, &TListView::SetReadOnly, false, L"Captions can't be edited.")
      .Property(L"GridLines", &TListView::IsGridLines, &TListView::SetGridLines, false, L"Lines between the cells.")
      .Property(L"Checkboxes", &TListView::IsCheckBoxes, &TListView::SetCheckBoxes, false,
                L"A check box in front of each row.")
      .Property(L"ShowColumnHeaders", &TListView::IsShowColumnHeaders, &TListView::SetShowColumnHeaders, true,
                L"A report has a header.")
      .Property(L"ColumnClick", &TListView::IsColumnClick, &TListView::SetColumnClick, true, L"Headers are buttons.")
      .Property(L"FullDrag", &TListView::IsFullDrag, &TListView::SetFullDrag, false, L"Columns can be dragged.")
      .Property(L"SubItemImages", &TListView::IsSubItemImages, &TListView::SetSubItemImages, false,
                L"Sub-items can have images.")
      .Property(L"AllocBy", &TListView::GetAllocBy, &TListView::SetAllocBy, 0, L"Rows to have memory for at once.")
      .Property(L"LargeImages", &TListView::GetLargeImages, &TListView::SetLargeImages, L"The images of icons.")
      .Property(L"SmallImages", &TListView::GetSmallImages, &TListView::SetSmallImages, L"The images of other views.")
      .Property(L"StateImages", &TListView::GetStateImages, &TListView::SetStateImages, L"In front of the rows.")
      .Object(L"Columns", &ColumnsOf, L"The columns of a report.");
}

} // namespace

bool PublishListView() {
  static const bool published = [] {
    PublishForms();
    TCustomImageList::PublishProperties();
    PublishColumns();
    PublishView();
    return true;
  }();
  return published;
}

namespace {
[[maybe_unused]] const bool gPublished = PublishListView();
} // namespace

// Here, so that whoever makes a list has this file linked in.
std::wstring TListView::ClassName() const {
  return L"TListView";
}

} // namespace kiv
