#include "WatchCommand.h"

#include "ObjectText.h"

#include <platform/Text.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>

namespace kivtool {

namespace {

std::string NameOf(kiv::TNotificationEvent event) {
  const auto& names = kiv::TEnumNames<kiv::TNotificationEvent>::Values;
  const auto* const found =
      std::find_if(std::begin(names), std::end(names), [event](const auto& entry) { return entry.value == event; });
  return found == std::end(names) ? std::string() : kiv::ToUtf8(found->name);
}

void PutPath(nlohmann::ordered_json& json, const std::string& name, const std::wstring& path) {
  json[name] = kiv::ToUtf8(path);
  if (kiv::IsWellFormed(path)) return;
  auto& units = json[name + "Utf16"] = nlohmann::json::array();
  for (const wchar_t c : path) units.push_back(static_cast<std::uint32_t>(c));
}

std::string JsonOf(const TWatchedChange& change) {
  nlohmann::ordered_json json;
  json["time"] = IsoText(change.time);
  json["event"] = NameOf(change.event);
  PutPath(json, "path", change.path1);
  if (!change.path2.empty()) PutPath(json, "newPath", change.path2);
  return json.dump() + "\n";
}

std::string LineOf(const TWatchedChange& change, TEnvironment& environment) {
  constexpr std::size_t widest = 20;
  const std::string time = IsoText(environment.toLocalTime(change.time)); // "2026-11-21T10:28:28.1234567Z"
  std::string name = NameOf(change.event);
  name.resize(std::max(name.size(), widest), ' ');
  std::string line = time.substr(0, 10) + " " + time.substr(11, 12) + "  " + name + Printable(change.path1);
  if (!change.path2.empty()) line += " -> " + Printable(change.path2);
  return line + "\n";
}

} // namespace

int RunWatch(const TWatchOptions& pOptions, TEnvironment& pEnvironment) {
  std::vector<std::wstring> paths;
  for (const std::wstring& path : pOptions.paths) paths.push_back(pEnvironment.toFullPath(path));
  bool read = true;
  const auto tell = [&](const TWatchedChange& change) {
    read = pEnvironment.out(pOptions.json ? JsonOf(change) : LineOf(change, pEnvironment));
    return read;
  };
  const std::vector<std::wstring> failed = pEnvironment.watch(paths, pOptions.recursive, tell);
  for (const std::wstring& path : failed) {
    pEnvironment.err("kivtool: can't watch \"" + Printable(Excerpt(path)) + "\".\n");
  }
  if (!read) return Interrupted;
  return failed.empty() ? Succeeded : Failed;
}

} // namespace kivtool
