#include "cli/cutting/nest_command.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/values.h"
#include "cli/cutting/length_value.h"
#include "cli/cutting/manifest.h"
#include "cli/cutting/many_prints.h"
#include "cli/cutting/many_results.h"
#include "cli/cutting/nest_watch.h"
#include "cutting/nest/nest.h"
#include "cutting/panel/panel.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cli {
namespace {

constexpr std::string_view RollPrefix = "roll:";
constexpr std::int32_t MaximumCopies = 1000;  // as many as pieces
constexpr double MillimetresInCentimetre = 10;
constexpr std::int32_t MaximumSeconds = 3600;

std::string NeededValue(const Invocation& invocation, OptionId id) {
  std::string value = invocation.ValueOr(id, "");
  if (value.empty())
    throw CommandError(ExitStatus::WrongUse, std::string(OptionOf(id).name) + " is needed");
  return value;
}

std::string NameOfResults(const Invocation& invocation) {
  std::string name = NeededValue(invocation, OptionId::ResultOutput);
  if (name == StandardOutputName)
    throw CommandError(ExitStatus::WrongUse, "-o needs the name of a file here");
  return name;
}

double LengthOr0(const Invocation& invocation, OptionId id) {
  const std::string text = invocation.ValueOr(id, "0");
  return text == "0" ? 0 : LengthOf(OptionOf(id).name, text, text);
}

cutting::NestTurns TurnsOf(const Invocation& invocation) {
  const std::string turns = invocation.ValueOr(OptionId::NestTurns, "90");
  if (turns == "none") return cutting::NestTurns::None;
  if (turns == "90") return cutting::NestTurns::Quarters;
  if (turns == "any") return cutting::NestTurns::Any;
  throw CommandError(ExitStatus::WrongUse,
                     Describe(RefusedValue("--rotate", turns, "pieces turn by none, 90 or any")));
}

cutting::NestOptions NestOptionsOf(const Invocation& invocation) {
  cutting::NestOptions options;
  const std::string sheet = NeededValue(invocation, OptionId::SheetSize);
  options.roll = sheet.starts_with(RollPrefix);
  if (options.roll) {
    options.width = cutting::MaximumNestLength;
    options.height = LengthOf("--sheet", sheet, std::string_view(sheet).substr(RollPrefix.size()));
  } else {
    const auto size = OrEnd(ExitStatus::WrongUse, ParseSize("--sheet", sheet));
    options.width = size.widthCm * MillimetresInCentimetre;
    options.height = size.heightCm * MillimetresInCentimetre;
  }
  options.gap = LengthOr0(invocation, OptionId::NestGap);
  options.turns = TurnsOf(invocation);
  // A time that is asked for is used.
  const std::string effort = invocation.Has(OptionId::NestSeconds)
                                 ? std::to_string(cutting::MaximumNestEffort)
                                 : std::string("8");
  options.effort = OrEnd(ExitStatus::WrongUse,
                         WholeNumberOf("--effort", invocation.ValueOr(OptionId::NestEffort, effort),
                                       0, cutting::MaximumNestEffort));
  return options;
}

std::int32_t SecondsOf(const Invocation& invocation) {
  return OrEnd(ExitStatus::WrongUse,
               WholeNumberOf("--seconds", invocation.ValueOr(OptionId::NestSeconds, "60"), 1,
                             MaximumSeconds));
}

struct Pieces {
  std::vector<cutting::CutJob> jobs;
  std::vector<std::shared_ptr<PagePicture>> pictures;  // with --print
  std::vector<cutting::NestInput> inputs;
};

void ReadPieces(const Invocation& invocation, Pieces& pieces) {
  const std::int32_t copies =
      OrEnd(ExitStatus::WrongUse,
            WholeNumberOf("--copies", invocation.ValueOr(OptionId::Copies, "1"), 1, MaximumCopies));
  for (const std::string& file : invocation.operands) {
    CutPage page = PageOfFile(invocation, file);
    pieces.jobs.push_back(std::move(page.job));
    pieces.pictures.push_back(std::move(page.picture));
  }
  for (std::size_t i = 0; i < pieces.jobs.size(); ++i)
    pieces.inputs.push_back({invocation.operands[i], &pieces.jobs[i], copies});
}

void WritePlacements(const Invocation& invocation, const Pieces& pieces,
                     const cutting::NestResult& result) {
  for (const cutting::NestPlacement& placed : result.placements) {
    const std::string& file = pieces.inputs[placed.input].name;
    const auto copy = static_cast<std::int64_t>(placed.copy) + 1;
    const auto sheet = static_cast<std::int64_t>(placed.sheet) + 1;
    if (invocation.Has(OptionId::Json)) {
      const cutting::Transform& map = placed.transform;
      JsonLine("piece")
          .Add("file", file)
          .Add("copy", copy)
          .Add("sheet", sheet)
          .AddNumber("turn_degrees", placed.turn)
          .AddNumber("a", map.a)
          .AddNumber("b", map.b)
          .AddNumber("c", map.c)
          .AddNumber("d", map.d)
          .AddNumber("x_mm", map.e)
          .AddNumber("y_mm", map.f)
          .Write();
    } else {
      WriteOutRow({file, std::to_string(copy), std::to_string(sheet),
                   os::ShortDecimal(placed.turn, 1), os::ShortDecimal(placed.transform.e, 2),
                   os::ShortDecimal(placed.transform.f, 2)});
    }
  }
}

void WriteNestDone(const Invocation& invocation, const cutting::NestResult& result,
                   const std::vector<std::string>& names) {
  if (invocation.Has(OptionId::Json)) {
    JsonLine line("done");
    line.Add("exit", 0)
        .Add("paths", names)
        .AddNumber("waste_percent", result.wastePercent)
        .Add("layouts", static_cast<std::int64_t>(result.layouts))
        .AddFlag("time_ended", result.wasEnded)
        .AddNumber("thinned_by_mm", result.thinnedBy);
    if (result.usedLengths.size() == 1) line.AddNumber("used_mm", result.usedLengths.front());
    line.Write();
    return;
  }
  for (std::size_t sheet = 0; sheet < result.usedLengths.size(); ++sheet)
    WriteErrorLine("note: sheet " + std::to_string(sheet + 1) + " is used up to " +
                   os::ShortDecimal(result.usedLengths[sheet], 1) + " mm");
  WriteErrorLine("note: " + os::ShortDecimal(result.wastePercent, 1) + " % is waste");
  if (result.wasEnded)
    WriteErrorLine("note: the time ended the search after " + std::to_string(result.layouts) +
                   " layouts; another run may try more or fewer");
  if (result.thinned > 0)
    WriteErrorLine("note: " + std::to_string(result.thinned) +
                   (result.thinned == 1 ? " file's outline was" : " files' outlines were") +
                   " thinned for the search, outward by up to " +
                   os::ShortDecimal(result.thinnedBy, 2) + " mm");
  for (const std::string& name : names) WriteOutPath(name);
}

// One result keeps the name that was asked for.
std::vector<std::string> NamesOf(const std::string& name, std::size_t count) {
  if (count == 1) return {name};
  std::vector<std::string> names;
  for (std::size_t i = 1; i <= count; ++i) names.push_back(NumberedName(name, i));
  return names;
}

std::vector<ResultFiles> FilesOf(const std::vector<std::string>& names, const std::string& print,
                                 const std::vector<std::string>& prints) {
  std::vector<ResultFiles> files;
  for (std::size_t i = 0; i < names.size(); ++i)
    files.push_back({names[i], print.empty() ? "" : prints[i]});
  return files;
}

void WritePanel(const Invocation& invocation, const cutting::Panel& panel, const std::string& name,
                const std::string& print) {
  const auto number = static_cast<std::int64_t>(panel.number);
  if (!invocation.Has(OptionId::Json)) {
    WriteOutRow({std::to_string(number), os::ShortDecimal(panel.area.left, 2),
                 os::ShortDecimal(panel.area.bottom, 2), os::ShortDecimal(panel.area.Width(), 2),
                 os::ShortDecimal(panel.area.Height(), 2), name});
    return;
  }
  JsonLine line("panel");
  line.Add("number", number)
      .Add("column", static_cast<std::int64_t>(panel.column) + 1)
      .Add("row", static_cast<std::int64_t>(panel.row) + 1)
      .AddNumber("left_mm", panel.area.left)
      .AddNumber("bottom_mm", panel.area.bottom)
      .AddNumber("width_mm", panel.area.Width())
      .AddNumber("height_mm", panel.area.Height())
      .Add("path", name);
  if (!print.empty()) line.Add("print", print);
  line.Write();
}

// Nothing if a signal ended it.
std::optional<cutting::NestResult> Search(const Invocation& invocation, const Pieces& pieces,
                                          cutting::NestOptions& options, std::int32_t seconds) {
  NestWatch watch(invocation, seconds);
  options.goOn = [&watch](const cutting::NestProgress& progress) { return watch.GoOn(progress); };
  auto result = cutting::Nest(pieces.inputs, options);
  options.goOn = {};
  if (!result) OrEndByCode(ExitStatus::JobFailed, Expected<void>(result.Error()));
  if (watch.IsStopped()) return std::nullopt;
  return *std::move(result);
}

}  // namespace

