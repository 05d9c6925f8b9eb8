#pragma once

#include <coordination/SelectionList.h>
#include <doubles/SimulatedDisk.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace kiv::test {

using TTexts = std::vector<std::wstring>;

/// A selection on a simulated disk with a drive C and a share.
class SelectionTest : public testing::Test {
protected:
  SelectionTest() {
    fFiles.AddDrive(L'C');
    fFiles.AddDrive(L'S');
    fDisk.ShareDrive(L'S', L"\\\\srv\\share");
  }

  /// Makes files, or folders where a path ends in a delimiter, and what is missing above them.
  void MakeAll(std::initializer_list<std::wstring> pPaths) {
    for (const std::wstring& path : pPaths) {
      for (std::size_t at = path.find(L'\\', 3); at != std::wstring::npos; at = path.find(L'\\', at + 1)) {
        fFiles.MakeFolder(path.substr(0, at));
      }
      if (!path.ends_with(L'\\')) fFiles.MakeFile(path, 10);
    }
  }

  static TTexts EntriesOf(TKivBaseSelectionList& pList) {
    TTexts entries;
    for (int i = 0; i < pList.GetCount(); ++i) entries.push_back(pList.GetListItem(i));
    return entries;
  }

  SimulatedFileSystem fFiles;
  SimulatedDisk fDisk{fFiles};
  ScopedSelectionDisk fScope{fDisk};
};

} // namespace kiv::test
