#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "cli/console/exit_status.h"
#include "cli/console/json_line.h"
#include "cli/console/values.h"
#include "cli/cutting/cut_pipeline.h"
#include "cli/cutting/length_value.h"
#include "cutting/toolpath/toolpath.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cli {
namespace {

using cutting::CutPath;
using cutting::Operation;

constexpr std::array StageOptions{OptionId::Kerf,      OptionId::CornerForm, OptionId::Overcut,
                                  OptionId::LeadIn,    OptionId::Bridges,    OptionId::WeedBox,
                                  OptionId::WeedLines, OptionId::NoOrder};
constexpr std::int32_t MaximumBridges = 1'000;

double ValueOf(const Invocation& invocation, OptionId id) {
  const std::string text = invocation.ValueOr(id, "");
  return LengthOf(OptionOf(id).name, text, text);
}

cutting::Corners CornersOf(const Invocation& invocation) {
  const std::string form = invocation.ValueOr(OptionId::CornerForm, "round");
  if (form == "round") return cutting::Corners::Round;
  if (form == "square") return cutting::Corners::Square;
  if (form == "pointed") return cutting::Corners::Pointed;
  throw CommandError(
      ExitStatus::WrongUse,
      Describe(RefusedValue("--corners", form, "corners are round, square or pointed")));
}

// Whether the option's value holds for the path: bridges keep a piece that is cut free, and the
// others are for whatever a knife or a beam goes around.
bool Concerns(OptionId id, const CutPath& path) {
  return path.operation == Operation::Cut ||
         (path.operation == Operation::CutHalf && id != OptionId::Bridges);
}

void SetAll(CutRun& run, OptionId id, double cutting::ToolSettings::*member) {
  if (!run.invocation.Has(id)) return;
  const double length = ValueOf(run.invocation, id);
  for (CutPath& path : run.job.paths)
    if (Concerns(id, path)) path.settings.*member = length;
}

void SetBridges(CutRun& run) {
  if (!run.invocation.Has(OptionId::Bridges)) return;
  const std::string text = run.invocation.ValueOr(OptionId::Bridges, "");
  const auto parts = Split(text, ',');
  if (parts.size() != 2)
    throw CommandError(
        ExitStatus::WrongUse,
        Describe(RefusedValue("--bridges", text, "bridges are N,LENGTH, as in 4,1mm")));
  const auto count = WholeNumberOf("--bridges", parts[0], 1, MaximumBridges);
  if (!count) throw CommandError(ExitStatus::WrongUse, Describe(count.Error()));
  const double width = LengthOf("--bridges", text, parts[1]);
  for (CutPath& path : run.job.paths) {
    if (!Concerns(OptionId::Bridges, path)) continue;
    path.settings.bridges = *count;
    path.settings.bridgeWidth = width;
  }
}

bool IsWanted(const Invocation& invocation) {
  if (std::ranges::any_of(StageOptions, [&](OptionId id) { return invocation.Has(id); }))
    return true;
  const std::string output = invocation.ValueOr(OptionId::ResultOutput, "-");
  std::string ending = std::filesystem::path(output).extension().string();
  for (char& letter : ending)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return output != "-" && ending != ".json";
}

std::string Counted(std::size_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

std::string Millimetres(double length) { return os::ShortDecimal(length, 1) + " mm"; }

void WarnOfKerf(const CutRun& run, const cutting::KerfReport& kerf) {
  constexpr std::size_t NamedPlaces = 10;
  for (std::size_t i = 0; i < std::min(kerf.vanished.size(), NamedPlaces); ++i) {
    const auto& place = kerf.vanished[i];
    run.Warn("the hole at " + os::ShortDecimal(place.place.x, 2) + "," +
             os::ShortDecimal(place.place.y, 2) + " mm is narrower than the kerf and is left out");
  }
  if (kerf.vanished.size() > NamedPlaces)
    run.Warn("so are " + std::to_string(kerf.vanished.size() - NamedPlaces) + " more");
  if (kerf.open > 0)
    run.Warn(Counted(kerf.open, "open path has", "open paths have") +
             " no side of the waste: the kerf moves closed ones alone");
  if (kerf.tangled > 0)
    run.Warn(Counted(kerf.tangled, "path has", "paths have") +
             " too many crossings or details within the kerf, which is not worked there");
  if (kerf.offSheet > 0)
    run.Warn(Counted(kerf.offSheet, "path lies", "paths lie") +
             " beyond 100 m, where the kerf is not worked");
}

void WarnOfClosing(const CutRun& run, const cutting::ClosingReport& closing) {
  if (closing.fewerBridges > 0)
    run.Warn(Counted(closing.fewerBridges, "path is", "paths are") +
             " too short for all bridges and got fewer");
  if (closing.cornerBridges > 0)
    run.Warn(Counted(closing.cornerBridges, "bridge is", "bridges are") +
             " at a corner, since no place near it was straight");
  if (closing.noLeadIn > 0)
    run.Warn(Counted(closing.noLeadIn, "path begins", "paths begin") +
             " without a lead-in, for which there is no room in the waste");
}

void Report(const CutRun& run, const cutting::ToolPathReport& report) {
  WarnOfKerf(run, report.kerf);
  WarnOfClosing(run, report.closing);
  if (run.invocation.Has(OptionId::Json)) {
    const auto count = [](std::size_t value) { return static_cast<std::int64_t>(value); };
    JsonLine("tool-paths")
        .Add("lines", count(report.lines))
        .AddNumber("length_mm", report.toolLength)
        .AddNumber("travel_before_mm", report.travelBefore)
        .AddNumber("travel_mm", report.travelAfter)
        .Add("offset", count(report.kerf.moved))
        .Add("vanished", count(report.kerf.vanished.size()))
        .Add("overcuts", count(report.closing.overcuts))
        .Add("lead_ins", count(report.closing.leadIns))
        .Add("bridges", count(report.closing.bridges))
        .Write();
    return;
  }
  // A way that stays as it is to a millimetre is no news.
  if (report.travelBefore - report.travelAfter >= 1)
    run.Note("the tool travels " + Millimetres(report.travelAfter) + " between " +
             std::to_string(report.lines) + " paths; in the file's order it would be " +
             Millimetres(report.travelBefore));
}

}  // namespace

Expected<void> WorkToolPaths(CutRun& run) {
  if (!IsWanted(run.invocation)) return {};
  SetAll(run, OptionId::Kerf, &cutting::ToolSettings::kerf);
  SetAll(run, OptionId::Overcut, &cutting::ToolSettings::overcut);
  SetAll(run, OptionId::LeadIn, &cutting::ToolSettings::leadIn);
  SetBridges(run);
  cutting::ToolPathOptions options;
  options.corners = CornersOf(run.invocation);
  options.order = !run.invocation.Has(OptionId::NoOrder);
  if (run.invocation.Has(OptionId::WeedBox))
    options.weeding.boxGap = ValueOf(run.invocation, OptionId::WeedBox);
  if (run.invocation.Has(OptionId::WeedLines))
    options.weeding.step = ValueOf(run.invocation, OptionId::WeedLines);
  Expected<cutting::ToolPathResult> result = cutting::MakeToolPaths(run.job, options);
  if (!result) return result.Error();
  run.job = std::move(result->job);
  Report(run, result->report);
  return {};
}

}  // namespace rastrel::cli
