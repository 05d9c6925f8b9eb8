#include "NotifierFixture.h"

#include <framework/ComponentText.h>
#include <framework/Exceptions.h>
#include <platform/MainThread.h>
#include <threading/WorkerPool.h>

#include <functional>
#include <thread>

namespace kiv {
namespace {

using test::ListOf;

class NotifierWatches : public test::TNotifierFixture {};

TEST_F(NotifierWatches, AreMadeOnceAndSurviveStopAndStart) {
  TKivShellChangeNotifier& notifier = *fNotifier;
  notifier.AddPath(L"C:\\a");
  notifier.AddPath(L"c:\\A\\");
  notifier.AddPath(L"?nothing");
  notifier.AddItemIdList(ListOf(L"C:\\b").Get(), false, {neFileDelete});
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* C:\\b ");
  EXPECT_EQ(fPlatform.registrations[1].events, DefaultNotificationEvents);
  EXPECT_EQ(fPlatform.registrations[2].events, TNotificationEvents{neFileDelete});
  EXPECT_EQ(notifier.GetDirectories().GetDelimitedText(), L"C:\\a;C:\\b");
  try {
    notifier.AddItemIdList(nullptr);
    ADD_FAILURE();
  } catch (const EInvalidArgument& e) {
    EXPECT_EQ(e.Message(), L"TKivShellChangeNotifier.AddItemIdList(): Parameter pItemIdList must not be nil.");
  }

  notifier.Start();
  notifier.Stop();
  EXPECT_EQ(fPlatform.Registered(), L"");
  EXPECT_EQ(notifier.GetCount(), 2);
  notifier.SetEventFilter({neFileChange});
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* C:\\b ") << "a new filter starts";
  notifier.SetRecursive(false);
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* C:\\b ") << "each keeps its own way";
  EXPECT_EQ(fPlatform.registrations.rbegin()->second.events, TNotificationEvents{neFileDelete});
  notifier.AddItemIdList(ListOf(L"C:\\c").Get());
  EXPECT_EQ(fPlatform.registrations.rbegin()->second.events, TNotificationEvents{neFileChange});
  EXPECT_FALSE(fPlatform.registrations.rbegin()->second.recursive);

  notifier.SetEnabled(false);
  notifier.AddPath(L"C:\\d");
  EXPECT_EQ(fPlatform.Registered(), L"");
  notifier.SetEnabled(true);
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* C:\\b C:\\c C:\\d ");
  notifier.RemovePath(L"C:\\A");
  notifier.RemovePath(L"C:\\none");
  EXPECT_EQ(fPlatform.Registered(), L"C:\\b C:\\c C:\\d ");
  notifier.Clear();
  EXPECT_EQ(fPlatform.Registered(), L"");
  EXPECT_EQ(notifier.GetDirectories().GetCount(), 0);
}

TEST_F(NotifierWatches, ThatFailAreTriedAgainByStart) {
  fPlatform.fails = true;
  fNotifier->AddPath(L"C:\\a");
  EXPECT_EQ(fNotifier->GetCount(), 1);
  fPlatform.fails = false;
  fNotifier->Start();
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* ");
}

TEST_F(NotifierWatches, CanBeDoubledAndFollowLinks) {
  TKivShellChangeNotifier notifier(false);
  notifier.AddPath(L"C:\\a");
  notifier.AddPath(L"C:\\a");
  const auto link = ListOf(L"C:\\l.lnk");
  link->target = ListOf(L"D:\\t");
  notifier.Add({link});
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* C:\\a* C:\\l.lnk* D:\\t* ");
  notifier.RemovePath(L"C:\\a");
  EXPECT_EQ(fPlatform.Registered(), L"C:\\l.lnk* D:\\t* ");
}

TEST_F(NotifierWatches, MayChangeWhileOneBegins) {
  fNotifier->SetEnabled(false);
  for (const wchar_t* path : {L"C:\\a", L"C:\\b", L"C:\\c"}) fNotifier->AddPath(path);
  fPlatform.meanwhile = [this] {
    fNotifier->RemovePath(L"C:\\a");
    fNotifier->RemovePath(L"C:\\b");
    fNotifier->AddPath(L"C:\\d");
  };
  fNotifier->SetEnabled(true);
  EXPECT_EQ(fPlatform.Registered(), L"C:\\c* C:\\d* ");
  fPlatform.meanwhile = [this] { fNotifier->AddPath(L"C:\\e"); };
  fNotifier->AddPath(L"C:\\e");
  EXPECT_EQ(fPlatform.Registered(), L"C:\\c* C:\\d* C:\\e* ");
  fPlatform.meanwhile = [this] { fNotifier->Restart(); };
  fNotifier->Stop();
  fNotifier->Start();
  EXPECT_EQ(fPlatform.Registered(), L"C:\\c* C:\\d* C:\\e* ");
  fPlatform.meanwhile = [this] { fNotifier->Stop(); };
  fNotifier->Stop();
  fNotifier->Start();
  EXPECT_EQ(fPlatform.Registered(), L"");

  const std::function<void()> ways[] = {[this] { fNotifier->Start(); }, [this] { fNotifier->AddPath(L"C:\\a"); },
                                        [this] {
                                          fNotifier->Add({ListOf(L"C:\\a"), ListOf(L"C:\\b")});
                                        },
                                        [this] {
                                          fNotifier->BeginLoading();
                                          fNotifier->EndLoading();
                                        },
                                        [this] {
                                          TStringList paths;
                                          paths.SetDelimitedText(L"C:\\x;C:\\y");
                                          fNotifier->GetDirectories().Assign(&paths);
                                        }};
  for (const auto& way : ways) {
    fPlatform.meanwhile = [this] { fNotifier.reset(); };
    way();
    EXPECT_EQ(fNotifier, nullptr);
    EXPECT_EQ(fPlatform.Registered(), L"");
    fNotifier = std::make_unique<TKivShellChangeNotifier>();
  }
}

TEST_F(NotifierWatches, DontWaitForTheTargetOfALinkThatDoesNotAnswer) {
  const auto link = ListOf(L"\\\\dead\\l.lnk");
  link->target = ListOf(L"D:\\t");
  link->reload = [] { return false; };
  fNotifier->AddItemIdList(link.Get());
  EXPECT_EQ(fPlatform.lastLimit, 1000U);
  EXPECT_EQ(fPlatform.Registered(), L"\\\\dead\\l.lnk* ");
}

TEST_F(NotifierWatches, WaitForWhatDoesNotAnswerInTime) {
  const auto settle = [] {
    while (TWorkerPool::GlobalInstance().GetWorkItemsActive()) std::this_thread::yield();
    MainThread::CheckSynchronize();
  };
  Listen(*fNotifier);
  fPlatform.isSilent = true;
  fNotifier->AddPath(L"\\\\dead\\a");
  EXPECT_TRUE(fNotifier->GetCount() == 0 && fPlatform.Registered().empty());
  settle();
  EXPECT_EQ(fPlatform.Registered(), L"\\\\dead\\a* ");
  EXPECT_EQ(Told(), L"15:\\\\dead\\a [\\\\dead\\a] ") << "what was listed before it was watched may be old";
  // One that is removed, and one of a notifier that goes.
  fPlatform.isSilent = true;
  fNotifier->AddPath(L"\\\\dead\\b");
  fNotifier->RemovePath(L"\\\\dead\\b");
  settle();
  EXPECT_EQ(fPlatform.Registered(), L"\\\\dead\\a* ");
  fPlatform.isSilent = true;
  fNotifier->AddPath(L"\\\\dead\\c");
  fNotifier.reset();
  settle();
  EXPECT_EQ(fPlatform.Registered(), L"");
}

TEST_F(NotifierWatches, FollowTheListOfDirectories) {
  auto& directories = fNotifier->GetDirectories();
  directories.Add(L"C:\\a");
  directories.Add(L"C:\\b\\");
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* C:\\b* ");
  directories.Delete(0);
  EXPECT_EQ(fPlatform.Registered(), L"C:\\b* ");
  TStringList paths;
  paths.Add(L"D:\\x");
  paths.Add(L"D:\\y");
  directories.Assign(&paths);
  EXPECT_EQ(fPlatform.Registered(), L"D:\\x* D:\\y* ");
  EXPECT_EQ(directories.GetDelimitedText(), L"D:\\x;D:\\y");
  directories.Clear();
  EXPECT_EQ(fPlatform.Registered(), L"");
}

TEST_F(NotifierWatches, BeginWithTheDrivesWhenNothingElseWasLoaded) {
  fNotifier->BeginLoading();
  fNotifier->Start();
  EXPECT_FALSE(fNotifier->IsStarted());
  fNotifier->EndLoading();
  EXPECT_TRUE(fNotifier->IsStarted());
  EXPECT_EQ(fPlatform.Registered(), L"drives* ");
  fNotifier->AddPath(L"C:\\a");
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* ");
  fNotifier->AddPath(L"C:\\b");
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* C:\\b* ");

  TKivShellChangeNotifier designed;
  designed.SetDesigning(true);
  designed.BeginLoading();
  designed.EndLoading();
  designed.AddPath(L"C:\\c");
  EXPECT_FALSE(designed.IsStarted());
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* C:\\b* ");
}

TEST_F(NotifierWatches, ComeFromOtherThreadsByTheMainThread) {
  std::thread([this] { fNotifier->AddItemIdList(ListOf(L"C:\\a").Get(), true, {}); }).join();
  EXPECT_EQ(fPlatform.Registered(), L"");
  MainThread::CheckSynchronize();
  EXPECT_EQ(fPlatform.Registered(), L"C:\\a* ");
  // One that is on its way when the notifier goes, goes with it.
  std::thread([this] { fNotifier->AddItemIdList(ListOf(L"C:\\b").Get(), true, {}); }).join();
  fNotifier.reset();
  MainThread::CheckSynchronize();
  EXPECT_EQ(fPlatform.Registered(), L"");
}

TEST_F(NotifierWatches, HaveTheirSettingsSaved) {
  fNotifier->SetRecursive(false);
  fNotifier->SetEventFilter({neFileCreate, neFolderUpdate});
  const std::wstring text = SaveComponentText(*fNotifier);
  EXPECT_NE(text.find(L"Recursive = false"), std::wstring::npos) << text;
  EXPECT_NE(text.find(L"[neFileCreate, neFolderUpdate]"), std::wstring::npos) << text;
  EXPECT_EQ(text.find(L"NotifyAsynchronously"), std::wstring::npos) << text;
}

} // namespace
} // namespace kiv
