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

void ScopedExtension::Call(const char* pExport) const {
  if (!fModule) return;
  const auto call = reinterpret_cast<TRegister>(reinterpret_cast<void*>(GetProcAddress(fModule.Get(), pExport)));
  EXPECT_TRUE(call && SUCCEEDED(call())) << pExport;
}

long ScopedExtension::LiveObjects() const {
  if (!fModule) return 0;
  const auto count =
      reinterpret_cast<TExtensionObjects>(reinterpret_cast<void*>(GetProcAddress(fModule.Get(), ExtensionObjects)));
  return count ? count() : -1;
}

ScopedExtensionWait::ScopedExtensionWait()
    : fArrived(CreateEventW(nullptr, FALSE, FALSE, ExtensionArrived)),
      fGoOn(CreateEventW(nullptr, TRUE, FALSE, ExtensionGoOn)) {}

void ScopedExtensionWait::AwaitArrival() const {
  WaitForSingleObject(fArrived.Get(), INFINITE);
}

void ScopedExtensionWait::GoOn() const {
  SetEvent(fGoOn.Get());
}

} // namespace kiv::test
