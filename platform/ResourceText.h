#pragma once

#include <platform/Export.h>

#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// A text that users see. It is English until the application replaces it, which it does for all of its texts at
/// start-up, by name or through the list of them all.
///
/// Objects of this class are process-wide and live as long as the library: they are declared `extern` in the header of
/// the room that shows them. Reading and replacing is for any thread. A control that has taken a text already keeps it.
class KIV_EXPORT TResourceText {
public:
  /// Both texts must live as long as the object. `pName` is unique and never shown.
  TResourceText(std::wstring_view pName, std::wstring_view pEnglish);
  TResourceText(const TResourceText&) = delete;
  TResourceText& operator=(const TResourceText&) = delete;
  ~TResourceText();

  std::wstring_view Name() const noexcept { return fName; }
  std::wstring_view English() const noexcept { return fEnglish; }
  /// What is to be shown.
  std::wstring Text() const;
  operator std::wstring() const { return Text(); }

private:
  std::wstring_view fName;
  std::wstring_view fEnglish;
};

/// All texts of the library, by name. For a translator's tools.
KIV_EXPORT std::vector<const TResourceText*> ResourceTexts();

/// Replaces the text of that name from now on. An empty text is one; nothing is changed, and the answer false, when the
/// library has no text of that name.
KIV_EXPORT bool ReplaceResourceText(std::wstring_view pName, std::wstring pText);

/// Makes all texts English again.
KIV_EXPORT void RestoreResourceTexts();

} // namespace kiv
