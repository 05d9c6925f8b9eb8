#include <core/ItemIdList.h>

#include <core/ItemIdListFunctions.h>
#include <core/PathFunctions.h>
#include <core/PathmereError.h>
#include <core/SpecialFolders.h>
#include <doubles/ScopedTempFolder.h>
#include <framework/Exceptions.h>
#include <platform/MainThread.h>
#include <platform/fill/Revalidation.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace kiv {
namespace {

using test::ScopedTempFolder;

constexpr wchar_t Computer[] = L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}";

class ItemIdList : public testing::Test {
protected:
  static void SetUpTestSuite() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    MainThread::Attach();
  }
  static ComPtr<IItemIdList> List(std::wstring_view path) { return TKivItemIdList::Create(path); }

  ScopedTempFolder fTemp;
};

std::wstring Info(const ComPtr<IItemIdList>& list, TItemIdListInfoLevel level = TItemIdListInfoLevel::Normal) {
  return list.MaybeAs<IHasDebugInfo>()->GetInfo(level);
}

template <typename E, typename F>
std::wstring MessageOf(F&& act) {
  try {
    act();
  } catch (const E& e) {
    return e.Message();
  }
  return L"nothing was raised";
}

TEST_F(ItemIdList, KeepsThePathItWasMadeFrom) {
  const struct {
    const wchar_t* given;
    const wchar_t* kept;
  } cases[] = {
      {LR"(C:\)", LR"(C:\)"},         {LR"(C:\Temp\)", LR"(C:\Temp)"}, {L"C:", L"C:"},
      {LR"(C:\Temp)", LR"(C:\Temp)"}, {LR"(\\srv\x\)", LR"(\\srv\x)"}, {L"C:/Temp/", L"C:/Temp"},
  };
  for (const auto& c : cases) {
    const auto list = List(c.given);
    EXPECT_EQ(Info(list), std::wstring(L"FPath: ") + c.kept + L", fSpecialFolder: SF_INVALID, Not Resolved yet");
    EXPECT_FALSE(list->IsResolved());
  }
  EXPECT_LE(sizeof(TKivItemIdList), 112U);
}

TEST_F(ItemIdList, TellsOfFilesAndFolders) {
  fTemp.MakeFile(LR"(a folder\some file.txt)", 10);
  const auto file = List(fTemp.PathOf(LR"(a folder\some file.txt)"));
  const auto folder = List(fTemp.PathOf(L"a folder\\"));
  const auto drive = List(LR"(C:\)");

  EXPECT_FALSE(file->IsInvalid());
  EXPECT_EQ(file->Name(), L"some file.txt");
  EXPECT_EQ(folder->Name(), L"a folder");
  EXPECT_EQ(drive->Name(), LR"(C:\)");
  EXPECT_EQ(file->DisplayName(dnfRelativeParsing), L"some file.txt");
  EXPECT_EQ(file->DisplayName(dnfPhysicalPath), fTemp.PathOf(LR"(a folder\some file.txt)"));
  EXPECT_EQ(file->DisplayName(dnfAbsoluteParsing), file->DisplayPath());
  EXPECT_EQ(drive->DisplayName(dnfPreferPhysical), LR"(C:\)");
  EXPECT_EQ(drive->Depth(), 2);
  EXPECT_EQ(file->Depth(), folder->Depth() + 1);
  EXPECT_FALSE(file->IsFolder());
  EXPECT_TRUE(folder->IsFolder());
  EXPECT_TRUE(folder->HasAttributes(SFGAO_FOLDER | SFGAO_LINK));
  EXPECT_TRUE(folder->HasAttributes(SFGAO_BROWSABLE));
  EXPECT_FALSE(file->HasAttributes(SFGAO_BROWSABLE));
  EXPECT_TRUE(List(file->Path())->HasAttributes(SFGAO_FILESYSTEM));
  EXPECT_FALSE(file->IsSlow());
  EXPECT_TRUE(file->IsAbsolute());
  EXPECT_EQ(file->SpecialFolder(), SF_FILESYSTEMFOLDER);
  EXPECT_EQ(file->LinkTarget(), file);
  // The levels of the long name are those of the list, the drives folder among them by name.
  const std::wstring all = file->DisplayName(dnfForExplorer);
  EXPECT_TRUE(all.ends_with(L"\\a folder\\some file.txt")) << Info(file);
  EXPECT_NE(Info(file, TItemIdListInfoLevel::Verbose).find(L", Valid, Depth: " + std::to_wstring(file->Depth())),
            std::wstring::npos);
}

