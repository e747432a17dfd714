#include "interpreter/settings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <thread>
#include <utility>

#include "rastrel/platform/os/path.h"

namespace rastrel::interpreter {
namespace {

// Large enough for any use, small enough that seconds or mebibytes can be reckoned with.
constexpr std::uint64_t Maximum = 1000000000000;
constexpr std::uint64_t MaximumPage = 1000000;

void Read(const char* name, std::uint64_t& value, std::vector<std::string>& complaints,
          std::uint64_t maximum = Maximum) {
  const std::string text = os::EnvironmentValue(name);
  if (text.empty()) return;
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stop == end && number > 0 && number <= maximum) {
    value = number;
  } else {
    complaints.push_back(std::string(name) + " is not a whole number above 0; " +
                         std::to_string(value) + " is used.");
  }
}

constexpr std::array<std::pair<std::string_view, PdfBox>, 4> Boxes{{{"media", PdfBox::Media},
                                                                    {"crop", PdfBox::Crop},
                                                                    {"trim", PdfBox::Trim},
                                                                    {"bleed", PdfBox::Bleed}}};

void ReadBox(PdfBox& box, std::vector<std::string>& complaints) {
  constexpr const char* Name = "RASTREL_RIP_BOX";
  const std::string text = os::EnvironmentValue(Name);
  if (text.empty()) return;
  for (const auto& [name, value] : Boxes) {
    if (name != text) continue;
    box = value;
    return;
  }
  complaints.push_back(std::string(Name) +
                       " is none of media, crop, trim and bleed; the crop box is used.");
}

}  // namespace

std::uint64_t CoreCount() {
  return std::clamp<std::uint64_t>(std::thread::hardware_concurrency(), 1, MaximumCores);
}

Settings Settings::FromEnvironment(std::vector<std::string>& complaints) {
  Settings settings;
  Read("RASTREL_RIP_TIMEOUT", settings.timeSeconds, complaints);
  Read("RASTREL_RIP_CPU", settings.processorSeconds, complaints);
  Read("RASTREL_RIP_MEMORY", settings.memoryMebibytes, complaints);
  Read("RASTREL_RIP_THREADS", settings.threads, complaints);
  settings.threads = std::min(settings.threads, MaximumCores);
  Read("RASTREL_RIP_PROCESSES", settings.processes, complaints);
  settings.processes = std::min(settings.processes, MaximumCores);
  Read("RASTREL_RIP_PIXELS", settings.pagePixels, complaints);
  Read("RASTREL_RIP_SIZE", settings.totalMebibytes, complaints);
  Read("RASTREL_RIP_TEMP", settings.workMebibytes, complaints);
  Read("RASTREL_SEPARATION_DPI", settings.separationDpi, complaints);
  settings.separationDpi = std::min(settings.separationDpi, MaximumSeparationDpi);
  settings.parallelPages = os::EnvironmentValue("RASTREL_RIP_PARALLEL_PAGES") == "1";
  ReadBox(settings.pdfBox, complaints);
  Read("RASTREL_RIP_PAGE", settings.page, complaints, MaximumPage);
  settings.passwordFile = os::EnvironmentValue("RASTREL_RIP_PASSWORD_FILE");
  return settings;
}

}  // namespace rastrel::interpreter
