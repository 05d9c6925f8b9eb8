#include "IconCommand.h"

#include "ObjectText.h"

namespace kivtool {

namespace {

constexpr int LargestIcon = 1024;

// 0 for what isn't a size.
int SizeOf(const std::wstring& text) {
  int size = 0;
  for (const wchar_t c : text) {
    if (c < L'0' || c > L'9' || size > LargestIcon) return 0;
    size = 10 * size + (c - L'0');
  }
  return size <= LargestIcon ? size : 0;
}

} // namespace

int RunIcon(const std::vector<std::wstring>& pArguments, TEnvironment& pEnvironment, std::string& pComplaint) {
  TIconOptions options;
  std::vector<std::wstring> names;
  for (auto argument = pArguments.begin(); argument != pArguments.end(); ++argument) {
    if (*argument == L"--overlay") {
      options.overlay = true;
    } else if (*argument == L"--open") {
      options.opened = true;
    } else if (*argument == L"--size") {
      options.size = argument + 1 == pArguments.end() ? 0 : SizeOf(*++argument);
      if (options.size == 0) pComplaint = "--size takes a number from 1 to " + std::to_string(LargestIcon) + ".";
    } else if (argument->starts_with(L"-")) {
      pComplaint = "unknown option \"" + Printable(Excerpt(*argument)) + "\".";
    } else {
      names.push_back(*argument);
    }
  }
  if (pComplaint.empty() && names.size() != 2) pComplaint = "a path and a file for the picture are needed.";
  if (!pComplaint.empty()) return UsageError;
  options.path = pEnvironment.toFullPath(names[0]);
  options.file = pEnvironment.toFullPath(names[1]);
  pEnvironment.saveIcon(options);
  return Succeeded;
}

} // namespace kivtool
