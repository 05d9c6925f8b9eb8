#include "PathCommands.h"

#include "ObjectText.h"

#include <core/PathFunctions.h>
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <platform/Text.h>

#include <exception>

namespace kivtool {

namespace {

using kiv::TKivPathList;
using kiv::TPathUtils;

std::wstring YesOrNo(bool answer) {
  return answer ? L"1" : L"0";
}

struct TPathOperation {
  const wchar_t* name;
  std::size_t arguments;
  std::wstring (*run)(const std::wstring&, const std::wstring&);
};

constexpr TPathOperation PathOperations[] = {
    {L"canonic", 1, [](const std::wstring& path, const std::wstring&) { return TPathUtils::MakeCanonic(path); }},
    {L"unify", 1, [](const std::wstring& path, const std::wstring&) { return TPathUtils::UnifyPath(path); }},
    {L"combine", 2, [](const std::wstring& base, const std::wstring& path) { return TPathUtils::Combine(base, path); }},
    {L"relative", 1,
     [](const std::wstring& path, const std::wstring&) { return TPathUtils::RemoveRelativeParts(path); }},
    {L"longform", 1,
     [](const std::wstring& path, const std::wstring&) { return TPathUtils::GetUnicodeAPICallPath(path); }},
    {L"revert", 1,
     [](const std::wstring& path, const std::wstring&) { return TPathUtils::RevertUnicodeAPICallPath(path); }},
    {L"rooted", 1, [](const std::wstring& path, const std::wstring&) { return YesOrNo(TPathUtils::IsRooted(path)); }},
    {L"url", 1, [](const std::wstring& text, const std::wstring&) { return YesOrNo(TPathUtils::IsURL(text)); }},
    {L"ipv4", 1, [](const std::wstring& text, const std::wstring&) { return YesOrNo(TPathUtils::IsValidIPv4(text)); }},
    {L"ipv6", 1, [](const std::wstring& text, const std::wstring&) { return YesOrNo(TPathUtils::IsValidIPv6(text)); }},
    {L"subpath", 2,
     [](const std::wstring& upper, const std::wstring& path) {
       return YesOrNo(TKivPathList::IsSubPathOf(upper, path));
     }},
    {L"same", 2,
     [](const std::wstring& first, const std::wstring& second) { return YesOrNo(kiv::SamePath(first, second)); }},
};

// Runs cases one by one and gathers their results.
class TCaseRunner {
public:
  TCaseRunner(const TTextCommand& pCommand, TEnvironment& pEnvironment)
      : fCommand(pCommand), fEnvironment(pEnvironment) {}

  void Run(const std::wstring& first, const std::wstring& second) {
    try {
      fResults += kiv::ToUtf8(fCommand.run(first, second));
    } catch (const std::exception& e) {
      fResults += RaisedMark;
      fEnvironment.err(std::string("kivtool: ") + e.what() + "\n");
      fRaised = true;
    }
    fResults += '\n';
  }
  void RunLine(std::string_view line) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    const std::size_t tab = fCommand.arguments == 1 ? line.npos : line.find('\t');
    const std::string_view rest = tab == line.npos ? std::string_view() : line.substr(tab + 1);
    Run(kiv::FromUtf8(line.substr(0, tab)), kiv::FromUtf8(rest));
  }
  bool Write() {
    const bool written = fResults.empty() || fEnvironment.out(fResults);
    fResults.clear();
    return written;
  }
  int ExitCode() const { return fRaised ? Failed : Succeeded; }

private:
  const TTextCommand& fCommand;
  TEnvironment& fEnvironment;
  std::string fResults;
  bool fRaised = false;
};

// Writes whenever more is awaited, so that somebody who waits for an answer before asking on gets it.
int RunLines(TCaseRunner& runner, TEnvironment& environment) {
  std::string pending;
  for (;;) {
    const std::string more = environment.in();
    const bool ended = more.empty();
    pending += more;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = pending.find('\n', start)) != pending.npos; start = end + 1) {
      runner.RunLine(std::string_view(pending).substr(start, end - start));
    }
    pending.erase(0, start);
    if (ended && !pending.empty()) runner.RunLine(pending);
    if (!runner.Write()) return Interrupted;
    if (ended) return runner.ExitCode();
  }
}

} // namespace

TTextCommand FindPathOperation(std::wstring_view pName) {
  for (const TPathOperation& operation : PathOperations) {
    if (pName == operation.name) return {operation.arguments, operation.run};
  }
  return {};
}

std::string PathOperationNames() {
  std::string names;
  for (const TPathOperation& operation : PathOperations)
    names += (names.empty() ? "" : ", ") + kiv::ToUtf8(operation.name);
  return names;
}

TTextCommand MatchCommand() {
  return {2, [](const std::wstring& pattern, const std::wstring& name) {
            return YesOrNo(kiv::MatchPattern(name, pattern));
          }};
}

TTextCommand CompareCommand(const TEnvironment& pEnvironment) {
  return {2, [compare = pEnvironment.compareNames](const std::wstring& first, const std::wstring& second) {
            const int order = compare(first, second);
            return std::wstring(order < 0 ? L"-1" : order > 0 ? L"1" : L"0");
          }};
}

int RunTextCommand(const TTextCommand& pCommand, const std::vector<std::wstring>& pTexts, TEnvironment& pEnvironment) {
  TCaseRunner runner(pCommand, pEnvironment);
  if (pTexts.empty()) return RunLines(runner, pEnvironment);
  runner.Run(pTexts[0], pTexts.size() > 1 ? pTexts[1] : std::wstring());
  return runner.Write() ? runner.ExitCode() : Interrupted;
}

} // namespace kivtool
