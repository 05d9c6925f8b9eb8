#include "Allocations.h"
#include "Benches.h"

#include <core/PathFunctions.h>
#include <core/PathUtils.h>

#include <cstdlib>
#include <string>

#if defined(_WIN32)
#include <platform/Types.h>

#include <shlwapi.h>
#else
#include <fnmatch.h>
#endif

namespace kiv::bench {

namespace {

constexpr int Rounds = 20'000;

// Nanoseconds that one call takes, over texts of several kinds.
template <typename TTexts, typename F>
double PerText(const TTexts& texts, F&& call) {
  std::size_t sum = 0;
  const double seconds = Seconds([&] {
    for (int round = 0; round < Rounds; ++round) {
      for (const auto& text : texts) sum += call(text);
    }
  });
  if (sum == 0) std::abort(); // and the calls can't be left out
  return seconds * 1e9 / Rounds / static_cast<double>(std::size(texts));
}

const std::wstring Paths[] = {
    L"C:\\Users\\somebody\\Documents\\Projects\\report final 2024.txt",
    L"C:\\Windows\\System32\\drivers\\etc\\hosts",
    L"D:\\",
    L"C:\\Program Files\\Common Files\\a rather long folder name of a vendor\\component.v4.2\\data\\index.bin",
    L"E:\\music\\\x00C4\x00F6\x05D0\x4E2D\\01 - first.flac",
};

double Allocations() {
  static const std::wstring none = L"*.none";
  static const std::wstring none_with_extension = L"none*.*";
  const long before = AllocationCount();
  for (const std::wstring& path : Paths) {
    if (path.size() > 10 && TPathUtils::MakeCanonic(path) != path) std::abort();
    if (MatchPattern(path, none) || MatchPattern(path, none_with_extension)) std::abort();
  }
  return static_cast<double>(AllocationCount() - before);
}

// One for the text of each result that is too long to stand in the string itself.
double ResultTexts() {
  return static_cast<double>(std::size(Paths) - 1);
}

#if defined(_WIN32)

// What MakeCanonic gives is a text of its own: so must the platform's answer be.
std::size_t CanonicalizeToText(const std::wstring& path) {
  wchar_t buffer[MAX_PATH];
  PathCanonicalizeW(buffer, path.c_str());
  return std::wstring(buffer).size();
}

std::size_t CanonicalizeOnly(const std::wstring& path) {
  wchar_t buffer[MAX_PATH];
  PathCanonicalizeW(buffer, path.c_str());
  return buffer[0];
}

double MakeAllCanonic() {
  return PerText(Paths, [](const std::wstring& path) { return TPathUtils::MakeCanonic(path).size(); });
}

#else

constexpr const char* Patterns[] = {"*.txt", "report*2024*", "*a*e*i*", "???????.*", "Holiday 0?*.JPG", "*"};
constexpr const char* Names[] = {"report final 2024.txt", "holiday 017.jpg", "Makefile", "readme.md",
                                 "a rather long name of a file with many words in it and an extension.documentx"};

struct TCase {
  const char *pattern, *name;
  std::wstring wide_pattern, wide_name;
};

std::vector<TCase> Cases() {
  std::vector<TCase> cases;
  for (const std::string pattern : Patterns) {
    for (const std::string name : Names) {
      cases.push_back({Patterns[cases.size() / std::size(Names)],
                       Names[cases.size() % std::size(Names)],
                       {pattern.begin(), pattern.end()},
                       {name.begin(), name.end()}});
    }
  }
  return cases;
}

#endif

} // namespace

std::vector<TFigure> PathFigures() {
#if defined(_WIN32)
  return {
      {"lists", "canonic_path", "ns", &MakeAllCanonic, [] { return PerText(Paths, &CanonicalizeToText); }, 1.5},
      {"lists", "canonic_path_to_call", "ns", &MakeAllCanonic, [] { return PerText(Paths, &CanonicalizeOnly); }, 0},
      {"lists", "path_allocations", "times", &Allocations, &ResultTexts, 1.0},
  };
#else
  static const std::vector<TCase> cases = Cases();
  return {
      {"lists", "wildcard", "ns",
       [] {
         return PerText(cases, [](const TCase& c) -> std::size_t { return MatchPattern(c.wide_name, c.wide_pattern); });
       },
       [] {
         return PerText(cases,
                        [](const TCase& c) -> std::size_t { return fnmatch(c.pattern, c.name, FNM_CASEFOLD) == 0; });
       },
       1.5},
      {"lists", "path_allocations_native", "times", &Allocations, &ResultTexts, 1.0},
  };
#endif
}

} // namespace kiv::bench
