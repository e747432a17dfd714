#include "cutting/output/gcode_writer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "cutting/output/arc_fit.h"
#include "cutting/output/flat_points.h"
#include "cutting/output/text_output.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

constexpr int MaximumDecimals = 6;
constexpr double MaximumNumber = 1e9;

enum class Name { Width, Height, Power, Force, Speed, Feed, Tool, Operation, X, Y, I, J };

// In the order of Name.
constexpr std::array<std::string_view, 12> Names{
    "width", "height", "power", "force", "speed", "feed", "tool", "operation", "x", "y", "i", "j"};

struct Piece {
  std::string text;  // ahead of the value
  Name name{};
};

// A text of the table, ready for its values.
struct Pattern {
  std::vector<Piece> pieces;
  std::string rest;
  [[nodiscard]] bool Has(Name name) const {
    return std::ranges::find(pieces, name, &Piece::name) != pieces.end();
  }
};

using NameRange = std::pair<Name, Name>;
constexpr NameRange PageNames{Name::Width, Name::Height};
constexpr NameRange SettingsNames{Name::Power, Name::Operation};
constexpr NameRange AllNames{Name::Power, Name::Y};
constexpr NameRange ArcNames{Name::Power, Name::J};
// Of the tolerance; the rest is for the decimals of a position.
constexpr double PartForCurves = 0.9;

Failure Fault(std::string_view key, std::string why) {
  return FailureOf("the G-code text '" + std::string(key) + "' " + std::move(why));
}

Expected<Name> NameIn(std::string_view key, std::string_view name, NameRange range) {
  const auto* const found = std::ranges::find(Names, name);
  const auto index = static_cast<int>(found - Names.begin());
  if (found != Names.end() && index >= static_cast<int>(range.first) &&
      index <= static_cast<int>(range.second))
    return static_cast<Name>(index);
  std::string known;
  for (int i = static_cast<int>(range.first); i <= static_cast<int>(range.second); ++i)
    known += (known.empty() ? "{" : ", {") + std::string(Names[static_cast<std::size_t>(i)]) + "}";
  return Fault(key, "has {" + std::string(name) + "}; it may have " + known);
}

Expected<Pattern> PatternOf(std::string_view key, std::string text, NameRange range) {
  if (!text.empty() && !text.ends_with('\n')) text += '\n';
  Pattern pattern;
  std::size_t at = 0;
  for (;;) {
    const std::size_t brace = text.find_first_of("{}", at);
    if (brace == std::string::npos) break;
    const std::size_t end = text[brace] == '{' ? text.find_first_of("{}", brace + 1) : brace;
    if (end == std::string::npos || text[end] == '{' || end == brace)
      return Fault(key, "has a brace without its counterpart");
    const auto name = NameIn(key, text.substr(brace + 1, end - brace - 1), range);
    if (!name) return name.Error();
    pattern.pieces.push_back({text.substr(at, brace - at), *name});
    at = end + 1;
  }
  pattern.rest = text.substr(at);
  return pattern;
}

struct Patterns {
  Pattern start, settings, toolOn, toolOff, rapid, line, arcRight, arcLeft, end;
};

Expected<Patterns> PatternsOf(const GcodeTable& table) {
  Patterns patterns;
  struct Source {
    std::string_view key;
    const std::string& text;
    NameRange range;
    Pattern& pattern;
  };
  const std::array<Source, 9> sources{
      Source{"start", table.start, PageNames, patterns.start},
      Source{"settings", table.settings, SettingsNames, patterns.settings},
      Source{"toolOn", table.toolOn, SettingsNames, patterns.toolOn},
      Source{"toolOff", table.toolOff, SettingsNames, patterns.toolOff},
      Source{"rapid", table.rapid, AllNames, patterns.rapid},
      Source{"line", table.line, AllNames, patterns.line},
      Source{"arcRight", table.arcRight, ArcNames, patterns.arcRight},
      Source{"arcLeft", table.arcLeft, ArcNames, patterns.arcLeft},
      Source{"end", table.end, PageNames, patterns.end}};
  for (const Source& source : sources) {
    auto pattern = PatternOf(source.key, source.text, source.range);
    if (!pattern) return pattern.Error();
    source.pattern = *std::move(pattern);
  }
  return patterns;
}

