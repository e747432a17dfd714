#include "host/render/svg_canvas.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "host/document/bitmap_png.h"
#include "host/graphics/picture.h"
#include "host/render/cairo_objects.h"
#include "host/render/letter_outlines.h"
#include "host/render/picture_png.h"
#include "host/render/plane_picture.h"
#include "host/render/svg_text.h"
#include "host/text/arc_layout.h"
#include "host/text/text_layout.h"
#include "rastrel/platform/os/base64.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::render {

namespace {

// A hundred times the largest page; numbers stay short.
constexpr double FarthestPoint = 1e8;
constexpr double ThinnestPoints = 0.25;
constexpr double MaximumPlanePixels = 16e6;
constexpr double MillimetresPerPoint = 25.4 / 72;

const char* ClassOf(Role role) {
  switch (role) {
    case Role::Blank: return "blank";
    case Role::Pane: return "plate";
    case Role::Text: return "text";
    case Role::Path: return "path";
    case Role::CutLine: return "cut-line";
    case Role::CutThroughLine: return "cut-through-line";
    case Role::DrillPoint: return "drill-point";
    case Role::Graphic: return "graphic";
    case Role::Separation: return "separation";
  }
  return "";
}

const char* StretchName(int stretch) {
  constexpr const char* names[] = {"ultra-condensed", "extra-condensed", "condensed",
                                   "semi-condensed",  "normal",          "semi-expanded",
                                   "expanded",        "extra-expanded",  "ultra-expanded"};
  return names[std::clamp(stretch, 0, 8)];
}

bool IsUpright(const TM& place) {
  return place.a == 1 && place.b == 0 && place.c == 0 && place.d == 1;
}

// `decimals` are those of the scale.
void AppendMatrix(std::string& text, const TM& place, int decimals = 6) {
  text += "transform=\"matrix(";
  for (const double part : {place.a, place.b, place.c, place.d}) {
    AppendNumber(text, part, decimals);
    text += ' ';
  }
  AppendMillimetres(text, place.tx);
  text += ' ';
  AppendMillimetres(text, place.ty);
  text += ")\"";
}

// The family as a string of CSS, within an attribute.
void AppendFamily(std::string& text, const std::string& family) {
  text += "font-family=\"'";
  std::wstring quoted;
  for (const wchar_t character : os::WideFromUtf8(family)) {
    if (character == L'\'' || character == L'\\') quoted += L'\\';
    quoted += character;
  }
  AppendEscaped(text, quoted);
  text += "'\"";
}

}  // namespace

SvgCanvas::SvgCanvas(double width, double height, bool outlines)
    : m_Text(
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
          "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
          "version=\"1.1\" width=\""),
      m_Outlines(outlines) {
  AppendMillimetres(m_Text, width);
  m_Text += "mm\" height=\"";
  AppendMillimetres(m_Text, height);
  m_Text += "mm\" viewBox=\"0 0 ";
  AppendMillimetres(m_Text, width);
  m_Text += ' ';
  AppendMillimetres(m_Text, height);
  m_Text += "\">\n";
}

std::string SvgCanvas::Finish() {
  m_Text += "</svg>\n";
  return std::move(m_Text);
}

double SvgCanvas::Farthest() const { return FarthestPoint; }

void SvgCanvas::Begin(Role role) {
  m_Text += "<g class=\"";
  m_Text += ClassOf(role);
  if (role == Role::CutLine) m_Text += "\" data-layer=\"Cut";
  if (role == Role::CutThroughLine) m_Text += "\" data-layer=\"Cut through";
  m_Text += "\">\n";
}
void SvgCanvas::End() { m_Text += "</g>\n"; }
void SvgCanvas::BeginGroup() { m_Text += "<g>\n"; }
void SvgCanvas::EndGroup() { m_Text += "</g>\n"; }

void SvgCanvas::AddStroke(const Pen& pen) {
  m_Text += " stroke=\"";
  AppendColor(m_Text, pen.color);
  m_Text += "\" stroke-width=\"";
  AppendMillimetres(m_Text, pen.width > 0 ? pen.width : ThinnestPoints);
  m_Text += '"';
  const std::span<const double> lengths = LengthsOf(pen.dashes);
  if (lengths.empty()) return;
  m_Text += " stroke-dasharray=\"";
  for (const double& length : lengths) {
    if (&length != &lengths.front()) m_Text += ' ';
    AppendMillimetres(m_Text, length);
  }
  m_Text += '"';
}

