#include "ListFixture.h"

#include <framework/InterfacedObject.h>
#include <platform/ComPtr.h>

#include <oleacc.h>

namespace kiv {
namespace {

using test::PumpMessages;
using test::TListFixture;

/// The list as an assistive program gets hold of it.
ComPtr<IAccessible> ObjectOf(HWND pWindow) {
  const HMODULE module = LoadLibraryExW(L"oleacc.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  const auto get = reinterpret_cast<decltype(&::AccessibleObjectFromWindow)>(
      reinterpret_cast<void*>(GetProcAddress(module, "AccessibleObjectFromWindow")));
  void* object = nullptr;
  if (get) get(pWindow, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible), &object);
  ComPtr<IAccessible> accessible;
  accessible.Attach(static_cast<IAccessible*>(object));
  return accessible;
}

VARIANT Child(long pNumber) {
  VARIANT child{};
  child.vt = VT_I4;
  child.lVal = pNumber;
  return child;
}

std::wstring TextOf(HRESULT pResult, BSTR pText) {
  std::wstring text = pResult == S_OK && pText ? pText : L"-";
  SysFreeString(pText);
  return text;
}
std::wstring NameOf(IAccessible& pObject, long pChild) {
  BSTR text = nullptr;
  const HRESULT result = pObject.get_accName(Child(pChild), &text);
  return TextOf(result, text);
}
long RoleOf(IAccessible& pObject, long pChild) {
  VARIANT role{};
  return pObject.get_accRole(Child(pChild), &role) == S_OK ? role.lVal : -1;
}
long StateOf(IAccessible& pObject, long pChild) {
  constexpr long asked =
      STATE_SYSTEM_SELECTED | STATE_SYSTEM_FOCUSED | STATE_SYSTEM_CHECKED | STATE_SYSTEM_MIXED | STATE_SYSTEM_OFFSCREEN;
  VARIANT state{};
  return pObject.get_accState(Child(pChild), &state) == S_OK ? state.lVal & asked : -1;
}

TEST(ListAccessible, TellsOfEachRow) {
  TListFixture list(TViewStyle::vsReport, 3);
  list.list->SetCheckBoxes(true);
  list.Show(100);
  list.Row(0).GetSubItems().SetStrings({L"12", L"Text"});
  list.list->GetColumn(2)->SetPosition(0);
  list.Row(1).SetChecked(true);
  list.Row(2).SetCheckMixed(true);
  list.Row(1).SetSelected(true);
  list.Row(2).SetSelected(true);
  list.Row(2).SetFocused(true);
  PumpMessages();
  const ComPtr<IAccessible> object = ObjectOf(list.Window());
  ASSERT_TRUE(object);
  long count = 0;
  EXPECT_EQ(object->get_accChildCount(&count), S_OK);
  EXPECT_EQ(count, 100);
  EXPECT_EQ(RoleOf(*object.Get(), CHILDID_SELF), ROLE_SYSTEM_LIST);
  EXPECT_EQ(RoleOf(*object.Get(), 3), ROLE_SYSTEM_LISTITEM);
  EXPECT_EQ(NameOf(*object.Get(), 1), L"row 0");
  EXPECT_EQ(NameOf(*object.Get(), 101), L"-");
  BSTR text = nullptr;
  const HRESULT described = object->get_accDescription(Child(1), &text);
  EXPECT_EQ(TextOf(described, text), L"column 2: Text, column 1: 12") << "from left to right";
  EXPECT_EQ(StateOf(*object.Get(), 1), 0);
  EXPECT_EQ(StateOf(*object.Get(), 2), STATE_SYSTEM_SELECTED | STATE_SYSTEM_CHECKED);
  EXPECT_EQ(StateOf(*object.Get(), 3), STATE_SYSTEM_SELECTED | STATE_SYSTEM_FOCUSED | STATE_SYSTEM_MIXED);
  EXPECT_EQ(StateOf(*object.Get(), 100), STATE_SYSTEM_OFFSCREEN);

  VARIANT selection{};
  ASSERT_EQ(object->get_accSelection(&selection), S_OK);
  ASSERT_EQ(selection.vt, VT_UNKNOWN);
  ComPtr<IUnknown> held;
  held.Attach(selection.punkVal);
  ComPtr<IEnumVARIANT> numbers;
  ASSERT_EQ(held.As(numbers), S_OK);
  VARIANT rows[3]{};
  ULONG fetched = 0;
  EXPECT_EQ(numbers->Next(3, rows, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 2u);
  EXPECT_EQ(rows[1].lVal, 3);
}

TEST(ListAccessible, AListThatWasEmptyTellsOfTheRowsItGets) {
  TListFixture list;
  list.Show();
  const ComPtr<IAccessible> object = ObjectOf(list.Window());
  ASSERT_TRUE(object);
  list.Fill(2);
  long count = 0;
  EXPECT_EQ(object->get_accChildCount(&count), S_OK);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(NameOf(*object.Get(), 2), L"row 1");
}

TEST(ListAccessible, ActsOnRowsAndOutlivesTheList) {
  TListFixture list;
  list.Show(20);
  ComPtr<IAccessible> object = ObjectOf(list.Window());
  ASSERT_TRUE(object);
  EXPECT_EQ(object->accSelect(SELFLAG_TAKESELECTION | SELFLAG_TAKEFOCUS, Child(5)), S_OK);
  EXPECT_EQ(object->accSelect(SELFLAG_ADDSELECTION, Child(8)), S_OK);
  EXPECT_EQ(list.Selected(), (std::vector<int>{4, 7}));
  EXPECT_EQ(list.list->GetItemFocused(), &list.Row(4));
  VARIANT found{};
  EXPECT_EQ(object->get_accFocus(&found), S_OK);
  EXPECT_EQ(found.lVal, 5);
  EXPECT_EQ(object->accNavigate(NAVDIR_NEXT, Child(5), &found), S_OK);
  EXPECT_EQ(found.lVal, 6);
  long left = 0;
  long top = 0;
  long width = 0;
  long height = 0;
  EXPECT_EQ(object->accLocation(&left, &top, &width, &height, Child(3)), S_OK);
  EXPECT_EQ(object->accHitTest(left + 20, top + height / 2, &found), S_OK);
  EXPECT_EQ(found.lVal, 3);
  list.list.reset();
  long count = 0;
  EXPECT_EQ(object->get_accChildCount(&count), CO_E_OBJNOTCONNECTED);
  EXPECT_EQ(NameOf(*object.Get(), 1), L"-");
}

} // namespace
} // namespace kiv