TEST_F(ItemIdList, TakesListsApartAndTogether) {
  const auto folder = List(fTemp.Path());
  const auto file = List(fTemp.MakeFile(L"one.txt"));
  const int depth = file->Depth();

  EXPECT_TRUE(file->GetParent()->Equals(folder.Get(), ilcExact));
  EXPECT_EQ(file->GetStartItemIdList(0)->Depth(), 0);
  EXPECT_TRUE(file->GetStartItemIdList(0)->IsSpecialFolder(SF_DESKTOP));
  EXPECT_EQ(file->GetStartItemIdList(2)->Path(), fTemp.Path().substr(0, 3));
  for (const int n : {depth, depth + 1, 1'000}) {
    EXPECT_TRUE(file->GetStartItemIdList(n)->Equals(file.Get(), ilcExact)) << n;
  }
  const auto last = file->GetLastPart();
  EXPECT_EQ(last->Depth(), 1);
  EXPECT_TRUE(folder->Concat(last.Get())->Equals(file.Get(), ilcExact));
  EXPECT_EQ(folder->Concat(nullptr), folder);
  EXPECT_TRUE(folder->Concat(EmptyIdList().Get())->Equals(folder.Get(), ilcExact));
  const auto below = TKivItemIdList::Create(static_cast<TKivItemIdList*>(folder.Get())->GetShellFolder().Get(),
                                            last->WindowsPointer());
  EXPECT_TRUE(below->Equals(file.Get(), ilcExact));

  const auto raw = file->WindowsPointer();
  EXPECT_EQ(TKivItemIdList::GetElementNo(raw, 0), raw);
  EXPECT_EQ(TKivItemIdList::GetElementNo(raw, depth - 1), ILFindLastID(raw));
  EXPECT_EQ(TKivItemIdList::GetElementNo(raw, depth + 5), ILFindLastID(raw));
  const std::wstring negative =
      L"TKivItemIdList.GetStartItemIdList: The paramter pFragments must be greater or equal 0.";
  EXPECT_EQ(MessageOf<EInvalidArgument>([&] { file->GetStartItemIdList(-1); }), negative);
  EXPECT_EQ(MessageOf<EInvalidArgument>([&] { TKivItemIdList::GetElementNo(raw, -1); }), negative);
}

TEST_F(ItemIdList, OwnsWhatItIsTold) {
  PIDLIST_ABSOLUTE raw = nullptr;
  ASSERT_EQ(SHParseDisplayName(fTemp.Path().c_str(), nullptr, &raw, 0, nullptr), S_OK);
  const TUniqueItemIdList kept(raw);
  const auto foreign = TKivItemIdList::Create(kept.Get(), iloForeignOwned);
  const auto copy = TKivItemIdList::Create(kept.Get(), iloCopyMemory);
  const auto owner = TKivItemIdList::Create(ILClone(kept.Get()), iloOwnsMemory);
  EXPECT_EQ(foreign->WindowsPointer(), kept.Get());
  EXPECT_NE(copy->WindowsPointer(), kept.Get());
  for (const auto& list : {foreign, copy, owner}) EXPECT_EQ(list->Path(), fTemp.Path());

  const auto other = List(LR"(C:\)");
  foreign->SetPidl(ILClone(other->WindowsPointer()));
  EXPECT_EQ(foreign->Path(), LR"(C:\)");
  EXPECT_TRUE(foreign->Equals(other.Get(), ilcExact));
  EXPECT_EQ(foreign->SpecialFolder(), SF_FILESYSTEMFOLDER);
}

TEST_F(ItemIdList, AnswersForNothing) {
  fTemp.MakeFile(L"there.txt");
  const std::wstring gone = fTemp.PathOf(L"gone");
  const std::wstring lone = fTemp.PathOf(std::wstring(1, wchar_t{0xD800}) + L".txt");
  const ComPtr<IItemIdList> lists[] = {
      EmptyIdList(),
      TKivItemIdList::Create(PCIDLIST_ABSOLUTE{}, iloOwnsMemory),
      TKivItemIdList::CreateInvalidWithPath(gone),
      List(gone),
      List(lone),
      List(LR"(Q:\no\such\drive)"),
      List(L"x"),
      List(L"::{garbage"),
      List(LR"(\\?\)"),
      List(LR"(\\?\C:\no such thing)"),
      List(LR"(C:\*)"),
      List(fTemp.Path() + L"\\" + std::wstring(300, L'x')),
      List(std::wstring(40'000, L'y')),
      TKivItemIdList::Create(std::wstring_view(L"nothing here"), Desktop().Get()),
      TKivItemIdList::Create(static_cast<IShellFolder*>(nullptr), PCUIDLIST_RELATIVE{}),
      TKivItemIdList::Create(static_cast<IShellItem*>(nullptr)),
  };
  const auto file = List(fTemp.PathOf(L"there.txt"));
  for (const auto& list : lists) {
    SCOPED_TRACE(testing::PrintToString(Info(list).substr(0, 100)));
    EXPECT_TRUE(list->IsInvalid());
    EXPECT_TRUE(list->IsResolved());
    EXPECT_EQ(list->WindowsPointer(), nullptr);
    EXPECT_EQ(list->Depth(), 0);
    EXPECT_EQ(list->ShellItem(), nullptr);
    EXPECT_FALSE(list->IsFolder() || list->IsSlow() || list->Reload() || list->IsSpecialFolder(SF_DESKTOP));
    EXPECT_FALSE(list->HasAttributes(SFGAO_BROWSABLE) || list->HasAttributes(SFGAO_FILESYSTEM));
    EXPECT_EQ(list->DisplayName(dnfInFolder) + list->DisplayName(dnfForExplorer), L"");
    EXPECT_FALSE(list->Equals(file.Get(), ilcDisplay) || file->Equals(list.Get(), ilcDisplay));
    EXPECT_FALSE(list->Equals(file.Get(), ilcExact) || file->Equals(list.Get(), ilcExact));
    EXPECT_FALSE(list->Equals(nullptr, ilcExact) || list->IsParentOf(nullptr, true, ilcDisplay));
    EXPECT_EQ(list->CompareTo(nullptr, ilcDisplay), -1);
    EXPECT_FALSE(list->IsParentOf(file.Get(), true, ilcExact) || file->IsParentOf(list.Get(), true, ilcExact));
    EXPECT_EQ(list->LinkTarget(), list);
    EXPECT_TRUE(list->GetStartItemIdList(1)->IsInvalid() && list->GetLastPart()->IsInvalid());
    EXPECT_EQ(list.MaybeAs<IShellFolder>(), nullptr);
    EXPECT_EQ(list.MaybeAs<IStream>(), nullptr);
    const std::wstring data = L" Internal data: " + Info(list);
    EXPECT_EQ(MessageOf<EPathmereError>([&] { list->GetParent(); }),
              L"Could not get the parent ItemIdList for invalid ItemIdList: " + data);
    EXPECT_EQ(MessageOf<EPathmereError>([&] { static_cast<TKivItemIdList*>(list.Get())->GetShellFolder(); }),
              L"Could not retrieve IShellItem for ItemIdList " + data);
  }
  EXPECT_EQ(TKivItemIdList::CreateInvalidWithPath(gone)->DisplayPath(), gone);
  EXPECT_EQ(List(gone)->DisplayPath(), gone);
  EXPECT_EQ(EmptyIdList(), EmptyIdList());
  // A path that comes into being stays unseen: a list is resolved once.
  const auto early = List(gone);
  EXPECT_TRUE(early->IsInvalid());
  fTemp.MakeFolder(L"gone");
  EXPECT_TRUE(early->IsInvalid());
  EXPECT_FALSE(List(gone)->IsInvalid());
}

TEST_F(ItemIdList, HasWholeNamesOrIsInvalidWhereShellsEnd) {
  for (const std::size_t length : {250U, 259U, 260U, 261U, 280U}) {
    SCOPED_TRACE(length);
    const std::wstring name(length - fTemp.Path().size() - 1, L'n');
    const std::wstring path = fTemp.PathOf(name);
    ASSERT_TRUE(CreateDirectoryW((LR"(\\?\)" + path).c_str(), nullptr));
    const auto list = List(path);
    EXPECT_EQ(list->DisplayPath(), path);
    if (list->IsInvalid() && length >= MAX_PATH) continue;
    const auto copy = TKivItemIdList::Create(list->WindowsPointer(), iloCopyMemory);
    EXPECT_EQ(copy->Path(), path);
    EXPECT_EQ(copy->DisplayName(dnfInFolder), name);
    EXPECT_TRUE(copy->Reload());
  }
}

TEST_F(ItemIdList, KnowsTheDesktop) {
  const auto desktop = TKivItemIdList::CreateForSpecialFolder(SF_DESKTOP, true);
  EXPECT_EQ(desktop->Depth(), 0);
  EXPECT_FALSE(desktop->IsInvalid());
  EXPECT_TRUE(desktop->IsAbsolute());
  EXPECT_TRUE(desktop->IsSpecialFolder(SF_DESKTOP));
  EXPECT_EQ(desktop->SpecialFolder(), SF_DESKTOP);
  EXPECT_EQ(desktop.MaybeAs<IShellFolder>(), Desktop());
  EXPECT_EQ(MessageOf<EPathmereError>([&] { desktop->GetParent(); }),
            L"Could not get the parent ItemIdList for:  Internal data: " + Info(desktop));
  // Its own folder on disk is another object, though the platform gives both the same path.
  const auto directory = TKivItemIdList::CreateForSpecialFolder(SF_DESKTOPDIRECTORY, true);
  EXPECT_FALSE(desktop->Equals(directory.Get(), ilcExact));
  EXPECT_EQ(List(directory->Path())->SpecialFolder(), SF_DESKTOPDIRECTORY);
}

TEST_F(ItemIdList, ComparesWhatTheUserSeesOrTheListItself) {
  // A file in the desktop's folder is reached from the desktop, and through its drive.
  const auto directory = TKivItemIdList::CreateForSpecialFolder(SF_DESKTOPDIRECTORY, true);
  const std::wstring name = L"kiv compare " + std::to_wstring(GetCurrentProcessId()) + L".txt";
  const std::wstring path = directory->Path() + L"\\" + name;
  std::ofstream(std::filesystem::path(path)).put('x');
  const auto on_desktop = TKivItemIdList::Create(std::wstring_view(name), Desktop().Get());
  const auto on_drive = List(L"C:")->Concat(
      TKivItemIdList::Create(std::wstring_view(path.substr(3)),
                             static_cast<TKivItemIdList*>(List(L"C:").Get())->GetShellFolder().Get())
          .Get());
  ASSERT_EQ(on_desktop->Depth(), 1);
  ASSERT_GT(on_drive->Depth(), 2);
  EXPECT_FALSE(on_desktop->IsAbsolute());
  EXPECT_TRUE(on_desktop->Equals(on_drive.Get(), ilcDisplay));
  EXPECT_EQ(on_desktop->CompareTo(on_drive.Get(), ilcDisplay), 0);
  EXPECT_FALSE(on_desktop->Equals(on_drive.Get(), ilcExact));
  EXPECT_TRUE(on_desktop->Equals(on_desktop.Get(), ilcExact));
  // A folder is the user's parent of what lies below it on another road.
  EXPECT_TRUE(directory->IsParentOf(on_desktop.Get(), false, ilcDisplay));
  std::filesystem::remove(path);

  const auto folder = List(fTemp.MakeFolder(L"a"));
  const auto file = List(fTemp.MakeFile(LR"(a\x)"));
  const auto neighbour = List(fTemp.MakeFile(LR"(a b\x)"));
  for (const auto how : {ilcDisplay, ilcExact}) {
    EXPECT_TRUE(folder->IsParentOf(file.Get(), false, how));
    EXPECT_FALSE(folder->IsParentOf(neighbour.Get(), true, how));
    EXPECT_FALSE(folder->IsParentOf(folder.Get(), false, how));
    EXPECT_TRUE(folder->IsParentOf(folder.Get(), true, how));
    EXPECT_FALSE(file->Equals(neighbour.Get(), how));
  }
  EXPECT_TRUE(folder->Equals(List(fTemp.PathOf(L"A\\")).Get(), ilcDisplay));
}

TEST_F(ItemIdList, SeesWhatHasGoneOrChanged) {
  const std::wstring path = fTemp.MakeFile(L"here.txt", 10);
  const auto file = List(path);
  const auto folder = List(fTemp.Path());
  const auto drives = List(L"");
  const auto raw = file->WindowsPointer();
  EXPECT_TRUE(file->Reload() && folder->Reload() && drives->Reload());
  // Nothing about it has changed: what was borrowed stays.
  EXPECT_EQ(file->WindowsPointer(), raw);
  const auto item = file->ShellItem();
  EXPECT_EQ(TKivItemIdList::Create(item.Get())->Path(), path);
  EXPECT_TRUE(TKivItemIdList::Create(item.Get())->Reload());

  // A name that file calls would take for another.
  const std::wstring odd = LR"(\\?\)" + fTemp.PathOf(L"odd. ");
  CloseHandle(CreateFileW(odd.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
  const auto bound = folder.MaybeAs<IShellFolder>();
  ComPtr<IEnumIDList> objects;
  ASSERT_EQ(bound->EnumObjects(nullptr, SHCONTF_NONFOLDERS, &objects), S_OK);
  int seen = 0;
  for (PITEMID_CHILD child = nullptr; objects->Next(1, &child, nullptr) == S_OK; ++seen) {
    const auto list = TKivItemIdList::Create(bound.Get(), child);
    ILFree(child);
    const auto item = list->ShellItem();
    TUniqueItemIdList found;
    EXPECT_EQ(Revalidate(item.Get(), found), S_OK) << testing::PrintToString(list->Path());
    EXPECT_TRUE(found);
    if (list->Name() == L"here.txt") continue;
    DeleteFileW(odd.c_str());
    EXPECT_TRUE(FAILED(Revalidate(item.Get(), found)));
  }
  EXPECT_EQ(seen, 2);

  std::filesystem::resize_file(path, 5'000);
  EXPECT_TRUE(file->Reload());
  EXPECT_FALSE(file->IsInvalid());
  std::filesystem::remove(path);
  EXPECT_FALSE(file->Reload());
  EXPECT_FALSE(file->IsInvalid()) << "the old list stands";
  EXPECT_EQ(file->Path(), path);
}

TEST_F(ItemIdList, OpensFilesAndFolders) {
  const std::wstring path = fTemp.PathOf(L"content.txt");
  std::ofstream(std::filesystem::path(path)) << "hello";
  const auto list = List(path);
  const auto stream = list.MaybeAs<IStream>();
  ASSERT_TRUE(stream);
  char text[16]{};
  ULONG read = 0;
  stream->Read(text, sizeof(text), &read);
  EXPECT_EQ(std::string(text, read), "hello");
  EXPECT_TRUE(list.MaybeAs<ISequentialStream>());
  EXPECT_EQ(list.MaybeAs<IShellFolder>(), nullptr);
  // Others may write to the file while it is read.
  EXPECT_TRUE(std::ofstream(std::filesystem::path(path), std::ios::app) << "!");

  const auto folder = List(fTemp.Path());
  EXPECT_EQ(folder.MaybeAs<IStream>(), nullptr);
  const auto bound = folder.MaybeAs<IShellFolder>();
  ASSERT_TRUE(bound);
  // What is parsed in a folder is relative to it.
  const ComPtr<IItemIdList> child = TKivItemIdList::Create(std::wstring_view(L"content.txt"), bound.Get());
  EXPECT_EQ(child->Depth(), 1);
  EXPECT_EQ(folder->Concat(child.Get())->Path(), path);
}

TEST_F(ItemIdList, ChangesFoldersThroughTheirStorage) {
  ComPtr<IStorage> storage;
  ComPtr<IStorage> made;
  ASSERT_EQ(GetFolderStorage(List(fTemp.Path()).Get(), storage), S_OK);
  EXPECT_EQ(storage->CreateStorage(L"new", STGM_READWRITE, 0, 0, &made), S_OK);
  EXPECT_TRUE(List(fTemp.PathOf(L"new"))->IsFolder());
  EXPECT_EQ(storage->CreateStorage(L"new", STGM_READWRITE, 0, 0, &made), STG_E_FILEALREADYEXISTS);
  EXPECT_TRUE(FAILED(GetFolderStorage(List(fTemp.MakeFile(L"file")).Get(), storage)));
  EXPECT_EQ(GetFolderStorage(EmptyIdList().Get(), storage), E_NOINTERFACE);
  EXPECT_EQ(storage, nullptr);
}

TEST_F(ItemIdList, MakesListsOfWhatIsNotThere) {
  const std::wstring path = fTemp.PathOf(LR"(not there\file.txt)");
  const auto simple = TKivItemIdList::CreateSimpleIdList(path + L"\\");
  EXPECT_TRUE(simple->IsSimple());
  EXPECT_EQ(simple->Path(), path);
  EXPECT_EQ(simple->DisplayName(dnfPath), path);
  EXPECT_EQ(simple->DisplayPath(), path);
  EXPECT_EQ(TKivItemIdList::CreateSimpleIdList(LR"(C:\)")->Path(), LR"(C:\)");
}

TEST_F(ItemIdList, FindsSpecialFolders) {
  const auto drives = List(L"");
  EXPECT_TRUE(drives->Equals(List(Computer).Get(), ilcExact));
  EXPECT_EQ(drives->SpecialFolder(), SF_DRIVES);
  EXPECT_EQ(drives->Path(), L"");
  EXPECT_EQ(drives->Name(), L"");
  EXPECT_TRUE(drives->IsAbsolute());
  EXPECT_TRUE(drives->IsFolder());
  const auto network = List(LR"(\\*)");
  EXPECT_TRUE(network->Equals(TKivItemIdList::CreateForSpecialFolder(SF_NETWORK, true).Get(), ilcExact));
  EXPECT_EQ(network->SpecialFolder(), SF_NETWORK);
  EXPECT_TRUE(network->IsSlow() && network->Reload());

  EXPECT_FALSE(GetPathFromSpecialFolder(SF_PERSONAL).ends_with(L'\\'));
  const auto windows = List(GetPathFromSpecialFolder(SF_WINDOWS));
  EXPECT_EQ(windows->SpecialFolder(), SF_WINDOWS);
  EXPECT_TRUE(windows->IsSpecialFolder(SF_WINDOWS));
  EXPECT_FALSE(windows->IsSpecialFolder(SF_SYSTEM));
  const auto unasked = List(windows->Path());
  EXPECT_FALSE(unasked->IsSpecialFolder(SF_SYSTEM));
  EXPECT_TRUE(unasked->IsSpecialFolder(SF_WINDOWS));
  EXPECT_EQ(static_cast<TKivItemIdList*>(windows.Get())->TestForSpecialFolder({SF_SYSTEM, SF_FONTS}), SF_UNKNOWN);
  EXPECT_TRUE(TKivItemIdList::IsParentOf(SF_WINDOWS, List(windows->Path() + LR"(\system32)").Get(), false));
  EXPECT_FALSE(TKivItemIdList::IsParentOf(SF_UNKNOWN, windows.Get(), true));
  // An item's own list takes the first value for granted.
  EXPECT_EQ(TKivItemIdList::Create(windows->ShellItem().Get())->SpecialFolder(), SF_FILESYSTEMFOLDER);

  const auto make = [](TKivShellFolder folder, bool cached) {
    return TKivItemIdList::CreateForSpecialFolder(folder, cached);
  };
  EXPECT_EQ(make(SF_WINDOWS, true), make(SF_WINDOWS, true));
  EXPECT_NE(make(SF_WINDOWS, false), make(SF_WINDOWS, true));
  EXPECT_NE(make(SF_DRIVES, true), make(SF_DRIVES, true));
  EXPECT_NE(make(SF_QUICKACCESS, true), make(SF_QUICKACCESS, true));
  EXPECT_TRUE(make(SF_FILESYSTEMFOLDER, true)->IsInvalid());
  EXPECT_TRUE(make(SF_INVALID, false)->IsInvalid());
  EXPECT_EQ(TKivItemIdList::CreateForSpecialFolder(std::wstring_view(L"no such name")), nullptr);
  const std::wstring shown = TKivShellFolderHelper::ToString(SF_DRIVES);
  for (const std::wstring& name : {shown, std::wstring(L"::{20d04fe0-3aea-1069-a2d8-08002b30309d}")}) {
    const auto by_name = TKivItemIdList::CreateForSpecialFolder(std::wstring_view(name));
    ASSERT_TRUE(by_name);
    EXPECT_EQ(by_name->SpecialFolder(), SF_DRIVES);
  }
}

} // namespace
} // namespace kiv
