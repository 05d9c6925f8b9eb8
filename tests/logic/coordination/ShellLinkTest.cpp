#include "LinkedControl.h"

#include <coordination/ShellQuestions.h>
#include <doubles/PlainItemIdList.h>
#include <doubles/SimulatedDisk.h>
#include <framework/ComponentText.h>
#include <framework/Exceptions.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace kiv::test {
namespace {

ComPtr<IItemIdList> At(const wchar_t* path, int variant = 0) {
  return Make<PlainItemIdList>(path, variant);
}

// Lists that answer at once, on this thread.
class TAnswersAtOnce final : public IShellQuestions {
public:
  bool IsPlainlySame(IItemIdList& first, IItemIdList& second) override { return &first == &second; }
  bool Ask(std::function<void()> question, std::function<void()>) override {
    question();
    return true;
  }
};

class ShellLink : public testing::Test {
protected:
  ShellLink() {
    fLink->SetOnChange([this](TPersistent*, IItemIdList* folder) {
      fNotes += L"change" + (folder ? folder->Path() : std::wstring()) + (fLink->GetEnabled() ? L" " : L"! ");
    });
    fLink->SetOnSelectionChanged([this](TPersistent*, IItemIdList* file) {
      fNotes += L"file" + (file ? file->Path() : std::wstring()) + (fLink->GetEnabled() ? L" " : L"! ");
    });
  }
  std::wstring Take() { return std::exchange(fNotes, {}); }
  std::wstring History() {
    std::wstring text;
    auto& link = *fLink;
    const int position = link.GetPosition();
    for (int i = 0; i < link.GetCount(); ++i) {
      link.SetPosition(i);
      text += (i == position ? L">" : L"") + link.GetCurrentFolderItemIDList()->Path();
    }
    link.SetPosition(position);
    return text;
  }

