#include "rastrel/platform/host/length_units.h"

#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/host.h"

namespace rastrel::host {

LengthUnit CurrentLengthUnit() {
  Application* const application = GetHost().GetApplication();
  const int number = application != nullptr ? application->GetCurrentUnits() : 0;
  for (const LengthUnit unit : {LengthUnit::Millimetres, LengthUnit::Inches})
    if (number == static_cast<int>(unit)) return unit;
  return LengthUnit::Centimetres;
}

}  // namespace rastrel::host
