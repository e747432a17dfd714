#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cutting/job/cut_job.h"
#include "cutting/output/dxf_writer.h"
#include "cutting/output/gcode_writer.h"
#include "cutting/output/hpgl_writer.h"
#include "cutting/output/pdf_writer.h"
#include "cutting/output/placement.h"
#include "rastrel/platform/os/expected.h"

/// A job in the forms that cutters take: docs/formats/cut-output.md has each. All are written in
/// memory, depend on nothing but the job and the options, and have a decimal point whatever the
/// locale. Only paths that a tool follows are in them, in the job's order.
namespace rastrel::cutting {

enum class CutForm { Hpgl, Dxf, Svg, Pdf, Gcode };

/// "hpgl", "dxf", "svg", "pdf", "gcode".
[[nodiscard]] std::string_view NameOf(CutForm form);
[[nodiscard]] std::optional<CutForm> CutFormOf(std::string_view name);
/// The form that a file's name asks for by its ending, in capitals or not: .plt and .hpgl, .dxf,
/// .svg, .pdf, .gcode, .nc and .ngc. No value for any other.
[[nodiscard]] std::optional<CutForm> CutFormOfFile(std::string_view name);

struct CutFileOptions {
  /// Of forms without curves: how far a path may lie beside a curve, mm. Lines take half of it, and
  /// the other half is for positions that are rounded (those of HPGL may take 0.018 mm).
  double tolerance = 0.02;
  Placement placement{};  ///< where a device counts from, and along which axes
  HpglOptions hpgl{};
  DxfVersion dxf = DxfVersion::R2000;
  PdfOptions pdf{};
  GcodeTable gcode{};
};

/// The whole file. Fails for a coordinate that is not a number or farther than FarthestCoordinate
/// from the page's corner, for settings that no device has (a speed or a force of 0 or less, passes
/// out of 1 to 99), for a tolerance below 0.0001 mm, for an origin at a mark of a job without
/// marks, and where its form's writer does.
[[nodiscard]] Expected<std::string> WriteCutFile(const CutJob& job, CutForm form,
                                                 const CutFileOptions& options);

/// Millimetres: a kilometre.
inline constexpr double FarthestCoordinate = 1e6;

}  // namespace rastrel::cutting
