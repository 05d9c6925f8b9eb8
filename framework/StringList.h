#pragma once

#include <framework/Event.h>
#include <framework/Strings.h>

#include <functional>
#include <vector>

namespace kiv {

/// What becomes of a text that a sorted list has already.
enum class TDuplicates {
  dupIgnore, ///< it isn't added; the answer is the index of the one that stands
  dupAccept, ///< it is added behind its equals
  dupError   ///< EStringListError
};

/// A TStrings that keeps its entries in memory, sorted or not.
///
/// Sorted, it finds texts in logarithmic time, and InsertObject, Put, Exchange and Move raise EStringListError. Filling
/// a list from text costs n log n at most; single additions to a long sorted list in no order move half of it each.
///
/// OnChanging is called before and OnChange after each change; a change that doesn't come about (an error, an ignored
/// duplicate) is announced by neither, but one between BeginUpdate and EndUpdate counts as done. An OnChange may
/// destroy the list; an OnChanging may not, and neither may change it.
class KIV_EXPORT TStringList : public TStrings {
public:
  TStringList();
  TStringList(const TStringList&) = delete;
  TStringList& operator=(const TStringList&) = delete;
  ~TStringList() override;

  std::wstring ClassName() const override;
  /// Besides what TStrings takes over: CaseSensitive, Duplicates and Sorted, if the source is a TStringList.
  void Assign(const TPersistent* pSource) override;

  int GetCount() const override;
  const std::wstring& Get(int pIndex) const override;
  void Put(int pIndex, const std::wstring& pText) override;
  std::intptr_t GetObjectAt(int pIndex) const override;
  void PutObjectAt(int pIndex, std::intptr_t pObject) override;
  void Clear() override;
  void Delete(int pIndex) override;
  void InsertObject(int pIndex, const std::wstring& pText, std::intptr_t pObject) override;
  int AddObject(const std::wstring& pText, std::intptr_t pObject) override;
  void Exchange(int pFirst, int pSecond) override;
  void Move(int pFrom, int pTo) override;
  int IndexOf(const std::wstring& pText) const override;

  /// Binary search. Sets `pIndex` to the first entry that isn't below the text, and says whether that one equals it.
  /// Raises EStringListError if the list isn't sorted.
  virtual bool Find(std::wstring_view pText, int& pIndex) const;

  /// Sorts once, by CompareStrings; equals keep their order.
  void Sort();
  /// Compares the entries at two indexes of the list, which stands unchanged meanwhile: below 0, 0, above 0.
  using TCompare = std::function<int(const TStringList& pList, int pFirst, int pSecond)>;
  /// Sorts once by another order; equals keep their order. A comparison that raises leaves the list as it was, one that
  /// contradicts itself gives some order. Raises EStringListError if the list is sorted.
  void CustomSort(const TCompare& pCompare);

  bool GetSorted() const noexcept { return fSorted; }
  /// Setting it sorts. Entries that are equal then stay, whatever Duplicates says.
  void SetSorted(bool pSorted);
  bool GetCaseSensitive() const noexcept { return fCaseSensitive; }
  /// At first off. A sorted list is sorted again.
  void SetCaseSensitive(bool pCaseSensitive);
  /// Heeded by sorted lists only. At first dupIgnore.
  TDuplicates GetDuplicates() const noexcept { return fDuplicates; }
  void SetDuplicates(TDuplicates pDuplicates) noexcept { fDuplicates = pDuplicates; }

  const TNotifyEvent& GetOnChange() const noexcept { return fOnChange; }
  void SetOnChange(TNotifyEvent pEvent) { fOnChange = std::move(pEvent); }
  const TNotifyEvent& GetOnChanging() const noexcept { return fOnChanging; }
  void SetOnChanging(TNotifyEvent pEvent) { fOnChanging = std::move(pEvent); }

protected:
  /// By CaseSensitive: ordinal, or ordinal ignoring case.
  int CompareStrings(std::wstring_view pFirst, std::wstring_view pSecond) const override;
  void SetUpdateState(bool pUpdating) override;
  void AddParsed(std::vector<std::wstring> pTexts) override;

  /// After the last access of a method to the list: the handler may have destroyed it.
  virtual void Changed();
  virtual void Changing();

private:
  struct TEntry {
    std::wstring text;
    std::intptr_t object;
  };

  std::size_t CheckIndex(int pIndex) const;
  void CheckUnsorted() const;
  void InsertEntry(std::size_t pIndex, const std::wstring& pText, std::intptr_t pObject);
  bool MaySkipSearch(std::wstring_view pText) const;
  void SortEntries();

  std::vector<TEntry> fEntries;
  bool fSorted = false;
  bool fCaseSensitive = false;
  TDuplicates fDuplicates = TDuplicates::dupIgnore;
  TNotifyEvent fOnChange;
  TNotifyEvent fOnChanging;
  TAliveToken fAlive;
};

} // namespace kiv
