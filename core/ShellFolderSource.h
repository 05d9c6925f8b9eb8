#pragma once

#include <core/FolderSource.h>
#include <core/ObjectFacts.h>
#include <platform/Export.h>

namespace kiv {

/// True for a name that only the shell understands and that is no path: "shell:...", "::{...}", "scheme://...".
KIV_EXPORT bool IsShellName(const std::wstring& pPath);

/// Folders of the real shell, by whatever name the shell parses: paths, "shell:" names, class identifiers in the form
/// "::{...}"; the empty path is the computer. A stepper belongs to the apartment of the thread that opened it.
class KIV_EXPORT TShellFolderSource : public IFolderSource {
public:
  /// With `pForNavigation` folders list what a navigation pane shows of them.
  explicit TShellFolderSource(TFactsPrecision pPrecision = TFactsPrecision::Listed,
                              bool pForNavigation = false) noexcept;

  /// Answers what failed in the platform's own code: for a path of the file system what the disk says of it, else what
  /// the shell says. `ERROR_DIRECTORY` for what exists and isn't a folder, `ERROR_FILENAME_EXCED_RANGE` for a path that
  /// no call would take.
  HRESULT OpenFolder(const std::wstring& pPath, std::unique_ptr<IFolderStepper>& pStepper) override;

private:
  TFactsPrecision fPrecision;
  bool fForNavigation;
};

} // namespace kiv
