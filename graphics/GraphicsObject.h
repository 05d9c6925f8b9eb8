#pragma once

#include <framework/Event.h>
#include <framework/Persistent.h>

namespace kiv {

/// Base of font, pen and brush: values with a handle of the platform's, made when first asked for and shared with equal
/// values. Copying one copies the value, not who listens to it.
///
/// Each belongs to one thread at a time; different ones with equal values may be used by different threads.
class KIV_EXPORT TGraphicsObject : public TPersistent {
public:
  /// Called after a property has changed, with this object. The handler may destroy the object.
  const TNotifyEvent& GetOnChange() const noexcept { return fOnChange; }
  void SetOnChange(TNotifyEvent pEvent) { fOnChange = std::move(pEvent); }

protected:
  TGraphicsObject() = default;
  TGraphicsObject(const TGraphicsObject& pOther) : TPersistent(pOther) {}
  TGraphicsObject& operator=(const TGraphicsObject&) = delete;
  ~TGraphicsObject() override;

  /// Stores a property's value. The last thing that a setter does.
  template <typename T, typename V>
  void Put(T& pField, const V& pValue) {
    if (pField == pValue) return;
    pField = pValue;
    Changed();
  }
  void Changed();

private:
  TNotifyEvent fOnChange;
};

} // namespace kiv
