#include "cli/cutting/frame_stages.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "cli/console/exit_status.h"
#include "cli/console/unwritten_file.h"
#include "cutting/frame/mark_fit.h"
#include "cutting/frame/mark_layout.h"
#include "cutting/rules/rules.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr double InchMillimetres = 25.4;
// 256 places are a few kilobytes.
constexpr std::size_t MaximumMeasurementBytes = 1 << 20;

double ResidualLimit(const CutRun& run) {
  const Invocation& invocation = run.invocation;
  if (!invocation.Has(OptionId::Residual))
    return run.rules ? run.rules->Defaults().residual : cutting::UsualResidual;
  const std::string text = invocation.ValueOr(OptionId::Residual, "");
  const auto limit = cutting::ParseMillimetres(text);
  if (!limit || *limit < 0.01 || *limit > 10)
    throw CommandError(ExitStatus::WrongUse, "--residual " + text +
                                                 ": a length from 0.01 to 10 millimetres is "
                                                 "needed, without its unit");
  return *limit;
}

std::optional<cutting::MapKind> ChosenKind(const Invocation& invocation) {
  if (!invocation.Has(OptionId::FitKind)) return std::nullopt;
  const std::string name = invocation.ValueOr(OptionId::FitKind, "");
  if (name == "similar") return cutting::MapKind::Similar;
  if (name == "affine") return cutting::MapKind::Affine;
  if (name == "projective") return cutting::MapKind::Projective;
  throw CommandError(ExitStatus::WrongUse,
                     "--fit " + name + ": similar, affine and projective are known");
}

Expected<std::vector<cutting::Point>> MeasuredInFile(const std::string& path) {
  const auto text = os::ReadWholeFile(os::FromNative(path), MaximumMeasurementBytes);
  if (!text) {
    Failure failure = FailureAt(path, text.Error());
    failure.code = FailureCode::BadInput;
    return failure;
  }
  return cutting::ParseMeasurements(*text, path);
}

Expected<std::vector<cutting::Point>> MeasuredPlaces(const Invocation& invocation) {
  const bool hasFile = invocation.Has(OptionId::Measurements);
  if (hasFile && invocation.Has(OptionId::Measured))
    throw CommandError(ExitStatus::WrongUse, "give --measured or --measurements, not both");
  if (hasFile) return MeasuredInFile(invocation.ValueOr(OptionId::Measurements, ""));
  std::vector<cutting::Point> places;
  for (const std::string& text : invocation.measured) {
    const auto place = cutting::ParseMeasured(text);
    if (!place)
      return FailureOf("mark " + std::to_string(places.size() + 1) + ": " + place.Error().why,
                       FailureCode::BadInput);
    places.push_back(*place);
  }
  return places;
}

bool IsMeasured(const Invocation& invocation) {
  return invocation.Has(OptionId::Measured) || invocation.Has(OptionId::Measurements);
}

std::uint32_t PixelsOf(double length, double pixel) {
  return pixel > 0 ? static_cast<std::uint32_t>(std::lround(length / pixel)) : 0;
}

std::string Millimetres(double length) { return os::ShortDecimal(length, 2) + " mm"; }

}  // namespace

Expected<void> AddMarks(CutRun& run) {
  if (!run.invocation.Has(OptionId::CutMarks)) return {};
  if (IsMeasured(run.invocation))
    throw CommandError(ExitStatus::WrongUse,
                       "--marks puts new marks on the page, which no cutter has measured yet");
  const auto options = cutting::ParseMarks(run.invocation.ValueOr(OptionId::CutMarks, ""));
  if (!options) throw CommandError(ExitStatus::WrongUse, "--marks: " + Describe(options.Error()));
  cutting::MarkOptions placed = *options;
  if (run.picture) {
    placed.pixelWidth = InchMillimetres / run.picture->xResolution;
    placed.pixelHeight = InchMillimetres / run.picture->yResolution;
  }
  auto marked = cutting::WithMarks(std::move(run.job), placed);
  if (!marked) return marked.Error();
  run.job = std::move(marked->job);
  run.marksInAllInks = placed.inAllInks;
  const cutting::PageGrowth& growth = marked->growth;
  run.margins = {.left = PixelsOf(growth.left, placed.pixelWidth),
                 .bottom = PixelsOf(growth.bottom, placed.pixelHeight),
                 .right = PixelsOf(growth.right, placed.pixelWidth),
                 .top = PixelsOf(growth.top, placed.pixelHeight)};
  run.Note(std::to_string(run.job.marks.size()) + " marks; the page grows by " +
           Millimetres(growth.left) + " at the left, " + Millimetres(growth.bottom) +
           " at the bottom, " + Millimetres(growth.right) + " at the right and " +
           Millimetres(growth.top) + " at the top");
  return {};
}

Expected<void> PrintWithMarks(CutRun& run) {
  if (!run.invocation.Has(OptionId::CutPrint)) return {};
  const std::string path = run.invocation.ValueOr(OptionId::CutPrint, "");
  if (!run.picture)
    throw CommandError(ExitStatus::WrongUse,
                       "--print needs a PostScript, EPS or PDF file: a cut job has no picture");
  const bool isPdf = path.ends_with(".pdf");
  if (!isPdf && !path.ends_with(".tif") && !path.ends_with(".tiff"))
    throw CommandError(ExitStatus::WrongUse,
                       "can't print to '" + path + "': the name of a .pdf or .tif file is needed");
  std::error_code ignored;
  if (std::filesystem::equivalent(path, run.invocation.operand, ignored))
    throw CommandError(ExitStatus::WrongUse,
                       "the print would take the place of '" + path + "', which it is made of");
  if (isPdf) {
    const auto written = WritePrintFile(
        MarkedPage(run.picture, run.margins, run.job.marks, run.marksInAllInks), path);
    if (!written) return written;
    run.written.push_back(path);
    return {};
  }
  auto file = os::OutputFile::Create(path, os::Existing::Followed);
  if (!file) ThrowUnwritten(file.Error());
  if (auto written = WriteMarkedPicture(*run.picture, run.margins, run.job.marks, *file); !written)
    return written;
  if (const auto named = file->Commit(); !named) ThrowUnwritten(named.Error());
  run.written.push_back(path);
  return {};
}

Expected<void> FitToMeasuredMarks(CutRun& run) {
  if (!IsMeasured(run.invocation)) {
    for (const OptionId id : {OptionId::Residual, OptionId::FitKind})
      if (run.invocation.Has(id))
        throw CommandError(ExitStatus::WrongUse, std::string(OptionOf(id).name) +
                                                     " needs marks that are measured (--measured)");
    return {};
  }
  const double limit = ResidualLimit(run);
  const auto kind = ChosenKind(run.invocation);
  const auto measured = MeasuredPlaces(run.invocation);
  if (!measured) return measured.Error();
  std::vector<cutting::Point> printed;
  for (const cutting::RegistrationMark& mark : run.job.marks) printed.push_back(mark.center);
  const auto fit = cutting::FitMarks(printed, *measured, limit, kind);
  if (!fit) return fit.Error();
  for (const std::string& line : cutting::Describe(*fit)) run.Note(line);
  auto mapped = cutting::Mapped(run.job, fit->map);
  if (!mapped) return mapped.Error();
  run.job = *std::move(mapped);
  run.job.marks.clear();
  return {};
}

Expected<void> CountFromFirstMark(CutRun& run) {
  const std::string path = run.invocation.ValueOr(OptionId::ResultOutput, "");
  if (!IsCutJobName(path) && !IsCutPictureName(path))
    run.job = cutting::Rebased(std::move(run.job));
  return {};
}

}  // namespace rastrel::cli
