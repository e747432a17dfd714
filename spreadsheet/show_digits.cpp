// Numbers by the places of a format: plain, with an exponent, as fractions.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "spreadsheet/decimal_digits.h"
#include "spreadsheet/format_code.h"

namespace rastrel::spreadsheet {
namespace {

using Pieces = std::vector<Piece>;

std::size_t Find(const Pieces& pieces, PieceKind kind) {
  return static_cast<std::size_t>(std::ranges::find(pieces, kind, &Piece::kind) - pieces.begin());
}

int PlacesIn(const Pieces& pieces, std::size_t begin, std::size_t end) {
  int count = 0;
  for (std::size_t at = begin; at < end; ++at)
    if (pieces[at].kind == PieceKind::Digit) ++count;
  return count;
}

// The character of an unused place.
std::string_view UnusedPlace(const Piece& place) {
  if (place.text == "0") return "0";
  return place.text == "?" ? " " : "";
}

// Fills the places from the right; the first one takes all the rest.
std::string ShowInteger(const Pieces& pieces, std::size_t begin, std::size_t end,
                        const std::string& digits, bool grouped) {
  std::string shown;
  std::size_t behind = static_cast<std::size_t>(PlacesIn(pieces, begin, end));
  const auto add = [&](std::string_view digit, std::size_t digitsBehind) {
    shown += digit;
    const bool separate = grouped && digitsBehind > 0 && digitsBehind % 3 == 0;
    if (separate && !digit.empty() && digit != " ") shown += ',';
  };
  bool first = true;
  for (std::size_t at = begin; at < end; ++at) {
    if (pieces[at].kind == PieceKind::Literal) shown += pieces[at].text;
    if (pieces[at].kind != PieceKind::Digit) continue;
    if (std::exchange(first, false))
      for (std::size_t left = digits.size(); left > behind; --left)
        add(std::string_view(digits).substr(digits.size() - left, 1), left - 1);
    --behind;
    const bool used = behind < digits.size();
    add(used ? std::string_view(digits).substr(digits.size() - behind - 1, 1)
             : UnusedPlace(pieces[at]),
        behind);
  }
  return shown;
}

// Zeros at the end are unused places. The point goes with the last digit.
std::string ShowFraction(const Pieces& pieces, std::size_t begin, std::size_t end,
                         const std::string& digits) {
  const std::size_t used = digits.find_last_not_of('0') + 1;
  std::string shown;
  std::size_t index = 0;
  bool hasDigit = false;
  for (std::size_t at = begin; at < end; ++at) {
    if (pieces[at].kind == PieceKind::Literal) shown += pieces[at].text;
    if (pieces[at].kind != PieceKind::Digit) continue;
    const std::string_view digit =
        index < used ? std::string_view(digits).substr(index, 1) : UnusedPlace(pieces[at]);
    hasDigit = hasDigit || !digit.empty();
    shown += digit;
    ++index;
  }
  return (hasDigit ? "." : "") + shown;
}

std::string ShowMantissa(const FormatSection& section, std::size_t end,
                         const DecimalDigits& digits) {
  const Pieces& pieces = section.pieces;
  const std::size_t point = std::min(Find(pieces, PieceKind::Point), end);
  std::string shown = PlacesIn(pieces, 0, point) == 0 && point < end ? digits.Integer() : "";
  shown = ShowInteger(pieces, 0, point, digits.Integer(), section.isGrouped) + shown;
  if (point == end) return shown;
  return shown + ShowFraction(pieces, point, end, digits.Fraction(PlacesIn(pieces, point, end)));
}

std::string ShowWithExponent(const FormatSection& section, DecimalDigits digits, bool isNegative) {
  const Pieces& pieces = section.pieces;
  const std::size_t sign = Find(pieces, PieceKind::Exponent);
  const std::size_t point = std::min(Find(pieces, PieceKind::Point), sign);
  // With several places in front of the point the exponent is a multiple of their number.
  const int step = std::max(PlacesIn(pieces, 0, point), 1);
  const int places = PlacesIn(pieces, point, sign);
  int exponent = 0;
  const auto fit = [&](const DecimalDigits& number) {
    const int own = number.Exponent();
    const int fitting = (own >= 0 ? own : own - step + 1) / step * step;
    exponent += fitting;
    return fitting;
  };
  digits.Scale(-fit(digits));
  digits.RoundTo(places);
  digits.Scale(-fit(digits));
  std::string number = std::to_string(std::abs(exponent));
  const auto least = static_cast<std::size_t>(PlacesIn(pieces, sign, pieces.size()));
  if (number.size() < least) number.insert(0, least - number.size(), '0');
  std::string shown = isNegative && !digits.IsZero() ? "-" : "";
  shown += ShowMantissa(section, sign, digits) + pieces[sign].text;
  shown += (exponent < 0 ? "-" : pieces[sign].flag ? "+" : "") + number;
  for (std::size_t at = sign; at < pieces.size(); ++at)
    if (pieces[at].kind == PieceKind::Literal) shown += pieces[at].text;
  return shown;
}

struct Ratio {
  std::int64_t numerator = 0;
  std::int64_t denominator = 1;
};

// The nearest ratio with a denominator of `maximum` or less, by continued fractions.
Ratio NearestRatio(double value, std::int64_t maximum) {
  Ratio before{0, 1};
  Ratio last{1, 0};
  double rest = value;
  for (int step = 0; step < 40; ++step) {
    const double whole = std::floor(rest);
    const auto quotient = static_cast<std::int64_t>(whole);
    const Ratio next{before.numerator + quotient * last.numerator,
                     before.denominator + quotient * last.denominator};
    if (next.denominator > maximum) {
      // A part of the quotient may still be nearer than the last convergent.
      const std::int64_t part = (maximum - before.denominator) / last.denominator;
      const Ratio bound{before.numerator + part * last.numerator,
                        before.denominator + part * last.denominator};
      const auto distance = [value](const Ratio& ratio) {
        return std::fabs(value - static_cast<double>(ratio.numerator) /
                                     static_cast<double>(ratio.denominator));
      };
      return bound.denominator > 0 && distance(bound) < distance(last) ? bound : last;
    }
    before = std::exchange(last, next);
    constexpr double tooSmall = 1e-10;
    if (rest - whole < tooSmall) break;
    rest = 1 / (rest - whole);
  }
  return last;
}

std::int64_t LargestDenominator(int places) {
  constexpr int maximumPlaces = 5;
  std::int64_t largest = 1;
  for (int place = 0; place < std::min(places, maximumPlaces); ++place) largest *= 10;
  return std::max<std::int64_t>(largest - 1, 1);
}

std::string ShowAsFraction(const FormatSection& section, double magnitude, bool isNegative) {
  constexpr double tooLarge = 1e15;
  if (magnitude >= tooLarge) return (isNegative ? "-" : "") + ShowGeneral(magnitude);
  const Pieces& pieces = section.pieces;
  const std::size_t bar = Find(pieces, PieceKind::Bar);
  std::size_t begin = bar;
  while (begin > 0 && pieces[begin - 1].kind == PieceKind::Digit) --begin;
  std::size_t end = bar + 1;
  while (end < pieces.size() && pieces[end].kind == PieceKind::Digit) ++end;
  const bool hasWhole = PlacesIn(pieces, 0, begin) > 0;
  const int places = PlacesIn(pieces, bar, end);
  const std::int64_t fixed = pieces[bar].count;

  double whole = hasWhole ? std::floor(magnitude) : 0;
  const double rest = magnitude - whole;
  Ratio ratio{std::llround(rest * static_cast<double>(fixed)), fixed};
  if (fixed == 0) ratio = NearestRatio(rest, LargestDenominator(places));
  if (hasWhole && ratio.numerator == ratio.denominator) {
    whole += 1;
    ratio.numerator = 0;
  }
  const bool isZero = whole == 0 && ratio.numerator == 0;
  std::string shown = isNegative && !isZero ? "-" : "";
  const std::string wholeDigits = isZero ? "0" : DecimalDigits(whole).Integer();
  shown += ShowInteger(pieces, 0, begin, hasWhole ? wholeDigits : "", section.isGrouped);
  const auto places2 = static_cast<std::size_t>(places);
  if (hasWhole && ratio.numerator == 0) {
    shown.append(bar - begin + 1 + places2, ' ');
  } else {
    shown += ShowInteger(pieces, begin, bar, std::to_string(ratio.numerator), false) + "/";
    std::string denominator = std::to_string(ratio.denominator);
    const bool pads = bar + 1 < end && pieces[bar + 1].text == "?";
    if (pads && denominator.size() < places2) denominator.resize(places2, ' ');
    shown += denominator;
  }
  for (std::size_t at = end; at < pieces.size(); ++at)
    if (pieces[at].kind == PieceKind::Literal) shown += pieces[at].text;
  return shown;
}

}  // namespace

std::string ShowDigits(const FormatSection& section, double magnitude, bool isNegative) {
  const Pieces& pieces = section.pieces;
  if (section.Has(PieceKind::Bar)) {
    const double percents = std::pow(100.0, section.percents);
    return ShowAsFraction(section, magnitude * percents, isNegative);
  }
  DecimalDigits digits(magnitude);
  digits.Scale(2 * section.percents - 3 * section.thousands);
  if (section.Has(PieceKind::Exponent)) return ShowWithExponent(section, digits, isNegative);
  const std::size_t point = Find(pieces, PieceKind::Point);
  digits.RoundTo(PlacesIn(pieces, point, pieces.size()));
  const bool hasPlaces = PlacesIn(pieces, 0, pieces.size()) > 0;
  const bool signs = isNegative && !digits.IsZero() && hasPlaces;
  return (signs ? "-" : "") + ShowMantissa(section, pieces.size(), digits);
}

}  // namespace rastrel::spreadsheet
