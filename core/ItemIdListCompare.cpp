// How item lists compare, and which of the special folders they are.
#include <core/ItemIdList.h>

#include <core/FileFunctions.h>
#include <core/KnownFolder.h>
#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <core/PathmereError.h>
#include <core/SpecialFolders.h>
#include <platform/ErrorMode.h>
#include <platform/FaultGuard.h>

namespace kiv {

namespace {

// Both for IShellItem::Compare (SICHINT_CANONICAL) and for IShellFolder::CompareIDs (SHCIDS_CANONICALONLY).
constexpr SICHINTF CanonicalHint = static_cast<SICHINTF>(SICHINT_CANONICAL);
static_assert(SICHINT_CANONICAL == SHCIDS_CANONICALONLY);

// Two lists that the user may know by their paths: the desktop has the path of its folder on disk, and isn't it.
bool GetPaths(IItemIdList* a, IItemIdList* b, std::wstring& a_path, std::wstring& b_path) {
  if (a->IsSpecialFolder(SF_DESKTOP) || b->IsSpecialFolder(SF_DESKTOP)) return false;
  a_path = a->Path();
  if (a_path.empty()) return false;
  b_path = b->Path();
  return !b_path.empty();
}

bool LiesInQuickAccess(IItemIdList* list) {
  return list->Depth() == 2 && list->GetParent()->IsSpecialFolder(SF_QUICKACCESS);
}

// Quick Access gives one object several lists: there only the canonical comparison tells them apart.
bool BothLieInQuickAccess(IItemIdList* a, IItemIdList* b) {
  try {
    return b->Depth() == 2 && LiesInQuickAccess(a) && LiesInQuickAccess(b);
  } catch (const EPathmereError&) {
    return false;
  }
}

// No special folder is a file, but for a library, which is one in its folder. What may be slow isn't asked.
bool IsPlainFile(const std::wstring& path) {
  if (!IsAbsolutePath(path) || HasFileExtension(path, L".library-ms") || IsNetworkPath(path)) return false;
  const ScopedErrorMode mode;
  const DWORD attributes = GetFileAttributesW(TPathUtils::GetUnicodeAPICallPath(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

} // namespace

bool TKivItemIdList::IsDesktop() const noexcept {
  const PCIDLIST_ABSOLUTE list = fItemIdList.Get();
  return list && ILGetNext(list) == nullptr;
}

HRESULT TKivItemIdList::CompareTo(IItemIdList* pItemIdList2, TItemIdListComparison pComparison) {
  if (!pItemIdList2) return -1;
  SICHINTF hint = CanonicalHint;
  if (pComparison == ilcDisplay) {
    std::wstring path;
    std::wstring other_path;
    if (GetPaths(this, pItemIdList2, path, other_path) && SamePath(path, other_path)) return 0;
    hint = BothLieInQuickAccess(this, pItemIdList2) ? CanonicalHint : SICHINTF{0};
  }
  return CompareByShell(pItemIdList2, hint);
}

HRESULT TKivItemIdList::CompareByShell(IItemIdList* pOther, SICHINTF pHint) {
  const PCIDLIST_ABSOLUTE list = WindowsPointer();
  const PCIDLIST_ABSOLUTE other = pOther->WindowsPointer();
  if (!list || !other) return E_INVALIDARG; // the shell would take them for the desktop
  const ComPtr<IShellItem> item = ShellItem();
  const ComPtr<IShellItem> other_item = item ? pOther->ShellItem() : nullptr;
  if (item && other_item) {
    int order = 0;
    const HRESULT hr = GuardedCall([&] { return item->Compare(other_item.Get(), pHint, &order); });
    if (SUCCEEDED(hr)) return order;
  }
  const ComPtr<IShellFolder> desktop = Desktop();
  return GuardedCall([&] { return desktop->CompareIDs(static_cast<LPARAM>(pHint), list, other); });
}

bool TKivItemIdList::Equals(IItemIdList* pItemIdList2, TItemIdListComparison pComparison) {
  if (!pItemIdList2) return false;
  if (pComparison == ilcDisplay) {
    std::wstring path;
    std::wstring other_path;
    if (GetPaths(this, pItemIdList2, path, other_path)) return SamePath(path, other_path);
  } else if (Depth() != pItemIdList2->Depth()) {
    return false;
  }
  return CompareTo(pItemIdList2, pComparison) == 0;
}

bool TKivItemIdList::IsParentOf(IItemIdList* pChildItemIdList, bool pAcceptsEquals,
                                TItemIdListComparison pComparisonType) {
  if (!pChildItemIdList) return false;
  const PCIDLIST_ABSOLUTE list = WindowsPointer();
  const PCIDLIST_ABSOLUTE child = pChildItemIdList->WindowsPointer();
  if (list && child) {
    const PCUIDLIST_RELATIVE rest = ILFindChild(const_cast<PIDLIST_ABSOLUTE>(list), child);
    if (rest) return pAcceptsEquals || rest->mkid.cb != 0;
  }
  if (pComparisonType == ilcExact) return false;
  const std::wstring path = Path();
  if (path.empty()) return false;
  const std::wstring child_path = pChildItemIdList->Path();
  return TKivPathList::IsSubPathOf(path, child_path) || (pAcceptsEquals && SamePath(path, child_path));
}

bool TKivItemIdList::IsParentOf(TKivShellFolder pParentFolder, IItemIdList* pChildItemIdList, bool pAcceptsEquals) {
  if (pParentFolder == SF_UNKNOWN || pParentFolder == SF_INVALID) return false;
  const auto folder = CreateForSpecialFolder(pParentFolder, true);
  return folder && !folder->IsInvalid() && folder->IsParentOf(pChildItemIdList, pAcceptsEquals, ilcExact);
}

bool TKivItemIdList::IsNetworkPidl(IItemIdList* pFullPidl) {
  return IsParentOf(SF_NETWORK, pFullPidl, true);
}

// --- special folders
// --------------------------------------------------------------------------------------------------

bool TKivItemIdList::IsSpecialFolder(TKivShellFolder pSpecialFolderToCheck) {
  if (pSpecialFolderToCheck == SF_DESKTOP) return IsDesktop();
  const TKivShellFolder known = fSpecialFolder.load(std::memory_order_relaxed);
  if (known != SF_INVALID) return known == pSpecialFolderToCheck;
  const auto folder = CreateForSpecialFolder(pSpecialFolderToCheck, true);
  if (CompareTo(folder.Get(), ilcDisplay) != 0) return false;
  fSpecialFolder.store(pSpecialFolderToCheck, std::memory_order_relaxed);
  return true;
}

TKivShellFolder TKivItemIdList::SpecialFolder() {
  TKivShellFolder folder = fSpecialFolder.load(std::memory_order_relaxed);
  if (folder != SF_INVALID) return folder;
  const TKivShellFolder found = TestForSpecialFolder({});
  return fSpecialFolder.compare_exchange_strong(folder, found, std::memory_order_relaxed) ? found : folder;
}

TKivShellFolder TKivItemIdList::TestForSpecialFolder(TKivShellFolders pFoldersToTest) {
  if (IsInvalid()) return SF_INVALID;
  const auto asked = [&](TKivShellFolder folder) {
    return pFoldersToTest.IsEmpty() || pFoldersToTest.Contains(folder);
  };
  const std::wstring path = Path();
  TKivShellFolder found = SF_INVALID;
  if (Depth() == 0) {
    if (asked(SF_DESKTOP)) return SF_DESKTOP; // and nothing else is there
  } else if (!IsPlainFile(path)) {
    const TKnownFolder known = FindKnownFolder(this);
    if (known.kind == TKnownFolder::TKind::NoManager) {
      found = CompareWithTable(pFoldersToTest);
    } else {
      if (known.kind == TKnownFolder::TKind::Found) found = SpecialFolders::FromIdentifier(known.id, pFoldersToTest);
      // The manager doesn't know this one.
      if (found == SF_INVALID && path.empty() && asked(SF_QUICKACCESS) &&
          Equals(CreateForSpecialFolder(SF_QUICKACCESS, true).Get(), ilcDisplay)) {
        found = SF_QUICKACCESS;
      }
    }
  }
  if (found == SF_DESKTOP) return SF_DESKTOPDIRECTORY; // the identifier of the root is also that of its files' folder
  if (found != SF_INVALID) return found;
  return pFoldersToTest.IsEmpty() && !path.empty() ? SF_FILESYSTEMFOLDER : SF_UNKNOWN;
}

// SF_INVALID if it is none of them.
TKivShellFolder TKivItemIdList::CompareWithTable(TKivShellFolders pFoldersToTest) {
  const std::wstring path = Path();
  const bool is_file = IsAbsolutePath(path) && path != LR"(\\*)"; // that one stands for the network
  for (int i = 1; i < ShellFolderCount; ++i) {
    const auto value = static_cast<TKivShellFolder>(i);
    if (!pFoldersToTest.IsEmpty() && !pFoldersToTest.Contains(value)) continue;
    if (value == SF_DESKTOP) continue; // nothing below it is
    const auto folder = CreateForSpecialFolder(value, true);
    // What lies in the file system isn't equal to what doesn't: the shell, which is slow at telling so, isn't asked.
    if (is_file && folder->Path().empty()) continue;
    if (Equals(folder.Get(), ilcDisplay)) return value;
  }
  return SF_INVALID;
}

} // namespace kiv