ExitStatus NestCommand(const Invocation& invocation) {
  const std::string output = NameOfResults(invocation);
  const std::string print = PrintNameOf(invocation);
  cutting::NestOptions options = NestOptionsOf(invocation);
  const std::int32_t seconds = SecondsOf(invocation);
  CheckManifestNames(invocation);
  Pieces pieces;
  ReadPieces(invocation, pieces);
  const auto result = Search(invocation, pieces, options, seconds);
  if (!result) return ExitStatus::Cancelled;
  auto names = NamesOf(output, result->usedLengths.size());
  const auto prints = NamesOf(print, names.size());
  for (std::size_t sheet = 0; sheet < names.size(); ++sheet) {
    const auto marked =
        WithMarksOf(invocation, cutting::SheetJob(pieces.inputs, options, *result, sheet),
                    pieces.pictures.front().get());
    WriteJobAs(invocation, marked.job, names[sheet]);
    if (!print.empty())
      OrEndByCode(ExitStatus::JobFailed,
                  WritePrintFile(SheetPage(invocation, pieces.inputs, options, *result, sheet,
                                           pieces.pictures, marked),
                                 prints[sheet]));
  }
  WriteNestManifest(invocation, pieces.inputs, options, *result, FilesOf(names, print, prints));
  if (!print.empty()) names.insert(names.end(), prints.begin(), prints.end());
  WritePlacements(invocation, pieces, *result);
  WriteNestDone(invocation, *result, names);
  return ExitStatus::Done;
}

