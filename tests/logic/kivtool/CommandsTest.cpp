#include "Commands.h"
#include "ObjectText.h"
#include "TextTable.h"

#include <doubles/SimulatedFileSystem.h>
#include <platform/Text.h>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace kivtool {
namespace {

using kiv::TFolderObject;
using kiv::TObjectFlag;
using kiv::test::SimulatedFileSystem;
using kiv::test::TStepFault;

class Commands : public testing::Test {
protected:
  void SetUp() override {
    fFiles.AddDrive(L'C');
    fFiles.MakeFolder(L"C:\\Dir");
    fFiles.MakeFolder(L"C:\\Dir\\sub");
    fFiles.MakeFile(L"C:\\Dir\\a.txt", 1234567);
    fFiles.MakeFile(L"C:\\Dir\\b", 1);
  }

  int Run(const std::vector<std::wstring>& arguments) {
    fOut.clear();
    fErr.clear();
    TEnvironment environment{
        .folders = fFiles,
        .in =
            [this] {
              const std::string piece = fIn.substr(0, fPiece);
              fIn.erase(0, fPiece);
              return piece;
            },
        .out =
            [this](std::string_view text) {
              if (fOut.size() + text.size() > fRoom) return false;
              fOut += text;
              return true;
            },
        .err = [this](std::string_view text) { fErr += text; },
        .toLocalTime = [](kiv::TFileTime time) { return time + 36'000'000'000; }, // an hour east
        .toFullPath = [](const std::wstring& path) { return path == L"." ? L"C:\\Dir" : path; },
        .makeList = nullptr, // for the shell's tests
        .parseText = [](const std::wstring&) -> kiv::ComPtr<kiv::IItemIdList> { throw std::runtime_error("no shell"); },
        .compareNames = [](const std::wstring& first, const std::wstring& second) { return 7 * first.compare(second); },
        .navigationFolders = fNavigation,
        .isStopped = fIsStopped,
        .watch = fWatch,
        .saveIcon = [this](const TIconOptions& icon) { fIcon = icon; },
    };
    return kivtool::Run(arguments, environment);
  }
  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    std::istringstream stream(fOut);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
  }

