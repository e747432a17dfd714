#include "cli/cutting/many_prints.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "cli/console/exit_status.h"

namespace rastrel::cli {
namespace {

using cutting::PrintPage;

cutting::MarkOptions MarksOf(const Invocation& invocation) {
  const auto options = cutting::ParseMarks(invocation.ValueOr(OptionId::CutMarks, ""));
  if (!options) throw CommandError(ExitStatus::WrongUse, "--marks: " + Describe(options.Error()));
  return *options;
}

// Rows count from the top, so that a page of whole pixels alone has its origin between two of them.
double WholePixels(double length, double pixel) {
  constexpr double Rounding = 1e-6;
  return std::ceil(length / pixel - Rounding) * pixel;
}

void AddMarks(PrintPage& page, const Invocation& invocation, const cutting::CutJob& job,
              const PagePicture& picture) {
  if (!invocation.Has(OptionId::CutMarks)) return;
  for (cutting::PlacedPixels& mark :
       cutting::PicturesOf(job.marks, picture.inks, picture.PixelWidth(), picture.PixelHeight(),
                           MarksOf(invocation).inAllInks))
    page.pictures.push_back(std::move(mark));
}

PrintPage PageOf(const cutting::CutJob& job, const PagePicture& picture) {
  return {.width = WholePixels(job.width, picture.PixelWidth()),
          .height = WholePixels(job.height, picture.PixelHeight())};
}

// The pixels of a picture that lie in a box of its page, in part or whole.
PixelArea AreaOf(const PagePicture& picture, const cutting::Box& box) {
  const auto pixel = [](double length, double size, std::uint32_t limit, bool isEnd) {
    const double place = isEnd ? std::ceil(length / size) : std::floor(length / size);
    return static_cast<std::uint32_t>(std::clamp(place, 0.0, static_cast<double>(limit)));
  };
  const std::uint32_t left = pixel(box.left, picture.PixelWidth(), picture.width, false);
  const std::uint32_t right = pixel(box.right, picture.PixelWidth(), picture.width, true);
  const std::uint32_t bottom = pixel(box.bottom, picture.PixelHeight(), picture.height, false);
  const std::uint32_t top = pixel(box.top, picture.PixelHeight(), picture.height, true);
  return {.left = left, .top = picture.height - top, .width = right - left, .height = top - bottom};
}

constexpr double LabelHeight = 3;
constexpr double LabelGap = 0.5;

// Where the number of a panel is: in the margin, or beyond the seam to its left, right, bottom or
// top neighbor, which covers it. A panel without any has no number.
void AddNumber(PrintPage& page, const cutting::Panel& panel, const cutting::PanelOptions& options,
               const cutting::MarkedJob& marked, const cutting::Box& whole) {
  const cutting::PageGrowth& growth = marked.growth;
  cutting::PageLabel label{.place = {growth.left + LabelGap, LabelGap},
                           .height = LabelHeight,
                           .text = std::to_string(panel.number)};
  if (growth.bottom > 0) {
    label.place = {growth.left + LabelGap, std::max(growth.bottom - LabelHeight - 1, 0.0)};
    label.text += " (column " + std::to_string(panel.column + 1) + ", row " +
                  std::to_string(panel.row + 1) + ")";
    page.labels.push_back(std::move(label));
    return;
  }
  label.height = std::min(LabelHeight, options.overlap / 2 - 2 * LabelGap);
  if (label.height < 1) return;
  const double seam = options.overlap / 2;
  if (panel.column > 0) {
    label.place.y = seam + LabelGap;
  } else if (panel.area.right < whole.right - LabelGap) {
    label.place = {panel.area.Width() - seam + LabelGap, seam + LabelGap};
  } else if (panel.row > 0) {
    label.place.x = seam + LabelGap;
  } else if (panel.area.top < whole.top - LabelGap) {
    label.place = {LabelGap, panel.area.Height() - seam + LabelGap};
  } else {
    return;
  }
  page.labels.push_back(std::move(label));
}

}  // namespace

std::string PrintNameOf(const Invocation& invocation) {
  const std::string name = invocation.ValueOr(OptionId::CutPrint, "");
  if (invocation.Has(OptionId::CutPrint) && !name.ends_with(".pdf"))
    throw CommandError(ExitStatus::WrongUse,
                       "can't print to '" + name + "': the name of a .pdf file is needed");
  return name;
}

cutting::MarkedJob WithMarksOf(const Invocation& invocation, cutting::CutJob job,
                               const PagePicture* picture) {
  if (!invocation.Has(OptionId::CutMarks)) return {.job = std::move(job), .growth = {}};
  cutting::MarkOptions options = MarksOf(invocation);
  if (picture != nullptr) {
    options.pixelWidth = picture->PixelWidth();
    options.pixelHeight = picture->PixelHeight();
  }
  auto marked = cutting::WithMarks(std::move(job), options);
  if (!marked) OrEndByCode(ExitStatus::JobFailed, Expected<void>(marked.Error()));
  return *std::move(marked);
}

PrintPage SheetPage(const Invocation& invocation, const std::vector<cutting::NestInput>& inputs,
                    const cutting::NestOptions& options, const cutting::NestResult& result,
                    std::size_t sheet, const std::vector<std::shared_ptr<PagePicture>>& pictures,
                    const cutting::MarkedJob& marked) {
  PrintPage page = PageOf(marked.job, *pictures.front());
  for (const cutting::NestPlacement& placed : result.placements) {
    if (placed.sheet != sheet) continue;
    const auto& picture = pictures[placed.input];
    cutting::PlacedPixels pixels =
        PixelsOf(picture, {.width = picture->width, .height = picture->height});
    pixels.place = placed.transform;
    pixels.place.e += marked.growth.left;
    pixels.place.f += marked.growth.bottom;
    const cutting::Transform grown{.e = marked.growth.left, .f = marked.growth.bottom};
    for (const cutting::Contour& outline : cutting::RoomOf(inputs[placed.input], options, placed))
      pixels.clip.push_back(cutting::Transformed(outline, grown));
    page.pictures.push_back(std::move(pixels));
  }
  AddMarks(page, invocation, marked.job, *pictures.front());
  return page;
}

PrintPage PanelPage(const Invocation& invocation, const cutting::Panel& panel,
                    const cutting::PanelOptions& options,
                    const std::shared_ptr<PagePicture>& picture, const cutting::MarkedJob& marked) {
  PrintPage page = PageOf(marked.job, *picture);
  const PixelArea area = AreaOf(*picture, panel.area);
  // A panel of paths that lie beside the page has no pixels.
  if (area.width > 0 && area.height > 0) {
    cutting::PlacedPixels pixels = PixelsOf(picture, area);
    const std::uint32_t rowsBelow = picture->height - area.top - area.height;
    pixels.place.e = area.left * picture->PixelWidth() - panel.area.left + marked.growth.left;
    pixels.place.f = rowsBelow * picture->PixelHeight() - panel.area.bottom + marked.growth.bottom;
    page.pictures.push_back(std::move(pixels));
  }
  AddMarks(page, invocation, marked.job, *picture);
  const cutting::Box whole{0, 0, picture->width * picture->PixelWidth(),
                           picture->height * picture->PixelHeight()};
  AddNumber(page, panel, options, marked, whole);
  return page;
}

}  // namespace rastrel::cli
