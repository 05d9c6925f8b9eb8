#include "Script.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kiv::test {

namespace {

using TWords = std::vector<std::wstring>;

TWords Split(std::wstring_view text, std::wstring_view delimiter) {
  TWords parts;
  for (;;) {
    const std::size_t end = text.find(delimiter);
    parts.emplace_back(text.substr(0, end));
    if (end == std::wstring_view::npos) return parts;
    text.remove_prefix(end + delimiter.size());
  }
}

std::optional<std::size_t> Number(const std::wstring& word) {
  constexpr std::size_t most_digits = 7;
  const bool is_number = !word.empty() && word.size() <= most_digits &&
                         std::all_of(word.begin(), word.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
  if (!is_number) return std::nullopt;
  return static_cast<std::size_t>(std::stoul(word));
}

template <typename T, std::size_t N>
std::optional<T> Find(const std::pair<const wchar_t*, T> (&table)[N], const std::wstring& word) {
  for (const auto& [name, value] : table) {
    if (word == name) return value;
  }
  return std::nullopt;
}

constexpr std::pair<const wchar_t*, TDeed> Deeds[] = {
    {L"crash", TDeed::Crash},   {L"own", TDeed::Own},   {L"fail", TDeed::Fail}, {L"empty", TDeed::Empty},
    {L"repeat", TDeed::Repeat}, {L"wait", TDeed::Wait}, {L"slow", TDeed::Slow}};
constexpr std::pair<const wchar_t*, TMethod> Methods[] = {
    {L"next", TMethod::Next},       {L"enum", TMethod::EnumObjects}, {L"bind", TMethod::Bind},
    {L"parse", TMethod::Parse},     {L"names", TMethod::Names},      {L"attributes", TMethod::Attributes},
    {L"compare", TMethod::Compare}, {L"details", TMethod::Details},  {L"ui", TMethod::Objects},
    {L"storage", TMethod::Storage}};

bool ReadAct(const TWords& words, TScript& script) {
  const auto deed = Find(Deeds, words[0]);
  const auto method = words.size() > 1 ? Find(Methods, words[1]) : std::nullopt;
  if (!deed || !method) return false;
  TAct act{*deed, *method};
  const bool twice = words.size() == 4 && words[3] == L"twice";
  if (*method == TMethod::Next) {
    const auto step = words.size() == 3 || twice ? Number(words[2]) : std::nullopt;
    if (!step) return false;
    act.step = *step;
    act.times = twice ? 2 : 1;
  } else if (words.size() != 2) {
    return false;
  }
  script.acts.push_back(act);
  return true;
}

bool ReadPart(const std::wstring& part, TScript& script) {
  const TWords words = Split(part, L" ");
  if (part == L"no folder2") {
    script.offersFolder2 = false;
    return true;
  }
  const auto number = Number(words[0]);
  if (!number || words.size() != 2) return ReadAct(words, script);
  if (words[1] == L"objects") script.objects = *number;
  if (words[1] == L"levels") script.levels = *number;
  return words[1] == L"objects" || words[1] == L"levels";
}

} // namespace

std::optional<TScript> TScript::FromName(std::wstring_view pName) {
  TScript script;
  for (const std::wstring& part : Split(pName, L", ")) {
    if (!ReadPart(part, script)) return std::nullopt;
  }
  return script;
}

std::wstring NameOf(TMethod pMethod) {
  return std::find_if(std::begin(Methods), std::end(Methods), [&](const auto& m) { return m.second == pMethod; })
      ->first;
}

std::optional<TDeed> TScript::DeedOf(TMethod pMethod) const {
  const auto act = std::find_if(acts.begin(), acts.end(), [&](const TAct& a) { return a.method == pMethod; });
  return act == acts.end() ? std::nullopt : std::optional(act->deed);
}

} // namespace kiv::test
