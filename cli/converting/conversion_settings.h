#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "rastrel/conversion/cut_data.h"
#include "rastrel/conversion/job_header_writer.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

struct Invocation;

/// The settings of a conversion.
struct ConversionSettings {
  std::optional<PageSize> page;
  std::optional<int> resolution;
  CPS2CutData cut;
  CPS2CutData halfCut;

  /// Whether any option was given.
  [[nodiscard]] bool Any() const;
  /// The job header.
  [[nodiscard]] std::wstring Header() const;
};

/// Takes --page-size, --dpi, --cut-color and --half-cut-color. The failure of this and
/// the next is a message for the user.
[[nodiscard]] Expected<ConversionSettings> ReadConversionSettings(const Invocation& invocation);

/// "rgb:R,G,B" or "cmyk:C,M,Y,K", each from 0 to 255 or a percentage, or "spot:NAME".
[[nodiscard]] Expected<CPS2CutData> ParseCutData(std::string_view option, std::string_view text);

/// The job header that a file begins with, up to its last line, in its own bytes; empty if it has
/// none.
[[nodiscard]] std::string HeaderOf(const std::string& path);

}  // namespace rastrel::cli
