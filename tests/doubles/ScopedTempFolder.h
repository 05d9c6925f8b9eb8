#pragma once

#include <cstdint>
#include <string>

namespace kiv::test {

/// A folder of the test's own on the real disk, removed with all its content at the end: also what is read-only, has a
/// name that only the file system itself accepts, or a path over 260 characters. Links are removed, not followed.
/// What can't be removed fails the test that runs. Use it where the platform must answer; SimulatedFileSystem is
/// quicker and can be made to fail.
///
/// Relative paths use the backslash everywhere. Raises std::runtime_error if something can't be made.
class ScopedTempFolder {
public:
  ScopedTempFolder();
  ~ScopedTempFolder();
  ScopedTempFolder(const ScopedTempFolder&) = delete;
  ScopedTempFolder& operator=(const ScopedTempFolder&) = delete;

  /// Without a delimiter at its end.
  const std::wstring& Path() const { return fPath; }
  /// The full path of something in the folder, as the platform writes it; without the `\\?\` that a long one needs.
  std::wstring PathOf(const std::wstring& pRelative) const;

  /// Make what is missing of the folders on the way, too, and return the full path. A file's content is zeros.
  std::wstring MakeFile(const std::wstring& pRelative, std::uint64_t pSize = 0);
  std::wstring MakeFolder(const std::wstring& pRelative);

private:
  std::wstring fPath;
};

} // namespace kiv::test
