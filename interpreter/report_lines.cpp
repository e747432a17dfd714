#include "interpreter/report_lines.h"

#include <algorithm>

#include "rastrel/platform/os/hex.h"

namespace rastrel::interpreter {

std::optional<Report> ReadReport(std::string_view line, std::string_view word) {
  if (word.empty() || !line.starts_with(word)) return {};
  line.remove_prefix(word.size());
  if (!line.starts_with(' ')) return {};
  line.remove_prefix(1);
  const std::size_t blank = line.find(' ');
  if (blank == line.npos || blank == 0) return {};
  Report report{std::string(line.substr(0, blank)), {}};
  const std::string_view digits = line.substr(blank + 1);
  if (digits.starts_with('=')) {
    report.value = digits.substr(1);
    return report;
  }
  if (digits.size() % 2 != 0) return {};
  report.value.resize(digits.size() / 2);
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const auto byte = os::ByteFromHex(digits[i], digits[i + 1], os::HexCase::Lower);
    if (!byte) return {};
    report.value[i / 2] = static_cast<char>(*byte);
  }
  return report;
}

void LineCutter::Add(std::string_view bytes) {
  m_Text.erase(0, m_Start);
  m_Start = 0;
  m_Text.append(bytes);
}

std::optional<std::string> LineCutter::Next() {
  m_Start = std::min(m_Text.find_first_not_of("\r\n", m_Start), m_Text.size());
  const std::size_t rest = m_Text.size() - m_Start;
  // Megabytes of cut paths come through here, and find_first_of takes a call for each byte of them.
  const std::string_view waiting = std::string_view(m_Text).substr(m_Start);
  std::size_t length = std::min(waiting.find('\n'), rest);
  length = std::min(waiting.substr(0, length).find('\r'), length);
  if (length == rest && rest < Limit) return {};
  length = std::min(length, Limit);
  std::string line = m_Text.substr(m_Start, length);
  m_Start += length;
  return line;
}

}  // namespace rastrel::interpreter
