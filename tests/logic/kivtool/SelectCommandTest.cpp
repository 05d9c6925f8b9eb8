#include "Commands.h"

#include <doubles/ScopedTempFolder.h>
#include <doubles/SimulatedDisk.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kivtool {
namespace {

class Select : public testing::Test {
protected:
  Select() {
    fFiles.AddDrive(L'C');
    for (const wchar_t* folder : {L"C:\\a", L"C:\\a\\d", L"C:\\a\\link"}) fFiles.MakeFolder(folder);
    for (const wchar_t* file : {L"C:\\a\\1", L"C:\\a\\d\\2", L"C:\\a\\link\\x", L"C:\\b"}) fFiles.MakeFile(file, 1000);
    fFiles.SetAttributes(L"C:\\a\\link", {kiv::TObjectFlag::ReparsePoint});
  }

  // What goes to the output, the error stream in "<>", and the exit code unless it is 0.
  std::string Run(std::vector<std::wstring> arguments) {
    std::string text;
    TEnvironment environment{
        .folders = fFiles,
        .in = nullptr,
        .out =
            [&](std::string_view out) {
              text += out;
              return true;
            },
        .err = [&](std::string_view err) { text.append("<").append(err).append(">"); },
        .toLocalTime = nullptr,
        .toFullPath = [](const std::wstring& path) { return path == L"." ? L"C:\\a" : path; },
        .makeList = nullptr,
        .parseText = nullptr,
        .compareNames = nullptr,
    };
    arguments.insert(arguments.begin(), {L"select", fTemp.PathOf(L"s.ini")});
    const int code = kivtool::Run(arguments, environment);
    return code == 0 ? text : text + std::to_string(code);
  }

  kiv::test::SimulatedFileSystem fFiles;
  kiv::test::SimulatedDisk fDisk{fFiles};
  kiv::ScopedSelectionDisk fScope{fDisk};
  kiv::test::ScopedTempFolder fTemp;
};

TEST_F(Select, KeepsASelectionAcrossCalls) {
  EXPECT_EQ(Run({L"list"}), "");
  EXPECT_EQ(Run({L"add", L"C:\\a\\1", L"C:\\a\\d"}), "checked\tC:\\a\\1\nchecked\tC:\\a\\d\n");
  EXPECT_EQ(Run({L"list"}), "C:\\a\\1\nC:\\a\\d\\*\n");
  EXPECT_EQ(Run({L"state", L".", L"C:\\a\\d\\2", L"C:\\b", L"C:\\c"}),
            "grayed\tC:\\a\nchecked\tC:\\a\\d\\2\nunchecked\tC:\\b\ndisabled\tC:\\c\n");
  EXPECT_EQ(Run({L"add", L"."}), "checked\tC:\\a\n");
  EXPECT_EQ(Run({L"files"}), "C:\\a\\1\nC:\\a\\d\\2\n");
  EXPECT_EQ(Run({L"totals"}), "2 files, 2 folders, 2,000 bytes\n");
  EXPECT_EQ(Run({L"remove", L"C:\\a\\1"}), "unchecked\tC:\\a\\1\n");
  fFiles.Delete(L"C:\\a\\d");
  EXPECT_EQ(Run({L"add", L"C:\\none", L"C:\\b"}),
            "<kivtool: there is no \"C:\\none\"\n>disabled\tC:\\none\nchecked\tC:\\b\n1");
  EXPECT_EQ(Run({L"list"}), "C:\\a\\d\\\nC:\\a\\link\\*\nC:\\b\n") << "what is gone isn't forgotten";
  fFiles.MakeFolder(L"C:\\a\\d");
  EXPECT_EQ(Run({L"state", L"C:\\a\\d"}), "checked\tC:\\a\\d\n");
}

TEST_F(Select, RefusesWhatItDoesntUnderstand) {
  for (const std::vector<std::wstring>& bad :
       {std::vector<std::wstring>{}, {L"add"}, {L"list", L"C:\\"}, {L"turn", L"C:\\"}}) {
    const std::string text = Run(bad);
    EXPECT_TRUE(text.starts_with("<kivtool: select: ") && text.ends_with(">2")) << text;
  }
}

} // namespace
} // namespace kivtool
