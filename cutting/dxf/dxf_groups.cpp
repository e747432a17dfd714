#include "cutting/dxf/dxf_groups.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace rastrel::cutting {
namespace {

constexpr double MaximumNumber = 1e9;

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view Whitespace = " \t\r";
  const std::size_t first = text.find_first_not_of(Whitespace);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(Whitespace) - first + 1);
}

}  // namespace

std::optional<double> DxfNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || stop != text.data() + text.size()) return {};
  if (!std::isfinite(value) || std::abs(value) > MaximumNumber) return {};
  return value;
}

std::optional<std::string_view> DxfGroupReader::NextLine() {
  if (m_At >= m_Text.size()) return {};
  const std::size_t end = std::min(m_Text.find('\n', m_At), m_Text.size());
  const std::string_view line = m_Text.substr(m_At, end - m_At);
  m_At = std::min(end + 1, m_Text.size());
  ++m_Line;
  return Trimmed(line);
}

std::optional<DxfGroup> DxfGroupReader::Next() {
  if (!m_Why.empty()) return {};
  const auto code = NextLine();
  if (!code || (code->empty() && m_At == m_Text.size())) return {};
  DxfGroup group;
  const auto [stop, error] = std::from_chars(code->data(), code->data() + code->size(), group.code);
  if (error != std::errc() || stop != code->data() + code->size()) {
    --m_Line;
    m_Why = "a group code is expected here";
    return {};
  }
  const auto value = NextLine();
  if (!value) {
    m_Why = "the value of the group code " + std::to_string(group.code) + " is missing";
    return {};
  }
  group.value = *value;
  group.line = m_Line - 1;
  return group;
}

DxfGroups::DxfGroups(const DxfObject& object) {
  DxfGroupReader reader(object.text, object.line);
  while (const auto group = reader.Next()) m_Groups.push_back(*group);
}

const DxfGroup* DxfGroups::Find(int code) const {
  const auto found = std::ranges::find(m_Groups, code, &DxfGroup::code);
  return found == m_Groups.end() ? nullptr : &*found;
}

std::string_view DxfGroups::Text(int code, std::string_view otherwise) const {
  const DxfGroup* const group = Find(code);
  return group == nullptr ? otherwise : group->value;
}

double DxfGroups::NumberOf(const DxfGroup& group) {
  const auto number = DxfNumber(group.value);
  if (number) return *number;
  if (!HasFailed()) {
    m_FaultLine = group.line;
    m_Why = "a number is expected here";
  }
  return 0;
}

double DxfGroups::Number(int code, double otherwise) {
  const DxfGroup* const group = Find(code);
  return group == nullptr ? otherwise : NumberOf(*group);
}

int DxfGroups::Whole(int code, int otherwise) {
  return static_cast<int>(std::trunc(Number(code, otherwise)));
}

}  // namespace rastrel::cutting
