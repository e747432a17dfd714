#include "children/devices/pattern.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "rastrel/platform/os/text.h"

namespace rastrel::devices {
namespace {

constexpr std::array<std::pair<std::string_view, Field>, 8> FieldNames = {{
    {"output", Field::Output},
    {"job", Field::Job},
    {"page", Field::Page},
    {"copy", Field::Copy},
    {"printer", Field::Printer},
    {"plane", Field::Plane},
    {"date", Field::Date},
    {"file", Field::File},
}};

std::optional<Field> FieldOf(std::string_view name) {
  for (const auto& [known, field] : FieldNames) {
    if (known == name) return field;
  }
  return std::nullopt;
}

std::string ValueOf(Field field, const FieldValues& values) {
  switch (field) {
    case Field::Output: return values.output;
    case Field::Job: return SafeName(values.job);
    case Field::Page: return std::to_string(values.page);
    case Field::Copy: return std::to_string(values.copy);
    case Field::Printer: return SafeName(values.printer);
    case Field::Plane: return SafeName(values.plane);
    case Field::Date: return SafeName(values.date);
    case Field::File: return values.file;
  }
  return {};
}

bool IsControl(wchar_t character) {
  return character < L' ' || (character >= 0x7F && character < 0xA0);
}

/// One word of a command, with the position moved past it.
Expected<std::string> TakeWord(std::string_view text, std::size_t& at) {
  std::string word;
  char quote = 0;
  for (; at < text.size(); ++at) {
    const char character = text[at];
    const bool more = at + 1 < text.size();
    if (quote == 0 && (character == ' ' || character == '\t')) return word;
    if (quote == 0 && (character == '"' || character == '\'')) {
      quote = character;
    } else if (quote != 0 && character == quote) {
      quote = 0;
    } else if (character == '\\' && more && quote == 0) {
      word += text[++at];
    } else if (character == '\\' && more && quote == '"' &&
               (text[at + 1] == '"' || text[at + 1] == '\\')) {
      word += text[++at];
    } else {
      word += character;
    }
  }
  if (quote != 0) return FailureOf(std::string("a quote ") + quote + " is not closed");
  return word;
}

}  // namespace

std::string SafeName(std::string_view value) {
  std::wstring wide = os::WideFromUtf8(value.substr(0, 4 * SafeNameLimit));
  for (wchar_t& character : wide) {
    if (character == L'/' || character == L'\\' || IsControl(character)) character = L'_';
  }
  for (wchar_t& character : wide) {
    if (character != L'.' && character != L'-' && character != L' ') break;
    character = L'_';
  }
  std::string safe;
  for (const wchar_t character : wide) {
    const std::string encoded = os::Utf8FromWide(std::wstring_view(&character, 1));
    if (safe.size() + encoded.size() > SafeNameLimit) break;
    safe += encoded;
  }
  while (!safe.empty() && safe.back() == ' ') safe.pop_back();
  return safe.empty() ? "untitled" : safe;
}

Expected<Pattern> Pattern::Read(std::string_view text) {
  Pattern pattern;
  std::string literal;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char character = text[at];
    const bool doubled = at + 1 < text.size() && text[at + 1] == character;
    if ((character == '{' || character == '}') && doubled) {
      literal += character;
      ++at;
    } else if (character == '}') {
      return FailureOf("a '}' without its '{'");
    } else if (character == '{') {
      const std::size_t end = text.find('}', at);
      if (end == std::string_view::npos) return FailureOf("a '{' without its '}'");
      const std::string_view name = text.substr(at + 1, end - at - 1);
      const auto field = FieldOf(name);
      if (!field) return FailureOf("unknown field '{" + std::string(name) + "}'");
      if (!literal.empty()) pattern.m_Pieces.emplace_back(std::exchange(literal, {}));
      pattern.m_Pieces.emplace_back(*field);
      at = end;
    } else {
      literal += character;
    }
  }
  if (!literal.empty()) pattern.m_Pieces.emplace_back(std::move(literal));
  return pattern;
}

std::string Pattern::Expand(const FieldValues& values) const {
  std::string text;
  for (const auto& piece : m_Pieces) {
    if (const auto* literal = std::get_if<std::string>(&piece)) {
      text += *literal;
    } else {
      text += ValueOf(std::get<Field>(piece), values);
    }
  }
  return text;
}

bool Pattern::Has(Field field) const {
  return std::any_of(m_Pieces.begin(), m_Pieces.end(), [field](const auto& piece) {
    const auto* held = std::get_if<Field>(&piece);
    return held && *held == field;
  });
}

bool Pattern::BeginsWith(Field field) const {
  if (m_Pieces.empty()) return false;
  const auto* held = std::get_if<Field>(&m_Pieces.front());
  return held && *held == field;
}

Expected<std::vector<std::string>> SplitWords(std::string_view text) {
  std::vector<std::string> words;
  std::size_t at = 0;
  while (true) {
    at = text.find_first_not_of(" \t", at);
    if (at == std::string_view::npos) return words;
    auto word = TakeWord(text, at);
    if (!word) return word.Error();
    words.push_back(std::move(*word));
  }
}

}  // namespace rastrel::devices
