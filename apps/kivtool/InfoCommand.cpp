#include "InfoCommand.h"

#include "ObjectText.h"

#include <core/HasDebugInfo.h>
#include <platform/Exception.h>
#include <platform/Text.h>

#include <cstddef>
#include <utility>

namespace kivtool {

namespace {

constexpr std::size_t LabelWidth = 24;

// The bits of an object's attributes ("SFGAO"), without those that only ask for others.
constexpr std::pair<SFGAOF, const char*> Attributes[] = {
    {0x00000001, "CANCOPY"},      {0x00000002, "CANMOVE"},         {0x00000004, "CANLINK"},
    {0x00000008, "STORAGE"},      {0x00000010, "CANRENAME"},       {0x00000020, "CANDELETE"},
    {0x00000040, "HASPROPSHEET"}, {0x00000100, "DROPTARGET"},      {0x00001000, "SYSTEM"},
    {0x00002000, "ENCRYPTED"},    {0x00004000, "ISSLOW"},          {0x00008000, "GHOSTED"},
    {0x00010000, "LINK"},         {0x00020000, "SHARE"},           {0x00040000, "READONLY"},
    {0x00080000, "HIDDEN"},       {0x00100000, "NONENUMERATED"},   {0x00200000, "NEWCONTENT"},
    {0x00400000, "STREAM"},       {0x00800000, "STORAGEANCESTOR"}, {0x02000000, "REMOVABLE"},
    {0x04000000, "COMPRESSED"},   {0x08000000, "BROWSABLE"},       {0x10000000, "FILESYSANCESTOR"},
    {0x20000000, "FOLDER"},       {0x40000000, "FILESYSTEM"},      {0x80000000, "HASSUBFOLDER"},
};

constexpr std::pair<kiv::TItemIdListDisplayNameFormat, const char*> Names[] = {
    {kiv::dnfNormal, "Normal name"},
    {kiv::dnfInFolder, "In folder"},
    {kiv::dnfPath, "Path for editing"},
    {kiv::dnfPhysicalPath, "Physical path"},
    {kiv::dnfRelativeForAddressBar, "For address bar"},
    {kiv::dnfRelativeParsing, "Relative parsing"},
    {kiv::dnfAbsoluteParsing, "Absolute parsing"},
    {kiv::dnfForExplorer, "For explorer"},
    {kiv::dnfPreferPhysical, "Prefer physical"},
};

const char* YesNo(bool value) {
  return value ? "yes" : "no";
}

// One line for each answer; an answer that raises is told as such.
class TReport {
public:
  template <typename F>
  void Line(const std::string& label, F&& answer) {
    std::string text;
    try {
      text = answer();
    } catch (const kiv::EException& e) {
      text = "(failed: " + Printable(e.Message()) + ")";
    }
    fText += "  " + label + ":";
    if (!text.empty()) fText += std::string(LabelWidth - label.size(), ' ') + text;
    fText += '\n';
  }
  void Heading(const std::wstring& path) { fText += '"' + Printable(path) + "\"\n"; }
  const std::string& Text() const { return fText; }

private:
  std::string fText;
};

std::string AttributeText(kiv::IItemIdList& list) {
  std::string text;
  for (const auto& [bit, name] : Attributes) {
    if (!list.HasAttributes(bit)) continue;
    if (!text.empty()) text += ' ';
    text += name;
  }
  return text;
}

std::string DebugText(const kiv::ComPtr<kiv::IItemIdList>& list) {
  const auto informant = list.MaybeAs<kiv::IHasDebugInfo>();
  return informant ? Printable(informant->GetInfo(kiv::TItemIdListInfoLevel::Verbose)) : std::string();
}

std::string Describe(const std::wstring& path, const kiv::ComPtr<kiv::IItemIdList>& list) {
  TReport report;
  report.Heading(path);
  report.Line("Valid", [&] { return YesNo(!list->IsInvalid()); });
  report.Line("Path", [&] { return Printable(list->Path()); });
  report.Line("Display path", [&] { return Printable(list->DisplayPath()); });
  report.Line("Name", [&] { return Printable(list->Name()); });
  for (const auto& [format, label] : Names) {
    report.Line(label, [&, format = format] { return Printable(list->DisplayName(format)); });
  }
  report.Line("Depth", [&] { return std::to_string(list->Depth()); });
  report.Line("Parent", [&] { return Printable(list->GetParent()->DisplayPath()); });
  report.Line("Special folder", [&] { return Printable(std::wstring(kiv::ShellFolderName(list->SpecialFolder()))); });
  report.Line("Attributes", [&] { return AttributeText(*list.Get()); });
  report.Line("Absolute", [&] { return YesNo(list->IsAbsolute()); });
  report.Line("Slow", [&] { return YesNo(list->IsSlow()); });
  report.Line("Link target", [&] {
    const auto target = list->LinkTarget();
    return target == list ? std::string() : Printable(target->DisplayPath());
  });
  report.Line("Still there", [&] { return YesNo(list->Reload()); });
  report.Line("Internal data", [&] { return DebugText(list); });
  return report.Text();
}

} // namespace

int RunInfo(const std::vector<std::wstring>& pPaths, TEnvironment& pEnvironment) {
  int result = Succeeded;
  bool first = true;
  for (const std::wstring& path : pPaths) {
    const auto list = pEnvironment.makeList(pEnvironment.toFullPath(path));
    if (list->IsInvalid()) result = Failed;
    if (!std::exchange(first, false) && !pEnvironment.out("\n")) return Interrupted;
    if (!pEnvironment.out(Describe(path, list))) return Interrupted;
  }
  return result;
}

} // namespace kivtool