  SimulatedFileSystem fFiles;
  SimulatedFileSystem* fNavigation = nullptr;
  std::function<bool()> fIsStopped = [] { return false; };
  TWatchPaths fWatch;
  std::size_t fRoom = 1'000'000;
  std::string fIn;
  std::size_t fPiece = 1000; // bytes read at a time
  std::string fOut;
  std::string fErr;
  TIconOptions fIcon;
};

TEST_F(Commands, IconTakesAPathAFileAndOptions) {
  EXPECT_EQ(Run({L"icon", L"--size", L"48", L".", L"--open", L"out.png"}), Succeeded);
  EXPECT_TRUE(fIcon.path == L"C:\\Dir" && fIcon.file == L"out.png" && fIcon.size == 48 && fIcon.opened &&
              !fIcon.overlay);
  EXPECT_EQ(Run({L"icon", L"a", L"b", L"--overlay"}), Succeeded);
  EXPECT_TRUE(fIcon.overlay && fIcon.size == 32);
  const std::vector<std::wstring> wrong[] = {{L"icon"},
                                             {L"icon", L"a"},
                                             {L"icon", L"a", L"b", L"c"},
                                             {L"icon", L"a", L"b", L"--size"},
                                             {L"icon", L"a", L"b", L"--size", L"0"},
                                             {L"icon", L"a", L"b", L"--size", L"99999999999"},
                                             {L"icon", L"a", L"b", L"--size", L"-3"},
                                             {L"icon", L"a", L"b", L"--big"}};
  for (const auto& arguments : wrong) EXPECT_EQ(Run(arguments), UsageError) << arguments.size();
}

TEST_F(Commands, WalkPrintsATableWithItsTotals) {
  EXPECT_EQ(Run({L"walk", L"."}), Succeeded);
  EXPECT_EQ(fErr, "");
  EXPECT_EQ(Lines(), (std::vector<std::string>{
                         "Name          Kind          Size  Changed           Path",
                         "a.txt         File     1,234,567  2020-01-01 01:00  C:\\Dir\\a.txt",
                         "b             File             1  2020-01-01 01:00  C:\\Dir\\b",
                         "sub           Folder              2020-01-01 01:00  C:\\Dir\\sub",
                         "",
                         "3 objects, 1 folder, 1,234,568 bytes",
                     }));
  fFiles.MakeFolder(L"C:\\Empty");
  EXPECT_EQ(Run({L"walk", L"C:\\Empty"}), Succeeded);
  EXPECT_EQ(Lines().back(), "0 objects, 0 folders, 0 bytes");
}

TEST_F(Commands, WalkPrintsJsonThatKeepsEveryName) {
  const std::wstring lone = std::wstring(L"x") + static_cast<wchar_t>(0xD800);
  const std::wstring odd = L"q\"\\\n\x05D0";
  fFiles.MakeFile(L"C:\\Dir\\" + lone, 5);
  EXPECT_EQ(Run({L"walk", L"--json", L"C:\\Dir"}), Succeeded);
  const auto all = nlohmann::json::parse(fOut);
  ASSERT_EQ(all.size(), 4U);
  EXPECT_EQ(all[0]["name"], "a.txt");
  EXPECT_EQ(all[0]["size"], 1234567);
  EXPECT_EQ(all[0]["path"], "C:\\Dir\\a.txt");
  EXPECT_FALSE(all[0].contains("nameUtf16"));
  EXPECT_EQ(all[2]["name"], "sub");
  EXPECT_TRUE(all[2]["size"].is_null());
  EXPECT_EQ(all[2]["flags"], nlohmann::json::parse(R"(["folder", "fileSystem"])"));
  EXPECT_EQ(all[3]["nameUtf16"], nlohmann::json::parse("[120, 55296]"));
  EXPECT_EQ(all[3]["name"], "x\xEF\xBF\xBD");
  EXPECT_EQ(Lines().size(), 6U) << "an object a line";
  // Each text by itself: what would break out of a JSON string or a terminal's line.
  TFolderObject object;
  object.name = odd;
  EXPECT_EQ(nlohmann::json::parse(JsonOf(object, odd))["path"], kiv::ToUtf8(odd));
  EXPECT_EQ(Printable(L"a\x1B[31m\n\x202E"
                      L"b\x7F"),
            "a\xEF\xBF\xBD[31m\xEF\xBF\xBD\xEF\xBF\xBD"
            "b\xEF\xBF\xBD");
  fFiles.MakeFolder(L"C:\\Empty");
  EXPECT_EQ(Run({L"walk", L"--json", L"C:\\Empty"}), Succeeded);
  EXPECT_TRUE(nlohmann::json::parse(fOut).empty());
}

TEST_F(Commands, WalkSaysWhatFailedAndPrintsWhatItHas) {
  EXPECT_EQ(Run({L"walk", L"C:\\none"}), Failed);
  EXPECT_TRUE(fErr.starts_with("kivtool: can't list \"C:\\none\": "));
  EXPECT_EQ(fOut, "");

  fFiles.AddFault(L"C:\\Dir", 2, TStepFault::Fail(HRESULT_FROM_WIN32(ERROR_NOT_READY)));
  EXPECT_EQ(Run({L"walk", L"--json", L"C:\\Dir"}), Failed);
  EXPECT_EQ(nlohmann::json::parse(fOut).size(), 1U);
  EXPECT_FALSE(fErr.empty());
  fFiles.ClearFaults(L"C:\\Dir");
  fFiles.AddFault(L"C:\\Dir", 2, TStepFault::Crash(1));
  EXPECT_EQ(Run({L"walk", L"C:\\Dir"}), Succeeded) << "one crash loses nothing";
  EXPECT_EQ(Lines().back(), "3 objects, 1 folder, 1,234,568 bytes");
  fFiles.ClearFaults(L"C:\\Dir");
  fFiles.AddFault(L"C:\\Dir", 2, TStepFault::Crash(2));
  EXPECT_EQ(Run({L"walk", L"C:\\Dir"}), Failed);
  EXPECT_NE(fErr.find("may not be all"), std::string::npos);
}

TEST_F(Commands, WalkLetsThroughWhatItIsToldTo) {
  fFiles.MakeFile(L"C:\\Dir\\sub\\c.doc");
  fFiles.MakeFolder(L"C:\\Dir\\sub\\low");
  fFiles.MakeFile(L"C:\\Dir\\sub\\low\\d.TXT");
  fFiles.MakeFolder(L"C:\\Dir\\too");
  fFiles.MakeFile(L"C:\\Dir\\too\\e.txt");
  for (const TObjectFlag flag : {TObjectFlag::Link, TObjectFlag::ReparsePoint}) {
    const std::wstring path = flag == TObjectFlag::Link ? L"C:\\Dir\\xlink" : L"C:\\Dir\\xmount";
    fFiles.MakeFolder(path);
    fFiles.SetAttributes(path, {flag});
    fFiles.MakeFile(path + L"\\never");
  }
  const struct {
    std::vector<std::wstring> options;
    const char* names;
  } cases[] = {
      {{}, "a.txt b sub too xlink xmount"},
      {{L"--filter", L"*.txt;*.doc"}, "a.txt sub too xlink xmount"},
      {{L"--filter", L"*.txt", L"--files-only"}, "a.txt"},
      {{L"--folders-only", L"--filter", L"a"}, "sub too xlink xmount"},
      {{L"--filesystem-only", L"--files-only"}, "a.txt b"},
      {{L"--depth", L"0"}, "a.txt b sub too xlink xmount"},
      {{L"--depth", L"1", L"--files-only"}, "a.txt b c.doc e.txt"},
      {{L"--depth", L"1"}, "a.txt b sub too xlink xmount c.doc low e.txt"},
      {{L"--depth", L"2", L"--filter", L"*.txt", L"--files-only"}, "a.txt d.TXT e.txt"},
      {{L"--depth", L"all", L"--folders-only"}, "sub too xlink xmount low"},
      {{L"--depth", L"99999999999999999999", L"--folders-only"}, "sub too xlink xmount low"},
  };
  for (const auto& c : cases) {
    std::vector<std::wstring> arguments = {L"walk", L"--json", L"C:\\Dir"};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    EXPECT_EQ(Run(arguments), Succeeded) << fErr;
    std::string names;
    for (const auto& object : nlohmann::json::parse(fOut)) names += object["name"].get<std::string>() + " ";
    EXPECT_EQ(names, c.names + std::string(" "));
  }
  // The navigation pane has folders of its own.
  SimulatedFileSystem other;
  other.AddDrive(L'C');
  other.MakeFolder(L"C:\\Dir");
  other.MakeFile(L"C:\\Dir\\other");
  fNavigation = &other;
  EXPECT_EQ(Run({L"walk", L"C:\\Dir", L"--navigation"}), Succeeded);
  EXPECT_EQ(Lines().back(), "1 object, 0 folders, 0 bytes");
}

TEST_F(Commands, WalkOfATreePrintsAsItGoesAndGoesOnAfterAFailure) {
  fFiles.MakeFolder(L"C:\\Dir\\denied");
  fFiles.DenyAccess(L"C:\\Dir\\denied");
  fFiles.MakeFile(L"C:\\Dir\\sub\\last", 2);
  std::vector<std::size_t> lengths; // of the output, at each object
  fIsStopped = [&] { return lengths.push_back(fOut.size()), false; };
  EXPECT_EQ(Run({L"walk", L"C:\\Dir", L"--depth", L"all"}), Failed);
  EXPECT_TRUE(fErr.starts_with("kivtool: can't list \"C:\\Dir\\denied\": "));
  EXPECT_EQ(Lines().back(), "5 objects, 2 folders, 1,234,570 bytes");
  EXPECT_GT(lengths.back(), 0U) << "a folder is shown before the next one is read";

  // Whoever stops it has what was listed up to there, and a whole JSON text.
  int objects = 0;
  fIsStopped = [&] { return ++objects > 3; };
  EXPECT_EQ(Run({L"walk", L"C:\\Dir", L"--depth", L"all", L"--json"}), Interrupted);
  EXPECT_EQ(nlohmann::json::parse(fOut).size(), 3U);
  objects = 0;
  EXPECT_EQ(Run({L"walk", L"C:\\Dir", L"--depth", L"all"}), Interrupted);
  EXPECT_EQ(Lines().back(), "3 objects, 1 folder, 1,234,568 bytes");
  EXPECT_EQ(fErr, "");
}

TEST_F(Commands, TextCommandsAnswerLineByLine) {
  const struct {
    std::vector<std::wstring> command;
    const char *in, *out;
  } cases[] = {
      {{L"path", L"canonic"}, "C:\\a\\..\\b\r\n\nC:\\\xC3\xA4\t", "C:\\b\n\nC:\\\xC3\xA4\t\n"},
      {{L"path", L"unify"}, "C:\nC:\\a\\\n", "C:\\\nC:\\a\n"},
      {{L"path", L"combine"}, "C:\\a\t..\\b\nC:\\a\nC:\\a\tb\tc", "C:\\b\nC:\\a\nC:\\a\\b\tc\n"},
      {{L"path", L"relative"}, "C:\\a\\.\\b\\..", "C:\\a\n"},
      {{L"path", L"longform"}, "C:\\a\\..", "C:\\a\\..\n"},
      {{L"path", L"revert"}, "\\\\?\\UNC\\s\\d", "\\\\s\\d\n"},
      {{L"path", L"rooted"}, "C:\na", "1\n0\n"},
      {{L"path", L"url"}, "C:\\\nab:c", "0\n1\n"},
      {{L"path", L"ipv4"}, "1.2.3.4\n1.2.3", "1\n0\n"},
      {{L"path", L"ipv6"}, "::1\n1", "1\n0\n"},
      {{L"path", L"subpath"}, "C:\\a\tC:\\A\\b\nC:\\a\tC:\\a", "1\n0\n"},
      {{L"path", L"same"}, "C:\\a\tC:\\A\\\nC:\\a\tC:\\b", "1\n0\n"},
      {{L"match"}, "*.txt\ta.TXT\n?\tab\n", "1\n0\n"},
      {{L"compare"}, "a\tb\nb\ta\na\ta\n", "-1\n1\n0\n"},
      {{L"compare"}, "", ""},
  };
  for (const auto& c : cases) {
    for (const std::size_t piece : {1U, 7U, 1000U}) {
      fIn = c.in;
      fPiece = piece;
      EXPECT_EQ(Run(c.command), Succeeded);
      EXPECT_EQ(fOut, c.out) << c.in;
      EXPECT_EQ(fErr, "");
    }
  }
}

TEST_F(Commands, TextCommandsMarkWhatIsRefusedAndGoOn) {
  fIn = "C:\\a\tb\n\nC:\\a\tc\n";
  EXPECT_EQ(Run({L"path", L"combine"}), Failed);
  EXPECT_EQ(fOut, "C:\\a\\b\n<raised>\nC:\\a\\c\n");
  EXPECT_EQ(fErr, "kivtool: Both parameters (BasePath and RelativePath) are empty.\n");
  fIn = "not read";
  EXPECT_EQ(Run({L"path", L"combine", L"", L""}), Failed);
  EXPECT_EQ(fOut, "<raised>\n");
  EXPECT_EQ(Run({L"path", L"canonic", L"C:\\a\tb\\.."}), Succeeded);
  EXPECT_EQ(fOut, "C:\\\n");
  EXPECT_EQ(Run({L"parse", L"a", L"b"}), Failed);
  EXPECT_EQ(fOut, "<raised>\n<raised>\n") << "each text is a case";
  EXPECT_EQ(Run({L"match", L"a*", L"abc"}), Succeeded);
  EXPECT_EQ(fOut, "1\n");
}

TEST_F(Commands, EndWhenNobodyReads) {
  fRoom = 0;
  fIn = "a\n";
  for (const std::vector<std::wstring>& arguments : {std::vector<std::wstring>{L"walk", L"--json", L"C:\\Dir"},
                                                     {L"walk", L"C:\\Dir"},
                                                     {L"help"},
                                                     {L"version"},
                                                     {L"path", L"url"}}) {
    EXPECT_EQ(Run(arguments), Interrupted) << testing::PrintToString(arguments);
  }
}

TEST_F(Commands, ComplaintsAreOneLineOfReadableTextWhateverWasTyped) {
  const std::wstring odd = L"a\x1B[31m\n\x202E" + std::wstring(40000, L'x');
  for (const std::vector<std::wstring>& arguments :
       {std::vector<std::wstring>{odd}, {L"walk", odd}, {L"walk", L"-" + odd}, {L"walk", L"C:\\", odd}}) {
    EXPECT_NE(Run(arguments), Succeeded);
    EXPECT_LT(fErr.size(), 500U);
    EXPECT_EQ(fErr.find_first_of("\x1B\n"), fErr.size() - 1);
    EXPECT_EQ(fErr.find("\xE2\x80\xAE"), std::string::npos);
  }
}

TEST_F(Commands, PoolTellsWhatBecameOfItsItems) {
  EXPECT_EQ(Run({L"pool", L"--items", L"2000", L"--threads", L"2", L"--cancel", L"50", L"--highest", L"10", L"--batch",
                 L"7", L"--json"}),
            Succeeded);
  const auto all = nlohmann::json::parse(fOut);
  EXPECT_EQ(all["items"], 2000);
  EXPECT_GT(all["ran"], 0);
  EXPECT_LE(all["ran"], 2000);
  EXPECT_GT(all["itemsPerSecond"], 0);
  EXPECT_LE(all["latencyMicroseconds"]["median"], all["latencyMicroseconds"]["p99"]);
  EXPECT_FALSE(all["threads"].empty());
  for (const auto& step : all["threads"]) EXPECT_LE(step["count"], 2);
  EXPECT_EQ(Run({L"pool", L"--items", L"10", L"--work", L"20"}), Succeeded);
  EXPECT_TRUE(Lines()[0].ends_with("; 10 ran, 0 were cancelled before"));
  EXPECT_TRUE(Lines()[2].starts_with("Threads:"));
}

TEST_F(Commands, TheCommandLineIsUnderstoodOrRefused) {
  const struct {
    std::vector<std::wstring> arguments;
    int result;
    const char* text; // of the output, or of the complaint
  } cases[] = {
      {{}, UsageError, "no command given"},
      {{L"frobnicate"}, UsageError, "unknown command \"frobnicate\""},
      {{L"walk"}, UsageError, "no path given"},
      {{L"walk", L"--color", L"C:\\"}, UsageError, "unknown option \"--color\""},
      {{L"walk", L"C:\\", L"D:\\"}, UsageError, "\"D:\\\" is one too many"},
      {{L"pool", L"--frob"}, UsageError, "unknown option \"--frob\""},
      {{L"pool", L"--items"}, UsageError, "--items takes a number from 1 to 10000000"},
      {{L"pool", L"--items", L"0"}, UsageError, "--items takes"},
      {{L"pool", L"--cancel", L"101"}, UsageError, "--cancel takes a number from 0 to 100"},
      {{L"pool", L"--work", L"99999999999"}, UsageError, "--work takes"},
      {{L"pool", L"--work", L"-1"}, UsageError, "--work takes"},
      {{L"walk", L"C:\\", L"--depth"}, UsageError, "--depth wants a value"},
      {{L"walk", L"C:\\", L"--depth", L"-1"}, UsageError, "--depth takes a number or \"all\", not \"-1\""},
      {{L"walk", L"C:\\", L"--depth", L""}, UsageError, "not \"\""},
      {{L"walk", L"C:\\", L"--files-only", L"--folders-only"}, UsageError, "leave nothing"},
      {{L"walk", L"--", L"--json"}, Failed, "can't list \"--json\""},
      {{L"walk", L""}, Succeeded, "1 object, 1 folder"},
      {{L"path"}, UsageError, "no operation given: canonic, unify"},
      {{L"path", L"fold"}, UsageError, "unknown operation \"fold\""},
      {{L"path", L"canonic", L"a", L"b"}, UsageError, "path canonic: takes one text, or none"},
      {{L"compare", L"a"}, UsageError, "compare: takes two texts, or none"},
      {{L"help", L"me"}, UsageError, "takes no arguments"},
      {{L"help"}, Succeeded, "Usage:"},
      {{L"--help"}, Succeeded, "walk PATH"},
      {{L"help"}, Succeeded, "subpath BASE PATH"},
      {{L"version"}, Succeeded, "kivtool 12."},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Run(c.arguments), c.result) << c.text;
    const std::string& said = c.result == Succeeded ? fOut : fErr;
    EXPECT_NE(said.find(c.text), std::string::npos) << said;
    EXPECT_TRUE((c.result == Succeeded ? fErr : fOut).empty());
  }
}

