#include "WalkCommand.h"

#include "ObjectText.h"
#include "TextTable.h"

#include <platform/ErrorText.h>
#include <platform/Text.h>
#include <walker/NameFilter.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace kivtool {

namespace {

using kiv::TFolderObject;
using kiv::TFolderStep;
using kiv::TObjectFlag;

/// Where a walk's objects go.
class IWalkPrinter {
public:
  virtual ~IWalkPrinter() = default;
  virtual bool Begin() = 0;
  virtual bool Print(const TFolderObject& pObject, const std::wstring& pPath) = 0;
  /// All of a folder has been printed: shows what is held back.
  virtual bool EndFolder() = 0;
  virtual bool End() = 0;
};

class TTablePrinter final : public IWalkPrinter {
public:
  explicit TTablePrinter(TEnvironment& pEnvironment)
      : fEnvironment(pEnvironment), fTable(Columns(), pEnvironment.out) {}

  bool Begin() override { return true; }

  bool Print(const TFolderObject& pObject, const std::wstring& pPath) override {
    ++fCount;
    fFolders += pObject.flags.Contains(TObjectFlag::Folder) ? 1 : 0;
    if (pObject.size > 0) fBytes += static_cast<std::uint64_t>(pObject.size);
    const kiv::TFileTime local = pObject.changed == 0 ? 0 : fEnvironment.toLocalTime(pObject.changed);
    return fTable.Add(
        {Printable(pObject.name), KindOf(pObject), SizeText(pObject.size), MinuteText(local), Printable(pPath)});
  }

  bool EndFolder() override { return fTable.Flush(); }

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
  bool EndFolder() override { return true; }
  bool End() override { return fEnvironment.out(fFirst ? "]\n" : "\n]\n"); }

private:
  TEnvironment& fEnvironment;
  bool fFirst = true;
};

/// One run of the command.
class TWalk {
public:
  TWalk(const TWalkOptions& pOptions, TEnvironment& pEnvironment)
      : fOptions(pOptions), fEnvironment(pEnvironment),
        fFolders(pOptions.navigation && pEnvironment.navigationFolders ? *pEnvironment.navigationFolders
                                                                       : pEnvironment.folders) {
    fFilter.SetText(pOptions.filter);
    if (pOptions.json) {
      fPrinter = std::make_unique<TJsonPrinter>(pEnvironment);
    } else {
      fPrinter = std::make_unique<TTablePrinter>(pEnvironment);
    }
  }

  int Run(const std::wstring& pPath) {
    std::unique_ptr<kiv::IFolderStepper> stepper;
    if (!Open(fEnvironment.toFullPath(pPath), pPath, stepper)) return Failed;
    fGoesOn = fPrinter->Begin();
    List(*stepper, pPath, 0);
    while (fGoesOn && !fPending.empty()) {
      const TPending next = std::move(fPending.back());
      fPending.pop_back();
      if (Open(next.path, next.path, stepper)) List(*stepper, next.path, next.level);
    }
    const bool complete = fPrinter->End() && fGoesOn;
    if (!complete) return Interrupted;
    return fFailed ? Failed : Succeeded;
  }

private:
  struct TPending {
    std::wstring path;
    int level;
  };

  bool Open(const std::wstring& path, const std::wstring& shown, std::unique_ptr<kiv::IFolderStepper>& stepper) {
    const HRESULT opened = fFolders.OpenFolder(path, stepper);
    if (FAILED(opened)) Complain(shown, kiv::ToUtf8(kiv::DescribeError(opened)));
    return SUCCEEDED(opened);
  }

  void List(kiv::IFolderStepper& stepper, const std::wstring& shown, int level) {
    const std::size_t first = fPending.size();
    TFolderObject object;
    TFolderStep step = TFolderStep::End;
    while ((fGoesOn = fGoesOn && !fEnvironment.isStopped()) && (step = stepper.Next(object)) != TFolderStep::End &&
           step != TFolderStep::Failed) {
      const std::wstring path = stepper.ObjectPath();
      if (IsWanted(object)) fGoesOn = fPrinter->Print(object, path);
      if (level < fOptions.depth && CanEnter(object)) fPending.push_back({path, level + 1});
    }
    if (!fGoesOn) return;
    std::reverse(fPending.begin() + static_cast<std::ptrdiff_t>(first), fPending.end()); // the last one goes first
    fGoesOn = fPrinter->EndFolder();
    if (FAILED(stepper.Status())) {
      Complain(shown, step == TFolderStep::Failed ? kiv::ToUtf8(kiv::DescribeError(stepper.Status()))
                                                  : "the folder's code broke off, and what is listed may not be all.");
    }
  }

  bool IsFolder(const TFolderObject& object) const {
    if (!object.flags.Contains(TObjectFlag::Folder)) return false;
    return !fOptions.fileSystemOnly || !object.flags.Contains(TObjectFlag::Stream);
  }

  bool IsWanted(const TFolderObject& object) const {
    if (fOptions.fileSystemOnly && !object.flags.Contains(TObjectFlag::FileSystem)) return false;
    return IsFolder(object) ? !fOptions.filesOnly : !fOptions.foldersOnly && fFilter.Matches(object.name);
  }

  bool CanEnter(const TFolderObject& object) const {
    constexpr kiv::TObjectFlags elsewhere = {TObjectFlag::Link, TObjectFlag::ReparsePoint, TObjectFlag::Stream};
    if (fOptions.fileSystemOnly && !object.flags.Contains(TObjectFlag::FileSystem)) return false;
    return object.flags.Contains(TObjectFlag::Folder) && (object.flags & elsewhere).IsEmpty();
  }

  void Complain(const std::wstring& path, const std::string& what) {
    fFailed = true;
    fEnvironment.err("kivtool: can't list \"" + Printable(Excerpt(path)) + "\": " + what + "\n");
  }

  const TWalkOptions& fOptions;
  TEnvironment& fEnvironment;
  kiv::IFolderSource& fFolders;
  kiv::TNameFilter fFilter;
  std::unique_ptr<IWalkPrinter> fPrinter;
  std::vector<TPending> fPending; // the next one last
  bool fGoesOn = true;
  bool fFailed = false;
};

} // namespace

int RunWalk(const std::wstring& pPath, const TWalkOptions& pOptions, TEnvironment& pEnvironment) {
  return TWalk(pOptions, pEnvironment).Run(pPath);
}

} // namespace kivtool
