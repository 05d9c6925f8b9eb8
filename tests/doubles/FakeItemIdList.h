#pragma once

#include <core/IItemIdList.h>
#include <core/PathFunctions.h>
#include <framework/InterfacedObject.h>

#include <functional>
#include <string>
#include <utility>

#if !defined(_WIN32)
struct IShellItem : IUnknown {}; // there are none
#endif

namespace kiv::test {

/// An item list that is a path and what the test says of it. Compares by path, ignoring case. What nobody needs of it
/// is empty.
class TFakeItemIdList : public TInterfacedObject<IItemIdList> {
public:
  explicit TFakeItemIdList(std::wstring pPath) : fPath(std::move(pPath)) {}

  bool folder = false;
  bool invalid = false;
  bool resolved = true;
  ComPtr<IItemIdList> target;
  std::function<bool()> reload = [] { return true; };

  ComPtr<IItemIdList> Concat(IItemIdList*) override { return this; }
  ComPtr<IItemIdList> GetStartItemIdList(int) override { return this; }
  ComPtr<IItemIdList> GetParent() override { return this; }
  ComPtr<IItemIdList> GetLastPart() override { return this; }
  bool Equals(IItemIdList* pOther, TItemIdListComparison) override { return pOther && SamePath(fPath, pOther->Path()); }
  HRESULT CompareTo(IItemIdList* pOther, TItemIdListComparison pComparison) override {
    return Equals(pOther, pComparison) ? 0 : 1;
  }
  PCIDLIST_ABSOLUTE WindowsPointer() override { return reinterpret_cast<PCIDLIST_ABSOLUTE>(std::uintptr_t{4711}); }
  std::wstring Path() override { return fPath; }
  int Depth() override { return 2; }
  bool IsInvalid() override { return invalid; }
  TKivShellFolder SpecialFolder() override { return SF_FILESYSTEMFOLDER; }
  bool IsSpecialFolder(TKivShellFolder) override { return false; }
  std::wstring DisplayName(TItemIdListDisplayNameFormat) override { return fPath; }
  std::wstring Name() override { return fPath; }
  std::wstring DisplayPath() override { return fPath; }
  ComPtr<IItemIdList> LinkTarget() override { return target ? target : ComPtr<IItemIdList>(this); }
  ComPtr<IShellItem> ShellItem() override { return nullptr; }
  bool IsParentOf(IItemIdList*, bool, TItemIdListComparison) override { return false; }
  bool IsFolder() override { return folder; }
  bool IsAbsolute() override { return true; }
  bool IsSlow() override { return false; }
  bool IsResolved() override { return resolved; }
  bool HasAttributes(SFGAOF) override { return false; }
  bool Reload() override { return reload(); }

private:
  const std::wstring fPath;
};

} // namespace kiv::test
