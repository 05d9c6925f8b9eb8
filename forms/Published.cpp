#include <forms/Published.h>

#include <forms/CheckListBox.h>
#include <forms/Form.h>
#include <forms/PopupMenu.h>
#include <forms/StdControls.h>
#include <forms/Timer.h>
#include <framework/Exceptions.h>
#include <framework/PropertyRegistry.h>

#include <sstream>

namespace kiv {

template <>
struct TEnumNames<TAlignment> {
  static constexpr TEnumName<TAlignment> Values[] = {{TAlignment::taLeftJustify, L"taLeftJustify"},
                                                     {TAlignment::taRightJustify, L"taRightJustify"},
                                                     {TAlignment::taCenter, L"taCenter"}};
};
template <>
struct TEnumNames<TBevelCut> {
  static constexpr TEnumName<TBevelCut> Values[] = {
      {TBevelCut::bvNone, L"bvNone"}, {TBevelCut::bvLowered, L"bvLowered"}, {TBevelCut::bvRaised, L"bvRaised"}};
};
template <>
struct TEnumNames<TFormBorderStyle> {
  static constexpr TEnumName<TFormBorderStyle> Values[] = {{TFormBorderStyle::fbNone, L"fbNone"},
                                                           {TFormBorderStyle::fbSingle, L"fbSingle"},
                                                           {TFormBorderStyle::fbSizeable, L"fbSizeable"},
                                                           {TFormBorderStyle::fbDialog, L"fbDialog"},
                                                           {TFormBorderStyle::fbToolWindow, L"fbToolWindow"},
                                                           {TFormBorderStyle::fbSizeToolWin, L"fbSizeToolWin"}};
};
template <>
struct TEnumNames<TFormPosition> {
  static constexpr TEnumName<TFormPosition> Values[] = {{TFormPosition::poDesigned, L"poDesigned"},
                                                        {TFormPosition::poDefault, L"poDefault"},
                                                        {TFormPosition::poScreenCenter, L"poScreenCenter"},
                                                        {TFormPosition::poOwnerFormCenter, L"poOwnerFormCenter"}};
};

template <>
struct TEnumNames<TEllipsisPosition> {
  static constexpr TEnumName<TEllipsisPosition> Values[] = {{TEllipsisPosition::epNone, L"epNone"},
                                                            {TEllipsisPosition::epPathEllipsis, L"epPathEllipsis"},
                                                            {TEllipsisPosition::epEndEllipsis, L"epEndEllipsis"},
                                                            {TEllipsisPosition::epWordEllipsis, L"epWordEllipsis"}};
};

namespace {

// Margins are saved as four numbers: left, top, right, bottom.
std::wstring MarginsToText(const TMargins& margins) {
  std::wostringstream text;
  text << margins.left << L' ' << margins.top << L' ' << margins.right << L' ' << margins.bottom;
  return text.str();
}

TMargins MarginsFromText(const std::wstring& text) {
  TMargins margins;
  std::wistringstream numbers(text);
  numbers >> margins.left >> margins.top >> margins.right >> margins.bottom;
  std::wstring rest;
  if (!numbers || numbers >> rest) throw EPropertyError(L"margins are four numbers: left, top, right, bottom.");
  return margins;
}

TFont& FontOf(TControl& control) {
  return control.GetFont();
}

void PublishControls() {
  const TAnchors corner{TAnchorKind::akLeft, TAnchorKind::akTop};
  const TStyleElements allElements{TStyleElement::seFont, TStyleElement::seClient, TStyleElement::seBorder};
  PublishClass<TControl>(L"TControl", L"Everything that is seen.")
      .Property(L"Parent", &TControl::GetParent, &TControl::SetParent, L"Where the control is shown.")
      .Property(L"Left", &TControl::GetLeft, &TControl::SetLeft, L"In the parent, in pixels.")
      .Property(L"Top", &TControl::GetTop, &TControl::SetTop, L"In the parent, in pixels.")
      .Property(L"Width", &TControl::GetWidth, &TControl::SetWidth, L"In pixels.")
      .Property(L"Height", &TControl::GetHeight, &TControl::SetHeight, L"In pixels.")
      .Property(L"Align", &TControl::GetAlign, &TControl::SetAlign, TAlign::alNone, L"The edge that it stands along.")
      .Property(L"Anchors", &TControl::GetAnchors, &TControl::SetAnchors, corner,
                L"The edges of the parent that it keeps its distance from.")
      .Property(L"AlignWithMargins", &TControl::IsAlignWithMargins, &TControl::SetAlignWithMargins, false,
                L"Room stays free around it where it is aligned.")
      .Property(
          L"Margins", [](const TControl& control) { return MarginsToText(control.GetMargins()); },
          [](TControl& control, const std::wstring& text) { control.SetMargins(MarginsFromText(text)); },
          L"How much: left, top, right, bottom, in pixels.")
      .StoredIf([](const TControl& control) { return control.IsAlignWithMargins(); })
      .Property(L"StyleElements", &TControl::GetStyleElements, &TControl::SetStyleElements, allElements,
                L"What of it styles draw.")
      .Property(L"Caption", &TControl::GetText, &TControl::SetText, L"", L"The text that it shows.")
      .Property(L"Visible", &TControl::IsVisible, &TControl::SetVisible, true, L"It is shown, with its parent.")
      .Property(L"Enabled", &TControl::IsEnabled, &TControl::SetEnabled, true, L"It takes input.")
      .Property(L"Cursor", &TControl::GetCursor, &TControl::SetCursor, crDefault, L"The mouse pointer over it.")
      .Property(L"ParentFont", &TControl::IsParentFont, &TControl::SetParentFont, true, L"The font is the parent's.")
      .Object(L"Font", &FontOf, L"The font of its texts.")
      .StoredIf([](const TControl& control) { return !control.IsParentFont(); })
      .Property(L"ParentColor", &TControl::IsParentColor, &TControl::SetParentColor, true,
                L"The colour is the parent's.")
      .Property(L"Color", &TControl::GetColor, &TControl::SetColor, L"The colour behind everything.")
      .StoredIf([](const TControl& control) { return !control.IsParentColor(); })
      .Property(L"BiDiMode", &TControl::GetBiDiMode, &TControl::SetBiDiMode, L"The direction of reading.")
      .StoredIf([](const TControl& control) { return !control.IsParentBiDiMode(); })
      .Property(L"Hint", &TControl::GetHint, &TControl::SetHint, L"", L"Shown while the pointer rests on it.")
      .Property(L"ShowHint", &TControl::GetShowHint, &TControl::SetShowHint, L"Hints are shown.")
      .StoredIf([](const TControl& control) { return !control.IsParentShowHint(); })
      .Property(L"PopupMenu", &TControl::GetPopupMenu, &TControl::SetPopupMenu, L"Comes up by the right button.");
  PublishClass<TWinControl, TControl>(L"TWinControl", L"A control with a window.")
      .Property(L"TabStop", &TWinControl::IsTabStop, &TWinControl::SetTabStop, L"The Tab key leads to it.")
      .Property(
          L"Padding", [](const TWinControl& control) { return MarginsToText(control.GetPadding()); },
          [](TWinControl& control, const std::wstring& text) { control.SetPadding(MarginsFromText(text)); }, L"0 0 0 0",
          L"Room inside of it that aligned controls leave free: left, top, right, bottom, in pixels.")
      .Property(L"DoubleBuffered", &TWinControl::IsDoubleBuffered, &TWinControl::SetDoubleBuffered, false,
                L"It is painted in one piece.")
      .Property(L"AccessibleName", &TWinControl::GetAccessibleName, &TWinControl::SetAccessibleName, L"",
                L"The name for assistive programs.");
  PublishClass<TCustomControl, TWinControl>(L"TCustomControl", L"A window that paints itself.");
  PublishClass<TGraphicControl, TControl>(L"TGraphicControl", L"Paints itself, without a window.");
}

void PublishExtControls() {
  PublishClass<TCustomPanel, TCustomControl>(L"TCustomPanel", L"A surface that holds other controls.");
  PublishClass<TPanel, TCustomPanel>(L"TPanel", L"A surface that holds other controls.")
      .Property(L"Alignment", &TPanel::GetAlignment, &TPanel::SetAlignment, TAlignment::taCenter, L"Of the caption.")
      .Property(L"BevelOuter", &TPanel::GetBevelOuter, &TPanel::SetBevelOuter, TBevelCut::bvRaised, L"Its frame.")
      .Property(L"BorderWidth", &TPanel::GetBorderWidth, &TPanel::SetBorderWidth, 0,
                L"Room inside the frame, in pixels at 96 dots per inch.")
      .Property(L"BorderStyle", &TPanel::GetBorderStyle, &TPanel::SetBorderStyle, TBorderStyle::bsNone,
                L"A sunken edge.")
      .Property(L"ShowCaption", &TPanel::GetShowCaption, &TPanel::SetShowCaption, true, L"The caption is drawn.");
  PublishClass<TSplitter, TGraphicControl>(L"TSplitter", L"A border that can be dragged.")
      .Property(L"MinSize", &TSplitter::GetMinSize, &TSplitter::SetMinSize, 30,
                L"What both sides keep, in pixels at 96 dots per inch.");
  PublishClass<TScrollBox, TWinControl>(L"TScrollBox", L"A surface with scroll bars.")
      .Property(L"BorderStyle", &TScrollBox::GetBorderStyle, &TScrollBox::SetBorderStyle, TBorderStyle::bsSingle,
                L"A sunken edge.");
  PublishClass<TForm, TCustomControl>(L"TForm", L"A top-level window.")
      .Property(L"BorderStyle", &TForm::GetBorderStyle, &TForm::SetBorderStyle, TFormBorderStyle::fbSizeable,
                L"Its frame.")
      .Property(L"Position", &TForm::GetPosition, &TForm::SetPosition, TFormPosition::poDesigned, L"Where it comes up.")
      .Property(L"KeyPreview", &TForm::IsKeyPreview, &TForm::SetKeyPreview, false, L"It sees all keys first.");
}

void PublishStdControls() {
  PublishClass<TLabel, TGraphicControl>(L"TLabel", L"A text.")
      .Property(L"Alignment", &TLabel::GetAlignment, &TLabel::SetAlignment, TAlignment::taLeftJustify, L"Of the text.")
      .Property(L"AutoSize", &TLabel::IsAutoSize, &TLabel::SetAutoSize, true, L"The size follows the text.")
      .Property(L"WordWrap", &TLabel::IsWordWrap, &TLabel::SetWordWrap, false, L"The text has several lines.")
      .Property(L"EllipsisPosition", &TLabel::GetEllipsisPosition, &TLabel::SetEllipsisPosition,
                TEllipsisPosition::epNone, L"Where a text that doesn't fit is shortened.")
      .Property(L"ShowAccelChar", &TLabel::GetShowAccelChar, &TLabel::SetShowAccelChar, true, L"\"&\" marks a letter.")
      .Property(L"FocusControl", &TLabel::GetFocusControl, &TLabel::SetFocusControl, L"What the letter leads to.");
  PublishClass<TButton, TWinControl>(L"TButton", L"A button.")
      .Property(L"Default", &TButton::IsDefault, &TButton::SetDefault, false, L"Enter presses it.")
      .Property(L"Cancel", &TButton::IsCancel, &TButton::SetCancel, false, L"Esc presses it.")
      .Property(L"ModalResult", &TButton::GetModalResult, &TButton::SetModalResult, 0, L"What a modal form ends with.");
  PublishClass<TCheckBox, TWinControl>(L"TCheckBox", L"A check box.")
      .Property(L"Checked", &TCheckBox::IsChecked, &TCheckBox::SetChecked, false, L"It has its mark.");
  PublishClass<TCustomEdit, TWinControl>(L"TCustomEdit", L"An edit field.");
  PublishClass<TEdit, TCustomEdit>(L"TEdit", L"An edit field.")
      .Property(L"BorderStyle", &TEdit::GetBorderStyle, &TEdit::SetBorderStyle, TBorderStyle::bsSingle, L"An edge.")
      .Property(L"ReadOnly", &TEdit::IsReadOnly, &TEdit::SetReadOnly, false, L"The user can't change it.")
      .Property(L"TextHint", &TEdit::GetTextHint, &TEdit::SetTextHint, L"", L"Shown while it is empty.")
      .Property(L"MaxLength", &TEdit::GetMaxLength, &TEdit::SetMaxLength, 0, L"In characters; 0: any.");
  PublishClass<TCheckListBox, TWinControl>(L"TCheckListBox", L"A list of texts with check boxes.");
}

void PublishComponents() {
  PublishClass<TTimer>(L"TTimer", L"An event at intervals.")
      .Property(L"Enabled", &TTimer::IsEnabled, &TTimer::SetEnabled, true, L"It runs.")
      .Property(L"Interval", &TTimer::GetInterval, &TTimer::SetInterval, 1000, L"In milliseconds.");
  PublishClass<TMenuItem>(L"TMenuItem", L"An entry of a menu.")
      .Property(L"Caption", &TMenuItem::GetCaption, &TMenuItem::SetCaption, L"", L"Its text; \"-\" makes it a line.")
      .Property(L"Enabled", &TMenuItem::IsEnabled, &TMenuItem::SetEnabled, true, L"It can be chosen.")
      .Property(L"Visible", &TMenuItem::IsVisible, &TMenuItem::SetVisible, true, L"It is shown.")
      .Property(L"Checked", &TMenuItem::IsChecked, &TMenuItem::SetChecked, false, L"It has its mark.")
      .Property(L"AutoCheck", &TMenuItem::IsAutoCheck, &TMenuItem::SetAutoCheck, false, L"A click changes its mark.")
      .Property(L"RadioItem", &TMenuItem::IsRadioItem, &TMenuItem::SetRadioItem, false, L"One of a group is marked.")
      .Property(L"GroupIndex", &TMenuItem::GetGroupIndex, &TMenuItem::SetGroupIndex, 0, L"The group's number.")
      .Property(L"Default", &TMenuItem::IsDefault, &TMenuItem::SetDefault, false, L"Drawn in bold.")
      .Property(L"ShortCut", &TMenuItem::GetShortCut, &TMenuItem::SetShortCut, scNone, L"The key that chooses it.")
      .Property(L"ImageIndex", &TMenuItem::GetImageIndex, &TMenuItem::SetImageIndex, -1, L"Its image; -1: none.")
      .Property(L"Hint", &TMenuItem::GetHint, &TMenuItem::SetHint, L"", L"For the status bar.");
  PublishClass<TMenu>(L"TMenu", L"A tree of menu items.")
      .Property(L"Images", &TMenu::GetImages, &TMenu::SetImages, L"The images of the items.")
      .Property(L"OwnerDraw", &TMenu::IsOwnerDraw, &TMenu::SetOwnerDraw, false, L"The items draw themselves.");
  PublishClass<TPopupMenu, TMenu>(L"TPopupMenu", L"A menu that comes up at a point.")
      .Property(L"AutoPopup", &TPopupMenu::IsAutoPopup, &TPopupMenu::SetAutoPopup, true,
                L"Controls show it by themselves.");
}

} // namespace

bool PublishForms() {
  static const bool published = [] {
    PublishControls();
    PublishExtControls();
    PublishStdControls();
    PublishComponents();
    return true;
  }();
  return published;
}

namespace {
[[maybe_unused]] const bool gPublished = PublishForms();
} // namespace

// Here, so that whoever makes a control has this file linked in.
std::wstring TControl::ClassName() const {
  return L"TControl";
}

} // namespace kiv
