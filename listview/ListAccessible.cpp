#include <listview/ListAccessible.h>

#include <framework/Application.h>
#include <framework/InterfacedObject.h>
#include <listview/CustomListView.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <utility>
#include <vector>

namespace kiv {

namespace {

/// Entries of "oleacc.dll", which is loaded when the first assistive program asks. It stays.
struct TAccessibleApi {
  decltype(&::LresultFromObject) fromObject = nullptr;
  decltype(&::CreateStdAccessibleObject) createStandard = nullptr;
};

template <typename F>
void Bind(HMODULE module, const char* name, F& entry) {
  const FARPROC found = module ? GetProcAddress(module, name) : nullptr;
  static_assert(sizeof(entry) == sizeof(found));
  std::memcpy(&entry, &found, sizeof(entry));
}

const TAccessibleApi& AccessibleApi() {
  static const TAccessibleApi api = [] {
    TAccessibleApi bound;
    const HMODULE module = LoadLibraryExW(L"oleacc.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    Bind(module, "LresultFromObject", bound.fromObject);
    Bind(module, "CreateStdAccessibleObject", bound.createStandard);
    return bound;
  }();
  return api;
}

VARIANT Number(long value) noexcept {
  VARIANT variant{};
  variant.vt = VT_I4;
  variant.lVal = value;
  return variant;
}

HRESULT Text(const std::wstring& text, BSTR* answer) {
  *answer = text.empty() ? nullptr : SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return *answer ? S_OK : S_FALSE;
}

/// The numbers of the selected rows.
class TNumbers : public TInterfacedObject<IEnumVARIANT> {
public:
  TNumbers(std::vector<long> pNumbers, std::size_t pAt) : fNumbers(std::move(pNumbers)), fAt(pAt) {}

  HRESULT STDMETHODCALLTYPE Next(ULONG pCount, VARIANT* pItems, ULONG* pFetched) override {
    ULONG fetched = 0;
    while (fetched < pCount && fAt < fNumbers.size()) pItems[fetched++] = Number(fNumbers[fAt++]);
    if (pFetched) *pFetched = fetched;
    return fetched == pCount ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG pCount) override {
    const std::size_t left = fNumbers.size() - fAt;
    fAt += std::min<std::size_t>(left, pCount);
    return pCount <= left ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    fAt = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** pCopy) override {
    *pCopy = Make<TNumbers>(fNumbers, fAt).Detach();
    return S_OK;
  }

private:
  std::vector<long> fNumbers;
  std::size_t fAt;
};

class TListAccessible : public TInterfacedObject<IAccessible, IDispatch> {
public:
  TListAccessible(TCustomListView& pView, ComPtr<IAccessible> pStandard)
      : fView(pView), fWatch(pView.GetAliveToken()), fStandard(std::move(pStandard)) {}

  // No type information: everything goes by the table.
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pCount) override {
    *pCount = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }

  HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** pParent) override { return fStandard->get_accParent(pParent); }
  HRESULT STDMETHODCALLTYPE get_accChildCount(long* pCount) override {
    return Answer([&] {
      *pCount = fView.GetItems().GetCount();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE get_accChild(VARIANT pChild, IDispatch** pObject) override {
    *pObject = nullptr;
    return AnswerRow(pChild, [](TListItem*) { return S_FALSE; }); // rows have no objects of their own
  }
  HRESULT STDMETHODCALLTYPE get_accName(VARIANT pChild, BSTR* pName) override {
    *pName = nullptr;
    return AnswerRow(pChild, [&](TListItem* row) {
      return row ? Text(row->GetCaption(), pName) : fStandard->get_accName(pChild, pName);
    });
  }
  HRESULT STDMETHODCALLTYPE get_accValue(VARIANT pChild, BSTR* pValue) override {
    *pValue = nullptr;
    return AnswerRow(
        pChild, [&](TListItem* row) { return row ? DISP_E_MEMBERNOTFOUND : fStandard->get_accValue(pChild, pValue); });
  }
  HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT pChild, BSTR* pText) override {
    *pText = nullptr;
    return AnswerRow(pChild, [&](TListItem* row) {
      return row ? Text(Describe(*row), pText) : fStandard->get_accDescription(pChild, pText);
    });
  }
  HRESULT STDMETHODCALLTYPE get_accRole(VARIANT pChild, VARIANT* pRole) override {
    return AnswerRow(pChild, [&](TListItem* row) {
      *pRole = Number(row ? ROLE_SYSTEM_LISTITEM : ROLE_SYSTEM_LIST);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE get_accState(VARIANT pChild, VARIANT* pState) override {
    return AnswerRow(pChild, [&](TListItem* row) {
      if (!row) return fStandard->get_accState(pChild, pState);
      *pState = Number(AccessibleStateOf(fView, *row));
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT, BSTR* pHelp) override { return Text({}, pHelp); }
  HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* pFile, VARIANT, long*) override { return Text({}, pFile); }
  HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT pChild, BSTR* pKeys) override {
    *pKeys = nullptr;
    return AnswerRow(pChild,
                     [&](TListItem* row) { return row ? S_FALSE : fStandard->get_accKeyboardShortcut(pChild, pKeys); });
  }
  HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* pChild) override {
    return Answer([&] {
      const TListItem* const row = fView.Focused() ? fView.GetItemFocused() : nullptr;
      if (!row) return fStandard->get_accFocus(pChild);
      *pChild = Number(row->GetIndex() + 1);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* pChildren) override {
    return Answer([&] {
      *pChildren = {};
      std::vector<long> rows;
      const TRowBits& selected = fView.GetItems().GetSelection();
      for (int i = selected.FindSet(0); i >= 0; i = selected.FindSet(i + 1)) rows.push_back(i + 1);
      if (rows.empty()) return S_FALSE;
      if (rows.size() == 1) {
        *pChildren = Number(rows.front());
        return S_OK;
      }
      pChildren->vt = VT_UNKNOWN;
      pChildren->punkVal = Make<TNumbers>(std::move(rows), std::size_t{0}).Detach();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT, BSTR* pAction) override { return Text({}, pAction); }
  HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT) override { return DISP_E_MEMBERNOTFOUND; }
  HRESULT STDMETHODCALLTYPE accSelect(long pFlags, VARIANT pChild) override {
    return AnswerRow(pChild, [&](TListItem* row) { return row ? Select(pFlags, *row) : Focus(); });
  }
  HRESULT STDMETHODCALLTYPE accLocation(long* pLeft, long* pTop, long* pWidth, long* pHeight, VARIANT pChild) override {
    return AnswerRow(pChild, [&](TListItem* row) {
      if (!row) return fStandard->accLocation(pLeft, pTop, pWidth, pHeight, pChild);
      const TRowRect rect = row->DisplayRect(TDisplayCode::drBounds);
      RECT area{rect.left, rect.top, rect.right, rect.bottom};
      MapWindowPoints(fView.GetHandle(), nullptr, reinterpret_cast<POINT*>(&area), 2);
      *pLeft = area.left;
      *pTop = area.top;
      *pWidth = area.right - area.left;
      *pHeight = area.bottom - area.top;
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE accNavigate(long pDirection, VARIANT pStart, VARIANT* pEnd) override {
    return AnswerRow(pStart, [&](TListItem* row) {
      *pEnd = {};
      const int count = fView.GetItems().GetCount();
      if (!row && pDirection == NAVDIR_FIRSTCHILD) return Child(0, pEnd);
      if (!row && pDirection == NAVDIR_LASTCHILD) return Child(count - 1, pEnd);
      if (!row) return fStandard->accNavigate(pDirection, pStart, pEnd);
      const bool isBack = pDirection == NAVDIR_PREVIOUS || pDirection == NAVDIR_UP;
      if (!isBack && pDirection != NAVDIR_NEXT && pDirection != NAVDIR_DOWN) return S_FALSE;
      return Child(row->GetIndex() + (isBack ? -1 : 1), pEnd);
    });
  }
  HRESULT STDMETHODCALLTYPE accHitTest(long pLeft, long pTop, VARIANT* pChild) override {
    return Answer([&] {
      const POINT point = fView.ScreenToClient({pLeft, pTop});
      const RECT client = fView.GetClientRect();
      const TListItem* const row = PtInRect(&client, point) ? fView.GetItemAt(point.x, point.y) : nullptr;
      if (!row) return fStandard->accHitTest(pLeft, pTop, pChild);
      *pChild = Number(row->GetIndex() + 1);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE put_accName(VARIANT, BSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE put_accValue(VARIANT, BSTR) override { return E_NOTIMPL; }

private:
  // Nothing of ours passes to the platform, and nothing is asked of a list that has gone.
  template <typename F>
  HRESULT Answer(F&& pAnswer) {
    if (!fWatch.IsAlive() || !fView.HandleAllocated()) return CO_E_OBJNOTCONNECTED;
    try {
      return pAnswer();
    } catch (...) {
      ReportException(std::current_exception());
      return E_FAIL;
    }
  }

  // With the row that a number names; null for the list itself.
  template <typename F>
  HRESULT AnswerRow(const VARIANT& pChild, F&& pAnswer) {
    return Answer([&]() -> HRESULT {
      const TListItems& rows = fView.GetItems();
      if (pChild.vt != VT_I4 || pChild.lVal < 0 || pChild.lVal > rows.GetCount()) return E_INVALIDARG;
      return pAnswer(pChild.lVal == CHILDID_SELF ? nullptr : rows.GetItem(static_cast<int>(pChild.lVal) - 1));
    });
  }

  HRESULT Child(int pIndex, VARIANT* pEnd) {
    if (pIndex < 0 || pIndex >= fView.GetItems().GetCount()) return S_FALSE;
    *pEnd = Number(pIndex + 1);
    return S_OK;
  }

  // The other columns, as they stand on the screen.
  std::wstring Describe(const TListItem& pItem) {
    const TStrings* const texts = pItem.GetExistingSubItems();
    std::wstring text;
    if (fView.GetViewStyle() != TViewStyle::vsReport || !texts) return text;
    for (const int index : fView.GetColumns().GetOrder()) {
      const TListColumn& column = *fView.GetColumn(index);
      if (index == 0 || index > texts->GetCount() || !column.GetVisible()) continue;
      text += (text.empty() ? L"" : L", ") + column.GetCaption() + L": " + texts->Get(index - 1);
    }
    return text;
  }

  HRESULT Focus() {
    if (fView.CanFocus()) fView.SetFocus();
    return S_OK;
  }

  HRESULT Select(long pFlags, TListItem& pItem) {
    const TAliveWatch row(pItem.GetAliveToken());
    TListItems& rows = fView.GetItems();
    {
      const ScopedRowUpdate update(rows);
      if ((pFlags & SELFLAG_TAKESELECTION) != 0) fView.SetSelected(&pItem);
      if ((pFlags & SELFLAG_ADDSELECTION) != 0) pItem.SetSelected(true);
      if ((pFlags & SELFLAG_REMOVESELECTION) != 0) pItem.SetSelected(false);
      if ((pFlags & SELFLAG_EXTENDSELECTION) != 0) {
        const TListItem* const anchor = rows.GetAnchor() ? rows.GetAnchor() : &pItem;
        rows.SelectRange(anchor->GetIndex(), pItem.GetIndex(), (pFlags & SELFLAG_REMOVESELECTION) == 0);
      }
      if ((pFlags & SELFLAG_TAKEFOCUS) != 0) pItem.SetFocused(true);
    }
    if (!fWatch.IsAlive() || !row.IsAlive() || (pFlags & SELFLAG_TAKEFOCUS) == 0) return S_OK;
    pItem.MakeVisible(false);
    return Focus();
  }

  TCustomListView& fView;
  TAliveWatch fWatch;
  ComPtr<IAccessible> fStandard;
};

} // namespace

ComPtr<IAccessible> MakeListAccessible(TCustomListView& pView) {
  ComPtr<IAccessible> standard;
  const auto create = AccessibleApi().createStandard;
  const LONG area = static_cast<LONG>(OBJID_CLIENT);
  if (!create) return nullptr;
  void* made = nullptr;
  if (FAILED(create(pView.GetHandle(), area, __uuidof(IAccessible), &made)) || !made) return nullptr;
  standard.Attach(static_cast<IAccessible*>(made));
  // Without rows it is known by what it takes the list for.
  const bool isEmpty = pView.GetItems().GetCount() == 0;
  VARIANT role{};
  const bool hasRole = standard->get_accRole(Number(isEmpty ? CHILDID_SELF : 1), &role) == S_OK && role.vt == VT_I4;
  if (hasRole && (!isEmpty || role.lVal == ROLE_SYSTEM_LIST)) return nullptr;
  return Make<TListAccessible>(pView, std::move(standard));
}

long AccessibleStateOf(TCustomListView& pView, TListItem& pItem) {
  long state = STATE_SYSTEM_SELECTABLE | STATE_SYSTEM_FOCUSABLE;
  if (pView.IsMultiSelect()) state |= STATE_SYSTEM_MULTISELECTABLE | STATE_SYSTEM_EXTSELECTABLE;
  if (pItem.GetSelected()) state |= STATE_SYSTEM_SELECTED;
  if (pItem.GetFocused() && pView.Focused()) state |= STATE_SYSTEM_FOCUSED;
  if (!pView.IsEnabled()) state |= STATE_SYSTEM_UNAVAILABLE;
  if (pView.IsCheckBoxes() && pItem.GetCheckMixed()) state |= STATE_SYSTEM_MIXED;
  if (pView.IsCheckBoxes() && !pItem.GetCheckMixed() && pItem.GetChecked()) state |= STATE_SYSTEM_CHECKED;
  const TRowRect rect = pItem.DisplayRect(TDisplayCode::drBounds);
  const RECT area{rect.left, rect.top, rect.right, rect.bottom};
  const RECT client = pView.GetClientRect();
  RECT seen;
  if (!IntersectRect(&seen, &area, &client)) state |= STATE_SYSTEM_INVISIBLE | STATE_SYSTEM_OFFSCREEN;
  return state;
}

LRESULT AnswerWithObject(WPARAM pWParam, IAccessible& pObject) {
  const auto answer = AccessibleApi().fromObject;
  return answer ? answer(__uuidof(IAccessible), pWParam, &pObject) : 0;
}

} // namespace kiv
