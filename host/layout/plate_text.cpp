#include "host/layout/plate_text.h"

#include <algorithm>
#include <cmath>

#include "host/document/measure_text.h"
#include "host/text/text_layout.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::layout {

using document::TextShape;

namespace {

constexpr double CentimetresPerPoint = host::CentimetresPerInch / 72;
// A block of lines sets text and gaps by the leading; mode 1 would begin at the top.
constexpr int LinesAsBlock = 4;
constexpr int JustifiedWithinMargins = 2;
constexpr int FitWhenFrameChanges = 2;
constexpr int FrameHoldsText = 3;
// Sums of leadings are compared with the room, and are not exact.
constexpr double WithinRoom = 1 - 1e-9;
// Factors nearer to 1 than this are not seen.
constexpr double Unsqueezed = 0.999;

std::wstring Centimetres(double points) {
  return os::WideFromUtf8(document::MeasureText(points * CentimetresPerPoint)) + L" cm";
}
std::wstring Percent(double factor) {
  return os::WideFromUtf8(document::MeasureText(std::round(factor * 1000) / 10)) + L" percent";
}

}  // namespace

PlateText::PlateText(const CWorldRect& frame, double margin, bool spread)
    : m_Frame(frame), m_Margin(margin), m_Spread(spread) {}

// The room of a line without a height of its own; where the others leave none, as much as the
// lowest of them has, and all become smaller when they are laid out.
double PlateText::ShareOf(const std::vector<LineRequest>& lines) const {
  double taken = 0;
  double lowest = 0;
  std::size_t sharing = 0;
  for (const LineRequest& line : lines) {
    if (line.height > 0) {
      taken += line.height * LineHeight;
      lowest = lowest > 0 ? std::min(lowest, line.height) : line.height;
    } else {
      ++sharing;
    }
  }
  if (sharing == 0) return 0;
  const double room = m_Frame.top - m_Frame.bottom - 2 * m_Margin;
  const double share = (room - taken) / static_cast<double>(sharing);
  return share > 0 ? share : lowest * LineHeight;
}

TextShape PlateText::Set(const std::vector<LineRequest>& lines, TemplateFonts& fonts) const {
  TextShape text;
  text.frame = m_Frame;
  paragraphStruct& paragraph = text.paragraph;
  paragraph.lineFit = LINEFIT_EACH_LINE;
  paragraph.fit = FitWhenFrameChanges;
  paragraph.frameMode = FrameHoldsText;
  const double width = m_Frame.right - m_Frame.left;
  const double side = std::max(m_Margin, width * SideMargin);
  paragraph.leftMargin = paragraph.rightMargin = host::TextFromWorld(side);
  paragraph.topMargin = paragraph.bottomMargin = host::TextFromWorld(m_Margin);
  paragraph.leftPercent = paragraph.rightPercent =
      static_cast<int>(std::lround(side / width * 1000));
  text.lineMode = LinesAsBlock;
  text.justifyMode = JustifiedWithinMargins;
  const double share = ShareOf(lines);
  double total = 0;
  for (const LineRequest& line : lines) {
    total += line.height > 0 ? line.height * LineHeight : share;
  }
  const double room = m_Frame.top - m_Frame.bottom - 2 * m_Margin;
  const double between =
      m_Spread && total < room ? (room - total) / static_cast<double>(lines.size()) : 0;
  double before = 0;  // the size of the line above
  for (const LineRequest& line : lines) {
    const double size = line.height > 0 ? line.height : share / LineHeight;
    // From base line to base line; of the first line it does not count.
    const double leading = before * (LineHeight - AboveBaseLine) + size * AboveBaseLine + between;
    before = size;
    document::TextLine& added = text.lines.emplace_back();
    added.justification = JUSTIFY_CENTER;
    added.size = host::TextFromWorld(size);
    added.leading = host::TextFromWorld(leading * WithinRoom);
    if (line.text.empty()) continue;
    if (auto run = fonts.Run(line.text, line.font, size)) added.runs.push_back(std::move(*run));
  }
  return text;
}

std::vector<std::wstring> SqueezedLines(const TextShape& text, const std::wstring& title,
                                        const text::FontCatalog& fonts) {
  const text::TextLayout layout(text, fonts);
  std::vector<std::wstring> sentences;
  double smaller = 1;
  for (std::size_t i = 0; i < layout.Lines().size(); ++i) {
    const text::PlacedLine& line = layout.Lines()[i];
    smaller = std::min(smaller, line.scaleY);
    if (line.scaleX >= Unsqueezed * line.scaleY) continue;
    sentences.push_back(title + L", line " + std::to_wstring(i + 1) + L", is " +
                        Centimetres(line.natural) + L" long and has " + Centimetres(line.width) +
                        L": it is squeezed to " + Percent(line.scaleX) + L" of its width");
  }
  if (smaller < Unsqueezed) {
    sentences.push_back(title +
                        L": its lines are higher than the plate between its margins, and "
                        L"are made smaller, to " +
                        Percent(smaller));
  }
  return sentences;
}

}  // namespace rastrel::layout
