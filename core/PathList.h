#pragma once

#include <core/WideStringBuilder.h>
#include <framework/StringList.h>
#include <platform/Export.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// Called with a path and the index that it has, or had.
using TKivPathListOperation = std::function<void(const std::wstring& pPath, int pIndex)>;

/// A sorted list of paths, ignoring case, each once. As one text its paths have ";" between them.
///
/// Paths are kept in the form that lists compare (TPathUtils::UnifyPath), so that one with a delimiter at its end and
/// one without are the same. A "-" in front of a path, which some users of the list mark exclusions by, stays.
///
/// OnAdd and OnRemove follow the change that they tell of, each path for itself; a handler may destroy the list.
class KIV_EXPORT TKivPathList : public TStringList {
public:
  TKivPathList();
  ~TKivPathList() override;

  std::wstring ClassName() const override;

  /// Takes over the paths and objects of another list. This one stays sorted, with each path once.
  void Assign(const TPersistent* pSource) override;
  /// As TStringList does, but -1 for a path that the list refuses (see SetCheckIfExists).
  int AddObject(const std::wstring& pText, std::intptr_t pObject) override;
  void Delete(int pIndex) override;
  void Clear() override;

  /// Where a path stands in the list, in whichever form it is given; -1 if it doesn't.
  int IndexOfPath(std::wstring_view pPath) const;
  bool ContainsPath(std::wstring_view pPath) const { return IndexOfPath(pPath) >= 0; }

  /// The paths one behind the other, a zero character behind each, and one more at the end: what platform calls for
  /// several paths expect. Valid until the list changes or is asked again.
  const wchar_t* GetStringPointer();

  /// Whether only paths that exist are taken; the disk is asked at each addition. At first not.
  bool GetCheckIfExists() const noexcept { return fCheckIfExists; }
  void SetCheckIfExists(bool pCheckIfExists) noexcept { fCheckIfExists = pCheckIfExists; }
  /// Whether a path on the network was ever added; stays when that path goes. What a drive is, is asked once a list.
  bool ContainsNetworkPath() const noexcept { return fContainsNetworkPath; }

  const TKivPathListOperation& GetOnAdd() const noexcept { return fOnAdd; }
  void SetOnAdd(TKivPathListOperation pOperation) { fOnAdd = std::move(pOperation); }
  const TKivPathListOperation& GetOnRemove() const noexcept { return fOnRemove; }
  void SetOnRemove(TKivPathListOperation pOperation) { fOnRemove = std::move(pOperation); }
  /// OnAdd and OnRemove aren't called while one of these lives, which isn't longer than the list does.
  class ScopedSkipEvents {
  public:
    explicit ScopedSkipEvents(TKivPathList& pList) noexcept : fList(pList) { ++fList.fSkipEvents; }
    ~ScopedSkipEvents() { --fList.fSkipEvents; }
    ScopedSkipEvents(const ScopedSkipEvents&) = delete;
    ScopedSkipEvents& operator=(const ScopedSkipEvents&) = delete;

  private:
    TKivPathList& fList;
  };

  /// The form in which the list keeps a path.
  static std::wstring UnifyPath(std::wstring_view pPath);

  // What a path leads to, by its text alone. Any thread.

  /// True if the second path lies below the first, at any depth, ignoring case. The same path doesn't.
  static bool IsSubPathOf(std::wstring_view p_SuperiorPath, std::wstring_view p_PossibleSubPath) noexcept;
  /// True for `\\server...` and `\\?\UNC\...`, but not for other long-path forms, nor for `\\` and a single character
  /// that isn't a third backslash.
  static bool IsUNCPath(std::wstring_view pFullPath) noexcept;
  /// True for `\\server`, with or without a delimiter at its end.
  static bool IsUncServer(std::wstring_view pPath) noexcept;
  /// True for the class identifier of a virtual folder: `::{...`.
  static bool IsFolderClassId(std::wstring_view pPath) noexcept;
  /// True for the path of a device on the USB.
  static bool IsUSBDevicePath(std::wstring_view pPath) noexcept;
  static bool StartsWithDriveLetter(std::wstring_view pPath) noexcept;
  /// Whether all paths lie on one drive or share, ignoring case. True for an empty list.
  static bool ShareSameRoot(const TStrings& pPaths);
  /// The drive or `\\server`, and then each name on the way.
  static std::vector<std::wstring> SplitPath(std::wstring_view pPath);
  /// What stands between the delimiters; empty parts are left out.
  static std::vector<std::wstring> SplitPathByDelimiter(std::wstring_view pPath, wchar_t pDelimiter);

#if defined(_WIN32)
  /// The path that a shell link leads to; empty if it isn't a link, or its target has none. Any thread with COM.
  static std::wstring GetShortcutTarget(std::wstring_view pFilepath);
  /// For a 32-bit process on a 64-bit system, which is told a program folder of its own: a path there that doesn't
  /// exist, but does in the 64-bit program folder, becomes the latter. Any other path stays. Any thread.
  static std::wstring AdaptPathOnWow64Systems(std::wstring_view pFullPath);
#endif

protected:
  /// Whether a path, already in the form that the list keeps, may come in.
  virtual bool AllowAdd(const std::wstring& pPath);

private:
  bool IsOnNetwork(std::wstring_view pPath);

  TWideStringBuilder fWideStringBuilder{true};
  bool fCheckIfExists = false;
  bool fContainsNetworkPath = false;
  std::uint32_t fLocalDrives = 0; // a bit a letter
  TKivPathListOperation fOnAdd;
  TKivPathListOperation fOnRemove;
  int fSkipEvents = 0;
  TAliveToken fAlivePaths;
};

} // namespace kiv
