#include "host/drawing/exchange_entity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "rastrel/platform/os/number_text.h"

namespace rastrel::drawing {

namespace {

double NumberOf(std::string_view text) {
  const double number = os::DoubleFromText(text);
  return std::isfinite(number) ? number : 0;
}

}  // namespace

bool ExchangeEntity::Read(ExchangePairs& pairs) {
  m_Pairs.clear();
  m_Kind = pairs.Code() == 0 ? pairs.Value() : std::string_view();
  if (pairs.Code() != 0) return false;
  while (pairs.Next()) {
    if (pairs.Code() == 0) return true;
    m_Pairs.push_back({pairs.Code(), pairs.Value()});
  }
  return false;
}

bool ExchangeEntity::Has(int code) const {
  return std::ranges::find(m_Pairs, code, &Pair::code) != m_Pairs.end();
}

std::string_view ExchangeEntity::Text(int code) const {
  const auto found = std::ranges::find(m_Pairs, code, &Pair::code);
  return found == m_Pairs.end() ? std::string_view() : found->value;
}

double ExchangeEntity::Number(int code, double usual) const {
  const auto found = std::ranges::find(m_Pairs, code, &Pair::code);
  return found == m_Pairs.end() ? usual : NumberOf(found->value);
}

int ExchangeEntity::Int(int code, int usual) const {
  const auto found = std::ranges::find(m_Pairs, code, &Pair::code);
  return found == m_Pairs.end() ? usual : os::Int32FromText(found->value);
}

std::vector<double> ExchangeEntity::Numbers(int code) const {
  std::vector<double> numbers;
  for (const Pair& pair : m_Pairs) {
    if (pair.code == code) numbers.push_back(NumberOf(pair.value));
  }
  return numbers;
}

std::vector<ExchangeEntity::Corner> ExchangeEntity::Corners() const {
  std::vector<Corner> corners;
  for (const Pair& pair : m_Pairs) {
    if (pair.code == 10) corners.push_back({{NumberOf(pair.value), 0}, 0});
    if (corners.empty()) continue;
    if (pair.code == 20) corners.back().point.y = NumberOf(pair.value);
    if (pair.code == 42) corners.back().bulge = NumberOf(pair.value);
  }
  return corners;
}

// 1 to 9 are named, 10 to 249 are 24 hues in five values, each once full and once half as strong,
// 250 to 255 are grays.
VectorPath::Rgb IndexedColor(int index) {
  constexpr std::array<VectorPath::Rgb, 10> named = {{{0, 0, 0},
                                                      {255, 0, 0},
                                                      {255, 255, 0},
                                                      {0, 255, 0},
                                                      {0, 255, 255},
                                                      {0, 0, 255},
                                                      {255, 0, 255},
                                                      {0, 0, 0},
                                                      {128, 128, 128},
                                                      {192, 192, 192}}};
  constexpr std::array<double, 6> grays = {51, 91, 132, 173, 214, 255};
  constexpr std::array<double, 5> values = {255, 165, 127, 76, 38};
  if (index < 0 || index > 255) return named[0];
  if (index < 10) return named[static_cast<std::size_t>(index)];
  if (index >= 250) {
    const double gray = grays[static_cast<std::size_t>(index - 250)];
    return {gray, gray, gray};
  }
  const double hue = (index / 10 - 1) / 4.0;  // 0 to 6, from red by yellow, green, cyan and blue
  const double value = values[static_cast<std::size_t>(index % 10 / 2)];
  const double strength = index % 2 == 0 ? 1 : 0.5;
  VectorPath::Rgb color{};
  for (std::size_t part = 0; part < 3; ++part) {
    // How far around the circle the hue is from this part's own, at most half of it.
    const double away = std::abs(std::remainder(hue - 2.0 * static_cast<double>(part), 6));
    const double full = std::clamp(2 - away, 0.0, 1.0);
    color[part] = std::floor(value * (1 - strength + strength * full));
  }
  return color;
}

}  // namespace rastrel::drawing
