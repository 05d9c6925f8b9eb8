#include "ObjectText.h"

#include <platform/Text.h>

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <iterator>

namespace kivtool {

namespace {

using kiv::TFileTime;
using kiv::TObjectFlag;

constexpr struct {
  TObjectFlag flag;
  const char* name;
} FlagNames[] = {
    {TObjectFlag::Folder, "folder"},
    {TObjectFlag::FileSystem, "fileSystem"},
    {TObjectFlag::Link, "link"},
    {TObjectFlag::Stream, "stream"},
    {TObjectFlag::Hidden, "hidden"},
    {TObjectFlag::System, "system"},
    {TObjectFlag::ReadOnly, "readOnly"},
    {TObjectFlag::Compressed, "compressed"},
    {TObjectFlag::Encrypted, "encrypted"},
    {TObjectFlag::Slow, "slow"},
    {TObjectFlag::ReparsePoint, "reparsePoint"},
    {TObjectFlag::Offline, "offline"},
};

using TTicks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

struct TCivilTime {
  std::chrono::year_month_day date;
  std::chrono::hh_mm_ss<TTicks> time;
};

TCivilTime CivilTimeOf(TFileTime time) {
  using namespace std::chrono;
  constexpr sys_days epoch = year{1601} / January / 1;
  // The platform's times end in 30828, within 63 bits.
  const TTicks ticks(static_cast<std::int64_t>(time & 0x7FFF'FFFF'FFFF'FFFF));
  const auto whole_days = floor<days>(ticks);
  return {year_month_day(epoch + whole_days), hh_mm_ss<TTicks>(ticks - whole_days)};
}

bool ChangesDirection(wchar_t c) {
  return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x200E || c == 0x200F || c == 0x061C;
}

nlohmann::json TimeOrNull(TFileTime time) {
  return time == 0 ? nlohmann::json(nullptr) : nlohmann::json(IsoText(time));
}

} // namespace

std::string KindOf(const kiv::TFolderObject& pObject) {
  const kiv::TObjectFlags& flags = pObject.flags;
  if (flags.ContainsAll({TObjectFlag::Folder, TObjectFlag::Stream})) return "Archive";
  if (flags.Contains(TObjectFlag::Folder)) return "Folder";
  if (flags.Contains(TObjectFlag::Link)) return "Link";
  return flags.Intersects({TObjectFlag::FileSystem, TObjectFlag::Stream}) ? "File" : "Object";
}

std::string Grouped(std::uint64_t pNumber) {
  std::string text = std::to_string(pNumber);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
  return text;
}

std::string SizeText(std::int64_t pSize) {
  return pSize < 0 ? std::string() : Grouped(static_cast<std::uint64_t>(pSize));
}

std::string MinuteText(TFileTime pTime) {
  if (pTime == 0) return {};
  const TCivilTime civil = CivilTimeOf(pTime);
  char text[40];
  std::snprintf(text, std::size(text), "%04d-%02u-%02u %02d:%02d", static_cast<int>(civil.date.year()),
                static_cast<unsigned>(civil.date.month()), static_cast<unsigned>(civil.date.day()),
                static_cast<int>(civil.time.hours().count()), static_cast<int>(civil.time.minutes().count()));
  return text;
}

std::string IsoText(TFileTime pTime) {
  const TCivilTime civil = CivilTimeOf(pTime);
  char text[64];
  std::snprintf(text, std::size(text), "%04d-%02u-%02uT%02d:%02d:%02d.%07dZ", static_cast<int>(civil.date.year()),
                static_cast<unsigned>(civil.date.month()), static_cast<unsigned>(civil.date.day()),
                static_cast<int>(civil.time.hours().count()), static_cast<int>(civil.time.minutes().count()),
                static_cast<int>(civil.time.seconds().count()), static_cast<int>(civil.time.subseconds().count()));
  return text;
}

std::string Printable(const std::wstring& pText) {
  std::wstring text = pText;
  for (wchar_t& c : text) {
    const bool control = c < 0x20 || (c >= 0x7F && c <= 0x9F);
    if (control || ChangesDirection(c)) c = 0xFFFD;
  }
  return kiv::ToUtf8(text);
}

std::wstring Excerpt(const std::wstring& pText) {
  constexpr std::size_t longest = 300;
  constexpr std::size_t part = 140;
  if (pText.size() <= longest) return pText;
  return pText.substr(0, part) + L" [...] " + pText.substr(pText.size() - part);
}

std::string JsonOf(const kiv::TFolderObject& pObject, const std::wstring& pPath) {
  nlohmann::ordered_json json;
  json["name"] = kiv::ToUtf8(pObject.name);
  if (!kiv::IsWellFormed(pObject.name)) {
    auto& units = json["nameUtf16"] = nlohmann::json::array();
    for (const wchar_t c : pObject.name) units.push_back(static_cast<std::uint32_t>(c));
  }
  json["kind"] = KindOf(pObject);
  auto& flags = json["flags"] = nlohmann::json::array();
  for (const auto& entry : FlagNames) {
    if (pObject.flags.Contains(entry.flag)) flags.push_back(entry.name);
  }
  json["size"] = pObject.size < 0 ? nlohmann::json(nullptr) : nlohmann::json(pObject.size);
  json["changed"] = TimeOrNull(pObject.changed);
  json["created"] = TimeOrNull(pObject.created);
  json["accessed"] = TimeOrNull(pObject.accessed);
  json["path"] = kiv::ToUtf8(pPath);
  return json.dump();
}

} // namespace kivtool
