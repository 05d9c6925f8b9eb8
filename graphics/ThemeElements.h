#pragma once

#include <vsstyle.h>

namespace kiv {

/// One part of a class of windows in one state, by the platform's numbers ("Parts and States").
struct TThemeElement {
  const wchar_t* className;
  int part;
  int state;

  /// The same part in another state.
  constexpr TThemeElement In(int pState) const noexcept { return {className, part, pState}; }
};

// Those that have a plain look where there are no themes, too. Any other element can be made on the spot.
inline constexpr TThemeElement tbPushButtonNormal{L"BUTTON", BP_PUSHBUTTON, PBS_NORMAL};
inline constexpr TThemeElement tbPushButtonHot{L"BUTTON", BP_PUSHBUTTON, PBS_HOT};
inline constexpr TThemeElement tbPushButtonPressed{L"BUTTON", BP_PUSHBUTTON, PBS_PRESSED};
inline constexpr TThemeElement tbPushButtonDisabled{L"BUTTON", BP_PUSHBUTTON, PBS_DISABLED};
inline constexpr TThemeElement tbCheckBoxUncheckedNormal{L"BUTTON", BP_CHECKBOX, CBS_UNCHECKEDNORMAL};
inline constexpr TThemeElement tbCheckBoxUncheckedHot{L"BUTTON", BP_CHECKBOX, CBS_UNCHECKEDHOT};
inline constexpr TThemeElement tbCheckBoxUncheckedDisabled{L"BUTTON", BP_CHECKBOX, CBS_UNCHECKEDDISABLED};
inline constexpr TThemeElement tbCheckBoxCheckedNormal{L"BUTTON", BP_CHECKBOX, CBS_CHECKEDNORMAL};
inline constexpr TThemeElement tbCheckBoxCheckedHot{L"BUTTON", BP_CHECKBOX, CBS_CHECKEDHOT};
inline constexpr TThemeElement tbCheckBoxCheckedDisabled{L"BUTTON", BP_CHECKBOX, CBS_CHECKEDDISABLED};
inline constexpr TThemeElement tbCheckBoxMixedNormal{L"BUTTON", BP_CHECKBOX, CBS_MIXEDNORMAL};
inline constexpr TThemeElement tbRadioButtonUncheckedNormal{L"BUTTON", BP_RADIOBUTTON, RBS_UNCHECKEDNORMAL};
inline constexpr TThemeElement tbRadioButtonCheckedNormal{L"BUTTON", BP_RADIOBUTTON, RBS_CHECKEDNORMAL};
inline constexpr TThemeElement tbGroupBoxNormal{L"BUTTON", BP_GROUPBOX, GBS_NORMAL};
inline constexpr TThemeElement ttbButtonNormal{L"TOOLBAR", TP_BUTTON, TS_NORMAL};
inline constexpr TThemeElement ttbButtonHot{L"TOOLBAR", TP_BUTTON, TS_HOT};
inline constexpr TThemeElement ttbButtonPressed{L"TOOLBAR", TP_BUTTON, TS_PRESSED};
inline constexpr TThemeElement ttbButtonDisabled{L"TOOLBAR", TP_BUTTON, TS_DISABLED};
inline constexpr TThemeElement ttbSplitButtonNormal{L"TOOLBAR", TP_SPLITBUTTON, TS_NORMAL};
inline constexpr TThemeElement ttbSplitButtonDropDownNormal{L"TOOLBAR", TP_SPLITBUTTONDROPDOWN, TS_NORMAL};
inline constexpr TThemeElement tcDropDownButtonNormal{L"COMBOBOX", CP_DROPDOWNBUTTON, CBXS_NORMAL};
inline constexpr TThemeElement tcBorderNormal{L"COMBOBOX", CP_BORDER, CBB_NORMAL};
inline constexpr TThemeElement teEditTextNormal{L"EDIT", EP_EDITTEXT, ETS_NORMAL};
inline constexpr TThemeElement teEditBorderNormal{L"EDIT", EP_EDITBORDER_NOSCROLL, EPSN_NORMAL};
inline constexpr TThemeElement thHeaderItemNormal{L"HEADER", HP_HEADERITEM, HIS_NORMAL};
inline constexpr TThemeElement thHeaderSortArrowUp{L"HEADER", HP_HEADERSORTARROW, HSAS_SORTEDUP};
inline constexpr TThemeElement thHeaderSortArrowDown{L"HEADER", HP_HEADERSORTARROW, HSAS_SORTEDDOWN};
inline constexpr TThemeElement ttGlyphClosed{L"TREEVIEW", TVP_GLYPH, GLPS_CLOSED};
inline constexpr TThemeElement ttGlyphOpened{L"TREEVIEW", TVP_GLYPH, GLPS_OPENED};
inline constexpr TThemeElement ttlStandardNormal{L"TOOLTIP", TTP_STANDARD, TTSS_NORMAL};

} // namespace kiv
