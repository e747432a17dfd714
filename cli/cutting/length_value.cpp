#include "cli/cutting/length_value.h"

#include <algorithm>
#include <array>
#include <string>

#include "cli/console/exit_status.h"
#include "cli/console/values.h"

namespace rastrel::cli {
namespace {

constexpr double MaximumLength = 10'000;  // millimetres, ten metres

struct LengthUnit {
  std::string_view name;
  double millimetres;
};
constexpr std::array LengthUnits{LengthUnit{"mm", 1}, LengthUnit{"cm", 10}, LengthUnit{"in", 25.4}};

}  // namespace

double LengthOf(std::string_view option, std::string_view text, std::string_view part) {
  const auto unit = std::ranges::find_if(
      LengthUnits, [part](const LengthUnit& one) { return part.ends_with(one.name); });
  const bool hasUnit = unit != LengthUnits.end();
  const auto number = NumberOf(hasUnit ? part.substr(0, part.size() - unit->name.size()) : part);
  const double length = number.value_or(0) * (hasUnit ? unit->millimetres : 1);
  if (!(length > 0) || length > MaximumLength)
    throw CommandError(ExitStatus::WrongUse,
                       Describe(RefusedValue(option, text,
                                             "'" + std::string(part) +
                                                 "' is no length above 0 and up to 10 m, as "
                                                 "0.2mm")));
  return length;
}

}  // namespace rastrel::cli
