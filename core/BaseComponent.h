#pragma once

#include <framework/Component.h>
#include <platform/Export.h>

namespace kiv {

/// Base of the library's non-visual components. Main thread.
class KIV_EXPORT TKivBaseComponent : public TComponent {
public:
  explicit TKivBaseComponent(TComponent* pOwner = nullptr);
  ~TKivBaseComponent() override;

  std::wstring ClassName() const override;

  /// Registers the class's properties, once. A derived class calls it before it publishes its own: both happen while
  /// the library is loaded, in no order that could be relied upon.
  static void PublishProperties();

  /// What a component does without being asked ends while this is False; each class says what that is. At first True.
  virtual bool GetEnabled() const { return fEnabled; }
  virtual void SetEnabled(bool pEnabled) { fEnabled = pEnabled; }

protected:
  bool fEnabled = true;
};

} // namespace kiv
