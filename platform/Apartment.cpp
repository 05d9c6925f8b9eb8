#include <platform/Apartment.h>

#include <platform/Exception.h>
#include <platform/Types.h>

#include <objbase.h>

#include <string>

namespace kiv {

TApartment CurrentApartment() noexcept {
  APTTYPE type = APTTYPE_MTA;
  APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
  if (FAILED(CoGetApartmentType(&type, &qualifier))) return TApartment::None;
  switch (type) {
  case APTTYPE_STA:
    return TApartment::SingleThreaded;
  case APTTYPE_MAINSTA:
    return TApartment::MainSingleThreaded;
  case APTTYPE_NA:
    return TApartment::Neutral;
  default:
    return TApartment::MultiThreaded;
  }
}

void RequireOle(const wchar_t* pWhat) {
  const TApartment apartment = CurrentApartment();
  if (apartment == TApartment::SingleThreaded || apartment == TApartment::MainSingleThreaded) return;
  const wchar_t* const found = apartment == TApartment::None ? L"COM isn't initialised on this thread"
                                                             : L"this thread isn't in a single-threaded apartment";
  throw EException(std::wstring(L"Can't ") + pWhat + L": " + found +
                   L". Call OleInitialize on the main thread before the first window is made.");
}

} // namespace kiv
