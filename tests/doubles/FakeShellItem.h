#pragma once

#include <framework/InterfacedObject.h>
#include <platform/Handles.h>
#include <platform/ShellApi.h>

#include <shobjidl.h>

#include <functional>
#include <map>
#include <string>

namespace kiv::test {

/// What a fake shell item answers. What isn't said is not implemented (`E_NOTIMPL`).
struct TShellItemScript {
  std::map<SIGDN, std::wstring> names = {};
  SFGAOF attributes = 0;
  std::function<HRESULT()> update = nullptr;
  std::function<HRESULT(IShellItem* other, SICHINTF hint, int* order)> compare = nullptr;
  std::function<HRESULT(IBindCtx* context, REFGUID handler, REFIID iid, void** object)> bind = nullptr;
  /// An access violation in GetDisplayName and Update, that nobody here handles.
  bool crashes = false;
  /// Without it the item isn't an IShellItem2.
  bool offersItem2 = true;
};

/// A shell item with scripted answers: for what no real shell can be made to answer on demand. Any thread, as far as
/// its script's functions are.
class FakeShellItem final : public TInterfacedObject<IShellItem2, IShellItem> {
public:
  explicit FakeShellItem(TShellItemScript pScript) : fScript(std::move(pScript)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID pIid, void** pObject) override;

  HRESULT STDMETHODCALLTYPE BindToHandler(IBindCtx* pContext, REFGUID pHandler, REFIID pIid, void** pObject) override;
  HRESULT STDMETHODCALLTYPE GetParent(IShellItem** pParent) override;
  HRESULT STDMETHODCALLTYPE GetDisplayName(SIGDN pKind, LPWSTR* pName) override;
  HRESULT STDMETHODCALLTYPE GetAttributes(SFGAOF pMask, SFGAOF* pAttributes) override;
  HRESULT STDMETHODCALLTYPE Compare(IShellItem* pOther, SICHINTF pHint, int* pOrder) override;

  HRESULT STDMETHODCALLTYPE GetPropertyStore(GETPROPERTYSTOREFLAGS, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetPropertyStoreWithCreateObject(GETPROPERTYSTOREFLAGS, IUnknown*, REFIID,
                                                             void**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetPropertyStoreForKeys(const PROPERTYKEY*, UINT, GETPROPERTYSTOREFLAGS, REFIID,
                                                    void**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetPropertyDescriptionList(REFPROPERTYKEY, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Update(IBindCtx* pContext) override;
  HRESULT STDMETHODCALLTYPE GetProperty(REFPROPERTYKEY, PROPVARIANT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetCLSID(REFPROPERTYKEY, CLSID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFileTime(REFPROPERTYKEY, FILETIME*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetInt32(REFPROPERTYKEY, int*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetString(REFPROPERTYKEY, LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetUInt32(REFPROPERTYKEY, ULONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetUInt64(REFPROPERTYKEY, ULONGLONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetBool(REFPROPERTYKEY, BOOL*) override { return E_NOTIMPL; }

private:
  void MaybeCrash() const;

  const TShellItemScript fScript;
};

/// For as long as it lives, shell items come from a function of the test's, and item lists from paths and objects, too.
/// One at a time. Counts the calls, so that a test can show that none was made.
class ScopedFakeShell {
public:
  struct TAnswers {
    /// The item for a raw list; nil lets the call fail.
    std::function<ComPtr<IShellItem>(PCIDLIST_ABSOLUTE list)> item = nullptr;
    /// The list for a path or parsing name; nil lets the call fail.
    std::function<PIDLIST_ABSOLUTE(const std::wstring& path)> parse = nullptr;
    /// The list of an object; nil lets the call fail.
    std::function<PIDLIST_ABSOLUTE(IUnknown* object)> list = nullptr;
    /// The path of a list; empty lets the call fail.
    std::function<std::wstring(PCIDLIST_ABSOLUTE list)> path = nullptr;
  };

  explicit ScopedFakeShell(TAnswers pAnswers);
  ~ScopedFakeShell();
  ScopedFakeShell(const ScopedFakeShell&) = delete;
  ScopedFakeShell& operator=(const ScopedFakeShell&) = delete;

  /// For entries that stay the platform's otherwise.
  TShellApi* operator->() noexcept { return fApi.operator->(); }
  /// Calls of the replaced entries so far.
  static int Calls() noexcept;

private:
  ScopedShellApi fApi;
};

/// A raw list of so many made-up items, numbered from 1; from the task allocator. Only its structure means anything.
PIDLIST_ABSOLUTE MakeUpList(int pItems);

} // namespace kiv::test