std::string SafeName(std::string_view name) {
  std::string safe(name);
  for (char& byte : safe) {
    const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                       (byte >= '0' && byte <= '9') || byte == '-' || byte == '_' || byte == '.';
    if (!plain) byte = '_';
  }
  return safe;
}

struct Position {
  long long x = 0;
  long long y = 0;
  bool operator==(const Position&) const = default;
};

// Values by their names: numbers of a path are made once.
struct Values {
  std::array<std::string, 8> texts;  // up to Operation
  Position position;
  Position center;  // from an arc's start
};

class Program {
 public:
  Program(const Patterns& patterns, const GcodeTable& table, const Transform& toDevice)
      : m_Patterns(patterns),
        m_ToSteps(toDevice),
        m_HasArcs(!table.arcRight.empty()),
        m_Decimals(table.decimals),
        m_Scale(std::pow(10, table.decimals)) {}

  void Page(const Pattern& pattern, const CutJob& job) {
    Set(Name::Width, job.width);
    Set(Name::Height, job.height);
    Write(m_Text, pattern);
  }

  void Settings(const CutPath& path, const GcodeTable& table) {
    const double force = path.settings.force.value_or(table.force);
    const double speed = path.settings.speed.value_or(table.speed);
    Set(Name::Force, force);
    Set(Name::Power, force / 100 * table.fullPower);
    Set(Name::Speed, speed);
    Set(Name::Feed, speed * 60);
    Text(Name::Tool) = SafeName(path.settings.tool);
    Text(Name::Operation) = NameOf(path.operation);
    TextOutput settings;
    Write(settings, m_Patterns.settings);
    std::string text = settings.Take();
    if (text != m_LastSettings) m_Text.Add(text);
    m_LastSettings = std::move(text);
  }

  // A contour within one position is drawn by a drill alone.
  void Draw(const Contour& contour, double tolerance, bool isDrilled) {
    m_Begun = false;
    bool hasFirst = false;
    Position first;
    const auto take = [&](Point point) {
      const Position position = PositionOf(point);
      if (!hasFirst) {
        first = m_Values.position = position;
        hasFirst = true;
      } else if (position != m_Values.position) {
        GoTo(position);
      }
    };
    if (m_HasArcs) {
      DrawWithArcs(contour, tolerance, take);
    } else {
      ForEachFlatPoint(contour, tolerance * PartForCurves, take);
    }
    if (contour.closed && m_Values.position != first) GoTo(first);
    if (!m_Begun && isDrilled) GoTo(first);
    if (m_Begun) Write(m_Text, m_Patterns.toolOff);
  }

  std::string Take() { return m_Text.Take(); }

 private:
  std::string& Text(Name name) { return m_Values.texts[static_cast<std::size_t>(name)]; }
  void Set(Name name, double value) { Text(name) = os::ShortDecimal(value, 3); }

  [[nodiscard]] Position StepsOf(Point onDevice) const {
    return {std::llround(onDevice.x * m_Scale), std::llround(onDevice.y * m_Scale)};
  }

  [[nodiscard]] Position PositionOf(Point point) const { return StepsOf(m_ToSteps.Apply(point)); }

  void Begin() {
    if (m_Begun) return;
    Write(m_Text, m_Patterns.rapid);
    Write(m_Text, m_Patterns.toolOn);
    m_Begun = true;
  }

  void GoTo(const Position& position) {
    Begin();
    m_Values.position = position;
    Write(m_Text, m_Patterns.line);
  }

  template <typename Take>
  void DrawWithArcs(const Contour& contour, double tolerance, Take take) {
    take(contour.start);
    Point from = contour.start;
    for (const Segment& segment : contour.segments) {
      if (segment.isCurve)
        DrawArcs(from, segment, tolerance);
      else
        take(segment.end);
      from = segment.end;
    }
  }

