#include "host/drawing/exchange_pairs.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "rastrel/platform/os/number_text.h"

namespace rastrel::drawing {

namespace {

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view whitespace = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(whitespace), text.size()));
  return text.substr(0, text.find_last_not_of(whitespace) + 1);
}

}  // namespace

std::optional<std::string_view> ExchangePairs::Line() {
  if (m_Next >= m_File.size()) return std::nullopt;
  const std::size_t end = std::min(m_File.find('\n', m_Next), m_File.size());
  const std::string_view line = Trimmed(m_File.substr(m_Next, end - m_Next));
  m_Next = end + 1;
  return line;
}

bool ExchangePairs::Next() {
  m_Begin = std::min(m_Next, m_File.size());
  const auto code = Line();
  const auto value = code ? Line() : std::nullopt;
  if (!value) return false;
  const auto [end, error] = std::from_chars(code->data(), code->data() + code->size(), m_Code);
  if (error != std::errc() || end != code->data() + code->size()) return false;
  m_Value = *value;
  return true;
}

double ExchangePairs::Number() const {
  const double number = os::DoubleFromText(m_Value);
  return std::isfinite(number) ? number : 0;
}

int ExchangePairs::Int() const { return os::Int32FromText(m_Value); }

}  // namespace rastrel::drawing
