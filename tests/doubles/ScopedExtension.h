#pragma once

#include <doubles/extension/Extension.h>
#include <platform/Handles.h>

#include <string>

namespace kiv::test {

/// The namespace extension of extension/Extension.h, registered for as long as this lives. One program at a time: a
/// test suite that has one is kept apart from others by CTest's RESOURCE_LOCK "desktop".
class ScopedExtension {
public:
  /// Fails the test if the DLL isn't beside the program, or the registry can't be written.
  ScopedExtension();
  ~ScopedExtension();
  ScopedExtension(const ScopedExtension&) = delete;
  ScopedExtension& operator=(const ScopedExtension&) = delete;

  /// The path of one of its folders, or of what lies there: `5 objects\object 1`.
  std::wstring PathOf(const std::wstring& pName) const { return ExtensionRoot + (L'\\' + pName); }
  /// How many of its objects exist in this process.
  long LiveObjects() const;
  /// Notes from now on what the calling thread asks of it.
  void WatchAsks() const;
  /// The methods that it has asked, as scripts call them, with a blank behind each. For the watched thread.
  std::wstring Asks() const;

private:
  using TRegister = HRESULT(STDAPICALLTYPE*)();
  void Call(const char* pExport) const;
  template <typename T>
  T Export(const char* pName) const;

  TUniqueModule fModule; // stays loaded, so that its objects can be counted
};

/// Lets a step of the extension that waits arrive, and go on.
class ScopedExtensionWait {
public:
  ScopedExtensionWait();
  /// Returns when a step has arrived.
  void AwaitArrival() const;
  /// Whether one has; once for each.
  bool HasArrived() const;
  void GoOn() const;
  ~ScopedExtensionWait() { GoOn(); }

private:
  TUniqueHandle fArrived;
  TUniqueHandle fGoOn;
};

} // namespace kiv::test
