#include "rastrel/platform/os/whitespace.h"

namespace rastrel::os {

std::string_view Trim(std::string_view text, std::string_view set) {
  const std::size_t first = text.find_first_not_of(set);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(set) - first + 1);
}

}  // namespace rastrel::os
