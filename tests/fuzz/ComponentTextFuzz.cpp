#include <framework/ComponentText.h>
#include <framework/Exceptions.h>
#include <platform/Text.h>
#include <tests/logic/framework/PublishedGadget.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

// What loads saves, and what was saved loads and saves as the same text, on the way through UTF-8 too.
void CheckRoundTrip(kiv::TComponent& pRoot) {
  const std::wstring saved = kiv::SaveComponentText(pRoot);
  if (kiv::FromUtf8(kiv::ToUtf8(saved)) != saved) std::abort();
  const auto again = kiv::LoadComponentText(saved);
  if (kiv::SaveComponentText(*again) != saved) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t pSize) {
  static const bool published = (kiv::PublishGadgets(), true);
  static_cast<void>(published);
  const std::wstring text = kiv::FromUtf8(std::string_view(reinterpret_cast<const char*>(pData), pSize));
  std::unique_ptr<kiv::TComponent> root;
  try {
    root = kiv::LoadComponentText(text);
  } catch (const kiv::EParserError&) {
  } catch (const kiv::EPropertyError&) {
  } catch (const kiv::EInvalidOperation&) { // a gadget's Loaded
  }
  if (root) CheckRoundTrip(*root);
  root.reset();
  if (kiv::TGadget::Living != 0) std::abort();
  // The other way in: into a component that stands and must come out of it without what failed.
  kiv::TGadget standing;
  try {
    kiv::LoadComponentText(text, standing);
  } catch (const kiv::EException&) {
    if (!standing.GetComponents().empty() || standing.IsLoading()) std::abort();
  }
  return 0;
}
