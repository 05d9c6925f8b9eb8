#include <core/SpecialFolders.h>

#include <core/DebugLog.h>
#include <core/ItemIdList.h>
#include <core/KnownFolder.h>
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <core/PathmereError.h>
#include <framework/TextCompare.h>
#include <platform/FaultGuard.h>
#include <platform/InterfaceId.h>
#include <platform/Lifecycle.h>
#include <platform/ShellApi.h>
#include <platform/TakeResult.h>

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace kiv {

namespace {

constexpr int NoNumber = -1;
constexpr wchar_t QuickAccess[] = L"shell:::{679f85cb-0220-4080-b29b-5540cc05aab6}";

// How the platform knows a folder ("CSIDL", "KNOWNFOLDERID").
struct TEntry {
  int csidl = NoNumber;
  std::optional<GUID> id = std::nullopt;
};

// In the order of TKivShellFolder.
constexpr TEntry Table[] = {
    {17, ParseGuid("{0AC0837C-BBF8-452A-850D-79D08E667CA7}")},       // SF_FILESYSTEMFOLDER
    {10, ParseGuid("{B7534046-3ECB-4C18-BE4E-64CD4CB7D6AC}")},       // SF_BITBUCKET
    {3, ParseGuid("{82A74AEB-AEB4-465C-A014-D097EE346D63}")},        // SF_CONTROLS
    {0, ParseGuid("{B4BFCC3A-DB2C-424C-B029-7FE99A87C641}")},        // SF_DESKTOP
    {16, ParseGuid("{B4BFCC3A-DB2C-424C-B029-7FE99A87C641}")},       // SF_DESKTOPDIRECTORY
    {17, ParseGuid("{0AC0837C-BBF8-452A-850D-79D08E667CA7}")},       // SF_DRIVES
    {20, ParseGuid("{FD228CB7-AE11-4AE3-864C-16F3910AB8FE}")},       // SF_FONTS
    {19, ParseGuid("{C5ABBF53-E17F-4121-8900-86626FC2C973}")},       // SF_NETHOOD
    {18, ParseGuid("{D20BEEC4-5CA8-4905-AE3B-BF251EA09B53}")},       // SF_NETWORK
    {5, ParseGuid("{FDD39AD0-238F-46AF-ADB4-6C85480369C7}")},        // SF_PERSONAL
    {4, ParseGuid("{76FC4E2D-D6AD-4519-A663-37BD56068185}")},        // SF_PRINTERS
    {2, ParseGuid("{A77F5D77-2E2B-44C3-A6A2-ABA601054A51}")},        // SF_PROGRAMS
    {8, ParseGuid("{AE50C081-EBD2-438A-8655-8A092E34987A}")},        // SF_RECENT
    {9, ParseGuid("{8983036C-27C0-404B-8F08-102D10DCFD74}")},        // SF_SENDTO
    {11, ParseGuid("{625B53C3-AB48-4EC1-BA1F-A1EF4146FC19}")},       // SF_STARTMENU
    {7, ParseGuid("{B97D20BB-F46A-4C97-BA10-5E3608430854}")},        // SF_STARTUP
    {21, ParseGuid("{A63293E8-664E-48DB-A079-DF759E0509F7}")},       // SF_TEMPLATES
    {6, ParseGuid("{1777F761-68AD-4D8A-87BD-30B759FA33DD}")},        // SF_FAVORITES
    {22, ParseGuid("{A4115719-D62E-491D-AA7C-E74B8BE3B067}")},       // SF_COMMON_STARTMENU
    {24, ParseGuid("{82A5EA35-D9CD-47C5-9629-E15D2F714E6E}")},       // SF_COMMON_STARTUP
    {25, ParseGuid("{C4AA340D-F20F-4863-AFEF-F87EF2E6BA25}")},       // SF_COMMON_DESKTOPDIRECTORY
    {26, ParseGuid("{3EB685DB-65F9-4CF6-A03A-E3EF65729F3D}")},       // SF_APPDATA
    {27, ParseGuid("{9274BD8D-CFD1-41C3-B35E-B13F55A758F4}")},       // SF_PRINTHOOD
    {31, ParseGuid("{1777F761-68AD-4D8A-87BD-30B759FA33DD}")},       // SF_COMMON_FAVORITES
    {32, ParseGuid("{352481E8-33BE-4251-BA85-6007CAEDCF9D}")},       // SF_INTERNET_CACHE
    {33, ParseGuid("{2B0F765D-C0E9-4171-908E-08A611B84FF6}")},       // SF_COOKIES
    {34, ParseGuid("{D9DC8A3B-B784-432E-A781-5A1130A75963}")},       // SF_HISTORY
    {23, ParseGuid("{0139D44E-6AFE-49F2-8690-3DAFCAE6FFB8}")},       // SF_COMMON_PROGRAMS
    {29, ParseGuid("{B97D20BB-F46A-4C97-BA10-5E3608430854}")},       // SF_ALTSTARTUP
    {35, ParseGuid("{62AB5D82-FDC1-4DC3-A9DD-070D1D495D97}")},       // SF_COMMON_APPDATA
    {46, ParseGuid("{ED4824AF-DCE4-45A8-81E2-FC7965083634}")},       // SF_COMMON_DOCUMENTS
    {1, ParseGuid("{4D9F7874-4E0C-4904-967B-40B0D20C3E4B}")},        // SF_INTERNET
    {28, ParseGuid("{F1B32785-6FBA-4FCF-9D55-7B8E7F157091}")},       // SF_LOCAL_APPDATA
    {39, ParseGuid("{33E28130-4E1E-4676-835A-98395C3BC3BB}")},       // SF_MYPICTURES
    {38, ParseGuid("{905E63B6-C1BF-494E-B29C-65B732D3D21A}")},       // SF_PROGRAM_FILES
    {37, ParseGuid("{1AC14E77-02E7-4E5D-B744-2EB1AE5198B7}")},       // SF_SYSTEM
    {43, ParseGuid("{F7F1ED05-9F6D-47A2-AAAE-29D317C6F066}")},       // SF_PROGRAM_FILES_COMMON
    {36, ParseGuid("{F38BF404-1D43-42F2-9305-67DE0B28FC23}")},       // SF_WINDOWS
    {42, ParseGuid("{7C5A40EF-A0FB-4BFC-874A-C0F2E0B9FA8E}")},       // SF_PROGRAM_FILESX86
    {44, ParseGuid("{DE974D24-D9C6-4D3E-BF91-F4455120B917}")},       // SF_PROGRAM_FILES_COMMONX86
    {41, ParseGuid("{D65231B0-B2F1-4857-A4CE-A8E7C6EA7D27}")},       // SF_SYSTEMX86
    {13, ParseGuid("{4BD8D571-6D19-48D3-BE97-422220080E43}")},       // SF_MY_MUSIC
    {14, ParseGuid("{18989B1D-99B5-455B-841C-AB7C74E4DDFC}")},       // SF_MY_VIDEOS
    {NoNumber, ParseGuid("{1B3EA5DC-B587-4786-B4EF-BD1DC332AEAE}")}, // SF_LIBRARIES
    {NoNumber, ParseGuid("{7B0DB17D-9CD2-4A93-9733-46CC89022E7C}")}, // SF_LIBRARY_DOCUMENTS
    {NoNumber, ParseGuid("{A990AE9F-A03B-4E80-94BC-9912D7504104}")}, // SF_LIBRARY_PICTURES
    {NoNumber, ParseGuid("{2112AB0A-C86A-4FFE-A368-0DE96E47012E}")}, // SF_LIBRARY_MUSIC
    {NoNumber, ParseGuid("{491E922F-5643-4AF4-A7EB-4E7A138D8174}")}, // SF_LIBRARY_VIDEOS
    {NoNumber, ParseGuid("{48DAF80B-E6CF-4F4E-B800-0E69D84EE384}")}, // SF_LIBRARY_PUBLIC
    {NoNumber, ParseGuid("{F3CE0F7C-4901-4ACC-8648-D5D44B04EF8F}")}, // SF_PROFILE
    {NoNumber, ParseGuid("{52528A6B-B9E3-4ADD-B60D-588C2DBA842D}")}, // SF_HOME_GROUP
    {NoNumber, ParseGuid("{BFB9D5E0-C6A9-404C-B2B2-AE6DB6AF4968}")}, // SF_LINKS
    {NoNumber},                                                      // SF_QUICKACCESS
    {NoNumber, ParseGuid("{374DE290-123F-4565-9164-39C4925E467B}")}, // SF_DOWNLOADS
    {NoNumber, ParseGuid("{A52BBA46-E9E1-435F-B3D9-28DAA648C0F6}")}, // SF_ONEDRIVE
    {NoNumber, ParseGuid("{52A4F021-7B75-48A9-9F6B-4B87A210BC8F}")}, // SF_QUICKLAUNCH
    {17, ParseGuid("{0AC0837C-BBF8-452A-850D-79D08E667CA7}")},       // SF_UNKNOWN
    {NoNumber},                                                      // SF_INVALID
};
static_assert(std::size(Table) == ShellFolderCount);

// Identifiers that the table hasn't got: folders that have another one since some version of the platform, or one as a
// virtual folder and one on the disk. They go before the table.
constexpr std::pair<GUID, TKivShellFolder> OtherIdentifiers[] = {
    {ParseGuid("{0DDD015D-B06C-45D5-8C4C-F59713854639}"), SF_MYPICTURES},
    {ParseGuid("{F42EE2D3-909F-4907-8871-4C22FC0BF756}"), SF_PERSONAL},
    {ParseGuid("{A0C69A99-21C8-4671-8703-7934162FCF1D}"), SF_MY_MUSIC},
    {ParseGuid("{35286A68-3C57-41A1-BBB1-0EAE73D76C95}"), SF_MY_VIDEOS},
    {ParseGuid("{7D83EE9B-2244-4E70-B1F5-5393042AF1E4}"), SF_DOWNLOADS},
    {ParseGuid("{679F85CB-0220-4080-B29B-5540CC05AAB6}"), SF_QUICKACCESS},
    {ParseGuid("{26EE0668-A00A-44D7-9371-BEB064C98683}"), SF_CONTROLS},
    {ParseGuid("{323CA680-C24D-4099-B94D-446DD2D7249E}"), SF_FAVORITES},
    {ParseGuid("{A302545D-DEFF-464B-ABE8-61C8648D939B}"), SF_LIBRARIES},
    {ParseGuid("{5E6C858F-0E22-4760-9AFE-EA3317B67173}"), SF_PROFILE},
    {ParseGuid("{754AC886-DF64-4CBA-86B5-F7FBF4FBCEF5}"), SF_DESKTOPDIRECTORY},
    {ParseGuid("{6D809377-6AF0-444B-8957-A3773F02200E}"), SF_PROGRAM_FILES},
    {ParseGuid("{6365D5A7-0F0D-45E5-87F6-0DA56B6A4F7D}"), SF_PROGRAM_FILES_COMMON},
};

struct TIgnoresCase {
  using is_transparent = void;
  bool operator()(std::wstring_view a, std::wstring_view b) const noexcept { return CompareText(a, b) < 0; }
};
using TNames = std::map<std::wstring, TKivShellFolder, TIgnoresCase>;

// The lists that all share, and the names they go by.
struct TCache {
  std::mutex lock;
  std::array<ComPtr<IItemIdList>, ShellFolderCount> lists; // guarded by lock
  std::shared_ptr<const TNames> names;                     // guarded by lock
  bool registered = false;                                 // guarded by lock
};

// Never destroyed: other threads may still ask while statics go.
TCache& Cache() {
  static auto* const cache = new TCache;
  return *cache;
}

std::size_t IndexOf(TKivShellFolder folder) {
  return static_cast<std::size_t>(folder);
}

// The two lists that need no shell: nothing, and the root of the namespace.
ComPtr<IItemIdList> MakeFixed(TKivShellFolder folder) {
  static constexpr ITEMIDLIST root{};
  if (folder == SF_FILESYSTEMFOLDER) return TKivItemIdList::Create(PCIDLIST_ABSOLUTE{}, iloForeignOwned);
  if (folder == SF_DESKTOP) return TKivItemIdList::Create(&root, iloForeignOwned);
  return nullptr;
}

// Every name of a folder that a user may type for it. The first holder of a name stays.
void AddNames(TKivShellFolder folder, TNames& names) {
  try {
    const auto list = TKivItemIdList::CreateForSpecialFolder(folder, true);
    names.emplace(list->DisplayName(dnfInFolder), folder);
    for (const auto format : {dnfAbsoluteParsing, dnfRelativeParsing}) {
      const std::wstring name = list->DisplayName(format);
      if (TKivPathList::IsFolderClassId(name)) names.emplace(name, folder);
    }
  } catch (const EPathmereError& e) {
    TDebugLog::LogException(L"Names of a special folder", e); // the others have names all the same
  }
}

// Path text knows the folder of the drives by its name, and mustn't know item lists.
std::wstring DrivesFolderName() {
  return TKivShellFolderHelper::ToString(SF_DRIVES);
}
[[maybe_unused]] const bool gNameSourceSet = (SetDrivesFolderNameSource(&DrivesFolderName), true);

std::shared_ptr<const TNames> Names() {
  {
    const std::lock_guard guard(Cache().lock);
    if (Cache().names) return Cache().names;
  }
  auto names = std::make_shared<TNames>();
  for (int i = 1; i < ShellFolderCount; ++i) {
    const auto folder = static_cast<TKivShellFolder>(i);
    if (folder != SF_UNKNOWN && folder != SF_INVALID) AddNames(folder, *names);
  }
  names->erase(L"");
  const std::lock_guard guard(Cache().lock);
  // Another thread may have been faster.
  if (!Cache().names) Cache().names = std::move(names);
  return Cache().names;
}

} // namespace

ComPtr<IItemIdList> SpecialFolders::FromCache(TKivShellFolder pFolder) {
  const std::lock_guard guard(Cache().lock);
  auto& entry = Cache().lists[IndexOf(pFolder)];
  if (!entry) entry = MakeFixed(pFolder);
  if (entry && !std::exchange(Cache().registered, true)) AtShutdown(&SpecialFolders::Clear);
  return entry;
}

ComPtr<IItemIdList> SpecialFolders::Share(TKivShellFolder pFolder, const ComPtr<IItemIdList>& pList) {
  const std::lock_guard guard(Cache().lock);
  auto& entry = Cache().lists[IndexOf(pFolder)];
  if (!entry) entry = pList;
  if (!std::exchange(Cache().registered, true)) AtShutdown(&SpecialFolders::Clear);
  return entry;
}

void SpecialFolders::Clear() {
  ForgetKnownFolderManager();
  std::array<ComPtr<IItemIdList>, ShellFolderCount> lists; // let go outside the lock
  const std::lock_guard guard(Cache().lock);
  lists.swap(Cache().lists);
  Cache().names = nullptr;
  Cache().registered = false;
}

TUniqueItemIdList SpecialFolders::MakeRawList(TKivShellFolder pFolder) {
  const TEntry& entry = Table[IndexOf(pFolder)];
  PIDLIST_ABSOLUTE raw = nullptr;
  if (entry.csidl != NoNumber) {
    const HRESULT hr = GuardedExport(ShellApi().SHGetSpecialFolderLocation, HWND{}, entry.csidl, &raw);
    if (TUniqueItemIdList list = TakeItemIdList(hr, raw)) return list;
  }
  if (!entry.id) return {};
  raw = nullptr;
  const HRESULT hr = GuardedExport(ShellApi().SHGetKnownFolderIDList, *entry.id, DWORD{0}, HANDLE{}, &raw);
  return TakeItemIdList(hr, raw);
}

TKivShellFolder SpecialFolders::FromIdentifier(const GUID& pId, TKivShellFolders pFolders) {
  const auto asked = [&](TKivShellFolder folder) { return pFolders.IsEmpty() || pFolders.Contains(folder); };
  for (const auto& [id, folder] : OtherIdentifiers) {
    if (id == pId && asked(folder)) return folder;
  }
  for (int i = 1; i < ShellFolderCount; ++i) {
    const auto folder = static_cast<TKivShellFolder>(i);
    if (Table[i].id && *Table[i].id == pId && asked(folder)) return folder;
  }
  return SF_INVALID;
}

ComPtr<IItemIdList> TKivItemIdList::CreateForSpecialFolder(TKivShellFolder pSpecialFolder, bool pFromCache) {
  if (pFromCache) {
    if (auto cached = SpecialFolders::FromCache(pSpecialFolder)) return cached;
  }
  const auto list = pSpecialFolder == SF_QUICKACCESS ? Create(std::wstring_view(QuickAccess))
                                                     : Create(SpecialFolders::MakeRawList(pSpecialFolder));
  if (pSpecialFolder != SF_INVALID && list->IsInvalid()) return list;
  list->fSpecialFolder.store(pSpecialFolder, std::memory_order_relaxed);
  // These two change while the process lives: their lists carry what the shell knew when it made them.
  const bool shared = pFromCache && pSpecialFolder != SF_DRIVES && pSpecialFolder != SF_QUICKACCESS;
  return shared ? SpecialFolders::Share(pSpecialFolder, list) : ComPtr<IItemIdList>(list);
}

ComPtr<IItemIdList> TKivItemIdList::CreateForSpecialFolder(std::wstring_view pDisplayName) {
  const auto names = Names();
  const auto found = names->find(pDisplayName);
  return found == names->end() ? nullptr : CreateForSpecialFolder(found->second, true);
}

std::wstring TKivShellFolderHelper::ToPath(TKivShellFolder pFolder) {
  return TKivItemIdList::CreateForSpecialFolder(pFolder, true)->Path();
}

std::wstring TKivShellFolderHelper::ToString(TKivShellFolder pFolder) {
  return TKivItemIdList::CreateForSpecialFolder(pFolder, true)->DisplayName(dnfNormal);
}

} // namespace kiv
