#include "rastrel/platform/values/smart_double.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

/// The processor's own conversion returns the least number for all that does not fit, and sizes are
/// compared with documents that were made so.
std::int64_t Truncated(double value) {
  constexpr double limit = 9223372036854775808.0;  // 2 to the 63rd
  if (!(value >= -limit && value < limit)) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

}  // namespace

bool SmartDouble::operator==(const SmartDouble& other) const {
  const double scale = std::pow(10.0, static_cast<double>(m_Precision));
  return Truncated(scale * m_Value + 0.5) == Truncated(scale * other.m_Value + 0.5);
}
