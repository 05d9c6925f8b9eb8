#include <forms/ShortCut.h>

#include <framework/TextCompare.h>

#include <array>

namespace kiv {

const TResourceText _sKeyShift(L"KeyShift", L"Shift+");
const TResourceText _sKeyCtrl(L"KeyCtrl", L"Ctrl+");
const TResourceText _sKeyAlt(L"KeyAlt", L"Alt+");

namespace {

const TResourceText _sKeyBackspace(L"KeyBackspace", L"BkSp");
const TResourceText _sKeyTab(L"KeyTab", L"Tab");
const TResourceText _sKeyEnter(L"KeyEnter", L"Enter");
const TResourceText _sKeyEsc(L"KeyEsc", L"Esc");
const TResourceText _sKeySpace(L"KeySpace", L"Space");
const TResourceText _sKeyPageUp(L"KeyPageUp", L"PgUp");
const TResourceText _sKeyPageDown(L"KeyPageDown", L"PgDn");
const TResourceText _sKeyEnd(L"KeyEnd", L"End");
const TResourceText _sKeyHome(L"KeyHome", L"Home");
const TResourceText _sKeyLeft(L"KeyLeft", L"Left");
const TResourceText _sKeyUp(L"KeyUp", L"Up");
const TResourceText _sKeyRight(L"KeyRight", L"Right");
const TResourceText _sKeyDown(L"KeyDown", L"Down");
const TResourceText _sKeyInsert(L"KeyInsert", L"Ins");
const TResourceText _sKeyDelete(L"KeyDelete", L"Del");

// The keys with names, by their virtual codes ("Virtual-Key Codes").
struct TNamedKey {
  std::uint16_t key;
  const TResourceText* name;
};
constexpr std::array<TNamedKey, 15> NamedKeys = {{{0x08, &_sKeyBackspace},
                                                  {0x09, &_sKeyTab},
                                                  {0x0D, &_sKeyEnter},
                                                  {0x1B, &_sKeyEsc},
                                                  {0x20, &_sKeySpace},
                                                  {0x21, &_sKeyPageUp},
                                                  {0x22, &_sKeyPageDown},
                                                  {0x23, &_sKeyEnd},
                                                  {0x24, &_sKeyHome},
                                                  {0x25, &_sKeyLeft},
                                                  {0x26, &_sKeyUp},
                                                  {0x27, &_sKeyRight},
                                                  {0x28, &_sKeyDown},
                                                  {0x2D, &_sKeyInsert},
                                                  {0x2E, &_sKeyDelete}}};
constexpr std::uint16_t FirstFunctionKey = 0x70;
constexpr std::uint16_t FunctionKeys = 24;

std::wstring KeyName(std::uint16_t key) {
  for (const TNamedKey& named : NamedKeys) {
    if (named.key == key) return named.name->Text();
  }
  if ((key >= L'0' && key <= L'9') || (key >= L'A' && key <= L'Z')) return {static_cast<wchar_t>(key)};
  if (key >= FirstFunctionKey && key < FirstFunctionKey + FunctionKeys) {
    return L"F" + std::to_wstring(key - FirstFunctionKey + 1);
  }
  return {};
}

bool TakePrefix(std::wstring_view& text, const std::wstring& prefix) {
  // A lone "Ctrl+" is no key.
  if (prefix.empty() || text.size() <= prefix.size() || !SameText(text.substr(0, prefix.size()), prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

} // namespace

TShortCut MakeShortCut(std::uint16_t pKey, TShiftState pShift) noexcept {
  if ((pKey & 0xFF00) != 0) return scNone;
  unsigned shortCut = pKey;
  if (pShift.Contains(TShiftStateFlag::ssShift)) shortCut |= scShift;
  if (pShift.Contains(TShiftStateFlag::ssCtrl)) shortCut |= scCtrl;
  if (pShift.Contains(TShiftStateFlag::ssAlt)) shortCut |= scAlt;
  return static_cast<TShortCut>(shortCut);
}

std::wstring ShortCutToText(TShortCut pShortCut) {
  const std::wstring name = KeyName(pShortCut & 0xFF);
  if (name.empty()) return {};
  std::wstring text;
  if (pShortCut & scShift) text += _sKeyShift.Text();
  if (pShortCut & scCtrl) text += _sKeyCtrl.Text();
  if (pShortCut & scAlt) text += _sKeyAlt.Text();
  return text + name;
}

TShortCut TextToShortCut(std::wstring_view pText) {
  unsigned shortCut = 0;
  for (bool taken = true; taken;) {
    taken = false;
    for (const auto& [prefix, bit] : {std::pair{&_sKeyShift, scShift}, {&_sKeyCtrl, scCtrl}, {&_sKeyAlt, scAlt}}) {
      if (!TakePrefix(pText, prefix->Text())) continue;
      shortCut |= bit;
      taken = true;
    }
  }
  for (std::uint16_t key = 1; key < 0x100; ++key) {
    const std::wstring name = KeyName(key);
    if (!name.empty() && SameText(pText, name)) return static_cast<TShortCut>(shortCut | key);
  }
  return scNone;
}

} // namespace kiv
