#include "cutting/output/cut_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "cutting/output/svg_writer.h"

namespace rastrel::cutting {
namespace {

constexpr double LeastTolerance = 0.0001;
// Half of the tolerance is for lines beside curves, and the other for the rounding of positions.
constexpr double ToleranceOfLines = 0.5;
constexpr int MaximumPasses = 99;
constexpr double MaximumSetting = 1e6;

// In the order of CutForm.
constexpr std::array<std::string_view, 5> Names{"hpgl", "dxf", "svg", "pdf", "gcode"};

struct Ending {
  std::string_view text;
  CutForm form;
};

constexpr std::array Endings{Ending{".plt", CutForm::Hpgl}, Ending{".hpgl", CutForm::Hpgl},
                             Ending{".dxf", CutForm::Dxf},  Ending{".svg", CutForm::Svg},
                             Ending{".pdf", CutForm::Pdf},  Ending{".gcode", CutForm::Gcode},
                             Ending{".nc", CutForm::Gcode}, Ending{".ngc", CutForm::Gcode}};

bool IsNear(double value) { return std::abs(value) <= FarthestCoordinate; }
bool IsNear(Point point) { return IsNear(point.x) && IsNear(point.y); }

bool IsNear(const Contour& contour) {
  return IsNear(contour.start) && std::ranges::all_of(contour.segments, [](const Segment& segment) {
           return IsNear(segment.end) &&
                  (!segment.isCurve || (IsNear(segment.first) && IsNear(segment.second)));
         });
}

Failure PathFault(std::size_t index, const char* why) {
  return FailureOf("path " + std::to_string(index + 1) + " " + why);
}

Expected<void> CheckSettings(const ToolSettings& settings, std::size_t index) {
  const auto isFit = [](const std::optional<double>& value) {
    return !value || (*value > 0 && *value <= MaximumSetting);
  };
  if (!isFit(settings.speed))
    return PathFault(index, "has a speed that is not above 0 and at most 1000000");
  if (!isFit(settings.force))
    return PathFault(index, "has a force that is not above 0 and at most 1000000");
  if (settings.passes < 1 || settings.passes > MaximumPasses)
    return PathFault(index, "is followed less than once or more than 99 times");
  return {};
}

Expected<void> CheckPaths(const CutJob& job, CutForm form) {
  for (std::size_t i = 0; i < job.paths.size(); ++i) {
    const CutPath& path = job.paths[i];
    if (!HasTool(path.operation)) continue;
    if (auto checked = CheckSettings(path.settings, i); !checked) return checked;
    // A plotter's positions have a limit of their own, which is looked at as they are written.
    if (form == CutForm::Hpgl) continue;
    if (!std::ranges::all_of(path.contours, [](const Contour& contour) { return IsNear(contour); }))
      return PathFault(i, "leads farther than a kilometre");
  }
  return {};
}

Expected<void> Check(const CutJob& job, CutForm form, const CutFileOptions& options) {
  if (!(options.tolerance >= LeastTolerance && options.tolerance <= FarthestCoordinate))
    return FailureOf("the tolerance of curves is 0.0001 mm or more");
  if (!(job.width >= 0 && job.height >= 0 && IsNear(job.width) && IsNear(job.height)))
    return FailureOf("the page's sides are 0 to a million millimetres long");
  const bool farMark = std::ranges::any_of(
      job.marks, [](const RegistrationMark& mark) { return !IsNear(mark.center); });
  if (farMark) return FailureOf("a registration mark lies farther than a kilometre");
  return CheckPaths(job, form);
}

}  // namespace

std::string_view NameOf(CutForm form) { return Names[static_cast<std::size_t>(form)]; }

std::optional<CutForm> CutFormOf(std::string_view name) {
  const auto* const found = std::ranges::find(Names, name);
  if (found == Names.end()) return std::nullopt;
  return static_cast<CutForm>(found - Names.begin());
}

std::optional<CutForm> CutFormOfFile(std::string_view name) {
  std::string lower(name);
  for (char& byte : lower) {
    if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
  }
  for (const Ending& ending : Endings) {
    if (lower.ends_with(ending.text)) return ending.form;
  }
  return std::nullopt;
}

Expected<std::string> WriteCutFile(const CutJob& job, CutForm form, const CutFileOptions& options) {
  if (auto checked = Check(job, form, options); !checked) return checked.Error();
  const auto toDevice = TransformOf(job, options.placement);
  if (!toDevice) return toDevice.Error();
  const double tolerance = options.tolerance * ToleranceOfLines;
  switch (form) {
    case CutForm::Hpgl: return HpglText(job, *toDevice, tolerance, options.hpgl);
    case CutForm::Dxf: return DxfText(job, *toDevice, tolerance, options.dxf);
    case CutForm::Svg: return SvgText(job, *toDevice);
    case CutForm::Pdf: return PdfText(job, *toDevice, options.pdf);
    case CutForm::Gcode: break;
  }
  return GcodeText(job, *toDevice, tolerance, options.gcode);
}

}  // namespace rastrel::cutting
