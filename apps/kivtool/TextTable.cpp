#include "TextTable.h"

#include <algorithm>
#include <utility>

namespace kivtool {

namespace {

constexpr std::size_t BatchSize = 500;

// Code points of a UTF-8 text: as near to columns on a screen as can be had without knowing the terminal.
std::size_t WidthOf(const std::string& text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

} // namespace

TTextTable::TTextTable(std::vector<TColumn> pColumns, std::function<bool(std::string_view)> pOut)
    : fColumns(std::move(pColumns)), fOut(std::move(pOut)) {
  for (const TColumn& column : fColumns) {
    fWidths.push_back(column.most == 0 ? 0 : std::max(column.least, std::string_view(column.title).size()));
  }
}

bool TTextTable::Add(std::vector<std::string> pCells) {
  fRows.push_back(std::move(pCells));
  return fRows.size() < BatchSize || Flush();
}

bool TTextTable::Flush() {
  for (const auto& row : fRows) {
    for (std::size_t i = 0; i < fColumns.size(); ++i) {
      fWidths[i] = std::max(fWidths[i], std::min(WidthOf(row[i]), fColumns[i].most));
    }
  }
  std::string text;
  if (!std::exchange(fHeadPrinted, true)) {
    std::vector<std::string> titles;
    for (const TColumn& column : fColumns) titles.emplace_back(column.title);
    AppendRow(text, titles);
  }
  for (const auto& row : fRows) AppendRow(text, row);
  fRows.clear();
  return fOut(text);
}

void TTextTable::AppendRow(std::string& pText, const std::vector<std::string>& pCells) const {
  for (std::size_t i = 0; i < fColumns.size(); ++i) {
    const std::size_t width = WidthOf(pCells[i]);
    const std::size_t blanks = fWidths[i] > width ? fWidths[i] - width : 0;
    if (i > 0) pText += "  ";
    if (fColumns[i].right) pText.append(blanks, ' ');
    pText += pCells[i];
    if (!fColumns[i].right && i + 1 < fColumns.size()) pText.append(blanks, ' ');
  }
  pText.erase(pText.find_last_not_of(' ') + 1);
  pText += '\n';
}

} // namespace kivtool