void SvgCanvas::DrawOutline(const Outline& outline, const std::optional<Color>& inside,
                            const std::optional<Pen>& pen) {
  m_Text += "<path d=\"";
  AppendPath(m_Text, outline);
  m_Text += outline.fillRule == document::FillRule::NonZero ? "\" fill-rule=\"nonzero\" fill=\""
                                                            : "\" fill-rule=\"evenodd\" fill=\"";
  if (inside) {
    AppendColor(m_Text, *inside);
  } else {
    m_Text += "none";
  }
  m_Text += '"';
  if (pen) AddStroke(*pen);
  m_Text += "/>\n";
}

void SvgCanvas::DrawCircle(Point centre, double radius, const Pen& pen) {
  m_Text += "<circle cx=\"";
  AppendMillimetres(m_Text, centre.x);
  m_Text += "\" cy=\"";
  AppendMillimetres(m_Text, centre.y);
  m_Text += "\" r=\"";
  AppendMillimetres(m_Text, radius);
  m_Text += "\" fill=\"none\"";
  AddStroke(pen);
  m_Text += "/>\n";
}

void SvgCanvas::DrawText(const text::TextLayout& layout, std::size_t run, const Color& color,
                         const TM& place) {
  if (m_Outlines) {
    FillLetters(LetterOutlines(layout, run, place), color);
  } else {
    DrawLetters(layout, run, color, place);
  }
}

// The attributes of letters but their place: font, direction, length and color.
void SvgCanvas::AddLetterStyle(const text::PlacedRun& run, double length, const Color& color) {
  m_Text += ' ';
  AppendFamily(m_Text, run.face.family);
  m_Text += " font-size=\"";
  AppendMillimetres(m_Text, run.size);
  m_Text += '"';
  if (run.face.weight != 400) {
    m_Text += " font-weight=\"" + std::to_string(run.face.weight) + '"';
  }
  if (run.face.italic) m_Text += " font-style=\"italic\"";
  if (run.face.stretch != 4) {
    m_Text += std::string(" font-stretch=\"") + StretchName(run.face.stretch) + '"';
  }
  // The place is the left end of the letters, which is the last one's where they run to the left.
  if (run.rightToLeft) {
    m_Text += " direction=\"rtl\" unicode-bidi=\"embed\" text-anchor=\"end\"";
  }
  m_Text += " textLength=\"";
  AppendMillimetres(m_Text, length);
  m_Text += "\" lengthAdjust=\"spacingAndGlyphs\" fill=\"";
  AppendColor(m_Text, color);
  m_Text += '"';
}

void SvgCanvas::DrawLetters(const text::TextLayout& layout, std::size_t run, const Color& color,
                            const TM& place) {
  const text::PlacedRun& placed = layout.Runs()[run];
  m_Text += "<text xml:space=\"preserve\" ";
  if (IsUpright(place)) {
    m_Text += "x=\"";
    AppendMillimetres(m_Text, place.tx);
    m_Text += "\" y=\"";
    AppendMillimetres(m_Text, place.ty);
    m_Text += '"';
  } else {
    AppendMatrix(m_Text, place);
  }
  AddLetterStyle(placed, placed.width, color);
  m_Text += '>';
  AppendEscaped(m_Text, placed.text);
  m_Text += "</text>\n";
}

void SvgCanvas::FillLetters(const Outline& letters, const Color& color) {
  if (letters.steps.empty()) return;
  m_Text += "<path d=\"";
  AppendPath(m_Text, letters);
  m_Text += "\" fill=\"";
  AppendColor(m_Text, color);
  m_Text += "\"/>\n";
}

void SvgCanvas::DrawArcText(const text::ArcLayout& layout, const Color& color, const TM& place) {
  if (m_Outlines) {
    FillLetters(LetterOutlines(layout, place), color);
  } else {
    DrawLettersOnCircle(layout, color, place);
  }
}

