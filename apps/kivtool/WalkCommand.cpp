#include "WalkCommand.h"

#include "ObjectText.h"
#include "TextTable.h"

#include <platform/ErrorText.h>
#include <platform/Text.h>

#include <memory>
#include <utility>
#include <vector>

namespace kivtool {

namespace {

using kiv::TFolderObject;
using kiv::TFolderStep;

/// Where a walk's objects go.
class IWalkPrinter {
public:
  virtual ~IWalkPrinter() = default;
  virtual bool Begin() = 0;
  virtual bool Print(const TFolderObject& pObject, const std::wstring& pPath) = 0;
  virtual bool End() = 0;
};

class TTablePrinter final : public IWalkPrinter {
public:
  explicit TTablePrinter(TEnvironment& pEnvironment)
      : fEnvironment(pEnvironment), fTable(Columns(), pEnvironment.out) {}

  bool Begin() override { return true; }

  bool Print(const TFolderObject& pObject, const std::wstring& pPath) override {
    ++fCount;
    fFolders += pObject.flags.Contains(kiv::TObjectFlag::Folder) ? 1 : 0;
    if (pObject.size > 0) fBytes += static_cast<std::uint64_t>(pObject.size);
    const kiv::TFileTime local = pObject.changed == 0 ? 0 : fEnvironment.toLocalTime(pObject.changed);
    return fTable.Add(
        {Printable(pObject.name), KindOf(pObject), SizeText(pObject.size), MinuteText(local), Printable(pPath)});
  }

  bool End() override {
    if (!fTable.Flush()) return false;
    return fEnvironment.out("\n" + Counted(fCount, "object") + ", " + Counted(fFolders, "folder") + ", " +
                            Grouped(fBytes) + (fBytes == 1 ? " byte\n" : " bytes\n"));
  }

private:
  static std::vector<TTextTable::TColumn> Columns() {
    return {{"Name", 12, 40}, {"Kind", 6, 8}, {"Size", 10, 20, true}, {"Changed", 16, 16}, {"Path", 0, 0}};
  }
  static std::string Counted(std::uint64_t count, const char* what) {
    return Grouped(count) + " " + what + (count == 1 ? "" : "s");
  }

  TEnvironment& fEnvironment;
  TTextTable fTable;
  std::uint64_t fCount = 0;
  std::uint64_t fFolders = 0;
  std::uint64_t fBytes = 0;
};

class TJsonPrinter final : public IWalkPrinter {
public:
  explicit TJsonPrinter(TEnvironment& pEnvironment) : fEnvironment(pEnvironment) {}

  bool Begin() override { return fEnvironment.out("["); }
  bool Print(const TFolderObject& pObject, const std::wstring& pPath) override {
    const bool first = std::exchange(fFirst, false);
    return fEnvironment.out((first ? "\n  " : ",\n  ") + JsonOf(pObject, pPath));
  }
  bool End() override { return fEnvironment.out(fFirst ? "]\n" : "\n]\n"); }

private:
  TEnvironment& fEnvironment;
  bool fFirst = true;
};

void Complain(TEnvironment& environment, const std::wstring& path, const std::string& what) {
  environment.err("kivtool: can't list \"" + Printable(Excerpt(path)) + "\": " + what + "\n");
}

} // namespace

int RunWalk(const std::wstring& pPath, const TWalkOptions& pOptions, TEnvironment& pEnvironment) {
  std::unique_ptr<kiv::IFolderStepper> stepper;
  const HRESULT opened = pEnvironment.folders.OpenFolder(pEnvironment.toFullPath(pPath), stepper);
  if (FAILED(opened)) {
    Complain(pEnvironment, pPath, kiv::ToUtf8(kiv::DescribeError(opened)));
    return Failed;
  }
  std::unique_ptr<IWalkPrinter> printer;
  if (pOptions.json) {
    printer = std::make_unique<TJsonPrinter>(pEnvironment);
  } else {
    printer = std::make_unique<TTablePrinter>(pEnvironment);
  }
  TFolderObject object;
  TFolderStep step = TFolderStep::End;
  bool read = printer->Begin();
  while (read && (step = stepper->Next(object)) != TFolderStep::End && step != TFolderStep::Failed) {
    read = printer->Print(object, stepper->ObjectPath());
  }
  if (!read || !printer->End()) return Interrupted;
  if (FAILED(stepper->Status())) {
    Complain(pEnvironment, pPath,
             step == TFolderStep::Failed ? kiv::ToUtf8(kiv::DescribeError(stepper->Status()))
                                         : "the folder's code broke off, and what is listed may not be all.");
    return Failed;
  }
  return Succeeded;
}

} // namespace kivtool
