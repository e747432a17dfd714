#include "cutting/picture/assembly_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "cutting/picture/picture_parts.h"

namespace rastrel::cutting {
namespace {

constexpr const char* PathColor = "#909090";
// By column and row, so that neighbors never have the same one.
constexpr std::array<const char*, 4> PanelColors{"#c02020", "#1060c0", "#208040", "#a05000"};
// Letters of a number are about so wide as parts of their size.
constexpr double LetterWidth = 0.6;

Contour Rectangle(const Box& box) {
  return {.start = {box.left, box.bottom},
          .segments = {LineTo({box.right, box.bottom}), LineTo({box.right, box.top}),
                       LineTo({box.left, box.top})},
          .closed = true};
}

PictureText Centered(const Box& box, std::string text, const char* color, double size,
                     double above) {
  const double width = LetterWidth * size * static_cast<double>(text.size());
  return {.at = {(box.left + box.right - width) / 2, (box.bottom + box.top) / 2 + above},
          .text = std::move(text),
          .color = color,
          .size = size};
}

double SizeFor(const Box& box, const std::string& text, double part) {
  const double letters = std::max<double>(1, static_cast<double>(text.size()));
  return std::min(box.Height() * part, box.Width() * 0.8 / (letters * LetterWidth));
}

Expected<PictureParts> PartsOf(const CutJob& job, const std::vector<AssemblyPart>& parts) {
  // It refuses coordinates that can't be drawn.
  if (const auto drawable = PartsOfPicture(job); !drawable) return drawable.Error();
  PictureParts picture;
  picture.box.Add(Point{0, 0});
  picture.box.Add(Point{job.width, job.height});
  for (const AssemblyPart& part : parts) picture.box.Add(part.area);
  picture.unit = std::max(picture.box.Width(), picture.box.Height()) / 200;
  PictureLine paths{.contours = {}, .color = PathColor, .width = picture.unit / 5};
  for (const CutPath& path : job.paths)
    if (HasTool(path.operation))
      paths.contours.insert(paths.contours.end(), path.contours.begin(), path.contours.end());
  picture.parts.emplace_back(std::move(paths));
  for (const AssemblyPart& part : parts) {
    const char* const color = PanelColors[part.column % 2 + 2 * (part.row % 2)];
    picture.parts.emplace_back(
        PictureLine{.contours = {Rectangle(part.area)}, .color = color, .width = picture.unit / 2});
    const double size = SizeFor(part.area, part.number, 0.35);
    const double noteSize = SizeFor(part.area, part.note, 0.08);
    picture.parts.emplace_back(Centered(part.area, part.number, color, size, 0));
    if (!part.note.empty())
      picture.parts.emplace_back(Centered(part.area, part.note, color, noteSize, -1.6 * noteSize));
  }
  picture.box.left -= picture.unit;
  picture.box.bottom -= picture.unit;
  picture.box.right += picture.unit;
  picture.box.top += picture.unit;
  return picture;
}

}  // namespace

Expected<std::string> AssemblyPictureSvg(const CutJob& job,
                                         const std::vector<AssemblyPart>& parts) {
  const auto picture = PartsOf(job, parts);
  if (!picture) return picture.Error();
  return SvgOfParts(*picture);
}

Expected<std::string> AssemblyPicturePng(const CutJob& job, const std::vector<AssemblyPart>& parts,
                                         int pixels) {
  const auto picture = PartsOf(job, parts);
  if (!picture) return picture.Error();
  return PngOfParts(*picture, pixels);
}

}  // namespace rastrel::cutting
