// The names of an item list, and what it tells of itself.
#include <core/ItemIdList.h>

#include <core/ObjectNames.h>
#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <core/PathmereError.h>
#include <framework/FileNames.h>
#include <platform/ErrorText.h>
#include <platform/FaultGuard.h>
#include <platform/TakeResult.h>
#include <platform/Text.h>

namespace kiv {

namespace {

std::wstring MessageOf(const std::exception& exception) {
  const auto* const own = dynamic_cast<const EException*>(&exception);
  return own ? own->Message() : FromUtf8(exception.what());
}

} // namespace

// A name by the shell item; empty if there is no item or it has none. Raises EPathmereError if the shell faults.
std::wstring TKivItemIdList::ShellName(SIGDN pKind) {
  const ComPtr<IShellItem> item = ShellItem();
  if (!item) return {};
  wchar_t* name = nullptr;
  TFault fault;
  const HRESULT hr = GuardedCall([&] { return item->GetDisplayName(pKind, &name); }, &fault);
  const TUniqueTaskText text = TakeText(hr, name);
  if (fault) {
    throw EPathmereError(L"The shell faulted while it was asked for a name: " +
                             DescribeError(static_cast<HRESULT>(fault.code)),
                         static_cast<IItemIdList*>(this));
  }
  return SUCCEEDED(hr) && text ? std::wstring(text.Get()) : std::wstring();
}

std::wstring TKivItemIdList::Name() {
  std::wstring path;
  try {
    path = ShellName(SIGDN_FILESYSPATH);
  } catch (const EPathmereError&) {
    // A shell that faults tells no name; the path may.
  }
  // Some shells give a class identifier where there is no path.
  if (path.empty() || TKivPathList::IsFolderClassId(path)) path = Path();
  return IsDrive(path) ? path : ExtractFileName(path);
}

std::wstring TKivItemIdList::DisplayName(TItemIdListDisplayNameFormat pDisplayFormat) {
  if (pDisplayFormat == dnfForExplorer) return ExplorerName();
  if (pDisplayFormat == dnfPath || pDisplayFormat == dnfPreferPhysical) {
    const auto known = fPath.Read();
    const bool by_text = fIsSimple && known.known && !known.text.empty();
    if (pDisplayFormat == dnfPath) return by_text ? std::wstring(known.text) : PlainDisplayName(dnfPath);
    std::wstring path = by_text ? std::wstring(known.text) : Path();
    if (path.empty()) path = DisplayName(dnfPath);
    return TPathUtils::UnifyPath(path);
  }
  return PlainDisplayName(pDisplayFormat);
}

std::wstring TKivItemIdList::PlainDisplayName(TItemIdListDisplayNameFormat pFormat) {
  if (IsInvalid()) return {};
  std::wstring name = ShellName(NameKind(pFormat));
  CutServerDelimiter(name);
  if (name.empty()) name = pFormat == dnfPath ? Path() : Name();
  if (pFormat == dnfPhysicalPath && name.starts_with(L'{')) name = DisplayName(dnfPath);
  return name;
}

std::wstring TKivItemIdList::ExplorerName() {
  std::wstring joined;
  const int depth = Depth();
  for (int n = 1; n <= depth; ++n) {
    const auto prefix = GetStartItemIdList(n);
    std::wstring part = prefix->DisplayName(dnfRelativeParsing);
    if (!TKivPathList::IsFolderClassId(part) && !TKivPathList::IsUSBDevicePath(part)) {
      part = prefix->DisplayName(dnfInFolder);
    }
    if (n > 1) joined += L'\\';
    joined += part;
  }
  return joined;
}

std::wstring TKivItemIdList::DisplayPath() {
  std::wstring path = DisplayName(dnfPreferPhysical);
  if (!path.empty()) return path;
  const auto known = fPath.Read();
  return known.known && known.text.size() > 1 ? std::wstring(known.text) : path;
}

std::wstring TKivItemIdList::GetInfo(TItemIdListInfoLevel pLevel) {
  const auto path = fPath.Read();
  const bool resolved = IsResolved();
  std::wstring info = L"FPath: ";
  info += path.known ? path.text : L"-";
  info += L", fSpecialFolder: ";
  info += ShellFolderName(fSpecialFolder.load(std::memory_order_relaxed));
  info += !resolved ? L", Not Resolved yet" : fItemIdList.Get() ? L", Valid" : L", Invalid";
  if (pLevel != TItemIdListInfoLevel::Verbose || !resolved) return info;
  try {
    const int depth = Depth();
    info += L", Depth: " + std::to_wstring(depth) + L", ";
    for (int n = 0; n <= depth; ++n) {
      if (n > 0) info += L'\\';
      info += GetStartItemIdList(n)->DisplayName(dnfInFolder);
    }
  } catch (const std::exception& e) {
    info += L"Collecting information caused an error: " + MessageOf(e);
  }
  return info;
}

} // namespace kiv
