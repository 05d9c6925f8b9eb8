#include <doubles/SimulatedFileSystem.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kiv::test {
namespace {

using namespace std::chrono_literals;

constexpr HRESULT NotFound = HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);

/// A folder of three files.
struct TScene {
  TScene() {
    fs.AddDrive(L'C');
    fs.MakeFolder(L"C:\\Dir");
    for (const auto* name : {L"a", L"b", L"c"}) fs.MakeFile(std::wstring(L"C:\\Dir\\") + name, 5);
  }

  std::unique_ptr<IFolderStepper> Open() {
    std::unique_ptr<IFolderStepper> stepper;
    EXPECT_EQ(fs.OpenFolder(L"C:\\Dir", stepper), S_OK);
    return stepper;
  }

  /// A walk in words: names, `!` behind one that came after a fault, `?` behind one without facts, then the end.
  static std::string Walk(IFolderStepper& stepper, std::size_t limit = 10) {
    std::string words;
    for (std::size_t i = 0; i < limit; ++i) {
      TFolderObject object;
      const TFolderStep step = stepper.Next(object);
      if (step == TFolderStep::End) return words + (stepper.Status() == E_FAIL ? "crash" : "end");
      if (step == TFolderStep::Failed) return words + (stepper.Status() == NotFound ? "not found" : "failed");
      words += static_cast<char>(object.name.at(0));
      if (step == TFolderStep::ObjectAfterFault) words += '!';
      if (object.flags.IsEmpty() && object.size == TFolderObject::UnknownSize && object.changed == 0) words += '?';
      words += ' ';
    }
    return words;
  }

  SimulatedFileSystem fs;
};

class SimulatedFileSystemFaults : public testing::Test, protected TScene {};

