#include "cutting/output/hpgl_writer.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

#include "cutting/output/flat_points.h"
#include "cutting/output/text_output.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

// ",-8388608,-8388608;"
constexpr std::size_t MaximumPosition = 19;
constexpr std::size_t MinimumBytes = 20;
constexpr long long FarthestOfLanguage = 8'388'608;
constexpr int MaximumPen = 99;

struct Unit {
  int x = 0;
  int y = 0;
  bool operator==(const Unit&) const = default;
};

// A contour is
//
//     PUx,y;            to its first position
//     PDx,y,x,y,...;    through the others, a new instruction where one is full
//     PDx,y;
//
// and is begun at its second position, since one within a unit draws nothing.
class Plotter {
 public:
  Plotter(const Transform& toDevice, const HpglOptions& options)
      : m_ToUnits{toDevice.a * options.unitsPerMillimetre, toDevice.b * options.unitsPerMillimetre,
                  toDevice.c * options.unitsPerMillimetre, toDevice.d * options.unitsPerMillimetre,
                  toDevice.e * options.unitsPerMillimetre, toDevice.f * options.unitsPerMillimetre},
        m_Options(options),
        m_Limit(static_cast<double>(options.farthest) + 0.5) {}

  TextOutput& Text() { return m_Text; }
  [[nodiscard]] bool IsTooFar() const { return m_TooFar; }

  void Draw(const Contour& contour, double tolerance, bool isDrilled) {
    m_Begun = m_HasFirst = false;
    ForEachFlatPoint(contour, tolerance, [&](Point point) { Take(point); });
    if (m_Begun && contour.closed && m_Last != m_First) GoTo(m_First);
    if (!m_Begun && isDrilled) Begin(m_First);
    if (m_Begun) m_Text.Add(";\n");
  }

 private:
  void Take(Point point) {
    // A call for each of a million points takes as long as writing their digits.
    const Transform& t = m_ToUnits;
    const Point exact{t.a * point.x + t.c * point.y + t.e, t.b * point.x + t.d * point.y + t.f};
    // Not a number is too far, too.
    if (!(std::abs(exact.x) < m_Limit && std::abs(exact.y) < m_Limit)) {
      m_TooFar = true;
      return;
    }
    const auto rounded = [](double value) {
      return static_cast<int>(value + (value < 0 ? -0.5 : 0.5));
    };
    const Unit unit{rounded(exact.x), rounded(exact.y)};
    if (!m_HasFirst) {
      m_HasFirst = true;
      m_First = m_Last = unit;
    } else if (unit != m_Last) {
      if (m_Begun)
        GoTo(unit);
      else
        Begin(unit);
    }
  }

  void Begin(const Unit& second) {
    m_Begun = true;
    m_Text.Add("PU");
    Add(m_First);
    m_Text.Add(";\n");
    BeginInstruction(second);
  }

  void BeginInstruction(const Unit& unit) {
    m_Text.Add("PD");
    m_InstructionStart = m_Text.Size() - 2;
    m_Points = 0;
    AddPoint(unit);
  }

  void GoTo(const Unit& unit) {
    const std::size_t bytes = m_Text.Size() - m_InstructionStart;
    if (m_Points < m_Options.pointsOfInstruction &&
        bytes + MaximumPosition <= m_Options.bytesOfInstruction) {
      m_Text.Add(',');
      AddPoint(unit);
    } else {
      m_Text.Add(";\n");
      BeginInstruction(unit);
    }
  }

  void AddPoint(const Unit& unit) {
    Add(unit);
    m_Last = unit;
    ++m_Points;
  }

  void Add(const Unit& unit) { m_Text.AddInteger(unit.x).Add(',').AddInteger(unit.y); }

  Transform m_ToUnits;
  const HpglOptions& m_Options;
  double m_Limit;  // that rounds to a position too far
  TextOutput m_Text;
  Unit m_First;
  Unit m_Last;
  bool m_HasFirst = false;
  bool m_Begun = false;
  bool m_TooFar = false;
  std::size_t m_InstructionStart = 0;
  std::size_t m_Points = 0;
};

