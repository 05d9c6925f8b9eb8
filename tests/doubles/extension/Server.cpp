// The DLL: class factory, registration for the user.
#include "Acts.h"
#include "Extension.h"
#include "Folder.h"

#include <olectl.h>

#include <atomic>
#include <iterator>
#include <string>

namespace kiv::test {

namespace {

std::atomic<long> gLocks{0};

// The module that this code lies in.
HMODULE OwnModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&gLocks), &module);
  return module;
}

class TFactory final : public TInterfacedObject<IClassFactory> {
public:
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID pIid, void** pObject) override {
    if (!pObject) return E_POINTER;
    *pObject = nullptr;
    if (pOuter) return CLASS_E_NOAGGREGATION;
    return Make<TExtensionFolder>()->QueryInterface(pIid, pObject);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL pLock) override {
    gLocks += pLock ? 1 : -1;
    return S_OK;
  }
};

const HKEY Roots[] = {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE};
const std::wstring ClassKey = std::wstring(LR"(Software\Classes\CLSID\)") + (ExtensionRoot + 2);
const std::wstring DesktopKey =
    std::wstring(LR"(Software\Microsoft\Windows\CurrentVersion\Explorer\Desktop\NameSpace\)") + (ExtensionRoot + 2);

LSTATUS SetText(HKEY root, const std::wstring& key, const wchar_t* name, const std::wstring& text) {
  return RegSetKeyValueW(root, key.c_str(), name, REG_SZ, text.c_str(),
                         static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

// "Registering Shell Extension Handlers", "Specifying a Namespace Extension's Location".
bool Register(HKEY root) {
  wchar_t file[MAX_PATH];
  const DWORD length = GetModuleFileNameW(OwnModule(), file, static_cast<DWORD>(std::size(file)));
  if (length == 0 || length == std::size(file)) return false;
  const DWORD attributes = SFGAO_FOLDER | SFGAO_HASSUBFOLDER | SFGAO_BROWSABLE;
  return SetText(root, ClassKey, nullptr, L"Extension for tests") == ERROR_SUCCESS &&
         SetText(root, ClassKey + LR"(\InprocServer32)", nullptr, file) == ERROR_SUCCESS &&
         SetText(root, ClassKey + LR"(\InprocServer32)", L"ThreadingModel", L"Apartment") == ERROR_SUCCESS &&
         RegSetKeyValueW(root, (ClassKey + LR"(\ShellFolder)").c_str(), L"Attributes", REG_DWORD, &attributes,
                         sizeof(attributes)) == ERROR_SUCCESS &&
         SetText(root, DesktopKey, nullptr, L"Extension for tests") == ERROR_SUCCESS;
}

void Unregister() {
  for (const HKEY root : Roots) {
    for (const std::wstring& key : {ClassKey, DesktopKey}) RegDeleteTreeW(root, key.c_str());
  }
}

bool IsFound() {
  const std::wstring key = std::wstring(LR"(CLSID\)") + (ExtensionRoot + 2);
  HKEY opened = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) return false;
  RegCloseKey(opened);
  return true;
}

void TellTheDesktop() {
  constexpr ITEMIDLIST root{};
  SHChangeNotify(SHCNE_UPDATEDIR, SHCNF_IDLIST, &root, nullptr);
}

} // namespace

} // namespace kiv::test

using namespace kiv::test;

STDAPI DllGetClassObject(REFCLSID pClass, REFIID pIid, void** pObject) {
  if (!pObject) return E_POINTER;
  *pObject = nullptr;
  if (pClass != ExtensionClass) return CLASS_E_CLASSNOTAVAILABLE;
  return kiv::Make<TFactory>()->QueryInterface(pIid, pObject);
}

STDAPI DllCanUnloadNow() {
  return gLocks == 0 && kiv::LiveObjects() == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
  Unregister();
  bool done = Register(HKEY_CURRENT_USER);
  // Some systems (Wine 8) find classes of the machine only.
  if (done && !IsFound()) {
    Unregister();
    done = Register(HKEY_LOCAL_MACHINE);
  }
  if (!done) Unregister();
  TellTheDesktop();
  return done ? S_OK : SELFREG_E_CLASS;
}

STDAPI DllUnregisterServer() {
  Unregister();
  TellTheDesktop();
  return S_OK;
}

extern "C" long KivTestExtensionObjects() {
  return kiv::LiveObjects();
}

extern "C" void KivTestExtensionWatch(unsigned long pThread) {
  WatchAsksOf(pThread);
}

extern "C" const wchar_t* KivTestExtensionAsks() {
  return NotedAsks().c_str();
}