TEST(SimulatedFileSystemFaultTable, EachEndsAsScriptedAndTheNextWalkStartsOver) {
  const struct {
    const char* what;
    std::size_t step;
    TStepFault fault;
    std::string first;
    std::string second;
  } cases[] = {
      {"fails at first", 1, TStepFault::Fail(E_UNEXPECTED), "failed", "failed"},
      {"fails amid", 3, TStepFault::Fail(E_UNEXPECTED), "a b failed", "a b failed"},
      {"fails at the end", 4, TStepFault::Fail(E_UNEXPECTED), "a b c failed", "a b c failed"},
      {"fails never", 5, TStepFault::Fail(E_UNEXPECTED), "a b c end", "a b c end"},
      {"crashes once", 2, TStepFault::Crash(1), "a b! c end", "a b c end"},
      {"crashes twice", 2, TStepFault::Crash(2), "a crash", "a b c end"},
      {"crashes three times", 2, TStepFault::Crash(3), "a crash", "a b! c end"},
      {"crashes at the end", 4, TStepFault::Crash(1), "a b c crash", "a b c end"},
      {"object vanishes", 2, TStepFault::ObjectVanishes(), "a b? c end", "a c? end"},
      {"object renamed", 2, TStepFault::ObjectRenamed(L"x"), "a b? c end", "a c x end"},
      {"object's case changes", 2, TStepFault::ObjectRenamed(L"B"), "a b? c end", "a B c end"},
      {"folder vanishes", 2, TStepFault::FolderVanishes(), "a not found", "not found"},
      {"same for ever", 2, TStepFault::SameObject(), "a b b b b b b b b b ", "b b b b b b b b b b "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    TScene scene;
    ASSERT_EQ(scene.fs.AddFault(L"C:\\Dir", c.step, c.fault), S_OK);
    const auto stepper = scene.Open();
    EXPECT_EQ(TScene::Walk(*stepper), c.first);
    EXPECT_EQ(TScene::Walk(*stepper), c.second);
  }
}

TEST_F(SimulatedFileSystemFaults, SlowStepsMoveTheClockAndTakeNoTime) {
  ManualClock clock;
  const auto start = clock.Now();
  fs.AddFault(L"C:\\Dir", 2, TStepFault::Slow(clock, 1h));
  const auto stepper = Open();
  TFolderObject object;
  stepper->Next(object);
  EXPECT_EQ(clock.Now() - start, 0h);
  stepper->Next(object);
  EXPECT_EQ(clock.Now() - start, 1h);
  fs.ClearFaults(L"C:\\Dir");
  EXPECT_EQ(Walk(*stepper), "c end");
  EXPECT_EQ(Walk(*stepper), "a b c end");
  EXPECT_EQ(clock.Now() - start, 1h);
}

TEST_F(SimulatedFileSystemFaults, AHangingStepHoldsUpNobodyElse) {
  const auto gate = std::make_shared<TGate>();
  fs.AddFault(L"C:\\Dir", 2, TStepFault::Hang(gate));
  std::string walked;
  std::jthread worker([&] { walked = Walk(*Open()); });
  gate->AwaitArrivals();
  // The names are taken, the facts are not.
  EXPECT_EQ(fs.MakeFile(L"C:\\Dir\\b2"), S_OK);
  EXPECT_EQ(fs.Delete(L"C:\\Dir\\c"), S_OK);
  EXPECT_EQ(fs.Rename(L"C:\\Dir", L"Renamed"), S_OK); // as under an open handle
  gate->Open();
  worker.join();
  EXPECT_EQ(walked, "a b c? end");
}

TEST_F(SimulatedFileSystemFaults, TheMediumMayGoAmidAWalk) {
  const auto stepper = Open();
  TFolderObject object;
  EXPECT_EQ(stepper->Next(object), TFolderStep::Object);
  fs.SetMedium(L'C', false);
  EXPECT_EQ(stepper->Next(object), TFolderStep::Failed);
  EXPECT_EQ(stepper->Status(), HRESULT_FROM_WIN32(ERROR_NOT_READY));
  fs.SetMedium(L'C', true);
  EXPECT_EQ(Walk(*stepper), "a b c end");
}

class SimulatedNotices : public testing::Test {
protected:
  SimulatedNotices() {
    fs.AddDrive(L'C');
    fs.MakeFolder(L"C:\\Dir");
    fs.MakeFolder(L"C:\\Dir\\Sub");
  }
  TNoticeBoard::TToken Watch(std::vector<TFileNotice>& heard, const std::wstring& folder, bool recursive) {
    return fs.Notices().Subscribe(folder, recursive, [&heard](const TFileNotice& n) { heard.push_back(n); });
  }

  SimulatedFileSystem fs;
};

TEST_F(SimulatedNotices, ReachWhoWatchesThePlace) {
  std::vector<TFileNotice> direct;
  std::vector<TFileNotice> below;
  std::vector<TFileNotice> all;
  Watch(direct, L"c:\\dir\\", false);
  Watch(below, L"C:\\Dir", true);
  const auto token = Watch(all, L"", true);
  fs.MakeFile(L"C:\\Dir\\Sub\\deep");
  fs.MakeFile(L"C:\\Directory"); // a name that only begins alike
  EXPECT_TRUE(direct.empty());
  EXPECT_EQ(below, (std::vector<TFileNotice>{{TFileChange::FileCreate, L"C:\\Dir\\Sub\\deep", L""}}));
  EXPECT_EQ(all.size(), 2U);
  fs.Notices().Unsubscribe(token);

  fs.Move(L"C:\\Dir\\Sub\\deep", L"C:\\up");               // out of both, seen by the one below
  fs.Move(L"C:\\up", L"C:\\Dir\\in");                      // into both
  fs.SetAttributes(L"C:\\Dir\\in", {TObjectFlag::Hidden}); //
  fs.SetAttributes(L"C:\\Dir\\in", {TObjectFlag::Hidden}); // no change, no notice
  fs.AnnounceFolderUpdate(L"C:\\Dir");                     // the folder itself
  fs.Rename(L"C:\\Dir", L"Dir2");                          // and its rename
  EXPECT_EQ(direct, (std::vector<TFileNotice>{{TFileChange::FileRename, L"C:\\up", L"C:\\Dir\\in"},
                                              {TFileChange::AttributesChange, L"C:\\Dir\\in", L""},
                                              {TFileChange::FolderUpdate, L"C:\\Dir", L""},
                                              {TFileChange::FolderRename, L"C:\\Dir", L"C:\\Dir2"}}));
  EXPECT_EQ(below.size(), 6U);
  EXPECT_EQ(all.size(), 2U);
}

TEST_F(SimulatedNotices, ComeLateDoubledShuffledOrNotAtAll) {
  std::vector<TFileNotice> heard;
  Watch(heard, L"C:\\Dir", false);
  auto& board = fs.Notices();
  const auto make = [&](const std::wstring& prefix, int count) {
    for (int i = 0; i < count; ++i) fs.MakeFile(L"C:\\Dir\\" + prefix + std::to_wstring(i));
  };
  board.HoldBack();
  make(L"late", 3);
  EXPECT_TRUE(heard.empty());
  board.Release();
  EXPECT_EQ(heard.size(), 3U);

  heard.clear();
  board.SetFaults({.doubled = true, .loseEvery = 3});
  make(L"some", 6);
  ASSERT_EQ(heard.size(), 8U);
  EXPECT_EQ(heard[3], heard[2]);
  EXPECT_EQ(heard[4].path1, L"C:\\Dir\\some3"); // some2 is lost

  std::vector<std::vector<TFileNotice>> orders;
  for (const std::uint32_t seed : {1U, 1U, 2U}) {
    heard.clear();
    board.SetFaults({.shuffledWith = seed});
    board.HoldBack();
    make(L"x", 8);
    for (int i = 0; i < 8; ++i) fs.Delete(L"C:\\Dir\\x" + std::to_wstring(i));
    board.Release();
    ASSERT_EQ(heard.size(), 16U);
    orders.push_back(heard);
  }
  EXPECT_EQ(orders[0], orders[1]); // by its seed
  EXPECT_NE(orders[0], orders[2]);
}

TEST_F(SimulatedNotices, SubscribersMayChangeTheTreeSubscribeLeaveAndRaise) {
  std::vector<std::wstring> heard;
  auto& board = fs.Notices();
  TNoticeBoard::TToken second = 0;
  board.Subscribe(L"C:\\Dir", false, [&](const TFileNotice& notice) {
    heard.push_back(L"1 " + notice.path1);
    if (notice.path1 == L"C:\\Dir\\a") {
      fs.MakeFile(L"C:\\Dir\\nested"); // comes behind, to both
      throw std::runtime_error("scripted");
    }
    board.Unsubscribe(second);
  });
  second = board.Subscribe(L"C:\\Dir", false, [&](const TFileNotice& n) { heard.push_back(L"2 " + n.path1); });
  EXPECT_THROW(fs.MakeFile(L"C:\\Dir\\a"), std::runtime_error);
  EXPECT_EQ(heard, (std::vector<std::wstring>{L"1 C:\\Dir\\a"}));
  fs.MakeFile(L"C:\\Dir\\b");
  EXPECT_EQ(heard, (std::vector<std::wstring>{L"1 C:\\Dir\\a", L"1 C:\\Dir\\nested", L"1 C:\\Dir\\b"}));
}

} // namespace
} // namespace kiv::test
