#include "LinkedControl.h"
#include "SelectionFixture.h"

#include <framework/Exceptions.h>

namespace kiv::test {
namespace {

class CoordinationOddities : public SelectionTest {
public:
  void ARootInsideOfAnEntryGraysThatPath() {
    MakeAll({L"C:\\a\\f", L"S:\\C:\\a\\x", L"S:\\C:\\a\\y"});
    TKivSelectionList list;
    list.AddPathToSelection(L"\\\\srv\\share\\C:\\a\\x");
    EXPECT_EQ(list.IsPathSelected(L"C:\\a"), ssGrayed);
  }

  void WhatIsGoneCantBeUnselectedByItsPath() {
    MakeAll({L"C:\\g", L"C:\\h"});
    TKivSelectionList list;
    list.AddPathToSelection(L"C:\\g");
    fFiles.Delete(L"C:\\g");
    list.RemovePathFromSelection(L"C:\\g");
    EXPECT_EQ(EntriesOf(list), TTexts{L"C:\\g"});
  }

  void ADissolvedFolderCountsAsOneHoweverDeep() {
    MakeAll({L"C:\\1\\2\\3\\f", L"C:\\1\\2\\3\\g"});
    TKivSelectionList list;
    list.AddPathToSelection(L"C:\\1");
    list.RemovePathFromSelection(L"C:\\1\\2\\3\\f");
    EXPECT_EQ(list.GetFolderCount(), -1) << "nobody measures here";
  }

  void AControlThatRaisesLeavesTheGuardDown() {
    std::wstring notes;
    TKivShellLink link;
    TLinkedControl one(&link, L"1", &notes);
    TLinkedControl two(&link, L"2", &notes);
    one.whenTold = [] { throw EAbort(); };
    const auto folder = Make<PlainItemIdList>(L"A");
    EXPECT_THROW(link.PathChanged(nullptr, folder.Get()), EAbort);
    EXPECT_EQ(notes, L"1pA ");
    EXPECT_FALSE(link.GetEnabled());
    link.SetEnabled(true); // what an application does about it
    EXPECT_EQ(link.GetCount(), 1) << "the folder is current all the same";
  }

  void AMoveThatRaisesKeepsFoldersOutOfTheHistory() {
    std::wstring notes;
    TKivShellLink link;
    TLinkedControl control(&link, L"1", &notes);
    for (const wchar_t* path : {L"A", L"B"}) link.PathChanged(nullptr, Make<PlainItemIdList>(path).Get());
    control.whenTold = [] { throw EAbort(); };
    EXPECT_THROW(link.MoveBack(1), EAbort);
    control.whenTold = nullptr;
    link.SetEnabled(true);
    link.PathChanged(nullptr, Make<PlainItemIdList>(L"C").Get());
    EXPECT_EQ(link.GetCount(), 2);
    link.MoveForward(1); // the next move that ends well opens the history again
    link.PathChanged(nullptr, Make<PlainItemIdList>(L"D").Get());
    EXPECT_EQ(link.GetCount(), 3);
  }

  void AMoveByMoreThanThereIsTellsTheApplication() {
    TKivShellLink link;
    for (const wchar_t* path : {L"A", L"B"}) link.PathChanged(nullptr, Make<PlainItemIdList>(path).Get());
    int changes = 0;
    link.SetOnChange([&](TPersistent*, IItemIdList*) { ++changes; });
    link.MoveBack(9);
    EXPECT_EQ(link.GetPosition(), 1);
    EXPECT_EQ(changes, 1);
  }
};

// What looks like a mistake and is relied upon: see docs/selection.md and docs/link.md. A change is a decision, not a
// repair.
TEST_F(CoordinationOddities, Hold) {
  const struct {
    const char* what;
    void (CoordinationOddities::*check)();
  } oddities[] = {
      {"a path is grayed by an entry that has it in the middle",
       &CoordinationOddities::ARootInsideOfAnEntryGraysThatPath},
      {"an entry that is gone from the disk stays until it is cleared",
       &CoordinationOddities::WhatIsGoneCantBeUnselectedByItsPath},
      {"the folders on the way to what is unselected count as one",
       &CoordinationOddities::ADissolvedFolderCountsAsOneHoweverDeep},
      {"a control that raises leaves the guard down", &CoordinationOddities::AControlThatRaisesLeavesTheGuardDown},
      {"a move that ends in an exception keeps folders out of the history",
       &CoordinationOddities::AMoveThatRaisesKeepsFoldersOutOfTheHistory},
      {"a move by more steps than there are moves nothing and fires OnChange",
       &CoordinationOddities::AMoveByMoreThanThereIsTellsTheApplication},
  };
  for (const auto& oddity : oddities) {
    SCOPED_TRACE(oddity.what);
    (this->*oddity.check)();
  }
}

} // namespace
} // namespace kiv::test
