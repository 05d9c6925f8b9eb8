#pragma once

#include <platform/Export.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// A library of the platform's whose texts may be borrowed.
enum class TSystemLibrary { slShell32, slExplorerFrame, slComDlg32 };

/// One text of such a library: its number there, and what is shown where the library hasn't got it.
struct TSystemText {
  unsigned id = 0;
  std::wstring_view text;
};

/// A text of the platform's own, in the user's language, for a caption that must read like the platform's. It comes as
/// it is there, with `&` and `%` marks. `pDefault` when the library or the text is missing: the numbers aren't a
/// promise of the platform's and differ between its versions. Any thread.
KIV_EXPORT std::wstring LoadSystemString(TSystemLibrary pLibrary, unsigned pTextId, std::wstring_view pDefault);

/// Several texts of one library, in the given order.
KIV_EXPORT std::vector<std::wstring> LoadSystemStrings(TSystemLibrary pLibrary,
                                                       std::initializer_list<TSystemText> pTexts);

} // namespace kiv
