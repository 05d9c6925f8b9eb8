#pragma once

#include "Environment.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kivtool {

/// One result of one case of up to two texts. May raise.
using TTextOperation = std::function<std::wstring(const std::wstring&, const std::wstring&)>;

/// An operation on text, to be run over cases.
struct TTextCommand {
  /// How many texts a case has: 1 or 2.
  std::size_t arguments;
  TTextOperation run;
};

/// What stands in the place of a result that an operation raises instead. No path can hold it.
inline constexpr char RaisedMark[] = "<raised>";

/// The operations of "path"; one without `run` for a name that isn't among them.
TTextCommand FindPathOperation(std::wstring_view pName);
/// Their names, for a message.
std::string PathOperationNames();
/// "match": a pattern and a name.
TTextCommand MatchCommand();
/// "compare": two names.
TTextCommand CompareCommand(const TEnvironment& pEnvironment);

/// Runs a command once, for the texts given, or, if there are none, for each line of the standard input; prints one
/// line a case. A line's texts have a tab between them; those that are missing are empty, and the last one goes to the
/// line's end.
int RunTextCommand(const TTextCommand& pCommand, const std::vector<std::wstring>& pTexts, TEnvironment& pEnvironment);

} // namespace kivtool
