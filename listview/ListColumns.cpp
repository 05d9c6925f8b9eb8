#include <listview/ListColumns.h>

#include <framework/Exceptions.h>

#include <algorithm>

namespace kiv {

namespace {
constexpr int WidestColumn = 0x7FFF; // several can be added up
} // namespace

TListColumn::TListColumn(TListColumns* pOwner) : fOwner(pOwner) {
  if (pOwner == nullptr) throw EInvalidArgument(L"A column needs the columns that it is made for.");
}

TListColumn::~TListColumn() = default;

std::wstring TListColumn::ClassName() const {
  return L"TListColumn";
}

void TListColumn::Assign(const TPersistent* pSource) {
  const auto* source = dynamic_cast<const TListColumn*>(pSource);
  if (source == nullptr) {
    TPersistent::Assign(pSource);
    return;
  }
  fCaption = source->fCaption;
  fTag = source->fTag;
  fWidth = source->fWidth;
  fMinWidth = source->fMinWidth;
  fMaxWidth = source->fMaxWidth;
  fImageIndex = source->fImageIndex;
  fAlignment = source->fAlignment;
  fSortMark = source->fSortMark;
  fAutoSize = source->fAutoSize;
  fVisible = source->fVisible;
  LookChanged(true);
}

int TListColumn::GetIndex() const noexcept {
  return fOwner->IndexOf(this);
}

int TListColumn::GetPosition() const noexcept {
  const auto& order = fOwner->GetOrder();
  const auto at = std::find(order.begin(), order.end(), GetIndex());
  return at == order.end() ? -1 : static_cast<int>(at - order.begin());
}

void TListColumn::SetPosition(int pPosition) {
  std::vector<int> order = fOwner->GetOrder();
  if (pPosition < 0 || pPosition >= static_cast<int>(order.size())) {
    throw EArgumentOutOfRange(L"A column's position lies within the columns.");
  }
  const int index = GetIndex();
  if (index < 0) throw EInvalidOperation(L"A column that is in no list has no position.");
  order.erase(std::find(order.begin(), order.end(), index));
  order.insert(order.begin() + pPosition, index);
  fOwner->SetOrder(order);
}

void TListColumn::SetCaption(const std::wstring& pCaption) {
  if (fCaption == pCaption) return;
  fCaption = pCaption;
  LookChanged();
}

int TListColumn::Limit(int pWidth) const noexcept {
  pWidth = std::min(pWidth, WidestColumn);
  if (fMaxWidth > 0) pWidth = std::min(pWidth, fMaxWidth);
  return std::max({pWidth, fMinWidth, 0});
}

void TListColumn::SetWidth(int pWidth) {
  pWidth = Limit(pWidth);
  if (fWidth == pWidth) return;
  fWidth = pWidth;
  LookChanged(true);
}

void TListColumn::SetMinWidth(int pWidth) {
  fMinWidth = std::clamp(pWidth, 0, WidestColumn);
  SetWidth(fWidth);
}

void TListColumn::SetMaxWidth(int pWidth) {
  fMaxWidth = std::clamp(pWidth, 0, WidestColumn);
  SetWidth(fWidth);
}

void TListColumn::SetAutoSize(bool pAutoSize) {
  if (fAutoSize == pAutoSize) return;
  fAutoSize = pAutoSize;
  LookChanged(true);
}

void TListColumn::SetAlignment(TColumnAlignment pAlignment) {
  if (fAlignment == pAlignment) return;
  fAlignment = pAlignment;
  LookChanged();
}

void TListColumn::SetImageIndex(int pIndex) {
  if (fImageIndex == pIndex) return;
  fImageIndex = pIndex;
  LookChanged();
}

void TListColumn::SetSortMark(TSortMark pMark) {
  if (fSortMark == pMark) return;
  fSortMark = pMark;
  LookChanged();
}

void TListColumn::SetVisible(bool pVisible) {
  if (fVisible == pVisible) return;
  fVisible = pVisible;
  LookChanged(true);
}

void TListColumn::LookChanged(bool pWidth) noexcept {
  if (GetIndex() >= 0) fOwner->GetHost().ColumnLookChanged(*this, pWidth);
}

// --- all columns -----------------------------------------------------------------------------------------------------

TListColumns::TListColumns(IListColumnsHost& pHost) : fHost(pHost) {}

TListColumns::~TListColumns() = default;

std::wstring TListColumns::ClassName() const {
  return L"TListColumns";
}

void TListColumns::Assign(const TPersistent* pSource) {
  const auto* source = dynamic_cast<const TListColumns*>(pSource);
  if (source == nullptr) {
    TPersistent::Assign(pSource);
    return;
  }
  if (source == this) return;
  struct TUpdate {
    TListColumns& columns;
    explicit TUpdate(TListColumns& pColumns) : columns(pColumns) { columns.BeginUpdate(); }
    ~TUpdate() { columns.EndUpdate(); }
  } const update(*this);
  Clear();
  for (const auto& column : source->fColumns) Add()->Assign(column.get());
  SetOrder(source->fOrder);
}

void TListColumns::CheckIndex(int pIndex) const {
  if (pIndex < 0 || pIndex >= GetCount()) {
    throw EListError(L"Column " + std::to_wstring(pIndex) + L" doesn't exist; there are " +
                     std::to_wstring(GetCount()) + L".");
  }
}

TListColumn* TListColumns::GetItem(int pIndex) const {
  CheckIndex(pIndex);
  return fColumns[static_cast<std::size_t>(pIndex)].get();
}

int TListColumns::IndexOf(const TListColumn* pColumn) const noexcept {
  const auto isIt = [pColumn](const auto& column) { return column.get() == pColumn; };
  const auto at = std::find_if(fColumns.begin(), fColumns.end(), isIt);
  return at == fColumns.end() ? -1 : static_cast<int>(at - fColumns.begin());
}

TListColumn* TListColumns::FindItemID(int pId) const noexcept {
  const auto isIt = [pId](const auto& column) { return column->fId == pId; };
  const auto at = std::find_if(fColumns.begin(), fColumns.end(), isIt);
  return at == fColumns.end() ? nullptr : at->get();
}

TListColumn* TListColumns::Add() {
  return Insert(GetCount());
}

TListColumn* TListColumns::Insert(int pIndex) {
  if (pIndex != GetCount()) CheckIndex(pIndex);
  std::unique_ptr<TListColumn> column = fHost.CreateListColumn(*this);
  if (!column) throw EInvalidArgument(L"There is no column to insert.");
  column->fId = fNextId++;
  fOrder.reserve(fOrder.size() + 1);
  const auto at = fColumns.insert(fColumns.begin() + pIndex, std::move(column));
  const auto position = std::find(fOrder.begin(), fOrder.end(), pIndex) - fOrder.begin();
  for (int& index : fOrder) index += index >= pIndex ? 1 : 0;
  fOrder.insert(fOrder.begin() + position, pIndex);
  TListColumn* const inserted = at->get();
  fHost.ColumnsChanged();
  return inserted;
}

void TListColumns::Delete(int pIndex) {
  CheckIndex(pIndex);
  fHost.ColumnLeaving(*fColumns[static_cast<std::size_t>(pIndex)]);
  const std::unique_ptr<TListColumn> going = std::move(fColumns[static_cast<std::size_t>(pIndex)]);
  fColumns.erase(fColumns.begin() + pIndex);
  fOrder.erase(std::find(fOrder.begin(), fOrder.end(), pIndex));
  for (int& index : fOrder) index -= index > pIndex ? 1 : 0;
  fHost.ColumnsChanged();
}

void TListColumns::Clear() {
  if (fColumns.empty()) return;
  BeginUpdate();
  while (!fColumns.empty()) Delete(GetCount() - 1);
  EndUpdate();
}

void TListColumns::EndUpdate() {
  if (fUpdateCount == 0) throw EInvalidOperation(L"An update of columns ended that had not begun.");
  if (--fUpdateCount == 0) fHost.ColumnsChanged();
}

bool TListColumns::IsOrder(const std::vector<int>& pOrder) const {
  std::vector<int> sorted = pOrder;
  std::sort(sorted.begin(), sorted.end());
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    if (sorted[i] != static_cast<int>(i)) return false;
  }
  return sorted.size() == fColumns.size();
}

void TListColumns::SetOrder(const std::vector<int>& pOrder) {
  if (!IsOrder(pOrder)) throw EInvalidArgument(L"An order of columns names each of them once.");
  if (fOrder == pOrder) return;
  fOrder = pOrder;
  fHost.ColumnsChanged();
}

void TListColumns::TakeOrder(const std::vector<int>& pOrder) {
  if (IsOrder(pOrder)) fOrder = pOrder;
}

} // namespace kiv
