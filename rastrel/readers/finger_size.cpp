#include "rastrel/readers/finger_size.h"

#include <algorithm>

#include "rastrel/platform/os/number_text.h"
#include "rastrel/platform/values/compare.h"

namespace rastrel::readers {
namespace {

using os::DoubleFromText;

// Whether it is one of the numbers or lies between them.
bool IsWithin(double size, double one, double other) {
  const auto [low, high] = std::minmax(one, other);
  return IsDoubleEqual(size, low, FingerSizeTolerance) ||
         IsDoubleEqual(size, high, FingerSizeTolerance) ||
         (IsDoubleGreaterthan(size, low, FingerSizeTolerance) &&
          IsDoubleLessthan(size, high, FingerSizeTolerance));
}

}  // namespace

bool SatisfiesFingerSizeRule(const std::wstring& fingerSize, std::wstring rule) {
  const double size = os::DoubleFromText(fingerSize);
  const wchar_t kind = rule.empty() ? L'\0' : rule.front();
  if (kind == L'L' || kind == L'G') {
    // Charts rely on the letter counting as a digit: "L.5" is 0.5, and "L-6" is 0.
    rule.front() = L'0';
    const double limit = os::DoubleFromText(rule);
    return kind == L'L' ? IsDoubleLessthan(size, limit, FingerSizeTolerance)
                        : IsDoubleGreaterthan(size, limit, FingerSizeTolerance);
  }
  const std::size_t comma = std::min(rule.find(L','), rule.size());
  const std::wstring first = rule.substr(0, comma);
  const std::wstring second = comma < rule.size() ? rule.substr(comma + 1) : std::wstring();
  return IsWithin(size, os::DoubleFromText(first), os::DoubleFromText(second));
}

}  // namespace rastrel::readers
