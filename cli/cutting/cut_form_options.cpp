#include "cli/cutting/cut_form_options.h"

#include <charconv>
#include <string>
#include <system_error>

#include "cli/console/exit_status.h"

namespace rastrel::cli {
namespace {

[[noreturn]] void Refuse(OptionId id, const std::string& value) {
  throw CommandError(ExitStatus::WrongUse, std::string(OptionOf(id).name) + " can't be '" + value +
                                               "'; it is one of " + OptionOf(id).choices);
}

// Millimetres, with or without the unit.
double ToleranceOf(const std::string& value) {
  constexpr double lowest = 0.0001;
  constexpr double highest = 10;
  double millimetres = 0;
  const char* const end = value.data() + value.size();
  const auto [rest, error] = std::from_chars(value.data(), end, millimetres);
  const std::string_view unit(rest, static_cast<std::size_t>(end - rest));
  if (error != std::errc() || !(unit.empty() || unit == "mm") ||
      !(millimetres >= lowest && millimetres <= highest))
    throw CommandError(ExitStatus::WrongUse,
                       "--tolerance is a length of 0.0001 to 10 mm, and not '" + value + "'");
  return millimetres;
}

}  // namespace

cutting::CutFileOptions CutFormOptions(const Invocation& invocation) {
  cutting::CutFileOptions options;
  if (invocation.Has(OptionId::DxfVersion)) {
    const std::string value = invocation.ValueOr(OptionId::DxfVersion, "");
    const auto version = cutting::DxfVersionOf(value);
    if (!version) Refuse(OptionId::DxfVersion, value);
    options.dxf = *version;
  }
  if (invocation.Has(OptionId::CutOrigin)) {
    const std::string value = invocation.ValueOr(OptionId::CutOrigin, "");
    const auto origin = cutting::OriginOf(value);
    if (!origin) Refuse(OptionId::CutOrigin, value);
    options.placement.origin = *origin;
  }
  if (invocation.Has(OptionId::Tolerance))
    options.tolerance = ToleranceOf(invocation.ValueOr(OptionId::Tolerance, ""));
  return options;
}

}  // namespace rastrel::cli
