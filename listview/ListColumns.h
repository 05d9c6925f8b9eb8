#pragma once

#include <framework/Collection.h>
#include <framework/Event.h>
#include <framework/Persistent.h>
#include <listview/ListTypes.h>
#include <platform/Export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kiv {

class TListColumn;
class TListColumns;

/// What the columns of a list need of whoever shows them. "Tell" operations only note.
class IListColumnsHost {
public:
  virtual std::unique_ptr<TListColumn> CreateListColumn(TListColumns& pColumns) = 0;
  /// Tells that columns were added, taken out or put in another order.
  virtual void ColumnsChanged() noexcept = 0;
  /// Tells that a column looks different; `pWidth`: its width was set.
  virtual void ColumnLookChanged(TListColumn& pColumn, bool pWidth) noexcept = 0;
  /// Tells that a column is about to leave.
  virtual void ColumnLeaving(TListColumn& pColumn) noexcept = 0;

protected:
  ~IListColumnsHost() = default;
};

/// A column of a list in report style. It belongs to its list. Widths in pixels. Main thread only.
class KIV_EXPORT TListColumn : public TPersistent {
public:
  explicit TListColumn(TListColumns* pOwner);
  TListColumn(const TListColumn&) = delete;
  TListColumn& operator=(const TListColumn&) = delete;
  ~TListColumn() override;

  std::wstring ClassName() const override;
  /// All but the place.
  void Assign(const TPersistent* pSource) override;

  TListColumns* GetOwner() const noexcept { return fOwner; }
  /// Its place in the list's columns, which decides on the sub-item that it shows: 0 the caption, 1 the first
  /// sub-item. -1 once it has left.
  int GetIndex() const noexcept;
  /// Where it stands on the screen, counted from 0. The user changes it by dragging.
  int GetPosition() const noexcept;
  void SetPosition(int pPosition);
  /// Stays the same while columns come and go.
  int GetID() const noexcept { return fId; }

  const std::wstring& GetCaption() const noexcept { return fCaption; }
  void SetCaption(const std::wstring& pCaption);
  /// At first 50. Kept between MinWidth and MaxWidth.
  int GetWidth() const noexcept { return fWidth; }
  void SetWidth(int pWidth);
  /// 0: no limit.
  int GetMinWidth() const noexcept { return fMinWidth; }
  void SetMinWidth(int pWidth);
  int GetMaxWidth() const noexcept { return fMaxWidth; }
  void SetMaxWidth(int pWidth);
  /// Takes what the other columns leave of the list's width. At first off.
  bool IsAutoSize() const noexcept { return fAutoSize; }
  void SetAutoSize(bool pAutoSize);
  /// The platform shows the first column's texts on the left, whatever is set.
  TColumnAlignment GetAlignment() const noexcept { return fAlignment; }
  void SetAlignment(TColumnAlignment pAlignment);
  /// In the list's small images; -1 for none.
  int GetImageIndex() const noexcept { return fImageIndex; }
  void SetImageIndex(int pIndex);
  TSortMark GetSortMark() const noexcept { return fSortMark; }
  void SetSortMark(TSortMark pMark);
  /// A column that isn't shown keeps its place, its texts and its width.
  virtual bool GetVisible() const { return fVisible; }
  virtual void SetVisible(bool pVisible);
  std::intptr_t GetTag() const noexcept { return fTag; }
  void SetTag(std::intptr_t pTag) noexcept { fTag = pTag; }

  /// What a width may be within its limits.
  int Limit(int pWidth) const noexcept;
  /// The user has changed the width; it isn't written back.
  void TakeWidth(int pWidth) noexcept { fWidth = pWidth; }

private:
  friend class TListColumns;

  void LookChanged(bool pWidth = false) noexcept;

  TListColumns* fOwner;
  std::wstring fCaption;
  std::intptr_t fTag = 0;
  int fId = 0;
  int fWidth = 50;
  int fMinWidth = 0;
  int fMaxWidth = 0;
  int fImageIndex = -1;
  TColumnAlignment fAlignment = TColumnAlignment::taLeftJustify;
  TSortMark fSortMark = TSortMark::None;
  bool fAutoSize = false;
  bool fVisible = true;
};

/// The columns of a list view: which there are, and in which order they stand on the screen.
class KIV_EXPORT TListColumns : public TCollection {
public:
  /// The host outlives the columns.
  explicit TListColumns(IListColumnsHost& pHost);
  TListColumns(const TListColumns&) = delete;
  TListColumns& operator=(const TListColumns&) = delete;
  ~TListColumns() override;

  std::wstring ClassName() const override;
  void Assign(const TPersistent* pSource) override;

  IListColumnsHost& GetHost() const noexcept { return fHost; }
  int GetCount() const noexcept override { return static_cast<int>(fColumns.size()); }
  /// Raises EListError for an index out of range.
  TListColumn* GetItem(int pIndex) const override;
  TListColumn* operator[](int pIndex) const { return GetItem(pIndex); }
  int IndexOf(const TListColumn* pColumn) const noexcept;
  TListColumn* FindItemID(int pId) const noexcept;

  /// A column at the end, on the screen as well.
  TListColumn* Add() override;
  /// At this place in the list, and on the screen where the one that stood there was.
  TListColumn* Insert(int pIndex);
  void Delete(int pIndex);
  void Clear() override;

  /// Between the two the header isn't touched. May be nested.
  void BeginUpdate() noexcept override { ++fUpdateCount; }
  /// Raises EInvalidOperation without a BeginUpdate.
  void EndUpdate() override;
  bool IsUpdating() const noexcept { return fUpdateCount > 0; }

  /// The indexes of the columns from left to right.
  const std::vector<int>& GetOrder() const noexcept { return fOrder; }
  /// Raises EInvalidArgument unless each index stands in it once.
  void SetOrder(const std::vector<int>& pOrder);
  /// The user has dragged columns; nothing is written back. What isn't an order is ignored.
  void TakeOrder(const std::vector<int>& pOrder);

private:
  void CheckIndex(int pIndex) const;
  bool IsOrder(const std::vector<int>& pOrder) const;

  IListColumnsHost& fHost;
  std::vector<std::unique_ptr<TListColumn>> fColumns;
  std::vector<int> fOrder;
  int fUpdateCount = 0;
  int fNextId = 0;
};

} // namespace kiv
