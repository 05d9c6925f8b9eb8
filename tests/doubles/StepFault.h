#pragma once

#include <doubles/Gate.h>
#include <doubles/ManualClock.h>
#include <platform/Types.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kiv::test {

/// What goes wrong at one step of listing a simulated folder. Steps count from 1 in each listing; the step behind the
/// last object is the one that finds the end. Several faults at one step happen in the order of the kinds.
struct TStepFault {
  enum class TKind {
    Slow,           ///< takes its time, on a manual clock or by a function of the test's
    Hang,           ///< waits at a gate
    FolderVanishes, ///< the folder itself is deleted just before
    ObjectVanishes, ///< the object of this step is deleted between being listed and being asked
    ObjectRenamed,  ///< the object of this step gets another name in between
    Crash,          ///< the folder's code crashes, so many times
    Fail,           ///< fails, at this step of every listing
    SameObject      ///< from here on the same object comes for ever
  };

  TKind kind;
  std::function<void()> action; ///< Slow
  std::shared_ptr<TGate> gate;  ///< Hang
  int times = 0;                ///< Crash
  HRESULT result = E_FAIL;      ///< Fail
  std::wstring newName;         ///< ObjectRenamed

  /// The clock must outlive the file system.
  static TStepFault Slow(ManualClock& pClock, ManualClock::TDuration pTime) {
    return Slow([&pClock, pTime] { pClock.Advance(pTime); });
  }
  static TStepFault Slow(std::function<void()> pAction) {
    TStepFault fault{TKind::Slow};
    fault.action = std::move(pAction);
    return fault;
  }
  static TStepFault Hang(std::shared_ptr<TGate> pGate) {
    TStepFault fault{TKind::Hang};
    fault.gate = std::move(pGate);
    return fault;
  }
  static TStepFault Crash(int pTimes) {
    TStepFault fault{TKind::Crash};
    fault.times = pTimes;
    return fault;
  }
  static TStepFault Fail(HRESULT pResult) {
    TStepFault fault{TKind::Fail};
    fault.result = pResult;
    return fault;
  }
  static TStepFault ObjectRenamed(std::wstring pNewName) {
    TStepFault fault{TKind::ObjectRenamed};
    fault.newName = std::move(pNewName);
    return fault;
  }
  static TStepFault ObjectVanishes() { return TStepFault{TKind::ObjectVanishes}; }
  static TStepFault FolderVanishes() { return TStepFault{TKind::FolderVanishes}; }
  static TStepFault SameObject() { return TStepFault{TKind::SameObject}; }

private:
  explicit TStepFault(TKind pKind) : kind(pKind) {}
};

} // namespace kiv::test
