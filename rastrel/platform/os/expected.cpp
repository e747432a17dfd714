#include "rastrel/platform/os/expected.h"

#include <cstring>

#include "rastrel/platform/os/shown_text.h"

namespace rastrel {
namespace {

std::string Place(const Failure& failure) {
  if (failure.line <= 0) return failure.where;
  std::string place = failure.where;
  for (const int number : {failure.line, failure.column}) {
    if (number <= 0) continue;
    if (!place.empty()) place += ':';
    place += std::to_string(number);
  }
  return place;
}

std::string Reason(const Failure& failure) {
  if (!failure.why.empty()) return failure.why;
  return DescribeError(failure.error) + " (" + std::to_string(failure.error) + ")";
}

}  // namespace

std::string DescribeError(int error) {
  const char* words = strerrordesc_np(error);
  return words != nullptr ? words : "Unknown error";
}

std::string Describe(const Failure& failure) {
  const std::string place = Place(failure);
  std::string text = failure.what;
  if (text.empty()) {
    text = place;
  } else if (!place.empty()) {
    text += " '" + place + "'";
  }
  if (!text.empty()) text += ": ";
  return os::CleanLine(text + Reason(failure));
}

}  // namespace rastrel
