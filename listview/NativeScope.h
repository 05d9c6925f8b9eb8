#pragma once

#include <listview/CustomListView.h>

namespace kiv {

/// Around each call of the platform's code.
class TCustomListView::TNativeScope {
public:
  explicit TNativeScope(TCustomListView& pView) : fView(pView), fWatch(pView.GetAliveToken()) { ++fView.fNativeDepth; }
  TNativeScope(const TNativeScope&) = delete;
  TNativeScope& operator=(const TNativeScope&) = delete;
  ~TNativeScope() {
    if (fWatch.IsAlive()) --fView.fNativeDepth;
  }
  bool IsAlive() const noexcept { return fWatch.IsAlive(); }

private:
  TCustomListView& fView;
  TAliveWatch fWatch;
};

/// Around messages of our own that neither bring the control in step nor are reported.
class TCustomListView::TWriteScope {
public:
  explicit TWriteScope(TCustomListView& pView) : fView(pView) { ++fView.fWriting; }
  TWriteScope(const TWriteScope&) = delete;
  TWriteScope& operator=(const TWriteScope&) = delete;
  ~TWriteScope() { --fView.fWriting; }

private:
  TCustomListView& fView;
};

} // namespace kiv
