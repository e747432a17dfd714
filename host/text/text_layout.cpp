#include "host/text/text_layout.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>

#include "host/text/pango_letters.h"

namespace rastrel::text {

using document::TextLine;
using document::TextRun;
using document::TextShape;

namespace {

// The one size of a text whose lines are to be of equal height; 0 for any other text.
double CommonSize(const TextShape& shape) {
  if (shape.paragraph.lineFit != LINEFIT_EQUAL_HEIGHT) return 0;
  double size = 0;
  for (const TextLine& line : shape.lines) {
    for (const TextRun& run : line.runs) size = std::max(size, LetterSize(run));
  }
  return size;
}

// The levels of a line's runs: even ones run to the right. Runs without a direction follow those
// round them if both have the same one, and else the line, whose direction is that of its first run
// with one.
std::vector<int> LevelsOf(const std::vector<Direction>& directions) {
  const auto first =
      std::ranges::find_if(directions, [](Direction one) { return one != Direction::None; });
  const bool toLeft = first != directions.end() && *first == Direction::RightToLeft;
  const auto levelOf = [&](Direction one) {
    return one == Direction::RightToLeft ? 1 : toLeft ? 2 : 0;
  };
  std::vector<int> levels(directions.size(), toLeft ? 1 : 0);
  Direction before = Direction::None;
  for (std::size_t i = 0; i < directions.size(); ++i) {
    if (directions[i] != Direction::None) {
      before = directions[i];
      levels[i] = levelOf(before);
      continue;
    }
    const auto after =
        std::find_if(directions.begin() + static_cast<std::ptrdiff_t>(i), directions.end(),
                     [](Direction one) { return one != Direction::None; });
    if (after != directions.end() && *after == before) levels[i] = levelOf(before);
  }
  return levels;
}

// The places of a line's runs from left to right: whatever has a level, or a higher one, is turned
// round, from the highest level to the lowest.
std::vector<std::size_t> VisualOrder(const std::vector<Direction>& directions) {
  const std::vector<int> levels = LevelsOf(directions);
  std::vector<std::size_t> order(levels.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  for (const int level : {2, 1}) {
    const auto turned = [&](std::size_t place) { return levels[place] >= level; };
    auto begin = order.begin();
    while ((begin = std::find_if(begin, order.end(), turned)) != order.end()) {
      const auto end = std::find_if_not(begin, order.end(), turned);
      std::reverse(begin, end);
      begin = end;
    }
  }
  return order;
}

// The room for lines, in points.
struct Room {
  double left, top, width, height;
};

Room RoomOf(const TextShape& shape) {
  const bool margins = shape.justifyMode == 2;
  const paragraphStruct& paragraph = shape.paragraph;
  const double left = margins ? PointsFromText(paragraph.leftMargin) : 0;
  const double right = margins ? PointsFromText(paragraph.rightMargin) : 0;
  const double top = margins ? PointsFromText(paragraph.topMargin) : 0;
  const double bottom = margins ? PointsFromText(paragraph.bottomMargin) : 0;
  const CWorldRect& frame = shape.frame;
  const double frameLeft = PointsFromWorld(frame.left);
  const double frameTop = PointsFromWorld(frame.top);
  return {frameLeft + left, frameTop - top,
          std::max(0.0, PointsFromWorld(frame.right) - frameLeft - left - right),
          std::max(0.0, frameTop - PointsFromWorld(frame.bottom) - top - bottom)};
}

}  // namespace

struct TextLayout::Letters {
  Owned<PangoLayout> layout;
  double scale = 1;  // from the measured size to the run's

