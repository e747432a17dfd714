#include <string>
#include <string_view>
#include <utility>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/cutting/cut_pipeline.h"
#include "cli/cutting/length_value.h"
#include "cutting/clean/fault_picture.h"
#include "cutting/clean/heal.h"
#include "cutting/rules/rules.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cli {
namespace {

using namespace cutting;

std::string Millimeters(double length) { return os::ShortDecimal(length, 3) + " mm"; }

std::string Counted(std::size_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

// People count from 1.
std::string NameOf(ContourPlace place) {
  return "path " + std::to_string(place.path + 1) + ", contour " +
         std::to_string(place.contour + 1);
}

template <typename Entry>
std::string SentenceOf(const Entry& entry) {
  std::string sentence = NameOf(entry.contour) + ": " + std::string(cutting::NameOf(entry.kind));
  if (entry.other != entry.contour) sentence += " (" + NameOf(entry.other) + ")";
  return sentence + ", " + Millimeters(entry.length) + ", at " +
         os::ShortDecimal(entry.place.x, 3) + ", " + os::ShortDecimal(entry.place.y, 3);
}

template <typename Entry>
void WriteEntry(const char* event, const Entry& entry) {
  const auto number = [](std::size_t value) { return static_cast<std::int64_t>(value); };
  JsonLine line(event);
  line.Add("kind", cutting::NameOf(entry.kind))
      .Add("path", number(entry.contour.path))
      .Add("contour", number(entry.contour.contour));
  if (entry.other != entry.contour)
    line.Add("other_path", number(entry.other.path))
        .Add("other_contour", number(entry.other.contour));
  line.AddNumber("x_mm", entry.place.x)
      .AddNumber("y_mm", entry.place.y)
      .AddNumber("length_mm", entry.length)
      .Write();
}

void WriteReport(const CutRun& run, const CheckReport& report) {
  if (!run.invocation.Has(OptionId::Json)) {
    for (const Fault& fault : report.faults) WriteOutLine(SentenceOf(fault));
    if (run.invocation.Has(OptionId::Bleed))
      WriteOutLine(Counted(run.bleedGaps, "place") + " without the bleed");
    WriteOutLine(Counted(report.faults.size(), "fault") + " in " +
                 Counted(report.contours, "contour") + " of " + Counted(report.paths, "path") +
                 ", " + os::ShortDecimal(report.length / 1000, 3) + " m");
    return;
  }
  for (const Fault& fault : report.faults) WriteEntry("fault", fault);
  JsonLine line("done");
  line.Add("exit", static_cast<std::int64_t>(run.status))
      .Add("faults", static_cast<std::int64_t>(report.faults.size()));
  if (run.invocation.Has(OptionId::Bleed))
    line.Add("bleed_gaps", static_cast<std::int64_t>(run.bleedGaps));
  line.Add("cut_paths", static_cast<std::int64_t>(report.paths))
      .Add("contours", static_cast<std::int64_t>(report.contours))
      .AddNumber("length_mm", report.length)
      .AddFlag("complete", report.complete)
      .Add("paths", run.written)
      .Write();
}

void WarnIfIncomplete(const CutRun& run, bool complete) {
  if (!complete) run.Warn("so many lines lie close together that not all of them were compared");
}

// The options go before the rule file's defaults.
CheckLimits LimitsOf(const CutRun& run) {
  CheckLimits limits;
  if (run.rules) limits.joining = run.rules->Defaults().joining;
  const auto set = [&](OptionId id, double& limit) {
    if (!run.invocation.Has(id)) return;
    const std::string text = run.invocation.ValueOr(id, "");
    limit = LengthOf(OptionOf(id).name, text, text);
  };
  set(OptionId::Joining, limits.joining);
  set(OptionId::TinySize, limits.tinySize);
  set(OptionId::SpikeWidth, limits.spikeWidth);
  return limits;
}

void HealJob(CutRun& run) {
  HealResult result = Heal(std::move(run.job),
                           {.faults = LimitsOf(run), .unite = run.invocation.Has(OptionId::Unite)});
  run.job = std::move(result.job);
  for (const Repair& repair : result.repairs) {
    if (run.invocation.Has(OptionId::Json))
      WriteEntry("repair", repair);
    else
      run.Note(SentenceOf(repair));
  }
  WarnIfIncomplete(run, result.complete);
}

Expected<void> CheckJob(CutRun& run) {
  const CheckReport report = Check(run.job, LimitsOf(run));
  if (run.invocation.Has(OptionId::ResultOutput)) {
    const std::string path = run.invocation.ValueOr(OptionId::ResultOutput, "");
    if (!path.ends_with(".svg"))
      throw CommandError(ExitStatus::WrongUse,
                         "--check draws its faults into a file whose name ends in .svg");
    WriteCutText(run, path, FaultPicture(run.job, report));
  }
  run.ended = true;
  run.status =
      report.faults.empty() && run.bleedGaps == 0 ? ExitStatus::Done : ExitStatus::FaultsFound;
  WriteReport(run, report);
  WarnIfIncomplete(run, report.complete);
  return {};
}

}  // namespace

Expected<void> CleanCutJob(CutRun& run) {
  if (run.invocation.Has(OptionId::Unite) && !run.invocation.Has(OptionId::Heal))
    throw CommandError(ExitStatus::WrongUse, "--unite is a part of --heal");
  const bool isClean = run.invocation.Has(OptionId::Heal) || run.invocation.Has(OptionId::Check);
  for (const OptionId id : {OptionId::Joining, OptionId::TinySize, OptionId::SpikeWidth})
    if (run.invocation.Has(id) && !isClean)
      throw CommandError(ExitStatus::WrongUse,
                         std::string(OptionOf(id).name) + " goes with --check or --heal");
  if (run.invocation.Has(OptionId::Heal)) HealJob(run);
  if (run.invocation.Has(OptionId::Check)) return CheckJob(run);
  return {};
}

}  // namespace rastrel::cli
