#include "Commands.h"

#include "IconCommand.h"
#include "InfoCommand.h"
#include "ObjectText.h"
#include "ParseCommand.h"
#include "PathCommands.h"
#include "PoolCommand.h"
#include "SelectCommand.h"
#include "WalkCommand.h"
#include "WatchCommand.h"

#include <platform/Exception.h>
#include <platform/Text.h>
#include <platform/Version.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace kivtool {

namespace {

constexpr char HelpText[] = R"(kivtool - the console companion of the Pathmere library

Usage:
  kivtool walk PATH [OPTION...]
                               List the objects of a folder: name, kind, size in bytes,
                               local time of the last change, path. PATH is a path, or
                               another name that the shell parses, such as
                               "::{20D04FE0-3AEA-1069-A2D8-08002B30309D}".
      --json                   a JSON array, one object a line, times in UTC
      --filter "*.txt;*.doc"   only files whose names match; folders always pass
      --files-only, --folders-only
      --filesystem-only        nothing virtual; an archive is a file
      --navigation             what a navigation pane lists
      --depth N                the folders below as well, N levels down; "all" for all.
                               Links aren't followed. Ctrl+C ends the list where it is.
  kivtool watch PATH... [--recursive] [--json]
                               Print what changes in folders, a line an event: local time, kind,
                               path, and the new path of what was renamed; with --json a JSON
                               object a line, time in UTC. Ctrl+C ends it.
  kivtool info PATH...         What the library tells of objects: their names in every form,
                               depth, parent, special folder, attributes, whether they
                               are there. PATH as for walk.
  kivtool icon PATH OUT.png [OPTION...]
                               Save the icon of an object as a picture. PATH as for walk.
      --size N                 its width and height in pixels (32)
      --overlay                with the mark of a link, a share and the like
      --open                   as a folder looks while it is open
  kivtool parse [TEXT...]      What the library finds for what a user writes: a path, a name
                               of the shell's, the name of a special folder, and a path of
                               names below it. One line a text: 1 if it leads anywhere, else
                               0, depth, path to show, special folder, a tab between them.
  kivtool path OP [TEXT...]    What the library makes of a path's text. OP is one of
      canonic PATH             the canonical form
      unify PATH               the form in which lists compare paths
      combine BASE PATH        a path relative to a base
      relative PATH            without "." and ".."
      longform PATH            the form for file calls; the same below 248 characters
      revert PATH              the plain form of a long one
      rooted PATH              1 if it is rooted, else 0
      url TEXT, ipv4 TEXT, ipv6 TEXT
                               1 if the text is such an address, else 0
      subpath BASE PATH        1 if the path lies below the base, else 0
      same PATH PATH           1 if the paths are the same, else 0
  kivtool match [PATTERN NAME]
                               1 if the name matches the wildcard pattern, else 0
  kivtool compare [NAME NAME]  -1, 0 or 1: the order of names in the shell's lists
  kivtool pool [OPTION...]     Load a worker pool with items that do nothing useful, and tell
                               throughput, the time from adding an item to its start, and the
                               count of threads over time.
      --items N                how many items (100000)
      --work US                microseconds that each computes (0)
      --threads N              limit of threads (the pool's own)
      --minimum N              threads that are started without asking the processors (1)
      --batch N                items that are added at a time (1)
      --highest PERCENT        items with priority Highest (0)
      --cancel PERCENT         items that are cancelled once they are added (0)
      --json                   one JSON object
  kivtool select FILE ACTION [PATH...]
                               Keep a selection of files and folders in an ini file. ACTION is
      add PATH..., remove PATH...
                               select or unselect, and tell the states
      state PATH...            checked, unchecked, grayed (in part) or disabled (not there),
                               a tab, the path
      list                     the entries: files, and folders with "\*"
      files                    each selected file
      totals                   how many files, folders and bytes
  kivtool help                 Show this text.
  kivtool version              Show the library's version.

parse, path, match and compare take their texts from the command line or, if it has none, from
the standard input: one case a line, a tab between its texts, missing ones empty. Each
case gives one line. Where an operation refuses a case the line is "<raised>", the error
stream says why, and the exit code is 1.

Text goes in and out as UTF-8. Errors go to the standard error stream.
Exit codes: 0 done; 1 the command failed or couldn't do all of its work;
            2 the command line isn't understood; 3 ended early: Ctrl+C, or nobody reads.
)";

int Misuse(TEnvironment& environment, const std::string& complaint) {
  environment.err("kivtool: " + complaint + " Try \"kivtool help\".\n");
  return UsageError;
}

std::string Quoted(const std::wstring& text) {
  return '"' + Printable(Excerpt(text)) + '"';
}

// "all", or how many levels; below 0 if it is neither.
int LevelsOf(const std::wstring& text) {
  if (text == L"all") return TWalkOptions::AllLevels;
  int levels = text.empty() ? -1 : 0;
  for (const wchar_t c : text) {
    if (c < L'0' || c > L'9') return -1;
    levels = levels > 100'000 ? levels : 10 * levels + (c - L'0'); // no tree is as deep
  }
  return levels;
}

// A complaint, or nothing.
std::string ReadWalkOptions(const std::vector<std::wstring>& arguments, TWalkOptions& options,
                            std::optional<std::wstring>& path) {
  static constexpr std::pair<std::wstring_view, bool TWalkOptions::*> switches[] = {
      {L"--json", &TWalkOptions::json},
      {L"--files-only", &TWalkOptions::filesOnly},
      {L"--folders-only", &TWalkOptions::foldersOnly},
      {L"--filesystem-only", &TWalkOptions::fileSystemOnly},
      {L"--navigation", &TWalkOptions::navigation},
  };
  bool only_paths = false;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    const auto found = std::find_if(std::begin(switches), std::end(switches),
                                    [&](const auto& entry) { return entry.first == *argument; });
    if (only_paths || !argument->starts_with(L"-")) {
      if (path) return "one path only, " + Quoted(*argument) + " is one too many.";
      path = *argument;
    } else if (found != std::end(switches)) {
      options.*found->second = true;
    } else if (*argument == L"--") {
      only_paths = true;
    } else if (*argument == L"--filter" || *argument == L"--depth") {
      const std::wstring& option = *argument;
      if (++argument == arguments.end()) return kiv::ToUtf8(option) + " wants a value.";
      if (option == L"--filter") {
        options.filter = *argument;
      } else if ((options.depth = LevelsOf(*argument)) < 0) {
        return "--depth takes a number or \"all\", not " + Quoted(*argument) + ".";
      }
    } else {
      return "unknown option " + Quoted(*argument) + ".";
    }
  }
  if (options.filesOnly && options.foldersOnly) return "--files-only and --folders-only leave nothing.";
  return path ? "" : "no path given.";
}

