#include "host/cutfile/plotter_writer.h"

#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace rastrel::cutfile {
namespace {

constexpr double UnitsPerCentimetre = 400;
constexpr double FarthestUnit = 8'388'608;
// Old devices keep an instruction whole in a small buffer.
constexpr std::size_t PointsOfInstruction = 32;

struct Unit {
  long long x = 0;
  long long y = 0;
  bool operator==(const Unit&) const = default;
};

struct Pen {
  CutKind kind;
  int number;
};

// A sheet that is cut through no longer lies still, so that comes last.
constexpr std::array Pens{Pen{CutKind::Line, 3}, Pen{CutKind::Cut, 1}, Pen{CutKind::CutThrough, 2}};

bool IsKnown(const CWorldPoint& point) {
  return std::abs(point.x) * UnitsPerCentimetre <= FarthestUnit &&
         std::abs(point.y) * UnitsPerCentimetre <= FarthestUnit;
}

std::vector<Unit> UnitsOf(const CutRun& run) {
  std::vector<Unit> units;
  units.reserve(run.points.size() + 1);
  for (const CWorldPoint& point : run.points) {
    const Unit unit{std::llround(point.x * UnitsPerCentimetre),
                    std::llround(point.y * UnitsPerCentimetre)};
    if (units.empty() || units.back() != unit) units.push_back(unit);
  }
  if (run.closed && units.size() > 1 && units.back() != units.front())
    units.push_back(units.front());
  return units;
}

void AddPosition(std::string& text, const Unit& unit) {
  text += std::to_string(unit.x) + "," + std::to_string(unit.y);
}

// PU to the first point, PD through the others. A run within one unit draws nothing.
void AddRun(std::string& text, const CutRun& run) {
  const std::vector<Unit> units = UnitsOf(run);
  if (units.size() < 2) return;
  text += "PU";
  AddPosition(text, units.front());
  for (std::size_t i = 1; i < units.size(); ++i) {
    text += (i - 1) % PointsOfInstruction == 0 ? ";\nPD" : ",";
    AddPosition(text, units[i]);
  }
  text += ";\n";
}

}  // namespace

Expected<std::string> PlotterFileText(const CutDrawing& drawing) {
  std::string text = "IN;\n";
  for (const Pen& pen : Pens) {
    bool chosen = false;
    for (const CutObject& object : drawing.objects) {
      if (object.kind != pen.kind) continue;
      if (!chosen) text += "SP" + std::to_string(pen.number) + ";\n";
      chosen = true;
      for (const CutRun& run : object.runs) {
        for (const CWorldPoint& point : run.points) {
          if (!IsKnown(point))
            return FailureOf("a line leads farther than a plotter file can say, 209 metres");
        }
        AddRun(text, run);
      }
    }
  }
  return text + "PU;\nSP0;\n";
}

}  // namespace rastrel::cutfile
