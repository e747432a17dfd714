#include "host/drawing/plotter_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/drawing/path_builder.h"
#include "rastrel/platform/os/number_text.h"

namespace rastrel::drawing {

namespace {

constexpr double CentimetresPerUnit = 0.0025;
constexpr double Radians = 3.14159265358979323846 / 180;
constexpr double FullTurn = 360 * Radians;
// The corners that SC scales between where no IP says others: an A4 plotter's.
constexpr std::array<double, 4> UsualCorners = {250, 279, 10'250, 7479};
// Numbers of one instruction that are kept; a run's points are taken as they come.
constexpr std::size_t MaximumNumbers = 16;

bool IsUpper(char letter) { return letter >= 'A' && letter <= 'Z'; }
bool IsNumberPart(char letter) {
  return (letter >= '0' && letter <= '9') || letter == '.' || letter == '+' || letter == '-';
}

VectorPath::Rgb ColorOfPen(int pen) {
  constexpr std::array<VectorPath::Rgb, 8> colors = {{{0, 0, 0},
                                                      {0, 0, 0},
                                                      {255, 0, 0},
                                                      {0, 255, 0},
                                                      {255, 255, 0},
                                                      {0, 0, 255},
                                                      {255, 0, 255},
                                                      {0, 255, 255}}};
  return pen >= 0 && pen < 8 ? colors[static_cast<std::size_t>(pen)] : colors[0];
}

class PlotterReader {
 public:
  PlotterReader(std::string_view bytes, PathSink& sink) : m_Rest(bytes), m_Sink(sink) {}
  Expected<void> Read();

 private:
  void TakeInstruction();
  void SkipEscape();
  void SkipLabel();
  void SkipComment();
  std::optional<double> NextNumber();
  std::vector<double> Numbers();
  void Reset();
  void Move(bool relative, bool down);
  void Arc(bool relative);
  void Circle();
  void Rectangle(bool relative, bool filled);
  void SetScale();
  void SetPenColor();
  void EndRun();
  void Draw(PathBuilder& path, bool filled);
  TM Scaling() const;
  void UpdateMatrix();

  std::string_view m_Rest;
  PathSink& m_Sink;
  TM m_Matrix;  // from the file's units to world units
  PathBuilder m_Run{TM()};
  CWorldPoint m_At;  // in the file's units
  bool m_Down = false;
  bool m_Relative = false;
  int m_Pen = 1;
  std::map<int, VectorPath::Rgb> m_Colors;
  std::map<int, double> m_Widths;  // world units
  double m_Width = 0;
  std::array<double, 4> m_Corners = UsualCorners;
  std::array<double, 4> m_Scale{};  // xmin, xmax, ymin, ymax
  int m_ScaleKind = -1;             // -1: none
  char m_LabelEnd = '\x03';
  std::set<std::string> m_LeftOut;
};

void PlotterReader::UpdateMatrix() {
  const TM units{CentimetresPerUnit, 0, 0, CentimetresPerUnit, 0, 0};
  m_Matrix = Combined(units, Scaling());
  m_Run = PathBuilder(m_Matrix);
}

// From the units that SC says to plotter units.
TM PlotterReader::Scaling() const {
  if (m_ScaleKind < 0) return {};
  if (m_ScaleKind == 2) {  // a point of the file's per unit, from the first corner on
    return {m_Scale[1],
            0,
            0,
            m_Scale[3],
            m_Corners[0] - m_Scale[0] * m_Scale[1],
            m_Corners[1] - m_Scale[2] * m_Scale[3]};
  }
  double sx = (m_Corners[2] - m_Corners[0]) / (m_Scale[1] - m_Scale[0]);
  double sy = (m_Corners[3] - m_Corners[1]) / (m_Scale[3] - m_Scale[2]);
  double left = m_Corners[0];
  double bottom = m_Corners[1];
  if (m_ScaleKind == 1) {  // equal in both directions, in the middle
    const double equal = std::min(std::abs(sx), std::abs(sy));
    left +=
        (m_Corners[2] - m_Corners[0] - std::copysign(equal, sx) * (m_Scale[1] - m_Scale[0])) / 2;
    bottom +=
        (m_Corners[3] - m_Corners[1] - std::copysign(equal, sy) * (m_Scale[3] - m_Scale[2])) / 2;
    sx = std::copysign(equal, sx);
    sy = std::copysign(equal, sy);
  }
  return {sx, 0, 0, sy, left - m_Scale[0] * sx, bottom - m_Scale[2] * sy};
}

void PlotterReader::Reset() {
  m_ScaleKind = -1;
  m_Corners = UsualCorners;
  m_Down = m_Relative = false;
  m_At = {};
  UpdateMatrix();
}

// The present run of the pen becomes a path.
void PlotterReader::EndRun() {
  if (m_Run.IsEmpty()) return;
  m_Run.CloseIfBack();
  Draw(m_Run, false);
}

void PlotterReader::Draw(PathBuilder& path, bool filled) {
  if (m_Pen == 0) {
    path = PathBuilder(m_Matrix);
    return;
  }
  const auto own = m_Colors.find(m_Pen);
  const VectorPath::Rgb color = own == m_Colors.end() ? ColorOfPen(m_Pen) : own->second;
  const auto width = m_Widths.find(m_Pen);
  if (filled) {
    path.Finish(m_Sink, color, std::nullopt, 0);
  } else {
    path.Finish(m_Sink, std::nullopt, color, width == m_Widths.end() ? m_Width : width->second);
  }
}

// --- Text ---

std::optional<double> PlotterReader::NextNumber() {
  while (!m_Rest.empty() &&
         (m_Rest.front() == ',' || m_Rest.front() == ' ' || m_Rest.front() == '\t' ||
          m_Rest.front() == '\r' || m_Rest.front() == '\n')) {
    m_Rest.remove_prefix(1);
  }
  std::size_t length = 0;
  while (length < m_Rest.size() && IsNumberPart(m_Rest[length]) &&
         (length == 0 || (m_Rest[length] != '+' && m_Rest[length] != '-'))) {
    ++length;
  }
  if (length == 0) return std::nullopt;
  const double number = os::DoubleFromText(m_Rest.substr(0, length));
  m_Rest.remove_prefix(length);
  return number;
}

std::vector<double> PlotterReader::Numbers() {
  std::vector<double> numbers;
  while (const auto number = NextNumber()) {
    if (numbers.size() < MaximumNumbers) numbers.push_back(*number);
  }
  return numbers;
}

void PlotterReader::SkipLabel() {
  const std::size_t end = m_Rest.find(m_LabelEnd);
  m_LeftOut.insert("LB");
  m_Rest.remove_prefix(end == std::string_view::npos ? m_Rest.size() : end + 1);
}

void PlotterReader::SkipComment() {
  const std::size_t open = m_Rest.find_first_not_of(' ');
  std::size_t end = m_Rest.find(';');
  if (open != std::string_view::npos && m_Rest[open] == '"') {
    end = m_Rest.find('"', open + 1);
  }
  m_Rest.remove_prefix(std::min(end, m_Rest.size()));
  if (!m_Rest.empty()) m_Rest.remove_prefix(1);
}

// Sequences to the device: ESC, then "." with a letter, or "%" and "E" with numbers and a letter.
void PlotterReader::SkipEscape() {
  m_Rest.remove_prefix(1);
  if (m_Rest.starts_with('.')) {
    m_Rest.remove_prefix(std::min<std::size_t>(2, m_Rest.size()));
    const std::size_t end = m_Rest.find_first_not_of("0123456789;");
    m_Rest.remove_prefix(std::min(end, m_Rest.size()));
    if (m_Rest.starts_with(':')) m_Rest.remove_prefix(1);
    return;
  }
  const std::size_t end = m_Rest.find_first_not_of("%&*()0123456789+-.");
  m_Rest.remove_prefix(std::min(end, m_Rest.size()));
  if (!m_Rest.empty()) m_Rest.remove_prefix(1);
}

// --- Instructions ---

void PlotterReader::Move(bool relative, bool down) {
  while (const auto x = NextNumber()) {
    const auto y = NextNumber();
    if (!y || !m_Sink.HasRoomFor(m_Run.Pieces() + 2)) return;
    const CWorldPoint to = relative ? CWorldPoint{m_At.x + *x, m_At.y + *y} : CWorldPoint{*x, *y};
    if (down) {
      if (m_Run.IsEmpty()) m_Run.MoveTo(m_At);
      m_Run.LineTo(to);
    }
    m_At = to;
  }
}

void PlotterReader::Arc(bool relative) {
  const std::vector<double> numbers = Numbers();
  if (numbers.size() < 3) return;
  const CWorldPoint centre = relative ? CWorldPoint{m_At.x + numbers[0], m_At.y + numbers[1]}
                                      : CWorldPoint{numbers[0], numbers[1]};
  const CWorldPoint u{m_At.x - centre.x, m_At.y - centre.y};
  const CWorldPoint v{-u.y, u.x};
  const double sweep = std::clamp(numbers[2] * Radians, -FullTurn, FullTurn);
  if (m_Down) {
    if (m_Run.IsEmpty()) m_Run.MoveTo(m_At);
    m_Run.ArcTo(centre, u, v, 0, sweep);
  }
  m_At = PointOnEllipse(centre, u, v, sweep);
}

void PlotterReader::Circle() {
  const std::vector<double> numbers = Numbers();
  if (numbers.empty()) return;
  EndRun();
  const double radius = std::abs(numbers[0]);
  PathBuilder circle(m_Matrix);
  circle.MoveTo({m_At.x + radius, m_At.y});
  circle.ArcTo(m_At, {radius, 0}, {0, radius}, 0, FullTurn);
  circle.Close();
  if (radius > 0) Draw(circle, false);
}

void PlotterReader::Rectangle(bool relative, bool filled) {
  const std::vector<double> numbers = Numbers();
  if (numbers.size() < 2) return;
  EndRun();
  const CWorldPoint to = relative ? CWorldPoint{m_At.x + numbers[0], m_At.y + numbers[1]}
                                  : CWorldPoint{numbers[0], numbers[1]};
  PathBuilder box(m_Matrix);
  box.MoveTo(m_At);
  box.LineTo({to.x, m_At.y});
  box.LineTo(to);
  box.LineTo({m_At.x, to.y});
  box.Close();
  Draw(box, filled);
}

void PlotterReader::SetScale() {
  const std::vector<double> numbers = Numbers();
  EndRun();
  m_ScaleKind = -1;
  if (numbers.size() >= 4) {
    std::copy_n(numbers.begin(), 4, m_Scale.begin());
    m_ScaleKind = numbers.size() > 4 ? static_cast<int>(std::clamp(numbers[4], 0.0, 2.0)) : 0;
    const bool empty = m_ScaleKind != 2 && (m_Scale[0] == m_Scale[1] || m_Scale[2] == m_Scale[3]);
    if (empty) m_ScaleKind = -1;
  }
  UpdateMatrix();
}

void PlotterReader::SetPenColor() {
  const std::vector<double> numbers = Numbers();
  if (numbers.size() < 4) return;
  VectorPath::Rgb color{};
  for (std::size_t i = 0; i < 3; ++i) color[i] = std::clamp(numbers[i + 1], 0.0, 255.0);
  const int pen = static_cast<int>(std::clamp(numbers[0], 0.0, 255.0));
  EndRun();
  m_Colors[pen] = color;
}

void PlotterReader::TakeInstruction() {
  const std::string name(m_Rest.substr(0, 2));
  m_Rest.remove_prefix(2);
  if (name == "LB") return SkipLabel();
  if (name == "CO") return SkipComment();
  if (name == "DT") {
    if (!m_Rest.empty() && m_Rest.front() != ';') m_LabelEnd = m_Rest.front();
    m_Rest.remove_prefix(std::min<std::size_t>(1, m_Rest.size()));
  } else if (name == "PU" || name == "PD") {
    if (name == "PU") EndRun();
    m_Down = name == "PD";
    Move(m_Relative, m_Down);
  } else if (name == "PA" || name == "PR") {
    m_Relative = name == "PR";
    Move(m_Relative, m_Down);
  } else if (name == "AA" || name == "AR") {
    Arc(name == "AR");
  } else if (name == "CI") {
    Circle();
  } else if (name == "EA" || name == "ER" || name == "RA" || name == "RR") {
    Rectangle(name[1] == 'R', name[0] == 'R');
  } else if (name == "SC") {
    SetScale();
  } else if (name == "PC") {
    SetPenColor();
  } else if (name == "IN" || name == "DF") {
    EndRun();
    Reset();
  } else if (name == "SP" || name == "PW" || name == "IP") {
    const std::vector<double> numbers = Numbers();
    EndRun();
    const double first = numbers.empty() ? 0 : numbers[0];
    if (name == "SP") m_Pen = static_cast<int>(std::clamp(first, 0.0, 255.0));
    if (name == "PW" && numbers.size() > 1) {
      m_Widths[static_cast<int>(std::clamp(numbers[1], 0.0, 255.0))] = std::max(first, 0.0) / 10;
    } else if (name == "PW") {
      m_Widths.clear();
      m_Width = std::max(first, 0.0) / 10;
    }
    if (name == "IP") {
      m_Corners = UsualCorners;
      if (numbers.size() >= 4) std::copy_n(numbers.begin(), 4, m_Corners.begin());
      UpdateMatrix();
    }
  } else {
    // The pen's way is not known beyond an encoded one.
    constexpr std::array<std::string_view, 10> drawing = {"PE", "PM", "FP", "EP", "WG",
                                                          "EW", "AT", "RT", "BZ", "BR"};
    if (std::ranges::find(drawing, name) != drawing.end()) m_LeftOut.insert(name);
    const std::size_t end = m_Rest.find(';');
    if (name == "PE") m_Rest.remove_prefix(std::min(end, m_Rest.size()));
    Numbers();
  }
}

Expected<void> PlotterReader::Read() {
  Reset();
  while (m_Rest.size() > 1 && m_Sink.Taken()) {
    if (m_Rest.front() == '\x1B') {
      SkipEscape();
    } else if (IsUpper(m_Rest[0]) && IsUpper(m_Rest[1])) {
      TakeInstruction();
    } else {
      m_Rest.remove_prefix(1);
    }
  }
  EndRun();
  if (!m_Sink.Taken()) return m_Sink.Taken().Error();
  if (!m_LeftOut.empty()) {
    std::string names;
    for (const std::string& name : m_LeftOut) names += (names.empty() ? "" : ", ") + name;
    m_Sink.Note("instructions that are no plain lines are left out: " + names);
  }
  if (m_Sink.Paths() == 0) return FailureOf("it draws nothing");
  return {};
}

}  // namespace

Expected<void> ReadPlotterFile(std::string_view bytes, PathSink& sink) {
  return PlotterReader(bytes, sink).Read();
}

}  // namespace rastrel::drawing