int Walk(const std::vector<std::wstring>& arguments, TEnvironment& environment) {
  std::optional<std::wstring> path;
  TWalkOptions options;
  const std::string complaint = ReadWalkOptions(arguments, options, path);
  return complaint.empty() ? RunWalk(*path, options, environment) : Misuse(environment, "walk: " + complaint);
}

int Watch(const std::vector<std::wstring>& arguments, TEnvironment& environment) {
  TWatchOptions options;
  bool only_paths = false;
  for (const std::wstring& argument : arguments) {
    if (only_paths || !argument.starts_with(L"-")) {
      options.paths.push_back(argument);
    } else if (argument == L"--recursive") {
      options.recursive = true;
    } else if (argument == L"--json") {
      options.json = true;
    } else if (argument == L"--") {
      only_paths = true;
    } else {
      return Misuse(environment, "watch: unknown option " + Quoted(argument) + ".");
    }
  }
  if (options.paths.empty()) return Misuse(environment, "watch: no path given.");
  return RunWatch(options, environment);
}

int RunTexts(const std::string& name, const TTextCommand& command, const std::vector<std::wstring>& texts,
             TEnvironment& environment) {
  if (!texts.empty() && texts.size() != command.arguments) {
    return Misuse(environment, name + ": takes " + (command.arguments == 1 ? "one text" : "two texts") + ", or none.");
  }
  return RunTextCommand(command, texts, environment);
}

int Parse(const std::vector<std::wstring>& texts, TEnvironment& environment) {
  const TTextCommand command = ParseCommand(environment);
  if (texts.empty()) return RunTextCommand(command, {}, environment);
  int result = Succeeded;
  for (const std::wstring& text : texts) {
    const int code = RunTextCommand(command, {text}, environment);
    if (code == Interrupted) return code;
    if (code != Succeeded) result = code;
  }
  return result;
}

int Path(const std::vector<std::wstring>& arguments, TEnvironment& environment) {
  if (arguments.empty()) return Misuse(environment, "path: no operation given: " + PathOperationNames() + ".");
  const TTextCommand command = FindPathOperation(arguments[0]);
  if (!command.run) return Misuse(environment, "path: unknown operation " + Quoted(arguments[0]) + ".");
  return RunTexts("path " + kiv::ToUtf8(arguments[0]), command, {arguments.begin() + 1, arguments.end()}, environment);
}

