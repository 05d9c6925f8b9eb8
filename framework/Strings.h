#pragma once

#include <framework/Persistent.h>
#include <platform/Export.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// A list of texts, each with a number of the caller's (a tag, or an object's address) beside it: what properties of
/// the kind "several lines" publish. The base holds nothing; a derived class supplies the storage.
///
/// Indexes count from 0; one out of range raises EStringListError with the index and the count. One thread at a time.
class KIV_EXPORT TStrings : public TPersistent {
public:
  TStrings();
  ~TStrings() override;

  std::wstring ClassName() const override;
  /// Takes over the texts, objects and the three characters for delimited text from another TStrings.
  void Assign(const TPersistent* pSource) override;

  virtual int GetCount() const = 0;
  /// The reference holds until the list changes.
  virtual const std::wstring& Get(int pIndex) const = 0;
  virtual void Put(int pIndex, const std::wstring& pText) = 0;
  virtual std::intptr_t GetObjectAt(int pIndex) const = 0;
  virtual void PutObjectAt(int pIndex, std::intptr_t pObject) = 0;
  virtual void Clear() = 0;
  virtual void Delete(int pIndex) = 0;
  /// `pIndex` from 0 to the count.
  virtual void InsertObject(int pIndex, const std::wstring& pText, std::intptr_t pObject) = 0;
  /// Answers the index that the text got, or has if the list didn't take it again; -1 if the list refused it.
  virtual int AddObject(const std::wstring& pText, std::intptr_t pObject);
  virtual void Exchange(int pFirst, int pSecond);
  /// Takes the entry at `pFrom` out and puts it in at `pTo` of the list without it.
  virtual void Move(int pFrom, int pTo);
  /// The first entry that CompareStrings finds equal; -1 if there is none.
  virtual int IndexOf(const std::wstring& pText) const;

  int Add(const std::wstring& pText) { return AddObject(pText, 0); }
  void Insert(int pIndex, const std::wstring& pText) { InsertObject(pIndex, pText, 0); }
  /// Appends all entries of another list, with their objects. The list itself is a valid source.
  void AddStrings(const TStrings& pSource);
  /// Replaces all entries by texts without objects, in the list's own order if it has one.
  void SetStrings(std::vector<std::wstring> pTexts);
  int IndexOfObject(std::intptr_t pObject) const;
  /// The same texts in the same order, case included.
  bool Equals(const TStrings& pOther) const;

  /// Changes between the two are reported once, at the outermost EndUpdate.
  void BeginUpdate();
  void EndUpdate();
  bool IsUpdating() const noexcept { return fUpdateCount > 0; }

  /// All entries, with CR LF behind each. An entry that holds line ends of its own reads back as several.
  std::wstring GetText() const;
  /// Replaces all entries. Lines end at CR LF, CR or LF; what follows the last line end is a line unless empty.
  void SetText(std::wstring_view pText);

  /// All entries with the delimiter between them, quoted where they have to be.
  std::wstring GetDelimitedText() const;
  /// Replaces all entries. An entry that begins with the quote character runs to the next single one; two stand for
  /// one. Without StrictDelimiter blanks and control characters separate entries as well and those around entries are
  /// dropped; with it only the delimiter separates, and whatever follows a closing quote is part of the entry. What
  /// GetDelimitedText gives reads back as the same entries with the same settings, unless QuoteChar is 0 or a blank.
  void SetDelimitedText(std::wstring_view pText);
  /// The same with "," and double quotes, not strict, whatever the settings are.
  std::wstring GetCommaText() const;
  void SetCommaText(std::wstring_view pText);

  wchar_t GetDelimiter() const noexcept { return fFormat.delimiter; }
  void SetDelimiter(wchar_t pDelimiter) noexcept { fFormat.delimiter = pDelimiter; }
  /// 0: nothing is quoted. Must differ from the delimiter.
  wchar_t GetQuoteChar() const noexcept { return fFormat.quote; }
  void SetQuoteChar(wchar_t pQuoteChar) noexcept { fFormat.quote = pQuoteChar; }
  bool GetStrictDelimiter() const noexcept { return fFormat.strict; }
  void SetStrictDelimiter(bool pStrict) noexcept { fFormat.strict = pStrict; }

  /// Entries of the form "name=value". Names are compared by CompareStrings. A name that isn't there has an empty
  /// value.
  std::wstring GetNameAt(int pIndex) const;
  std::wstring GetValueAt(int pIndex) const;
  int IndexOfName(std::wstring_view pName) const;
  std::wstring GetValue(std::wstring_view pName) const;
  /// Replaces or adds the entry; an empty value deletes it. Replacing raises EStringListError in a sorted list.
  void SetValue(std::wstring_view pName, std::wstring_view pValue);

protected:
  TStrings(const TStrings&) = default;
  TStrings& operator=(const TStrings&) = default;

  /// Below 0, 0 or above 0. Here: ordinal, ignoring case. Must be a consistent order.
  virtual int CompareStrings(std::wstring_view pFirst, std::wstring_view pSecond) const;
  /// The outermost BeginUpdate (true) or EndUpdate (false).
  virtual void SetUpdateState(bool pUpdating);
  /// Adds texts that were read from elsewhere, as by AddObject. They are the list's to change and to put in order.
  virtual void AddParsed(std::vector<std::wstring> pTexts);

  /// Does one change that consists of several, inside BeginUpdate and EndUpdate.
  template <typename F>
  void Update(F&& pChange) {
    BeginUpdate();
    try {
      pChange();
    } catch (...) {
      EndUpdate();
      throw;
    }
    EndUpdate();
  }

  [[noreturn]] void RaiseIndexError(int pIndex) const;

private:
  struct TFormat {
    wchar_t delimiter = L',';
    wchar_t quote = L'"';
    bool strict = false;
  };

  std::wstring Join(const TFormat& pFormat) const;
  static std::vector<std::wstring> Split(std::wstring_view pText, const TFormat& pFormat);

  TFormat fFormat;
  int fUpdateCount = 0;
};

} // namespace kiv
