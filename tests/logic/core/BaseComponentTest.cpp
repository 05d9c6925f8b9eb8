#include <core/BaseComponent.h>
#include <framework/ComponentText.h>

#include <gtest/gtest.h>

namespace kiv::test {
namespace {

class TCountingComponent : public TKivBaseComponent {
public:
  void SetEnabled(bool pEnabled) override {
    TKivBaseComponent::SetEnabled(pEnabled);
    ++settings;
  }
  int settings = 0;
};

TEST(BaseComponent, IsSavedOnlyWhileDisabledAndReadThroughItsSetter) {
  TCountingComponent component;
  EXPECT_TRUE(component.GetEnabled());
  EXPECT_EQ(component.GetVersion(), L"TKivBaseComponent V12.4.2.936");
  EXPECT_EQ(SaveComponentText(component).find(L"Enabled"), std::wstring::npos);
  component.SetEnabled(false);
  const std::wstring text = SaveComponentText(component);
  EXPECT_NE(text.find(L"Enabled = false"), std::wstring::npos);
  TCountingComponent copy;
  LoadComponentText(text, copy);
  EXPECT_FALSE(copy.GetEnabled());
  EXPECT_EQ(copy.settings, 1);
}

} // namespace
} // namespace kiv::test
