// Numbers by the places of a format: plain, with an exponent, as fractions.

#include <algorithm>
#include <charconv>
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
  // With several places in front of the point the exponent is a multiple of their number; with none
  // the mantissa is below 1.
  const int before = PlacesIn(pieces, 0, point);
  const int step = std::max(before, 1);
  const int places = PlacesIn(pieces, point, sign);
  int exponent = 0;
  const auto fit = [&](const DecimalDigits& number) {
    if (number.IsZero()) return 0;
    const int own = number.Exponent() + (before == 0 && point < sign ? 1 : 0);
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
  const std::string mantissa = ShowMantissa(section, sign, digits);
  const bool hasDigit = mantissa.find_first_of("0123456789") != mantissa.npos;
  shown += mantissa + (hasDigit ? "" : "0") + pieces[sign].text;
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

// A number without its whole part, of the digits that count.
double FractionOf(double magnitude) {
  const DecimalDigits digits(magnitude);
  const std::string text = "0." + digits.Fraction(digits.Places());
  double fraction = 0;
  std::from_chars(text.data(), text.data() + text.size(), fraction);
  return fraction;
}

std::int64_t NearestWhole(double value) {
  DecimalDigits digits(value);
  digits.RoundTo(0);
  const std::string text = digits.Integer();
  std::int64_t whole = 0;
  std::from_chars(text.data(), text.data() + text.size(), whole);
  return whole;
}

// The places of a denominator are unused on its right if they are blanks, and else on its left.
std::string ShowDenominator(const Pieces& pieces, std::size_t begin, std::size_t end,
                            std::int64_t denominator) {
  std::string shown = std::to_string(denominator);
  const std::size_t places = end - begin;
  if (begin == end || shown.size() >= places) return shown;
  if (pieces[begin].text == "?") shown.resize(places, ' ');
  if (pieces[begin].text == "0") shown.insert(0, places - shown.size(), '0');
  return shown;
}

bool HasZero(const Pieces& pieces, std::size_t begin, std::size_t end) {
  for (std::size_t at = begin; at < end; ++at)
    if (pieces[at].kind == PieceKind::Digit && pieces[at].text == "0") return true;
  return false;
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
  const double rest = hasWhole ? FractionOf(magnitude) : magnitude;
  Ratio ratio{NearestWhole(rest * static_cast<double>(fixed)), fixed};
  if (fixed == 0) ratio = NearestRatio(rest, LargestDenominator(places));
  if (hasWhole && ratio.numerator == ratio.denominator) {
    whole += 1;
    ratio.numerator = 0;
  }
  const bool isZero = whole == 0 && ratio.numerator == 0;
  std::string shown = isNegative && !isZero ? "-" : "";
  const std::string wholeDigits = isZero ? "0" : DecimalDigits(whole).Integer();
  shown += ShowInteger(pieces, 0, begin, hasWhole ? wholeDigits : "", section.isGrouped);
  if (hasWhole && ratio.numerator == 0 && !HasZero(pieces, begin, bar))
    shown.append(end - begin, ' ');
  else
    shown += ShowInteger(pieces, begin, bar, std::to_string(ratio.numerator), false) + "/" +
             ShowDenominator(pieces, bar + 1, end, ratio.denominator);
  for (std::size_t at = end; at < pieces.size(); ++at)
    if (pieces[at].kind == PieceKind::Literal) shown += pieces[at].text;
  return shown;
}

}  // namespace

std::string ShowDigits(const FormatSection& section, double magnitude, bool isNegative) {
  const Pieces& pieces = section.pieces;
  if (section.Has(PieceKind::Bar))
    return ShowAsFraction(section, section.isPercentage ? magnitude * 100 : magnitude, isNegative);
  DecimalDigits digits(magnitude);
  digits.Scale((section.isPercentage ? 2 : 0) - 3 * section.thousands);
  if (section.Has(PieceKind::Exponent)) return ShowWithExponent(section, digits, isNegative);
  const std::size_t point = Find(pieces, PieceKind::Point);
  digits.RoundTo(PlacesIn(pieces, point, pieces.size()));
  const bool hasPlaces = PlacesIn(pieces, 0, pieces.size()) > 0;
  const bool signs = isNegative && !digits.IsZero() && hasPlaces;
  return (signs ? "-" : "") + ShowMantissa(section, pieces.size(), digits);
}

}  // namespace rastrel::spreadsheet
