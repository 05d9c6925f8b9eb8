#pragma once

#include <framework/PropertyRegistry.h>
#include <framework/StringList.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kiv {

enum class TGadgetMode { gmOff, gmSlow, gmFast, gmUnnamed };
using TGadgetModes = TSet<TGadgetMode>;

template <>
struct TEnumNames<TGadgetMode> {
  static constexpr TEnumName<TGadgetMode> Values[] = {
      {TGadgetMode::gmOff, L"gmOff"}, {TGadgetMode::gmSlow, L"gmSlow"}, {TGadgetMode::gmFast, L"gmFast"}};
};

/// A nested object with properties.
class TGadgetFont : public TPersistent {
public:
  std::wstring ClassName() const override { return L"TGadgetFont"; }
  void Assign(const TPersistent* pSource) override {
    const auto* const source = dynamic_cast<const TGadgetFont*>(pSource);
    if (!source) return TPersistent::Assign(pSource);
    fName = source->fName;
    fSize = source->fSize;
  }
  const std::wstring& GetName() const { return fName; }
  void SetName(const std::wstring& pName) { fName = pName; }
  std::int8_t GetSize() const { return fSize; }
  void SetSize(std::int8_t pSize) { fSize = pSize; }

private:
  std::wstring fName;
  std::int8_t fSize = 8;
};

/// A part of a gadget, which has parts in turn.
class TGadgetPart;
class TGadgetParts : public TCollection {
public:
  TGadgetParts();
  ~TGadgetParts() override;
  std::wstring ClassName() const override { return L"TGadgetParts"; }
  int GetCount() const noexcept override { return static_cast<int>(fParts.size()); }
  TPersistent* GetItem(int pIndex) const override;
  TPersistent* Add() override;
  void Clear() override { fParts.clear(); }
  void BeginUpdate() noexcept override { ++Updates; }
  void EndUpdate() override { --Updates; }

  int Updates = 0;

private:
  std::vector<std::unique_ptr<TGadgetPart>> fParts;
};

class TGadgetPart : public TPersistent {
public:
  std::wstring ClassName() const override { return L"TGadgetPart"; }
  const std::wstring& GetName() const { return fName; }
  void SetName(const std::wstring& pName) {
    if (pName == L"bad") throw EInvalidOperation(L"a bad part");
    fName = pName;
  }
  TComponent* GetLink() const { return fLink; }
  void SetLink(TComponent* pLink) { fLink = pLink; }
  TGadgetParts& GetParts() { return fParts; }

private:
  std::wstring fName;
  TComponent* fLink = nullptr;
  TGadgetParts fParts;
};

inline TGadgetParts::TGadgetParts() = default;
inline TGadgetParts::~TGadgetParts() = default;
inline TPersistent* TGadgetParts::GetItem(int pIndex) const {
  return fParts.at(static_cast<std::size_t>(pIndex)).get();
}
inline TPersistent* TGadgetParts::Add() {
  return fParts.emplace_back(std::make_unique<TGadgetPart>()).get();
}

/// A component with a property of every kind.
class TGadget : public TComponent {
public:
  explicit TGadget(TComponent* pOwner = nullptr) : TComponent(pOwner) { ++Living; }
  ~TGadget() override { --Living; }
  std::wstring ClassName() const override { return L"TGadget"; }

  bool GetEnabled() const { return fEnabled; }
  void SetEnabled(bool pEnabled) { fEnabled = pEnabled; }
  std::uint8_t GetCount() const { return fCount; }
  void SetCount(std::uint8_t pCount) {
    if (pCount == 13) throw EInvalidOperation(L"thirteen brings bad luck");
    if (pCount == 14) throw std::out_of_range("not by this library");
    fCount = pCount;
  }
  std::int64_t GetBig() const { return fBig; }
  void SetBig(std::int64_t pBig) { fBig = pBig; }
  double GetRatio() const { return fRatio; }
  void SetRatio(double pRatio) { fRatio = pRatio; }
  float GetShort() const { return fShort; }
  void SetShort(float pShort) { fShort = pShort; }
  const std::wstring& GetFilter() const { return fFilter; }
  void SetFilter(const std::wstring& pFilter) { fFilter = pFilter; }
  TGadgetMode GetMode() const { return fMode; }
  void SetMode(TGadgetMode pMode) { fMode = pMode; }
  TGadgetModes GetModes() const { return fModes; }
  void SetModes(TGadgetModes pModes) { fModes = pModes; }
  TGadget* GetLink() const { return fLink; }
  void SetLink(TGadget* pLink) {
    WasLinkedWhileLoading = WasLinkedWhileLoading || (IsLoading() && pLink);
    if (fLink) fLink->RemoveFreeNotification(this);
    fLink = pLink;
    if (fLink) fLink->FreeNotification(this);
  }
  TGadgetFont& GetFont() { return fFont; }
  TStringList* GetLines() { return &fLines; }
  TGadgetParts& GetParts() { return fParts; }

