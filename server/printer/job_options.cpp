#include "server/printer/job_options.h"

#include <algorithm>

#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::server {
namespace {

constexpr std::size_t NameLimit = 255;
constexpr std::size_t PrinterNameLimit = 60;
constexpr int HundredthsInCentimeter = 1000;

const OfferedMode* ModeFor(const SenderWishes& wishes, const std::vector<OfferedMode>& modes) {
  if (!wishes.mode.empty()) {
    const auto named = std::ranges::find(modes, wishes.mode, &OfferedMode::keyword);
    return named == modes.end() ? nullptr : &*named;
  }
  if (wishes.horizontal == 0 && !wishes.gray) return nullptr;
  const auto fits = std::ranges::find_if(modes, [&](const OfferedMode& mode) {
    const bool resolution = wishes.horizontal == 0 || (mode.horizontal == wishes.horizontal &&
                                                       mode.vertical == wishes.vertical);
    return resolution && mode.isColor != wishes.gray;
  });
  return fits == modes.end() ? nullptr : &*fits;
}

std::string ListOf(const std::vector<std::pair<int, int>>& pages) {
  std::string list;
  for (const auto& [first, last] : pages) {
    if (first < 1 || last < first) continue;
    if (!list.empty()) list += ',';
    list += std::to_string(first);
    if (last != first) list += "-" + std::to_string(last);
  }
  return list;
}

std::string Centimeters(int hundredths) {
  return os::ShortDecimal(static_cast<double>(hundredths) / HundredthsInCentimeter, 3);
}

}  // namespace

JobOptions OptionsOf(const SenderWishes& wishes, const std::vector<OfferedMode>& modes) {
  JobOptions options;
  if (wishes.copies > 1) options["copies"] = std::to_string(wishes.copies);
  if (const std::string pages = ListOf(wishes.pages); !pages.empty()) options["pages"] = pages;
  if (const OfferedMode* mode = ModeFor(wishes, modes)) options["mode"] = mode->name;
  if (wishes.fit && wishes.fit->width > 0 && wishes.fit->length > 0)
    options["scale"] =
        Centimeters(wishes.fit->width) + "x" + Centimeters(wishes.fit->length) + "cm";
  return options;
}

std::string CleanName(std::string_view name, std::string_view usual) {
  name = name.substr(0, NameLimit);
  std::string clean = os::CleanLine(name.substr(0, os::WholeCharacters(name)));
  if (clean.size() > NameLimit) {
    clean.resize(NameLimit);
    clean.resize(os::WholeCharacters(clean));
  }
  const std::size_t begin = clean.find_first_not_of(' ');
  return begin == clean.npos ? std::string(usual) : clean.substr(begin);
}

std::string PrinterNameOf(std::string_view device) {
  std::string name;
  for (const char one : device.substr(0, PrinterNameLimit)) {
    const bool isPlain = (one >= 'a' && one <= 'z') || (one >= 'A' && one <= 'Z') ||
                         (one >= '0' && one <= '9') || one == '_';
    if (isPlain)
      name += one;
    else if (!name.empty() && name.back() != '-')
      name += '-';
  }
  while (name.ends_with('-')) name.pop_back();
  return name.empty() ? "printer" : name;
}

}  // namespace rastrel::server
