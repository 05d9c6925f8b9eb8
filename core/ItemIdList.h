#pragma once

#include <core/IItemIdList.h>
#include <core/LazyPointer.h>
#include <core/PublishedText.h>
#include <framework/InterfacedObject.h>
#include <platform/Handles.h>
#include <platform/ShellApi.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace kiv {

namespace detail {

void FreeItemIdList(ITEMIDLIST* pList) noexcept;

} // namespace detail

/// The list behind IItemIdList.
///
/// What would surprise you:
/// - Making one from a path costs two allocations and nothing else. The path becomes a list at the first question that
///   needs one; if that fails, the list is invalid for good, and the path isn't tried again.
/// - Nothing here is locked for reading. What is found out late is worked out aside and published in one step; a thread
///   that is faster wins, and the others take its result. A raw list that Reload replaced lives as long as the object,
///   so that a borrowed WindowsPointer stays valid.
/// - The shell item is kept for the main thread only, and released there, whoever lets the list go.
/// - QueryInterface also gives IShellFolder, IStream and ISequentialStream: objects of their own, bound on demand.
/// - An item that was made from a shell item takes SF_FILESYSTEMFOLDER for granted as its SpecialFolder.
class KIV_EXPORT TKivItemIdList : public TInterfacedObject<IItemIdList, IHasDebugInfo> {
public:
  /// From a raw absolute list. Nil makes a list that is invalid when it is asked.
  static ComPtr<TKivItemIdList> Create(PCIDLIST_ABSOLUTE pItemIdList, TItemIdListOwnership pOwnsPointer);
  static ComPtr<TKivItemIdList> Create(TUniqueItemIdList pItemIdList);
  /// From a path or another name that the shell parses. With a folder it is parsed there, and the list is relative to
  /// it. With a folder or a window (the parent of a dialog that asks for a password) it is resolved at once, otherwise
  /// on demand. An empty path is the folder of the drives, `\\*` the network.
  static ComPtr<TKivItemIdList> Create(std::wstring_view pPath, IShellFolder* pShellFolder = nullptr,
                                       HWND pWindowHandleForLogonDialog = nullptr);
  /// From a folder and a list relative to it.
  static ComPtr<TKivItemIdList> Create(IShellFolder* pShellFolder, PCUIDLIST_RELATIVE pRelativeIdList);
  /// Resolved at once. On the main thread the item is kept.
  static ComPtr<TKivItemIdList> Create(IShellItem* pShellItem);
  /// From a path whose object may not exist: the list is made of the text, without asking the disk
  /// ("SHSimpleIDListFromPath"), and the path stays what it tells of itself.
  static ComPtr<TKivItemIdList> CreateSimpleIdList(std::wstring_view pPath);
  /// Of a file or folder that is reported to have changed, from its full path; resolved on demand, cheaply where many
  /// such lists are made of one folder. What has gone, or was reported to be `pGone`, gets a simple list.
  static ComPtr<TKivItemIdList> CreateOfChange(std::wstring_view pPath, bool pGone);
  /// An invalid list that can tell where it was meant to point.
  static ComPtr<TKivItemIdList> CreateInvalidWithPath(std::wstring_view pPath);
  /// The list of a special folder; an invalid one if this system hasn't got it. With `pFromCache` the shared one,
  /// except for the drives and Quick Access, which are fetched anew each time, and SF_FILESYSTEMFOLDER, which is
  /// invalid then.
  static ComPtr<IItemIdList> CreateForSpecialFolder(TKivShellFolder pSpecialFolder, bool pFromCache);
  /// By the name under which a special folder is shown, or its class identifier, ignoring case; nil if there is none.
  static ComPtr<IItemIdList> CreateForSpecialFolder(std::wstring_view pDisplayName);

  /// The object that a user or an application writes: a path, with quotes around it or not, a name that the shell
  /// parses, a class identifier (`::{...}`), or the name under which a special folder is shown, and a path of names
  /// below it. Empty: EmptyIdList; `\\*` the network. An absolute path isn't resolved, so that nothing waits for a slow
  /// disk; anything else is. What isn't found is an invalid list whose DisplayPath is the text.
  ///
  /// `pWindowHandleForLogonDialog` is the parent of dialogs that the shell may show; with one the path is resolved at
  /// once. With `pCompleteScan` the drives and then the desktop are looked through for what isn't found otherwise, name
  /// by name, which is slow; a path with names that end in a blank is looked for like that anyway. Any thread with COM.
  static ComPtr<IItemIdList> Parse(std::wstring_view pPath, HWND pWindowHandleForLogonDialog = nullptr,
                                   bool pCompleteScan = false);
  /// What Parse does first with a path of names: the folder of the path parsed before, or something in it, without
  /// looking through folders. EmptyIdList if the path leads elsewhere, and on any thread but the main thread.
  static ComPtr<IItemIdList> ResolveUsingCache(std::wstring_view pPath);
  /// Remembers the folder that an object lies in, under the beginning of the path that led to it, for
  /// ResolveUsingCache. Does nothing on any thread but the main thread, and for what is less than two levels deep.
  static void CacheLastFolderIdList(IItemIdList* pItemIdList, std::wstring_view pPath);

  /// The item behind so many others; the last one if there aren't so many. Borrowed from the list. Raises
  /// EInvalidArgument for a negative number.
  static PCUIDLIST_RELATIVE GetElementNo(PCUIDLIST_RELATIVE pIdList, int pElementsToSkip);
  /// Whether it is the network or lies in it.
  static bool IsNetworkPidl(IItemIdList* pFullPidl);
  /// Whether an object lies in a special folder. False for SF_UNKNOWN, SF_INVALID, and folders that don't exist here.
  static bool IsParentOf(TKivShellFolder pParentFolder, IItemIdList* pChildItemIdList, bool pAcceptsEquals);

