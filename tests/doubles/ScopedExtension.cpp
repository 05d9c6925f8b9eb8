#include <doubles/ScopedExtension.h>

#include <gtest/gtest.h>

#include <libloaderapi.h>

namespace kiv::test {

namespace {

std::wstring FileBesideTheProgram() {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
  return path.substr(0, path.rfind(L'\\') + 1) + ExtensionFile;
}

} // namespace

ScopedExtension::ScopedExtension() : fModule(LoadLibraryW(FileBesideTheProgram().c_str())) {
  EXPECT_TRUE(fModule) << "kiv_test_extension.dll isn't beside the test program";
  Call("DllRegisterServer");
}

ScopedExtension::~ScopedExtension() {
  Call("DllUnregisterServer");
}

// Null if the DLL isn't there.
template <typename T>
T ScopedExtension::Export(const char* pName) const {
  return fModule ? reinterpret_cast<T>(reinterpret_cast<void*>(GetProcAddress(fModule.Get(), pName))) : nullptr;
}

void ScopedExtension::Call(const char* pExport) const {
  if (!fModule) return;
  const auto call = Export<TRegister>(pExport);
  EXPECT_TRUE(call && SUCCEEDED(call())) << pExport;
}

long ScopedExtension::LiveObjects() const {
  if (!fModule) return 0;
  const auto count = Export<TExtensionObjects>(ExtensionObjects);
  return count ? count() : -1;
}

void ScopedExtension::WatchAsks() const {
  if (const auto watch = Export<TExtensionWatch>(ExtensionWatch)) watch(GetCurrentThreadId());
}

std::wstring ScopedExtension::Asks() const {
  const auto asks = Export<TExtensionAsks>(ExtensionAsks);
  return asks ? asks() : std::wstring();
}

ScopedExtensionWait::ScopedExtensionWait()
    : fArrived(CreateEventW(nullptr, FALSE, FALSE, ExtensionArrived)),
      fGoOn(CreateEventW(nullptr, TRUE, FALSE, ExtensionGoOn)) {}

void ScopedExtensionWait::AwaitArrival() const {
  WaitForSingleObject(fArrived.Get(), INFINITE);
}

bool ScopedExtensionWait::HasArrived() const {
  return WaitForSingleObject(fArrived.Get(), 0) == WAIT_OBJECT_0;
}

void ScopedExtensionWait::GoOn() const {
  SetEvent(fGoOn.Get());
}

} // namespace kiv::test
