#include <platform/SystemStrings.h>

#include <platform/ShellApi.h>

namespace kiv {

namespace {

HMODULE ModuleOf(TSystemLibrary library) {
  const TShellApi& api = ShellApi();
  switch (library) {
  case TSystemLibrary::slShell32:
    return api.shell32;
  case TSystemLibrary::slExplorerFrame:
    return api.explorerFrame;
  case TSystemLibrary::slComDlg32:
    return api.comdlg32;
  }
  return nullptr;
}

} // namespace

std::wstring LoadSystemString(TSystemLibrary pLibrary, unsigned pTextId, std::wstring_view pDefault) {
  // Without a module it would be the program's own texts that are read.
  const HMODULE module = ModuleOf(pLibrary);
  const wchar_t* text = nullptr;
  // With a length of 0 it gives the text's place in the library, without an end of its own.
  const int length = module ? LoadStringW(module, pTextId, reinterpret_cast<wchar_t*>(&text), 0) : 0;
  if (length <= 0 || !text) return std::wstring(pDefault);
  return {text, static_cast<std::size_t>(length)};
}

std::vector<std::wstring> LoadSystemStrings(TSystemLibrary pLibrary, std::initializer_list<TSystemText> pTexts) {
  std::vector<std::wstring> texts;
  for (const auto& [id, text] : pTexts) texts.push_back(LoadSystemString(pLibrary, id, text));
  return texts;
}

} // namespace kiv
