#include "cli/input/pdf_options.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "cli/console/options.h"
#include "cli/console/values.h"
#include "rastrel/platform/os/native_file.h"

namespace rastrel::cli {
namespace {

constexpr std::array<std::string_view, 4> Boxes{"media", "crop", "trim", "bleed"};

}  // namespace

Expected<PdfOptions> PdfOptions::Apply(const Invocation& invocation) {
  PdfOptions options;
  if (invocation.Has(OptionId::Box)) {
    const std::string box = invocation.ValueOr(OptionId::Box, "");
    if (std::ranges::find(Boxes, box) == Boxes.end()) {
      return RefusedValue("--box", box, "a page's box is media, crop, trim or bleed");
    }
    if (auto set = os::SetEnvironmentValue("RASTREL_RIP_BOX", box.c_str()); !set) {
      return set.Error();
    }
  }
  if (invocation.Has(OptionId::ParallelPages)) {
    if (auto set = os::SetEnvironmentValue("RASTREL_RIP_PARALLEL_PAGES", "1"); !set)
      return set.Error();
  }
  if (invocation.Has(OptionId::PasswordFile)) {
    const std::string path = invocation.ValueOr(OptionId::PasswordFile, "");
    auto password = interpreter::SharedPassword::Read(path);
    if (!password) return RefusedValue("--password-file", path, Describe(password.Error()));
    options.m_Password = std::move(*password);
    const std::string shared = options.m_Password->Path();
    if (auto set = os::SetEnvironmentValue("RASTREL_RIP_PASSWORD_FILE", shared.c_str()); !set) {
      return set.Error();
    }
  }
  return options;
}

}  // namespace rastrel::cli