// The circle begins where the text does and goes round clockwise, so that no viewer has to measure
// the text to find its place. An upright one is moved to its center, which keeps numbers exact.
//
//     <defs><path id="circle-1" d="M begin A r r 0 1 1 opposite A r r 0 1 1 begin"/></defs>
//     <text ...><textPath xlink:href="#circle-1">letters</textPath></text>
void SvgCanvas::DrawLettersOnCircle(const text::ArcLayout& layout, const Color& color,
                                    const TM& place) {
  const bool upright = IsUpright(place);
  const double x = layout.Radius() * std::sin(layout.Begin());
  const double y = -layout.Radius() * std::cos(layout.Begin());
  const Point center = upright ? Point{place.tx, place.ty} : Point{};
  const std::string name = "circle-" + std::to_string(++m_Circles);
  m_Text += "<defs><path id=\"" + name + "\" d=\"M";
  AppendPoint(m_Text, {center.x + x, center.y + y});
  for (const double side : {-1, 1}) {
    m_Text += 'A';
    AppendPoint(m_Text, {layout.Radius(), layout.Radius()});
    m_Text += " 0 1 1 ";
    AppendPoint(m_Text, {center.x + side * x, center.y + side * y});
  }
  m_Text += "\"/></defs>\n<text xml:space=\"preserve\" style=\"font-variant-ligatures:none\"";
  if (!upright) {
    m_Text += ' ';
    AppendMatrix(m_Text, place);
  }
  const text::PlacedRun& run = layout.Run();
  AddLetterStyle(run, run.width * run.scaleX, color);
  m_Text += "><textPath xlink:href=\"#" + name + "\">";
  AppendEscaped(m_Text, run.text);
  m_Text += "</textPath></text>\n";
}

// A file that is placed several times is in the SVG once.
Expected<std::string> SvgCanvas::AddressOf(const graphics::Picture& picture) {
  const auto [place, added] = m_Pictures.try_emplace(&picture.Bytes());
  if (!added) return place->second;
  place->second = "picture-" + std::to_string(m_Pictures.size());
  std::string png;
  if (!picture.MimeType()) {
    auto drawn = PngOfPicture(picture);
    if (!drawn) return drawn.Error();
    png = std::move(*drawn);
  }
  m_Text += "<defs><image id=\"" + place->second + "\" width=\"";
  AppendMillimetres(m_Text, picture.Width());
  m_Text += "\" height=\"";
  AppendMillimetres(m_Text, picture.Height());
  m_Text += "\" preserveAspectRatio=\"none\" xlink:href=\"data:";
  if (picture.MimeType()) {
    m_Text += std::string(picture.MimeType()) + ";base64," + os::Base64FromBytes(picture.Bytes());
  } else {
    m_Text += "image/png;base64," + os::Base64FromBytes(png);
  }
  m_Text += "\"/></defs>\n";
  return place->second;
}

// Ink prints over ink: browsers mix the layers as light that passes through one after the other.
Expected<void> SvgCanvas::DrawPlane(const SeparationPlane& plane, const TM& place) {
  const PlanePicture picture = InkOf(plane, MaximumPlanePixels);
  const std::string png = picture.surface ? PngBytes(picture.surface.get()) : std::string();
  if (png.empty()) return FailureOf(NoMemoryForPlane);
  m_Text += "<g class=\"separation\" data-layer=\"";
  AppendEscaped(m_Text, plane.name);
  m_Text += "\" data-page=\"" + std::to_string(plane.page) +
            "\" style=\"mix-blend-mode:multiply\">\n<image width=\"";
  AppendMillimetres(m_Text, plane.width);
  m_Text += "\" height=\"";
  AppendMillimetres(m_Text, plane.height);
  m_Text += "\" preserveAspectRatio=\"none\" ";
  AppendMatrix(m_Text, place);
  m_Text += " xlink:href=\"data:image/png;base64," + os::Base64FromBytes(png) + "\"/>\n</g>\n";
  return {};
}

Expected<void> SvgCanvas::DrawPicture(const graphics::Picture& picture, const TM& place) {
  const Expected<std::string> address = AddressOf(picture);
  if (!address) return address.Error();
  m_Text += "<use xlink:href=\"#" + *address + "\" ";
  AppendMatrix(m_Text, place);
  m_Text += "/>\n";
  return {};
}

// An image whose unit is a millimetre here, and its pixel in `place`.
Expected<void> SvgCanvas::DrawBitmap(const document::BitmapPixels& pixels, const TM& place) {
  const auto [known, added] = m_Pictures.try_emplace(&pixels);
  if (added) {
    known->second = "picture-" + std::to_string(m_Pictures.size());
    m_Text += "<defs><image id=\"" + known->second + "\" width=\"" + std::to_string(pixels.width) +
              "\" height=\"" + std::to_string(pixels.height) +
              "\" preserveAspectRatio=\"none\" xlink:href=\"data:image/png;base64," +
              os::Base64FromBytes(document::PngOfBitmap(pixels)) + "\"/></defs>\n";
  }
  TM unit = place;
  for (double* part : {&unit.a, &unit.b, &unit.c, &unit.d}) *part *= MillimetresPerPoint;
  m_Text += "<use xlink:href=\"#" + known->second + "\" ";
  // Of tens of thousands of pixels a row, the last one is still where it belongs.
  AppendMatrix(m_Text, unit, 12);
  m_Text += "/>\n";
  return {};
}

}  // namespace rastrel::render
