#pragma once

#include <platform/Export.h>

namespace kiv {

/// Which of the two sources of events watches folders of the file system. A watch never has both.
enum class TChangeSourceKind {
  Automatic, ///< the shell's registration, unless it turns out not to tell of other processes
  Shell,     ///< "SHChangeNotifyRegister"
  Directory  ///< the folders' own handles ("ReadDirectoryChangesW")
};

/// For applications that know better: for watches to come. Automatic at first. Main thread.
KIV_EXPORT void SetChangeSourceKind(TChangeSourceKind pKind) noexcept;
KIV_EXPORT TChangeSourceKind GetChangeSourceKind() noexcept;

} // namespace kiv
