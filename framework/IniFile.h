#pragma once

#include <framework/Exceptions.h>
#include <platform/Export.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kiv {

/// A file couldn't be written.
class KIV_EXPORT EIniFileException : public EException {
public:
  using EException::EException;
  ~EIniFileException() override;
};

/// The sections of an ini file: lines `[section]`, and below each its keys, a line `key=value` each. Names of sections
/// don't differ by case. Lines that are no keys are left out in reading; in writing they stay, as do all other
/// sections. A section that stands in the file twice is read as one.
///
/// Written is UTF-16 with a mark in front, which the platform's own functions for such files read, too, and which takes
/// every name that a file can have. Read are UTF-8, too, with or without a mark, and the system's code page. A file is
/// replaced as a whole, by one that was written beside it. Nothing is kept between calls.
class KIV_EXPORT TIniFile {
public:
  explicit TIniFile(std::wstring pFileName) : fFileName(std::move(pFileName)) {}

  const std::wstring& GetFileName() const noexcept { return fFileName; }
  /// The keys of a section, in the file's order. None if there is no such file or section.
  std::vector<std::wstring> ReadSection(std::wstring_view pSection) const;
  /// Replaces a section by keys with empty values; without keys by none. Raises EIniFileException if the file can't be
  /// read or replaced, and it stays as it was. A key with a line end or NUL in it, or one that reads as something else,
  /// is left out.
  void WriteSection(std::wstring_view pSection, const std::vector<std::wstring>& pKeys) const;

private:
  std::wstring fFileName;
};

/// The same on a text. A key is what stands in front of the last "=" if nothing follows that, as this library writes
/// it: names of files may hold a "=". Otherwise it is what stands in front of the first one, without blanks around it.
KIV_EXPORT std::vector<std::wstring> IniSectionKeys(std::wstring_view pText, std::wstring_view pSection);
/// A section whose name holds a line end or NUL can't be written: the text stays.
KIV_EXPORT std::wstring ReplaceIniSection(std::wstring_view pText, std::wstring_view pSection,
                                          const std::vector<std::wstring>& pKeys);

} // namespace kiv
