#include "rastrel/imports/cr2/output_filter.h"

namespace rastrel::imports {

OutputFilter::Key OutputFilter::KeyOf(const CVKColor& color) {
  return {color.GetColorSpace(), color.IsInvisible(), color.GetComponents()};
}

OutputFilter::OutputFilter(const std::vector<std::unique_ptr<CVKColor>>& colors) {
  for (const auto& color : colors) m_Colors.insert(KeyOf(*color));
}

bool OutputFilter::Holds(const CVKColor* fill) const {
  return fill != nullptr && m_Colors.contains(KeyOf(*fill));
}

}  // namespace rastrel::imports
