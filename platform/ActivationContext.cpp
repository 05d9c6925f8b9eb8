#include <platform/ActivationContext.h>

#include <platform/Exception.h>
#include <platform/Handles.h>
#include <platform/Lifecycle.h>
#include <platform/ThisModule.h>

#include <commctrl.h>

#include <array>
#include <cstring>
#include <memory>
#include <mutex>
#include <string_view>

namespace kiv {

namespace {

// The manifest's number where a library carries it: ISOLATIONAWARE_MANIFEST_RESOURCE_ID.
constexpr WORD ManifestResource = 2;

constexpr std::string_view Manifest =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n"
    "<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\"><dependency><dependentAssembly>"
    "<assemblyIdentity type=\"win32\" name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\" "
    "processorArchitecture=\"*\" publicKeyToken=\"6595b64144ccf1df\" language=\"*\"/>"
    "</dependentAssembly></dependency></assembly>\r\n";

HANDLE ContextFromResource() {
  ACTCTXW context{};
  context.cbSize = sizeof(context);
  context.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  context.hModule = ThisModule();
  context.lpResourceName = MAKEINTRESOURCEW(ManifestResource);
  return CreateActCtxW(&context);
}

// Read in full before "CreateActCtxW" returns.
HANDLE ContextFromFile() {
  std::array<wchar_t, MAX_PATH + 1> folder{};
  std::array<wchar_t, MAX_PATH + 1> path{};
  if (!GetTempPathW(MAX_PATH, folder.data())) return INVALID_HANDLE_VALUE;
  if (!GetTempFileNameW(folder.data(), L"kiv", 0, path.data())) return INVALID_HANDLE_VALUE;
  TUniqueHandle file(
      CreateFileW(path.data(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY, nullptr));
  DWORD written = 0;
  HANDLE result = INVALID_HANDLE_VALUE;
  if (file && WriteFile(file.Get(), Manifest.data(), static_cast<DWORD>(Manifest.size()), &written, nullptr)) {
    file.Reset();
    ACTCTXW context{};
    context.cbSize = sizeof(context);
    context.lpSource = path.data();
    result = CreateActCtxW(&context);
  }
  file.Reset();
  DeleteFileW(path.data());
  return result;
}

std::mutex gLock;
bool gMade = false;
HANDLE gContext = INVALID_HANDLE_VALUE;
std::unique_ptr<TCommonControlsApi> gApi;

void ReleaseAll() {
  const std::lock_guard guard(gLock);
  // The library stays loaded: windows of the host may have come to use its classes.
  gApi.reset();
  if (gContext != INVALID_HANDLE_VALUE) ReleaseActCtx(gContext);
  gContext = INVALID_HANDLE_VALUE;
  gMade = false;
}

HANDLE CommonControlsContext() {
  const std::lock_guard guard(gLock);
  if (gMade) return gContext;
  gContext = ContextFromResource();
  if (gContext == INVALID_HANDLE_VALUE) gContext = ContextFromFile();
  gMade = true;
  AtShutdown(&ReleaseAll);
  return gContext;
}

template <typename F>
void Bind(HMODULE module, const char* name, F& entry) {
  const FARPROC found = module ? GetProcAddress(module, name) : nullptr;
  if (!found) throw EException(L"The common controls can't be used: an entry of comctl32.dll is missing.");
  static_assert(sizeof(entry) == sizeof(found));
  std::memcpy(&entry, &found, sizeof(entry));
}

std::unique_ptr<TCommonControlsApi> BindApi() {
  const ScopedCommonControls scope;
  auto api = std::make_unique<TCommonControlsApi>();
  // By name alone: only so the activation context decides which of the versions it is.
  api->module = LoadLibraryW(L"comctl32.dll");
  Bind(api->module, "SetWindowSubclass", api->SetWindowSubclass);
  Bind(api->module, "GetWindowSubclass", api->GetWindowSubclass);
  Bind(api->module, "RemoveWindowSubclass", api->RemoveWindowSubclass);
  Bind(api->module, "DefSubclassProc", api->DefSubclassProc);
  BOOL(WINAPI * initialize)(const INITCOMMONCONTROLSEX*) = nullptr;
  Bind(api->module, "InitCommonControlsEx", initialize);
  const INITCOMMONCONTROLSEX classes{sizeof(INITCOMMONCONTROLSEX),
                                     ICC_WIN95_CLASSES | ICC_COOL_CLASSES | ICC_USEREX_CLASSES | ICC_STANDARD_CLASSES};
  initialize(&classes);
  return api;
}

} // namespace

ScopedCommonControls::ScopedCommonControls() noexcept {
  try {
    const HANDLE context = CommonControlsContext();
    fActive = context != INVALID_HANDLE_VALUE && ActivateActCtx(context, &fCookie);
  } catch (...) {
    fActive = false; // out of memory while the end was registered: the host's version does
  }
}

ScopedCommonControls::~ScopedCommonControls() {
  if (fActive) DeactivateActCtx(0, fCookie);
}

const TCommonControlsApi& CommonControlsApi() {
  {
    const std::lock_guard guard(gLock);
    if (gApi) return *gApi;
  }
  auto api = BindApi();
  const std::lock_guard guard(gLock);
  if (!gApi) gApi = std::move(api);
  return *gApi;
}

} // namespace kiv
