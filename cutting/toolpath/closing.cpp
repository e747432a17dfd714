#include "cutting/toolpath/closing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "cutting/toolpath/measured_contour.h"
#include "cutting/toolpath/nesting.h"

namespace rastrel::cutting {
namespace {

constexpr double CornerDegrees = 20;
constexpr int LeadInAttempts = 4;
constexpr int MaximumBridges = 1'000;

Point Turned(Point direction, bool toLeft) {
  return toLeft ? Point{-direction.y, direction.x} : Point{direction.y, -direction.x};
}

Point Unit(Point vector) {
  const double length = std::hypot(vector.x, vector.y);
  return length > 1e-9 ? Point{vector.x / length, vector.y / length} : Point{};
}

double AngleBetween(Point from, Point to) {
  return std::atan2(from.x * to.y - from.y * to.x, from.x * to.x + from.y * to.y);
}

// Into the waste from a place that is reached by `before` and left by `after`. Where the waste lies
// on the left, say, its angle there is that from `after` round to the way back:
//
//      \ waste           waste /
//   45° \                     /   in a corner the middle of it,
//   -----o-----> after       o-----> after
//   before                   | before
Point WayOut(Point before, Point after, bool wasteIsLeft, bool isBesideBridge) {
  const Point normal = Turned(after, wasteIsLeft);
  const double turn = AngleBetween(before, after);
  const double angle = std::numbers::pi - (wasteIsLeft ? turn : -turn);
  if (angle < std::numbers::pi - 0.01) {
    const double half = (wasteIsLeft ? angle : -angle) / 2;
    return {after.x * std::cos(half) - after.y * std::sin(half),
            after.x * std::sin(half) + after.y * std::cos(half)};
  }
  if (isBesideBridge) return normal;
  return Unit({normal.x - after.x, normal.y - after.y});
}

class Closing {
 public:
  Closing(const ToolLine& line, const ToolSettings& settings, const LineIndex& others,
          ClosingReport& report)
      : m_line(line),
        m_settings(settings),
        m_others(others),
        m_report(report),
        m_measured(line.contour),
        m_corners(m_measured.Corners(CornerDegrees)),
        m_wasteIsLeft((AreaOf(line.contour) > 0) == (line.depth % 2 == 1)) {}

  [[nodiscard]] std::vector<Contour> Pieces();

 private:
  [[nodiscard]] int BridgeCount() const;
  [[nodiscard]] double BridgePlace(double ideal, double room);
  [[nodiscard]] std::vector<Contour> BridgedPieces(int count);
  bool AddLeadIn(Contour& piece, double start, bool isBesideBridge);

  const ToolLine& m_line;
  const ToolSettings& m_settings;
  const LineIndex& m_others;
  ClosingReport& m_report;
  MeasuredContour m_measured;
  std::vector<double> m_corners;  // lengths from the start
  bool m_wasteIsLeft;             // of the direction in which it runs
};

int Closing::BridgeCount() const {
  if (m_settings.bridges <= 0 || !(m_settings.bridgeWidth > 0)) return 0;
  const double fitting = m_measured.Length() / 2 / m_settings.bridgeWidth;
  return static_cast<int>(
      std::min({static_cast<double>(m_settings.bridges), fitting, double{MaximumBridges}}));
}

// The middle of a bridge: the place nearest to `ideal`, within `room`, with no corner in its width.
double Closing::BridgePlace(double ideal, double room) {
  const double half = m_settings.bridgeWidth / 2;
  double at = ideal;
  double best = std::numeric_limits<double>::infinity();
  const auto isFree = [&](double place) {
    const auto next = std::ranges::lower_bound(m_corners, place - half);
    return (next == m_corners.end() || *next > place + half) && place - half > 0 &&
           place + half < m_measured.Length();
  };
  const auto consider = [&](double place) {
    if (std::abs(place - ideal) > room || std::abs(place - ideal) >= best || !isFree(place)) return;
    best = std::abs(place - ideal);
    at = place;
  };
  consider(ideal);
  // Else just beside a corner that is near.
  const double beside = half * 1.001 + 0.001;
  const auto first = std::ranges::lower_bound(m_corners, ideal - room - beside);
  const auto last = std::ranges::upper_bound(m_corners, ideal + room + beside);
  for (auto corner = first; corner < last && best > 0; ++corner) {
    consider(*corner - beside);
    consider(*corner + beside);
  }
  if (std::isinf(best)) ++m_report.cornerBridges;
  return at;
}

std::vector<Contour> Closing::BridgedPieces(int count) {
  const double length = m_measured.Length();
  const double distance = length / count;
  const double half = m_settings.bridgeWidth / 2;
  const double room = std::max(0.0, std::min(distance / 4, distance / 2 - half));
  std::vector<double> places;
  for (int i = 0; i < count; ++i) places.push_back(BridgePlace((i + 0.5) * distance, room));
  std::vector<Contour> pieces;
  for (std::size_t i = 0; i < places.size(); ++i) {
    const double from = places[i] + half;
    const bool isLast = i + 1 == places.size();
    const double to = (isLast ? places.front() + length : places[i + 1]) - half;
    Contour piece = m_measured.Part(from, to);
    if (piece.segments.empty()) continue;
    AddLeadIn(piece, from, true);
    pieces.push_back(std::move(piece));
  }
  ++m_report.bridged;
  m_report.bridges += static_cast<std::size_t>(count);
  return pieces;
}

bool Closing::AddLeadIn(Contour& piece, double start, bool isBesideBridge) {
  if (!(m_settings.leadIn > 0)) return false;
  const Point way = WayOut(m_measured.DirectionBefore(start), m_measured.DirectionAfter(start),
                           m_wasteIsLeft, isBesideBridge);
  double length = std::min(m_settings.leadIn, MaximumCoordinate);
  for (int attempt = 0; attempt < LeadInAttempts && way != Point{}; ++attempt, length /= 2) {
    const Point from{piece.start.x + way.x * length, piece.start.y + way.y * length};
    if (m_others.IsCrossed(piece.start, from)) continue;
    piece.segments.insert(piece.segments.begin(), LineTo(piece.start));
    piece.start = from;
    ++m_report.leadIns;
    if (attempt > 0) ++m_report.shorterLeadIns;
    return true;
  }
  ++m_report.noLeadIn;
  return false;
}

std::vector<Contour> Closing::Pieces() {
  const int count = BridgeCount();
  if (m_settings.bridges > 0 && m_settings.bridgeWidth > 0 && count < m_settings.bridges)
    ++m_report.fewerBridges;
  if (count > 0) return BridgedPieces(count);
  const double length = m_measured.Length();
  const double overcut = m_settings.overcut > 0 ? std::min(m_settings.overcut, length) : 0;
  Contour piece = m_measured.Part(0, length + overcut);
  if (overcut > 0) ++m_report.overcuts;
  // Where nothing was done it stays closed.
  if (!AddLeadIn(piece, 0, false) && overcut <= 0) return {m_line.contour};
  return {piece};
}

}  // namespace

std::vector<Contour> CloseLine(const ToolLine& line, const ToolSettings& settings,
                               const LineIndex& others, ClosingReport& report) {
  const bool hasBridges = settings.bridges > 0 && settings.bridgeWidth > 0;
  const bool isAsked = settings.overcut > 0 || settings.leadIn > 0 || hasBridges;
  if (!isAsked || !line.contour.closed || line.contour.segments.empty() ||
      !IsOnAnySheet(line.contour))
    return {line.contour};
  return Closing(line, settings, others, report).Pieces();
}

}  // namespace rastrel::cutting
