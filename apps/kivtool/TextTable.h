#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kivtool {

/// Lays text out in columns while it comes in. Rows are held back in batches: the widest cell of the first batch gives
/// a column its width, and later batches may only widen it. A cell that is wider than its column may become is printed
/// in full.
class TTextTable {
public:
  struct TColumn {
    const char* title;
    std::size_t least;
    std::size_t most; // 0: takes what is left of the line
    bool right = false;
  };

  TTextTable(std::vector<TColumn> pColumns, std::function<bool(std::string_view)> pOut);

  /// One row, a UTF-8 cell for each column. False when the output takes no more.
  bool Add(std::vector<std::string> pCells);
  /// Prints what is held back, and at least the head.
  bool Flush();

private:
  void AppendRow(std::string& pText, const std::vector<std::string>& pCells) const;

  std::vector<TColumn> fColumns;
  std::function<bool(std::string_view)> fOut;
  std::vector<std::size_t> fWidths;
  std::vector<std::vector<std::string>> fRows;
  bool fHeadPrinted = false;
};

} // namespace kivtool
