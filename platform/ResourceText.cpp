#include <platform/ResourceText.h>

#include <map>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <utility>

namespace kiv {

namespace {

struct TTable {
  struct TEntry {
    const TResourceText* text = nullptr;
    std::optional<std::wstring> replacement;
  };
  std::shared_mutex lock;
  std::map<std::wstring_view, TEntry> entries;
};

// Made by the first text, whichever file that stands in, and so gone after the last.
TTable& Table() {
  static TTable table;
  return table;
}

} // namespace

TResourceText::TResourceText(std::wstring_view pName, std::wstring_view pEnglish) : fName(pName), fEnglish(pEnglish) {
  TTable& table = Table();
  const std::lock_guard guard(table.lock);
  table.entries[fName].text = this;
}

TResourceText::~TResourceText() {
  TTable& table = Table();
  const std::lock_guard guard(table.lock);
  const auto at = table.entries.find(fName);
  if (at != table.entries.end() && at->second.text == this) table.entries.erase(at);
}

std::wstring TResourceText::Text() const {
  TTable& table = Table();
  const std::shared_lock guard(table.lock);
  const auto at = table.entries.find(fName);
  return at != table.entries.end() && at->second.replacement ? *at->second.replacement : std::wstring(fEnglish);
}

std::vector<const TResourceText*> ResourceTexts() {
  TTable& table = Table();
  const std::shared_lock guard(table.lock);
  std::vector<const TResourceText*> texts;
  for (const auto& [name, entry] : table.entries) texts.push_back(entry.text);
  return texts;
}

bool ReplaceResourceText(std::wstring_view pName, std::wstring pText) {
  TTable& table = Table();
  const std::lock_guard guard(table.lock);
  const auto at = table.entries.find(pName);
  if (at == table.entries.end()) return false;
  at->second.replacement = std::move(pText);
  return true;
}

void RestoreResourceTexts() {
  TTable& table = Table();
  const std::lock_guard guard(table.lock);
  for (auto& [name, entry] : table.entries) entry.replacement.reset();
}

} // namespace kiv