TEST(ObjectText, TellsKindsSizesAndTimes) {
  const auto kind = [](kiv::TObjectFlags flags) {
    TFolderObject object;
    object.flags = flags;
    return KindOf(object);
  };
  EXPECT_EQ(kind({TObjectFlag::Folder, TObjectFlag::FileSystem, TObjectFlag::Stream}), "Archive");
  EXPECT_EQ(kind({TObjectFlag::Folder, TObjectFlag::Link}), "Folder");
  EXPECT_EQ(kind({TObjectFlag::FileSystem, TObjectFlag::Link}), "Link");
  EXPECT_EQ(kind({TObjectFlag::Stream}), "File");
  EXPECT_EQ(kind({}), "Object");
  EXPECT_EQ(Grouped(0), "0");
  EXPECT_EQ(Grouped(999), "999");
  EXPECT_EQ(Grouped(18446744073709551615ULL), "18,446,744,073,709,551,615");
  EXPECT_EQ(SizeText(-1), "");
  EXPECT_EQ(MinuteText(0), "");
  EXPECT_EQ(IsoText(1), "1601-01-01T00:00:00.0000001Z");
  EXPECT_EQ(IsoText(132'223'968'001'234'567), "2020-01-02T00:00:00.1234567Z");
  EXPECT_EQ(MinuteText(125'963'423'990'000'000), "2000-02-29 23:59");
  EXPECT_EQ(IsoText(0x7FFF'FFFF'FFFF'FFFF).substr(0, 5), "30828");
}

TEST(TextTable, WidensInBatchesAndCutsNothing) {
  std::vector<std::string> pieces;
  TTextTable table({{"A", 2, 4}, {"N", 1, 9, true}, {"Z", 0, 0}}, [&](std::string_view text) {
    pieces.emplace_back(text);
    return true;
  });
  EXPECT_TRUE(table.Add({"\xC3\xA4", "1", "z"}));
  EXPECT_TRUE(table.Add({"longer", "22", ""}));
  EXPECT_TRUE(pieces.empty());
  EXPECT_TRUE(table.Flush());
  EXPECT_TRUE(table.Add({"b", "3", "end"}));
  EXPECT_TRUE(table.Flush());
  ASSERT_EQ(pieces.size(), 2U);
  EXPECT_EQ(pieces[0], "A      N  Z\n\xC3\xA4      1  z\nlonger  22\n");
  EXPECT_EQ(pieces[1], "b      3  end\n");
}

TEST_F(Commands, WatchPrintsEvents) {
  std::vector<std::wstring> watched;
  bool went_on = true;
  fWatch = [&](const std::vector<std::wstring>& paths, bool recursive, const auto& tell) {
    watched = paths;
    if (recursive) watched.push_back(L"recursive");
    tell({132'223'104'000'000'000, kiv::neFileCreate, L"C:\\Dir\\a\x7", L""});
    went_on =
        tell({132'223'104'012'345'678, kiv::neFolderRename, L"C:\\Dir\\old", {L'n', static_cast<wchar_t>(0xD800)}});
    return paths.size() > 1 ? std::vector<std::wstring>{paths[1]} : std::vector<std::wstring>();
  };
  EXPECT_EQ(Run({L"watch", L".", L"--recursive"}), Succeeded);
  EXPECT_EQ(watched, (std::vector<std::wstring>{L"C:\\Dir", L"recursive"}));
  EXPECT_EQ(fOut.substr(0, fOut.find('\n')), "2020-01-01 01:00:00.000  neFileCreate        C:\\Dir\\a\xEF\xBF\xBD");
  EXPECT_NE(fOut.find("01:00:01.234  neFolderRename      C:\\Dir\\old -> n"), std::string::npos) << fOut;
  EXPECT_EQ(Run({L"watch", L"--json", L"a", L"none"}), Failed);
  EXPECT_EQ(fErr, "kivtool: can't watch \"none\".\n");
  std::istringstream lines(fOut);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(nlohmann::json::parse(line)["event"], "neFileCreate");
  std::getline(lines, line);
  EXPECT_EQ(nlohmann::json::parse(line)["newPathUtf16"][1], 0xD800);
  EXPECT_EQ(nlohmann::json::parse(line)["time"], "2020-01-01T00:00:01.2345678Z");
  fRoom = 0;
  EXPECT_EQ(Run({L"watch", L"."}), Interrupted);
  EXPECT_FALSE(went_on) << "nobody reads";
  EXPECT_EQ(Run({L"watch"}), UsageError);
  EXPECT_EQ(Run({L"watch", L"--depth", L"."}), UsageError);
}

} // namespace
} // namespace kivtool
