#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/console/options.h"
#include "cli/console/values.h"
#include "rastrel/conversion/cut_data.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The form of a conversion's result.
enum class ResultKind { Png, Tiff, Svg, Pdf, Document, Exchange, Plotter, Json };

/// The file that a conversion makes.
struct ResultFile {
  ResultKind kind = ResultKind::Png;
  std::string path;       ///< as the user gave it; empty: named after the input
  std::string pattern;    ///< of the name after the input (result_names.h); empty: beside no other
  bool isOutput = false;  ///< standard output
  std::string extension;  ///< of the kind, with its dot
};

/// The options of `rastrel convert` and `rastrel cut`.
struct ConversionRequest {
  PartSize size;
  std::optional<std::int32_t> resolution;
  CPS2CutData cut;
  CPS2CutData halfCut;
  std::optional<std::int32_t> page;  ///< from 1
  bool preview = false;
  bool window = false;  ///< a person answers the dialog in a window
  bool ask = false;     ///< a person answers the dialog on the terminal
  bool json = false;
  ResultFile result;
};

/// Reads the options of the invocation's command. The failure is a message for the user.
[[nodiscard]] Expected<ConversionRequest> ReadConversionRequest(const Invocation& invocation);

}  // namespace rastrel::cli
