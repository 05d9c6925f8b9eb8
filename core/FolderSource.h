#pragma once

#include <core/FolderObject.h>
#include <platform/Types.h>

#include <memory>
#include <string>

namespace kiv {

/// What one step through a folder came to.
enum class TFolderStep {
  Object,           ///< stands on the next object
  ObjectAfterFault, ///< the same, but the folder's code crashed and gave the object at the second attempt
  End,              ///< no more objects
  Failed            ///< the folder can't be listed: see Status
};

/// Steps through the objects of one folder. Used by one thread at a time.
class IFolderStepper {
public:
  virtual ~IFolderStepper() = default;

  /// The next object. `pObject` is written only if there is one. Behind End and Failed the next call starts over.
  virtual TFolderStep Next(TFolderObject& pObject) = 0;

  /// The platform's answer behind the last step: what went wrong after Failed, and after an End that isn't a true one,
  /// because the folder's code crashed (`E_FAIL`). `S_OK` or `S_FALSE` otherwise.
  virtual HRESULT Status() const = 0;

  /// The path of the object that the last step stood on; the parsing name of one that has no path.
  virtual std::wstring ObjectPath() const = 0;
};

/// Where folders come from: the seam between code that lists folders and the shell. Above this room nothing that could
/// run without the shell asks it directly; tests put a simulated tree here.
class IFolderSource {
public:
  virtual ~IFolderSource() = default;

  /// Opens a folder by its path; the empty path is the computer. The folder isn't listed yet: that begins with the
  /// first step.
  virtual HRESULT OpenFolder(const std::wstring& pPath, std::unique_ptr<IFolderStepper>& pStepper) = 0;
};

} // namespace kiv