ExitStatus TileCommand(const Invocation& invocation) {
  const std::string output = NameOfResults(invocation);
  const auto size = OrEnd(ExitStatus::WrongUse,
                          ParseSize("--panel", NeededValue(invocation, OptionId::PanelSize)));
  const cutting::PanelOptions options{.width = size.widthCm * MillimetresInCentimetre,
                                      .height = size.heightCm * MillimetresInCentimetre,
                                      .overlap = LengthOr0(invocation, OptionId::PanelOverlap)};
  const std::string print = PrintNameOf(invocation);
  CheckManifestNames(invocation);
  const CutPage page = PageOfFile(invocation, invocation.operand);
  const auto panels = cutting::SplitIntoPanels(page.job, options);
  if (!panels) OrEndByCode(ExitStatus::JobFailed, Expected<void>(panels.Error()));
  auto names = NamesOf(output, panels->size());
  const auto prints = NamesOf(print, panels->size());
  for (std::size_t i = 0; i < panels->size(); ++i) {
    const cutting::Panel& panel = (*panels)[i];
    const auto marked = WithMarksOf(invocation, panel.job, page.picture.get());
    WriteJobAs(invocation, marked.job, names[i]);
    if (!print.empty())
      OrEndByCode(
          ExitStatus::JobFailed,
          WritePrintFile(PanelPage(invocation, panel, options, page.picture, marked), prints[i]));
    WritePanel(invocation, panel, names[i], print.empty() ? "" : prints[i]);
  }
  WriteAssembly(invocation, page.job, options, *panels, FilesOf(names, print, prints));
  if (!print.empty()) names.insert(names.end(), prints.begin(), prints.end());
  if (invocation.Has(OptionId::Json)) JsonLine("done").Add("exit", 0).Add("paths", names).Write();
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