  /// Which of the folders it is; an empty set means all. SF_INVALID for an invalid list. Slow: asks the shell.
  TKivShellFolder TestForSpecialFolder(TKivShellFolders pFoldersToTest);

  /// Replaces the list; takes it over. For the object's owner, while no other thread uses it.
  void SetPidl(PIDLIST_ABSOLUTE pItemIdList);
  /// What the list is resolved from if it isn't resolved, and the shell item from now on. For the object's owner, while
  /// no other thread uses it. Main thread; elsewhere the item is only resolved from, and not kept.
  void SetShellItem(IShellItem* pShellItem);
  bool IsSimple() const noexcept { return fIsSimple; }
  /// Whether it was made by CreateOfChange.
  bool IsOfChange() const noexcept { return fIsOfChange; }
  /// Its Path, if that is known without asking the shell.
  std::optional<std::wstring> MaybeKnownPath() const;

  /// The object as a folder. Raises EPathmereError if it isn't one, or can't be bound.
  ComPtr<IShellFolder> GetShellFolder();
  /// The object's content, for reading; nil for a folder, and if it has none.
  ComPtr<IStream> GetStream();
  ComPtr<ISequentialStream> GetSequentialStream();

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override;

  ComPtr<IItemIdList> Concat(IItemIdList* pItemIdList2) override;
  ComPtr<IItemIdList> GetStartItemIdList(int pFragments) override;
  ComPtr<IItemIdList> GetParent() override;
  ComPtr<IItemIdList> GetLastPart() override;
  bool Equals(IItemIdList* pItemIdList2, TItemIdListComparison pComparison) override;
  HRESULT CompareTo(IItemIdList* pItemIdList2, TItemIdListComparison pComparison) override;
  PCIDLIST_ABSOLUTE WindowsPointer() override;
  std::wstring Path() override;
  int Depth() override;
  bool IsInvalid() override;
  TKivShellFolder SpecialFolder() override;
  bool IsSpecialFolder(TKivShellFolder pSpecialFolderToCheck) override;
  std::wstring DisplayName(TItemIdListDisplayNameFormat pDisplayFormat) override;
  std::wstring Name() override;
  std::wstring DisplayPath() override;
  ComPtr<IItemIdList> LinkTarget() override;
  ComPtr<IShellItem> ShellItem() override;
  bool IsParentOf(IItemIdList* pChildItemIdList, bool pAcceptsEquals, TItemIdListComparison pComparisonType) override;
  bool IsFolder() override;
  bool IsAbsolute() override;
  bool IsSlow() override;
  bool IsResolved() override;
  bool HasAttributes(SFGAOF pAttributes) override;
  bool Reload() override;
  std::wstring GetInfo(TItemIdListInfoLevel pLevel) override;

protected:
  template <typename T, typename... TArgs>
  friend ComPtr<T> Make(TArgs&&... pArgs);

  /// What a list begins with. `folder` is SF_INVALID where it is to be found out.
  struct TStart {
    PIDLIST_ABSOLUTE list = nullptr;
    bool foreign = false;
    bool failed = false;
    TKivShellFolder folder = SF_INVALID;
    bool simple = false;
    bool ofChange = false;
    bool pathKnown = false;
    std::wstring_view path = {};
  };
  explicit TKivItemIdList(const TStart& pStart);
  ~TKivItemIdList() override;

private:
  static TStart FromPath(std::wstring_view pPath, IShellFolder* pShellFolder, HWND pWindow);

  void ReleaseShellItem() noexcept;
  PIDLIST_ABSOLUTE MakeList();
  std::wstring FindPath(PCIDLIST_ABSOLUTE pList);
  bool IsDesktop() const noexcept;
  bool IsBrowsable();
  HRESULT AskAttributes(SFGAOF pAttributes, SFGAOF& pFound);
  bool IsLink();
  bool ReloadLocked();
  std::wstring ShellName(SIGDN pKind);
  std::wstring PlainDisplayName(TItemIdListDisplayNameFormat pFormat);
  std::wstring ExplorerName();
  HRESULT CompareByShell(IItemIdList* pOther, SICHINTF pHint);
  HRESULT BindTo(REFGUID pHandler, IBindCtx* pContext, REFIID pIid, void** pObject);
  TKivShellFolder CompareWithTable(TKivShellFolders pFoldersToTest);
  std::recursive_mutex& ReloadLock();
  std::wstring CollectInfo(TItemIdListInfoLevel pLevel);

  TLazyPointer<ITEMIDLIST, &detail::FreeItemIdList> fItemIdList;
  TPublishedText fPath;
  ComPtr<IShellItem> fShellItem;                         // main thread
  std::atomic<std::recursive_mutex*> fPIDLLock{nullptr}; // held by Reload; made by the first one
  std::atomic<TKivShellFolder> fSpecialFolder;
  std::atomic<std::uint8_t> fLink{0};  // LinkBits, and above them how often it was reloaded
  std::atomic<bool> fItemIsOld{false}; // a worker has replaced the list that the item was made from
  const bool fIsSimple;
  const bool fIsOfChange;
};

/// The shared list that stands for nothing and is invalid. Any thread.
KIV_EXPORT ComPtr<IItemIdList> EmptyIdList();

} // namespace kiv
