#include "rastrel/platform/os/outcome.h"

#include <cstring>

namespace rastrel::os {

std::string DescribeError(int error) {
  const char* words = strerrordesc_np(error);
  return words != nullptr ? words : "Unknown error";
}

std::string Describe(const Failure& failure) {
  std::string text = failure.operation;
  if (!failure.subject.empty()) text += " '" + failure.subject + "'";
  return text + ": " + DescribeError(failure.error) + " (" + std::to_string(failure.error) + ")";
}

}  // namespace rastrel::os
