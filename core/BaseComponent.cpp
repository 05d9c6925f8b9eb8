#include <core/BaseComponent.h>

#include <framework/PropertyRegistry.h>

namespace kiv {

namespace {

[[maybe_unused]] const bool gPublished = (TKivBaseComponent::PublishProperties(), true);

} // namespace

TKivBaseComponent::TKivBaseComponent(TComponent* pOwner) : TComponent(pOwner) {}

TKivBaseComponent::~TKivBaseComponent() = default;

std::wstring TKivBaseComponent::ClassName() const {
  return L"TKivBaseComponent";
}

void TKivBaseComponent::PublishProperties() {
  [[maybe_unused]] static const bool published = [] {
    PublishClass<TKivBaseComponent>(L"TKivBaseComponent", L"Base of the non-visual components.")
        .Property(L"Enabled", &TKivBaseComponent::GetEnabled, &TKivBaseComponent::SetEnabled, true,
                  L"Whether the component does its work.");
    return true;
  }();
}

} // namespace kiv