// A whole number from 0 to `most`.
std::optional<int> NumberOf(const std::wstring& text, int most) {
  int value = 0;
  for (const wchar_t c : text) {
    if (c < L'0' || c > L'9' || value > most / 10) return std::nullopt;
    value = value * 10 + (c - L'0');
  }
  return text.empty() || value > most ? std::nullopt : std::optional(value);
}

int Pool(const std::vector<std::wstring>& arguments, TEnvironment& environment) {
  TPoolOptions options;
  const struct {
    const wchar_t* name;
    int least;
    int most;
    int& value;
  } numbers[] = {
      {L"--items", 1, 10'000'000, options.items},   {L"--work", 0, 1'000'000, options.workMicroseconds},
      {L"--threads", 1, 1000, options.threads},     {L"--minimum", 1, 1000, options.minimum},
      {L"--batch", 1, 1'000'000, options.batch},    {L"--highest", 0, 100, options.highestPercent},
      {L"--cancel", 0, 100, options.cancelPercent},
  };
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    if (*argument == L"--json") {
      options.json = true;
      continue;
    }
    const auto* const number =
        std::find_if(std::begin(numbers), std::end(numbers), [&](const auto& n) { return n.name == *argument; });
    if (number == std::end(numbers)) return Misuse(environment, "pool: unknown option " + Quoted(*argument) + ".");
    const std::optional<int> value =
        argument + 1 == arguments.end() ? std::nullopt : NumberOf(argument[1], number->most);
    if (!value || *value < number->least) {
      return Misuse(environment, "pool: " + kiv::ToUtf8(number->name) + " takes a number from " +
                                     std::to_string(number->least) + " to " + std::to_string(number->most) + ".");
    }
    number->value = *value;
    ++argument;
  }
  return RunPool(options, environment);
}

int Select(const std::vector<std::wstring>& arguments, TEnvironment& environment) {
  if (arguments.size() < 2) return Misuse(environment, "select: wants a file and one of " + SelectActionNames() + ".");
  const std::vector<std::wstring> paths(arguments.begin() + 2, arguments.end());
  if (!IsSelectAction(arguments[1], paths.size())) {
    return Misuse(environment, "select: " + Quoted(arguments[1]) + " is no action, or has too many or few paths.");
  }
  return RunSelect(arguments[0], arguments[1], paths, environment);
}

int Dispatch(const std::vector<std::wstring>& arguments, TEnvironment& environment) {
  if (arguments.empty()) return Misuse(environment, "no command given.");
  const std::wstring& command = arguments[0];
  const std::vector<std::wstring> rest(arguments.begin() + 1, arguments.end());
  if (command == L"walk") return Walk(rest, environment);
  if (command == L"watch") return Watch(rest, environment);
  if (command == L"info") {
    return rest.empty() ? Misuse(environment, "info: no path given.") : RunInfo(rest, environment);
  }
  if (command == L"icon") {
    std::string complaint;
    const int result = RunIcon(rest, environment, complaint);
    return complaint.empty() ? result : Misuse(environment, "icon: " + complaint);
  }
  if (command == L"parse") return Parse(rest, environment);
  if (command == L"path") return Path(rest, environment);
  if (command == L"match") return RunTexts("match", MatchCommand(), rest, environment);
  if (command == L"compare") return RunTexts("compare", CompareCommand(environment), rest, environment);
  if (command == L"pool") return Pool(rest, environment);
  if (command == L"select") return Select(rest, environment);
  const bool help = command == L"help" || command == L"--help" || command == L"-h" || command == L"/?";
  const bool version = command == L"version" || command == L"--version";
  if (!help && !version) return Misuse(environment, "unknown command " + Quoted(command) + ".");
  if (!rest.empty()) return Misuse(environment, kiv::ToUtf8(command) + " takes no arguments.");
  const std::string text = help ? HelpText : "kivtool " + kiv::ToUtf8(kiv::LibraryVersion) + "\n";
  return environment.out(text) ? Succeeded : Interrupted;
}

} // namespace

int Run(const std::vector<std::wstring>& pArguments, TEnvironment& pEnvironment) {
  try {
    return Dispatch(pArguments, pEnvironment);
  } catch (const std::exception& e) {
    pEnvironment.err(std::string("kivtool: ") + e.what() + "\n");
    return Failed;
  }
}

} // namespace kivtool