  void Give(cairo_t* context, void (*how)(cairo_t*, PangoLayoutLine*)) const {
    cairo_save(context);
    cairo_scale(context, scale, scale);
    cairo_move_to(context, 0, 0);
    how(context, pango_layout_get_line_readonly(layout.get(), 0));
    cairo_restore(context);
  }
};

struct TextLayout::Line {
  std::size_t firstRun = 0;
  std::size_t runCount = 0;
  int justification = JUSTIFY_LEFT;
  double width = 0;
  double ascent = 0;
  double descent = 0;
  double leading = 0;  // its own; 0 for none
  double drop = 0;     // its base line below that of the line before; of the first, below the top
  double scaleX = 1;
  double scaleY = 1;
};

TextLayout::TextLayout(const TextShape& shape, const FontCatalog& fonts) {
  Measure(shape, fonts);
  const Room room = RoomOf(shape);
  if (shape.paragraph.fit != 0) Squeeze(shape, room.width, room.height);
  Place(shape);
}

TextLayout::~TextLayout() = default;

// Appends a run to a line, in pieces if it is long.
void TextLayout::AddRun(const TextRun& run, double size, const FontCatalog& fonts, Line& line) {
  const FontFace face = fonts.FaceOf(run.fontType, run.font, run.replacement);
  const auto font = DescriptionOf(face);
  const double scale = size / MeasuredSize;
  const std::wstring_view text = run.text;
  for (std::size_t begin = 0; begin < text.size(); begin += MaximumPiece) {
    const std::wstring_view piece = text.substr(begin, MaximumPiece);
    auto letters = std::make_unique<Letters>(Letters{LettersOf(font.get(), piece), scale});
    const LetterExtents extents = ExtentsOf(letters->layout.get());
    // `left` is that within the line until the line has its place.
    m_Runs.push_back({std::wstring(piece),
                      face,
                      size,
                      line.width,
                      0,
                      extents.width * scale,
                      1,
                      1,
                      run.colored,
                      run.color,
                      false,
                      false,
                      {}});
    LetterFaults faults = Examine(letters->layout.get());
    m_Runs.back().rightToLeft = faults.rightToLeft;
    m_Runs.back().isFontUnreadable = faults.isFontUnreadable;
    m_Runs.back().missing = std::move(faults.missing);
    m_Letters.push_back(std::move(letters));
    line.width += extents.width * scale;
    line.ascent = std::max(line.ascent, extents.ascent * scale);
    line.descent = std::max(line.descent, extents.descent * scale);
  }
}

void TextLayout::Measure(const TextShape& shape, const FontCatalog& fonts) {
  const double common = CommonSize(shape);
  for (const TextLine& source : shape.lines) {
    auto line = std::make_unique<Line>();
    line->justification = source.justification;
    line->firstRun = m_Runs.size();
    for (const TextRun& run : source.runs) {
      AddRun(run, common > 0 ? common : LetterSize(run), fonts, *line);
    }
    line->runCount = m_Runs.size() - line->firstRun;
    OrderRuns(*line);
    if (source.spacingKind == 0 && source.leading > 0)
      line->leading = PointsFromText(source.leading);
    m_Content.push_back(std::move(line));
  }
  FillEmptyLines();
}

// Places the runs of a line from left to right by their levels, as the Unicode bidirectional
// algorithm does for letters (UAX 9, rules N1, N2 and L2). Within a run Pango orders the letters.
void TextLayout::OrderRuns(Line& line) {
  const auto runs = std::span(m_Runs).subspan(line.firstRun, line.runCount);
  if (std::ranges::none_of(runs, &PlacedRun::rightToLeft)) return;
  std::vector<Direction> directions;
  for (const PlacedRun& run : runs) directions.push_back(DirectionOf(run.text));
  double left = 0;
  for (const std::size_t place : VisualOrder(directions)) {
    PlacedRun& run = runs[place];
    run.left = left;
    left += run.width;
  }
}

// A line without letters takes as much room as the one before it; before the first with letters, as
// that one.
void TextLayout::FillEmptyLines() {
  const auto first =
      std::ranges::find_if(m_Content, [](const auto& line) { return line->runCount > 0; });
  const Line* model = first == m_Content.end() ? nullptr : first->get();
  for (const auto& line : m_Content) {
    if (line->runCount > 0) model = line.get();
    if (model) {
      line->ascent = model->ascent;
      line->descent = model->descent;
    }
  }
  const Line* before = nullptr;
  for (const auto& line : m_Content) {
    line->drop = line->ascent + (before ? before->descent : 0);
    if (before && line->leading > 0) line->drop = line->leading;
    before = line.get();
  }
}

// From the top of the first line to the foot of the last.
double TextLayout::Height() const {
  double height = m_Content.empty() ? 0 : m_Content.back()->descent;
  for (const auto& line : m_Content) height += line->drop;
  return height;
}

void TextLayout::Squeeze(const TextShape& shape, double width, double height) {
  double common = 1;
  for (const auto& line : m_Content) {
    if (line->width > width) line->scaleX = width / line->width;
    common = std::min(common, line->scaleX);
  }
  const bool each = shape.paragraph.lineFit == LINEFIT_EACH_LINE;
  for (const auto& line : m_Content) {
    if (!each) line->scaleX = common;
  }
  const double total = Height();
  if (total <= height || total <= 0) return;
  // Too high: the whole text becomes smaller, which widths take part in.
  const double smaller = height / total;
  for (const auto& line : m_Content) {
    line->scaleX = std::min(line->scaleX, smaller);
    line->scaleY = smaller;
    line->ascent *= smaller;
    line->descent *= smaller;
    line->drop *= smaller;
  }
}

void TextLayout::Place(const TextShape& shape) {
  const Room room = RoomOf(shape);
  const bool block = shape.lineMode != 1;
  double baseline = room.top - (block ? (room.height - Height()) / 2 : 0);
  for (const auto& line : m_Content) {
    baseline -= line->drop;
    PlacedLine placed;
    placed.natural = line->width;
    placed.scaleX = line->scaleX;
    placed.scaleY = line->scaleY;
    placed.width = line->width * line->scaleX;
    placed.ascent = line->ascent;
    placed.descent = line->descent;
    placed.baseline = baseline;
    const double over = room.width - placed.width;
    placed.left = room.left + (line->justification == JUSTIFY_CENTER  ? over / 2
                               : line->justification == JUSTIFY_RIGHT ? over
                                                                      : 0);
    for (std::size_t i = line->firstRun; i < line->firstRun + line->runCount; ++i) {
      PlacedRun& run = m_Runs[i];
      run.left = placed.left + run.left * line->scaleX;
      run.baseline = placed.baseline;
      run.scaleX = line->scaleX;
      run.scaleY = line->scaleY;
    }
    m_Lines.push_back(placed);
  }
}

bool TextLayout::IsSqueezed() const {
  return std::ranges::any_of(
      m_Lines, [](const PlacedLine& line) { return line.scaleX < 1 || line.scaleY < 1; });
}

void TextLayout::DrawRun(cairo_t* context, std::size_t run) const {
  m_Letters[run]->Give(context, pango_cairo_show_layout_line);
}

void TextLayout::AddOutlines(cairo_t* context, std::size_t run) const {
  m_Letters[run]->Give(context, pango_cairo_layout_line_path);
}

}  // namespace rastrel::text