// The settings that the device was given last.
struct Chosen {
  int pen = 0;
  std::optional<double> speed;
  std::optional<double> force;
};

int PenOf(const CutPath& path, const HpglOptions& options) {
  const auto found = options.penOfTool.find(path.settings.tool);
  if (found != options.penOfTool.end()) return found->second;
  return options.penOf[static_cast<std::size_t>(path.operation)];
}

// Centimetres a second to a tenth, and never none: "VS12.5;". Without a number: the device's own.
std::string SpeedInstruction(const std::optional<double>& speed) {
  constexpr double lowest = 0.1;
  return speed ? "VS" + os::ShortDecimal(std::max(*speed / 10, lowest), 1) + ";\n" : "VS;\n";
}

std::string ForceInstruction(const std::optional<double>& force) {
  return force ? "FS" + os::ShortDecimal(std::max(*force, 1.0), 0) + ";\n" : "FS;\n";
}

void Choose(TextOutput& text, Chosen& chosen, const CutPath& path, int pen) {
  if (chosen.pen != pen) text.Add("SP").AddInteger(pen).Add(";\n");
  if (chosen.speed != path.settings.speed) text.Add(SpeedInstruction(path.settings.speed));
  if (chosen.force != path.settings.force) text.Add(ForceInstruction(path.settings.force));
  chosen = {pen, path.settings.speed, path.settings.force};
}

std::size_t PointsOf(const CutJob& job) {
  std::size_t points = 0;
  for (const CutPath& path : job.paths) {
    for (const Contour& contour : path.contours) points += contour.segments.size() + 1;
  }
  return points;
}

Expected<void> Check(const HpglOptions& options) {
  if (options.unitsPerMillimetre != 40 && options.unitsPerMillimetre != 100)
    return FailureOf("a plotter's unit is 1/40 or 1/100 mm");
  if (options.pointsOfInstruction < 1)
    return FailureOf("a plotter's instruction has one point or more");
  if (options.bytesOfInstruction < MinimumBytes)
    return FailureOf("a plotter's instruction needs 20 bytes for one position");
  if (options.farthest < 1 || options.farthest > FarthestOfLanguage)
    return FailureOf("a plotter's positions go to 8388608 units at most");
  return {};
}

}  // namespace

Expected<std::string> HpglText(const CutJob& job, const Transform& toDevice, double tolerance,
                               const HpglOptions& options) {
  if (const auto checked = Check(options); !checked) return checked.Error();
  constexpr std::size_t usualBytes = 12;
  Plotter plotter(toDevice, options);
  plotter.Text().Reserve(PointsOf(job) * usualBytes);
  plotter.Text().Add("IN;\n");
  Chosen chosen;
  for (std::size_t i = 0; i < job.paths.size(); ++i) {
    const CutPath& path = job.paths[i];
    if (!HasTool(path.operation) || path.contours.empty()) continue;
    const int pen = PenOf(path, options);
    if (pen < 1 || pen > MaximumPen)
      return FailureOf("path " + std::to_string(i + 1) + " has the pen " + std::to_string(pen) +
                       ": pens are 1 to 99");
    Choose(plotter.Text(), chosen, path, pen);
    for (const Contour& contour : path.contours) {
      for (int pass = 0; pass < path.settings.passes; ++pass)
        plotter.Draw(contour, tolerance, path.operation == Operation::Drill);
    }
    if (plotter.IsTooFar())
      return FailureOf("path " + std::to_string(i + 1) + " leads more than " +
                       std::to_string(options.farthest) +
                       " units from the origin, farther than the plotter can say");
  }
  plotter.Text().Add("PU;\nSP0;\n");
  return plotter.Text().Take();
}

}  // namespace rastrel::cutting