  /// What the loader did to this one.
  int LoadedCalls = 0;
  bool LinkStoodWhenLoaded = false;
  bool WasLinkedWhileLoading = false;
  static inline int Living = 0;

protected:
  void Notification(TComponent* pComponent, TOperation pOperation) override {
    if (pOperation == TOperation::opRemove && pComponent == fLink) fLink = nullptr;
    TComponent::Notification(pComponent, pOperation);
  }
  void Loaded() override {
    TComponent::Loaded();
    ++LoadedCalls;
    LinkStoodWhenLoaded = fLink != nullptr;
    if (fFilter == L"raise when loaded") throw EInvalidOperation(L"as told");
  }

private:
  bool fEnabled = true;
  std::uint8_t fCount = 0;
  std::int64_t fBig = 0;
  double fRatio = 0;
  float fShort = 0;
  std::wstring fFilter;
  TGadgetMode fMode = TGadgetMode::gmOff;
  TGadgetModes fModes;
  TGadget* fLink = nullptr;
  TGadgetFont fFont;
  TStringList fLines;
  TGadgetParts fParts;
};

/// Inherits all of it and adds one.
class TGadgetBox : public TGadget {
public:
  explicit TGadgetBox(TComponent* pOwner = nullptr) : TGadget(pOwner) {}
  std::wstring ClassName() const override { return L"TGadgetBox"; }
  const std::wstring& GetCaption() const { return fCaption; }
  void SetCaption(const std::wstring& pCaption) { fCaption = pCaption; }

private:
  std::wstring fCaption = L"Box";
};

/// May be called any number of times.
inline void PublishGadgets() {
  PublishClass<TGadgetFont, TPersistent>(L"TGadgetFont", L"A font, as far as the tests need one.")
      .Property(L"Name", &TGadgetFont::GetName, &TGadgetFont::SetName, L"", L"The family.")
      .Property(L"Size", &TGadgetFont::GetSize, &TGadgetFont::SetSize, std::int8_t{8}, L"In points.");
  PublishClass<TGadgetPart, TPersistent>(L"TGadgetPart", L"A part.")
      .Property(L"Name", &TGadgetPart::GetName, &TGadgetPart::SetName, L"", L"")
      .Property(L"Link", &TGadgetPart::GetLink, &TGadgetPart::SetLink, L"")
      .Object(L"Parts", &TGadgetPart::GetParts, L"");
  PublishClass<TGadget>(L"TGadget", L"Has a property of every kind.")
      .Property(L"Enabled", &TGadget::GetEnabled, &TGadget::SetEnabled, true, L"")
      .Property(L"Count", &TGadget::GetCount, &TGadget::SetCount, std::uint8_t{0}, L"")
      .Property(L"Big", &TGadget::GetBig, &TGadget::SetBig, 0, L"")
      .Property(L"Ratio", &TGadget::GetRatio, &TGadget::SetRatio, 0.0, L"")
      .Property(L"Short", &TGadget::GetShort, &TGadget::SetShort, 0.0F, L"")
      .Property(L"Filter", &TGadget::GetFilter, &TGadget::SetFilter, L"", L"")
      .Property(L"Mode", &TGadget::GetMode, &TGadget::SetMode, L"Always saved.")
      .Property(L"Modes", &TGadget::GetModes, &TGadget::SetModes, TGadgetModes{}, L"")
      .Property(L"Link", &TGadget::GetLink, &TGadget::SetLink, L"")
      .Object(L"Font", &TGadget::GetFont, L"")
      .Object(L"Lines", &TGadget::GetLines, L"")
      .Object(L"Parts", &TGadget::GetParts, L"");
  PublishClass<TGadgetBox, TGadget>(L"TGadgetBox", L"A gadget with a caption.")
      .Property(L"Caption", &TGadgetBox::GetCaption, &TGadgetBox::SetCaption, L"Box", L"");
}

} // namespace kiv
