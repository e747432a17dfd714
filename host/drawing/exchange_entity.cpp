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

}  // namespace rastrel::drawing
