#include "cli/cutting/bleed_stage.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/cutting/cut_pipeline.h"
#include "cli/cutting/length_value.h"
#include "cutting/toolpath/bleed.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t MaximumPixels = 500'000'000;
constexpr std::size_t MaximumWarnings = 20;
constexpr char White = '\xFF';

// A byte a pixel, with rows as high as the pixels are wide.
struct PagePixels {
  std::vector<std::uint8_t> printed{};
  cutting::Coverage coverage{};
};

Expected<void> ReadPixels(PagePicture& picture, PagePixels& pixels) {
  const double stretch = picture.PixelHeight() / picture.PixelWidth();
  const auto height = static_cast<std::uint64_t>(std::llround(picture.height * stretch));
  if (std::uint64_t{picture.width} * std::max<std::uint64_t>(height, 1) > MaximumPixels)
    return FailureOf("the page has more than " + std::to_string(MaximumPixels) +
                         " pixels to look at for --bleed; choose a lower --dpi",
                     FailureCode::BadInput);
  const std::size_t samples = picture.inks.Samples();
  std::vector<char> row(picture.width * samples);
  pixels.printed.resize(picture.width * height);
  std::uint64_t held = std::numeric_limits<std::uint64_t>::max();
  for (std::uint64_t y = 0; y < height; ++y) {
    const auto source = std::min<std::uint64_t>(
        static_cast<std::uint64_t>((static_cast<double>(y) + 0.5) / stretch), picture.height - 1);
    if (source != held)
      if (auto read = picture.Read(source, 0, row); !read) return read;
    held = source;
    for (std::size_t x = 0; x < picture.width; ++x)
      pixels.printed[y * picture.width + x] =
          std::any_of(row.begin() + static_cast<std::ptrdiff_t>(x * samples),
                      row.begin() + static_cast<std::ptrdiff_t>((x + 1) * samples),
                      [](char sample) { return sample != White; })
              ? 1
              : 0;
  }
  pixels.coverage = {.pixels = pixels.printed,
                     .width = picture.width,
                     .height = static_cast<std::size_t>(height),
                     .pixel = picture.PixelWidth()};
  return {};
}

std::string PlaceText(cutting::Point place) {
  return os::ShortDecimal(place.x, 2) + ", " + os::ShortDecimal(place.y, 2);
}

std::string SentenceOf(const cutting::BleedGap& gap) {
  const std::string reach = os::ShortDecimal(std::abs(gap.reach), 2) + " mm ";
  return "path " + std::to_string(gap.path + 1) + ", contour " + std::to_string(gap.contour + 1) +
         ": the print ends " + reach + (gap.reach < 0 ? "before" : "beyond") + " the cut, along " +
         os::ShortDecimal(gap.length, 1) + " mm from " + PlaceText(gap.from) + " to " +
         PlaceText(gap.to);
}

void WriteGap(const cutting::BleedGap& gap) {
  JsonLine("bleed-gap")
      .Add("path", static_cast<std::int64_t>(gap.path))
      .Add("contour", static_cast<std::int64_t>(gap.contour))
      .AddNumber("x_mm", gap.from.x)
      .AddNumber("y_mm", gap.from.y)
      .AddNumber("to_x_mm", gap.to.x)
      .AddNumber("to_y_mm", gap.to.y)
      .AddNumber("length_mm", gap.length)
      .AddNumber("reach_mm", gap.reach)
      .Write();
}

void Report(const CutRun& run, const std::vector<cutting::BleedGap>& gaps) {
  const bool isCheck = run.invocation.Has(OptionId::Check);
  for (std::size_t i = 0; i < gaps.size(); ++i) {
    if (run.invocation.Has(OptionId::Json)) {
      WriteGap(gaps[i]);
    } else if (isCheck) {
      WriteOutLine(SentenceOf(gaps[i]));
    } else if (i < MaximumWarnings) {
      run.Warn(SentenceOf(gaps[i]));
    }
  }
  if (!isCheck && gaps.size() > MaximumWarnings)
    run.Warn("the print does not reach far enough over the cut at " +
             std::to_string(gaps.size() - MaximumWarnings) + " more places");
}

}  // namespace

Expected<void> CheckPrintBleed(CutRun& run) {
  if (!run.invocation.Has(OptionId::Bleed)) return {};
  const std::string text = run.invocation.ValueOr(OptionId::Bleed, "");
  const double bleed = LengthOf("--bleed", text, text);
  if (!run.rules)
    throw CommandError(ExitStatus::WrongUse,
                       "--bleed goes with --rules, which say what of the page is printed");
  if (!run.picture)
    throw CommandError(
        ExitStatus::WrongUse,
        "'" + run.invocation.operand + "' has no print: --bleed is for PostScript, EPS and PDF");
  PagePixels pixels;
  if (auto read = ReadPixels(*run.picture, pixels); !read) return read;
  const auto gaps = cutting::CheckBleed(run.job, pixels.coverage, bleed);
  run.bleedGaps = gaps.size();
  Report(run, gaps);
  return {};
}

}  // namespace rastrel::cli
