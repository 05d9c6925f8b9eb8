#include <framework/Application.h>

#include <framework/Exceptions.h>
#include <platform/DebugOutput.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace kiv {
namespace {

template <typename E, typename... A>
std::exception_ptr Raised(A&&... pArgs) {
  return std::make_exception_ptr(E(std::forward<A>(pArgs)...));
}

class Application : public testing::Test {
protected:
  ~Application() override { Shutdown(); }

  std::vector<std::wstring> fLines;

private:
  ScopedDebugSink fSink{[this](const std::wstring& line) { fLines.push_back(line); }};
};

TEST_F(Application, ExceptionsGoToTheEventElseToTheLogAndAbortsNowhere) {
  TApplication& application = kiv::Application();
  application.HandleException(Raised<EInvalidOperation>(L"first"));
  application.HandleException(Raised<std::runtime_error>("second"));
  application.HandleException(std::make_exception_ptr(3));
  application.HandleException(Raised<EAbort>());
  application.HandleException(nullptr);
  EXPECT_EQ(fLines,
            (std::vector<std::wstring>{L"Exception: first", L"Exception: second", L"Exception: Unknown exception"}));
  fLines.clear();

  std::vector<std::wstring> heard;
  application.SetOnException([&](std::exception_ptr e) { heard.push_back(DescribeException(e)); });
  application.HandleException(Raised<EInvalidOperation>(L"fourth"));
  application.HandleException(Raised<EAbort>());
  EXPECT_EQ(heard, std::vector<std::wstring>{L"fourth"});
  EXPECT_TRUE(fLines.empty());

  application.SetOnException([](std::exception_ptr) { throw EInvalidOperation(L"handler"); });
  application.HandleException(Raised<EInvalidOperation>(L"fifth"));
  EXPECT_EQ(fLines, (std::vector<std::wstring>{L"Exception: fifth", L"Exception: handler"}));
}

TEST_F(Application, ExceptionsOfQueuedClosuresAndOfWorkersArriveOnTheMainThread) {
  std::vector<std::wstring> heard;
  kiv::Application().SetOnException([&](std::exception_ptr e) {
    EXPECT_TRUE(MainThread::IsCurrent());
    heard.push_back(DescribeException(e));
  });
  MainThread::Queue([] { throw EInvalidOperation(L"queued"); });
  MainThread::RunPosted();
  std::thread([] { ReportException(Raised<EInvalidOperation>(L"worker")); }).join();
  EXPECT_EQ(heard, std::vector<std::wstring>{L"queued"});
  MainThread::CheckSynchronize();
  EXPECT_EQ(heard, (std::vector<std::wstring>{L"queued", L"worker"}));
}

TEST_F(Application, ComesUpAnewAfterShutdown) {
  TApplication& application = kiv::Application();
  EXPECT_EQ(&kiv::Application(), &application);
  EXPECT_FALSE(application.IsTerminated());
  application.Terminate();
  EXPECT_TRUE(application.IsTerminated());
  Screen().SetCursor(crHourGlass);
  Shutdown();
  ReportException(Raised<EInvalidOperation>(L"nobody is there"));
  EXPECT_EQ(fLines, std::vector<std::wstring>{L"Exception: nobody is there"});
  EXPECT_FALSE(kiv::Application().IsTerminated());
  EXPECT_EQ(Screen().GetCursor(), crDefault);
}

TEST_F(Application, KnowsItsFileAndTellsOfHints) {
  const std::filesystem::path file(TApplication::GetExeName());
  EXPECT_EQ(file.stem().wstring(), L"framework_logic_tests");
  EXPECT_TRUE(file.is_absolute());
  EXPECT_EQ(kiv::Application().GetTitle(), L"framework_logic_tests");
  int changes = 0;
  kiv::Application().SetOnHint([&] { ++changes; });
  for (const wchar_t* hint : {L"a", L"a", L""}) kiv::Application().SetHint(hint);
  EXPECT_EQ(changes, 2);
}

TEST_F(Application, ModalScopesNestAndSurviveAShutdownInside) {
  TScreen& screen = Screen();
  bool ranInside = false;
  {
    const TScreen::ScopedModal outer;
    const TScreen::ScopedCursor cursor(crHourGlass);
    EXPECT_EQ(screen.GetCursor(), crHourGlass);
    MainThread::Queue([&] {
      // A closure that enters a modal loop doesn't keep those behind it waiting.
      const TScreen::ScopedModal inner;
      EXPECT_EQ(screen.GetModalLevel(), 2);
      MainThread::Queue([&] { ranInside = true; });
      MainThread::RunPosted();
    });
    MainThread::RunPosted();
    EXPECT_TRUE(ranInside);
    EXPECT_EQ(screen.GetModalLevel(), 1);
  }
  EXPECT_EQ(screen.GetModalLevel(), 0);
  EXPECT_EQ(screen.GetCursor(), crDefault);
  const TScreen::ScopedModal outer;
  const TScreen::ScopedCursor cursor(crHourGlass);
  Shutdown(); // ends the screen that both came from
}

} // namespace
} // namespace kiv
