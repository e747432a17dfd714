#pragma once

#include <array>
#include <memory>
#include <set>
#include <tuple>
#include <vector>

#include "rastrel/platform/values/color.h"

namespace rastrel::imports {

/// The colors whose frames and spans a template leaves out (cr2 alone). Colors are equal if their
/// space and their components are; RGB and CMYK never are.
class OutputFilter {
 public:
  /// A filter that leaves nothing out.
  OutputFilter() = default;
  explicit OutputFilter(const std::vector<std::unique_ptr<CVKColor>>& colors);
  /// Whether a fill color is left out; false for null.
  [[nodiscard]] bool Holds(const CVKColor* fill) const;

 private:
  using Key = std::tuple<COLORSPACE, bool, std::array<double, 4>>;
  static Key KeyOf(const CVKColor& color);

  std::set<Key> m_Colors;
};

}  // namespace rastrel::imports