  TAnswersAtOnce fAnswers;
  const ScopedShellQuestions fScope{fAnswers};
  std::wstring fNotes;
  std::unique_ptr<TKivShellLink> fLink = std::make_unique<TKivShellLink>();
  TLinkedControl fOne{fLink.get(), L"1", &fNotes};
  TLinkedControl fTwo{fLink.get(), L"2", &fNotes};
};

TEST_F(ShellLink, TellsAllButTheSenderInOrder) {
  fLink->PathChanged(&fTwo, At(L"A").Get());
  EXPECT_EQ(Take(), L"1pA changeA ");
  fLink->PathChanged(&fOne, At(L"a").Get());
  EXPECT_EQ(Take(), L"changeA ") << "the same: nobody but the application";
  fLink->PathChanged(nullptr, At(L"A", 1).Get());
  EXPECT_EQ(Take(), L"1pA 2pA changeA ") << "not exactly the same";
  fLink->FileChanged(&fOne, At(L"A").Get(), At(L"x").Get());
  EXPECT_EQ(Take(), L"2fx fileA\\x! ");
  fLink->FileChanged(&fTwo, At(L"A", 2).Get(), At(L"X", 2).Get());
  EXPECT_EQ(Take(), L"") << "the same for display";
  fLink->FileChanged(&fOne, At(L"A").Get(), nullptr);
  EXPECT_EQ(Take(), L"2f file! ");
  fLink->FileChanged(&fOne, nullptr, At(L"x").Get());
  EXPECT_EQ(Take(), L"");
  fLink->FileChanged(&fOne, At(L"A").Get(), At(L"x").Get());
  fLink->PathChanged(&fOne, nullptr);
  Take();
  EXPECT_FALSE(fLink->GetCurrentFile());
  fLink->PathChanged(&fOne, nullptr);
  EXPECT_EQ(Take(), L"change ");
  fTwo.filters = false;
  fLink->FilterChanged(nullptr, L"x");
  fLink->SelectAll(&fOne);
  fLink->SelectAll();
  fLink->Refresh(&fTwo, TRefreshLevel::rfSmart, At(L"A").Get());
  fLink->Refresh(TRefreshLevel::rfFull);
  EXPECT_EQ(Take(), L"1*x 2a 1a 2a 11A 10 20 ");
}

TEST_F(ShellLink, AsksWhoCanGoUp) {
  fTwo.leads = true;
  fLink->GoUp(&fOne);
  fLink->GoUp(&fTwo);
  fLink->GoUp();
  fOne.leads = true;
  fLink->GoUp();
  EXPECT_EQ(Take(), L"2u 1u 2u 1u 2u 1u ");
}

TEST_F(ShellLink, IgnoresWhatControlsReportWhileTheyAreTold) {
  fOne.whenTold = [&] {
    fLink->PathChanged(&fOne, At(L"B").Get());
    fLink->FileChanged(&fOne, At(L"B").Get(), At(L"y").Get());
    fLink->Refresh(TRefreshLevel::rfFull);
    fLink->SelectAll(&fOne);
    fLink->GoUp(&fOne);
  };
  fLink->PathChanged(&fTwo, At(L"A").Get());
  EXPECT_EQ(Take(), L"1pA changeA ");
  fOne.whenTold = nullptr;
  fLink->SetEnabled(false);
  fLink->PathChanged(&fTwo, At(L"C").Get());
  EXPECT_EQ(Take(), L"");
  EXPECT_EQ(History(), L">A");
  fLink->FilterChanged(&fTwo, L"f");
  EXPECT_EQ(Take(), L"1*f ") << "even so";
  EXPECT_FALSE(fLink->GetEnabled());
}

TEST_F(ShellLink, SurvivesControlsThatComeAndGoWhileTheyAreTold) {
  std::unique_ptr<TLinkedControl> joining;
  auto leaving = std::make_unique<TLinkedControl>(fLink.get(), L"3", &fNotes);
  fOne.whenTold = [&] {
    leaving.reset();
    if (!joining) joining = std::make_unique<TLinkedControl>(fLink.get(), L"4", &fNotes);
  };
  fLink->PathChanged(nullptr, At(L"A").Get());
  EXPECT_EQ(Take(), L"1pA 2pA changeA ");
  fOne.whenTold = [&] { fOne.SetShellLink(nullptr); };
  fLink->FilterChanged(nullptr, L"");
  fLink->PathChanged(nullptr, At(L"B").Get());
  EXPECT_EQ(Take(), L"1* 2* 4* 2pB 4pB changeB ");
  fLink->RegisterShellControl(&fTwo);
  fLink->RegisterShellControl(nullptr);
  std::vector<std::unique_ptr<TLinkedControl>> many;
  for (int i = 0; i < 50; ++i) many.push_back(std::make_unique<TLinkedControl>(fLink.get(), L"m", &fNotes));
  fLink->SelectAll();
  EXPECT_EQ(Take().size(), 52U * 3);
  many[25]->whenTold = [&] { fLink.reset(); };
  fLink->PathChanged(nullptr, At(L"C").Get());
  EXPECT_FALSE(fLink);
  EXPECT_EQ(Take().size(), 28U * 4) << "nobody behind it, and no event";
  EXPECT_FALSE(many[0]->GetShellLink()) << "the link let all go";
}

TEST_F(ShellLink, AsksTheApplicationOnceForAFolder) {
  std::wstring asked;
  bool refuse = true;
  fLink->SetOnNavigating([&](TPersistent* sender, IItemIdList* folder, bool& cancel) {
    asked += folder->Path() + (sender == &fOne ? L"1" : L"-");
    cancel = refuse;
  });
  EXPECT_FALSE(fLink->CanNavigate(&fOne, At(L"A").Get()));
  fLink->PathChanged(&fOne, At(L"A", 1).Get());
  EXPECT_EQ(asked, L"A1");
  EXPECT_EQ(Take(), L"");
  refuse = false;
  fLink->PathChanged(nullptr, At(L"A").Get());
  EXPECT_EQ(asked, L"A1") << "what was refused stays so";
  fLink->PathChanged(nullptr, At(L"B").Get());
  fLink->PathChanged(nullptr, At(L"A").Get());
  EXPECT_EQ(asked, L"A1B-A-");
  EXPECT_EQ(History(), L"B>A");
  refuse = true;
  Take();
  fLink->MoveBack(1);
  EXPECT_EQ(Take(), L"");
  EXPECT_EQ(History(), L">BA") << "the history has moved, and no control has followed";
}

TEST_F(ShellLink, KeepsAHistoryAsBrowsersDo) {
  const auto go = [&](const wchar_t* path) { fLink->PathChanged(nullptr, At(path).Get()); };
  EXPECT_FALSE(fLink->IsMovePossible(-1) || fLink->IsMovePossible(0) || fLink->IsMovePossible(1));
  fLink->Clear();
  for (const wchar_t* path : {L"A", L"B", L"B", L"C"}) go(path);
  EXPECT_EQ(History(), L"AB>C");
  fLink->MoveForward(1);
  fLink->MoveBack(200);
  EXPECT_EQ(History(), L"AB>C") << "not as many";
  Take();
  fLink->MoveBack(2);
  EXPECT_EQ(Take(), L"1pA 2pA changeA ");
  EXPECT_EQ(History(), L">ABC");
  go(L"D");
  EXPECT_EQ(History(), L"A>D");
  fLink->MoveBack(1);
  fLink->MoveForward(1);
  EXPECT_EQ(History(), L"A>D");
  fLink->SetPosition(-1);
  fLink->SetPosition(2);
  EXPECT_EQ(History(), L"A>D");
  fLink->Clear();
  EXPECT_EQ(History(), L">D");
  fLink->Add(Make<PlainItemIdList>(L"x", 0, SF_INVALID).Get());
  fLink->Add(nullptr);
  EXPECT_EQ(History(), L">D");
}

TEST_F(ShellLink, ForgetsFoldersThatAreGone) {
  const auto history = Make<TPidlHistory>();
  std::vector<ComPtr<PlainItemIdList>> folders;
  for (int i = 0; i < 10'000; ++i) {
    folders.push_back(Make<PlainItemIdList>(std::to_wstring(i)));
    history->Add(folders.back().Get());
    if (i % 2 == 1) folders.back()->Vanish();
  }
  EXPECT_EQ(history->GetCount(), 5001) << "each but the last was current when the next one came";
  EXPECT_EQ(history->GetPaths(0) + L' ' + history->GetPaths(1), L"0 2");
  EXPECT_EQ(history->GetPaths(5000), L"9999");
  EXPECT_THROW(history->GetPaths(5001), EListError);
  for (int i = 0; i < 20; ++i) history->MoveBack(250);
  EXPECT_EQ(history->GetPosition(), 0);
  folders[0]->Vanish();
  history->Add(folders[2].Get());
  EXPECT_EQ(history->GetCount(), 1);
}

// Folders that take their time over an answer, until the test lets it come.
class TSlowAnswers final : public IShellQuestions {
public:
  bool IsPlainlySame(IItemIdList& first, IItemIdList& second) override { return &first == &second; }
  bool Ask(std::function<void()> question, std::function<void()> late) override {
    open.push_back([question = std::move(question), late = std::move(late)] {
      question();
      if (late) late();
    });
    return false;
  }
  void Answer() {
    for (const auto& answer : std::exchange(open, {})) answer();
  }
  std::vector<std::function<void()>> open;
};

TEST_F(ShellLink, GoesOnWithoutAnAnswerAndTakesItLate) {
  TSlowAnswers answers;
  const ScopedShellQuestions scope(answers);
  const auto go = [&](const ComPtr<PlainItemIdList>& list) { fLink->PathChanged(nullptr, list.Get()); };
  const auto a = Make<PlainItemIdList>(L"A");
  const auto b = Make<PlainItemIdList>(L"B");
  for (const auto& list : {a, b, Make<PlainItemIdList>(L"b"), b, Make<PlainItemIdList>(L"x", 0, SF_INVALID)}) go(list);
  EXPECT_EQ(Take(), L"1pA 2pA changeA 1pB 2pB changeB 1pb 2pb changeb 1pB 2pB changeB 1px 2px changex ");
  EXPECT_EQ(History(), L"ABbB>x");
  answers.Answer();
  EXPECT_EQ(History(), L"A>B") << "repeats, and what was nothing, are gone";
  fLink->PathChanged(nullptr, b.Get());
  Take();
  b->Vanish();
  go(b);
  EXPECT_EQ(Take(), L"changeB ") << "the same list is no question";
  EXPECT_EQ(History(), L"A>B");

  a->Vanish();
  fLink->MoveBack(1);
  go(Make<PlainItemIdList>(L"C"));
  fLink->MoveBack(1);
  answers.Answer();
  EXPECT_EQ(History(), L">AC") << "the user is there again";
  fLink->MoveForward(1);
  go(Make<PlainItemIdList>(L"D"));
  fLink->Clear();
  answers.Answer();
  EXPECT_EQ(History(), L">D");
}

TEST_F(ShellLink, OwnsTheSelectionThatItsControlsShow) {
  SimulatedFileSystem files;
  files.AddDrive(L'C');
  files.MakeFile(L"C:\\a", 1);
  files.MakeFile(L"C:\\b", 1);
  SimulatedDisk disk(files);
  const ScopedSelectionDisk scope(disk);
  auto* const list = new TKivSelectionList;
  fLink->SetSelectionList(list);
  list->AddPathToSelection(L"C:\\a");
  EXPECT_EQ(Take(), L"12C:\\a 22C:\\a ");
  list->BeginUpdate();
  list->AddPathToSelection(L"C:\\b");
  list->EndUpdate();
  list->EndUpdate();
  EXPECT_EQ(Take(), L"");
  list->RemovePathFromSelection(L"C:\\");
  EXPECT_EQ(Take(), L"12C:\\ 22C:\\ ");
  list->AddPathToSelection(L"C:\\a");
  const auto copy = LoadComponentText(SaveComponentText(*fLink));
  EXPECT_EQ(dynamic_cast<TKivShellLink&>(*copy).GetSelectionList()->ToString(), L"C:\\a\r\n");
  delete list;
  EXPECT_FALSE(fLink->GetSelectionList());
}

} // namespace
} // namespace kiv::test