  // Arcs are fitted on the device, where a mirrored page turns them round.
  void DrawArcs(Point from, const Segment& curve, double tolerance) {
    const Segment moved = CurveTo(m_ToSteps.Apply(curve.first), m_ToSteps.Apply(curve.second),
                                  m_ToSteps.Apply(curve.end));
    for (const FittedPart& part : ArcsOf(m_ToSteps.Apply(from), moved, tolerance * PartForCurves)) {
      const Position end = StepsOf(part.end);
      if (end == m_Values.position) continue;
      if (!part.isArc) {
        GoTo(end);
        continue;
      }
      Begin();
      const Position center = StepsOf(part.center);
      m_Values.center = {center.x - m_Values.position.x, center.y - m_Values.position.y};
      m_Values.position = end;
      Write(m_Text, part.isLeft ? m_Patterns.arcLeft : m_Patterns.arcRight);
    }
  }

  void Write(TextOutput& text, const Pattern& pattern) {
    for (const Piece& piece : pattern.pieces) {
      text.Add(piece.text);
      if (piece.name == Name::X)
        text.AddDecimal(static_cast<double>(m_Values.position.x) / m_Scale, m_Decimals);
      else if (piece.name == Name::Y)
        text.AddDecimal(static_cast<double>(m_Values.position.y) / m_Scale, m_Decimals);
      else if (piece.name == Name::I)
        text.AddDecimal(static_cast<double>(m_Values.center.x) / m_Scale, m_Decimals);
      else if (piece.name == Name::J)
        text.AddDecimal(static_cast<double>(m_Values.center.y) / m_Scale, m_Decimals);
      else
        text.Add(Text(piece.name));
    }
    text.Add(pattern.rest);
  }

  const Patterns& m_Patterns;
  Transform m_ToSteps;
  bool m_HasArcs;
  int m_Decimals;
  double m_Scale;
  TextOutput m_Text;
  Values m_Values;
  std::string m_LastSettings;
  bool m_Begun = false;
};

bool UsesPower(const Patterns& patterns) {
  return std::ranges::any_of(std::array{&patterns.settings, &patterns.toolOn, &patterns.toolOff,
                                        &patterns.rapid, &patterns.line},
                             [](const Pattern* pattern) { return pattern->Has(Name::Power); });
}

Expected<void> Check(const GcodeTable& table) {
  if (table.decimals < 0 || table.decimals > MaximumDecimals)
    return FailureOf("positions of G-code have 0 to 6 decimals");
  const auto isFit = [](double value) { return value > 0 && value <= MaximumNumber; };
  if (!isFit(table.fullPower)) return FailureOf("the full power of G-code is above 0");
  if (!isFit(table.speed) || !isFit(table.force))
    return FailureOf("the speed and the force of G-code are above 0");
  if (table.arcRight.empty() != table.arcLeft.empty())
    return FailureOf("G-code has the texts of arcs to the right and to the left, or none of them");
  return {};
}

}  // namespace

Expected<std::string> GcodeText(const CutJob& job, const Transform& toDevice, double tolerance,
                                const GcodeTable& table) {
  if (auto checked = Check(table); !checked) return checked.Error();
  const auto patterns = PatternsOf(table);
  if (!patterns) return patterns.Error();
  const bool inPercent = UsesPower(*patterns);
  Program program(*patterns, table, toDevice);
  program.Page(patterns->start, job);
  for (std::size_t i = 0; i < job.paths.size(); ++i) {
    const CutPath& path = job.paths[i];
    if (!HasTool(path.operation) || path.contours.empty()) continue;
    if (inPercent && path.settings.force.value_or(table.force) > 100)
      return FailureOf("path " + std::to_string(i + 1) +
                       " has a force of more than 100 percent of the device's power");
    program.Settings(path, table);
    for (const Contour& contour : path.contours) {
      for (int pass = 0; pass < path.settings.passes; ++pass)
        program.Draw(contour, tolerance, path.operation == Operation::Drill);
    }
  }
  program.Page(patterns->end, job);
  return program.Take();
}

}  // namespace rastrel::cutting
