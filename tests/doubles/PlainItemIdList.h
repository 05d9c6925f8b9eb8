#pragma once

#include <core/IItemIdList.h>
#include <core/PathFunctions.h>
#include <framework/InterfacedObject.h>

#include <string>
#include <utility>

#if defined(_WIN32)
#include <shobjidl.h>
#else
struct IShellItem : IUnknown {}; // there is none, but a null one is let go
#endif

namespace kiv::test {

/// An item list that is its path, for code that passes lists on, compares them and asks for their paths. Lists are the
/// same for display if their paths are, and exactly the same if their variants are, too.
class PlainItemIdList : public TInterfacedObject<IItemIdList> {
public:
  explicit PlainItemIdList(std::wstring pPath, int pVariant = 0, TKivShellFolder pFolder = SF_FILESYSTEMFOLDER)
      : fPath(std::move(pPath)), fVariant(pVariant), fFolder(pFolder) {}

  /// From now on it is gone from the disk.
  void Vanish() { fGone = true; }

  ComPtr<IItemIdList> Concat(IItemIdList* pOther) override {
    if (!pOther) return ComPtr<IItemIdList>(this);
    return Make<PlainItemIdList>(fPath + L'\\' + pOther->Path());
  }
  bool Equals(IItemIdList* pOther, TItemIdListComparison pComparison) override {
    return pOther && CompareTo(pOther, pComparison) == 0;
  }
  HRESULT CompareTo(IItemIdList* pOther, TItemIdListComparison pComparison) override {
    if (!pOther || !SamePath(fPath, pOther->Path())) return -1;
    return pComparison == ilcDisplay || static_cast<PlainItemIdList*>(pOther)->fVariant == fVariant ? 0 : 1;
  }
  std::wstring Path() override { return fPath; }
  std::wstring DisplayPath() override { return fPath; }
  std::wstring DisplayName(TItemIdListDisplayNameFormat) override { return fPath; }
  std::wstring Name() override { return fPath; }
  bool IsInvalid() override { return fFolder == SF_INVALID; }
  TKivShellFolder SpecialFolder() override { return fFolder; }
  bool IsSpecialFolder(TKivShellFolder pFolder) override { return fFolder == pFolder; }
  bool Reload() override { return !fGone; }

  // What nobody asks such a list for.
  ComPtr<IItemIdList> GetStartItemIdList(int) override { return ComPtr<IItemIdList>(this); }
  ComPtr<IItemIdList> GetParent() override { return {}; }
  ComPtr<IItemIdList> GetLastPart() override { return {}; }
  PCIDLIST_ABSOLUTE WindowsPointer() override { return nullptr; }
  int Depth() override { return 1; }
  ComPtr<IItemIdList> LinkTarget() override { return ComPtr<IItemIdList>(this); }
  ComPtr<IShellItem> ShellItem() override { return {}; }
  bool IsParentOf(IItemIdList*, bool, TItemIdListComparison) override { return false; }
  bool IsFolder() override { return true; }
  bool IsAbsolute() override { return true; }
  bool IsSlow() override { return false; }
  bool IsResolved() override { return true; }
  bool HasAttributes(SFGAOF) override { return false; }

private:
  const std::wstring fPath;
  const int fVariant;
  const TKivShellFolder fFolder;
  bool fGone = false;
};

} // namespace kiv::test
