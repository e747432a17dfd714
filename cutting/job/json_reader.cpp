#include "cutting/job/json_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cutting {
namespace {

bool IsWhitespace(char character) {
  return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

std::size_t Digits(std::string_view text, std::size_t at) {
  const std::size_t begin = at;
  while (at < text.size() && IsDigit(text[at])) ++at;
  return at - begin;
}

// Length of the number that the text begins with, by JSON's grammar, which knows no "+1", "01",
// ".5" or "nan". 0: none.
std::size_t NumberLength(std::string_view text) {
  std::size_t at = text.starts_with('-') ? 1 : 0;
  const std::size_t whole = Digits(text, at);
  if (whole == 0 || (whole > 1 && text[at] == '0')) return 0;
  at += whole;
  if (text.substr(at).starts_with('.')) {
    const std::size_t decimals = Digits(text, at + 1);
    if (decimals == 0) return 0;
    at += 1 + decimals;
  }
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    ++at;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
    const std::size_t exponent = Digits(text, at);
    if (exponent == 0) return 0;
    at += exponent;
  }
  return at;
}

bool IsWellFormed(std::string_view text) {
  return std::ranges::all_of(text, [](char one) { return (one & 0x80) == 0; }) ||
         os::Utf8FromWide(os::WideFromUtf8(text)) == text;
}

}  // namespace

JsonReader::JsonReader(std::string_view text, std::string name)
    : m_Text(text), m_Name(std::move(name)) {}

void JsonReader::Skip() {
  while (m_At < m_Text.size() && IsWhitespace(m_Text[m_At])) ++m_At;
}

bool JsonReader::Take(char character) {
  if (m_Failed || m_At >= m_Text.size() || m_Text[m_At] != character) return false;
  ++m_At;
  return true;
}

void JsonReader::Fail(std::string why) {
  if (m_Failed) return;
  m_At = m_Value;
  FailHere(std::move(why));
}

// Lines are counted only here, since most texts have no fault.
void JsonReader::FailHere(std::string why) {
  if (m_Failed) return;
  m_Failed = true;
  const std::string_view before = m_Text.substr(0, std::min(m_At, m_Text.size()));
  const std::size_t line = before.rfind('\n');
  const std::string_view last = line == before.npos ? before : before.substr(line + 1);
  m_Failure.where = m_Name;
  m_Failure.why = std::move(why);
  m_Failure.line = 1 + static_cast<int>(std::ranges::count(before, '\n'));
  m_Failure.column = 1 + static_cast<int>(std::ranges::count_if(
                             last, [](char one) { return (one & 0xC0) != 0x80; }));
  m_Failure.code = FailureCode::BadInput;
}

Expected<void> JsonReader::Result() const {
  if (m_Failed) return m_Failure;
  return {};
}

bool JsonReader::Begin(char open) {
  if (m_Failed) return false;
  Skip();
  m_Value = m_At;
  m_First = true;
  if (Take(open)) return true;
  FailHere(open == '{' ? "an object is expected here" : "an array is expected here");
  return false;
}

// After the end of an inner object or array its own parent has a member.
bool JsonReader::Next(char close) {
  if (m_Failed) return false;
  Skip();
  const bool isFirst = std::exchange(m_First, false);
  if (Take(close)) return false;
  if (!isFirst) {
    if (!Take(',')) {
      FailHere(m_At < m_Text.size() ? std::string("',' or '") + close + "' is expected here"
                                    : "the text ends within an object or array");
      return false;
    }
    Skip();
  }
  m_Value = m_At;
  return true;
}

bool JsonReader::NextKey(std::string& key) {
  if (!Next('}')) return false;
  const std::size_t at = m_At;
  key = Text(100);
  Skip();
  if (!m_Failed && !Take(':')) FailHere("':' is expected here");
  m_Value = at;
  return !m_Failed;
}

bool JsonReader::NextItem() { return Next(']'); }

double JsonReader::Number() {
  if (m_Failed) return 0;
  Skip();
  m_Value = m_At;
  const std::size_t length = NumberLength(m_Text.substr(m_At));
  double value = 0;
  const char* begin = m_Text.data() + m_At;
  const auto read = std::from_chars(begin, begin + length, value);
  if (length == 0) {
    FailHere("a number is expected here");
    return 0;
  }
  if (read.ec != std::errc()) FailHere("the number is out of range");
  if (!m_Failed) m_At += length;
  return value;
}

int JsonReader::Whole(int least, int greatest) {
  const double value = Number();
  if (m_Failed) return least;
  if (value >= least && value <= greatest && value == std::floor(value))
    return static_cast<int>(value);
  Fail("a whole number from " + std::to_string(least) + " to " + std::to_string(greatest) +
       " is expected here");
  return least;
}

bool JsonReader::Flag() {
  if (m_Failed) return false;
  Skip();
  m_Value = m_At;
  for (const std::string_view word : {"true", "false"}) {
    if (!m_Text.substr(m_At).starts_with(word)) continue;
    m_At += word.size();
    return word == "true";
  }
  FailHere("true or false is expected here");
  return false;
}

unsigned JsonReader::ReadHex() {
  unsigned value = 0;
  for (int i = 0; i < 4; ++i) {
    const auto digit = os::HexDigitValue(Here());
    if (!digit) {
      FailHere("four hexadecimal digits are expected here");
      return 0;
    }
    value = value * 16 + *digit;
    ++m_At;
  }
  return value;
}

void JsonReader::ReadEscape(std::string& text) {
  static constexpr std::string_view Letters = "\"\\/bfnrt";
  static constexpr std::string_view Meanings = "\"\\/\b\f\n\r\t";
  const char letter = Here();
  if (const std::size_t known = Letters.find(letter); known != Letters.npos && letter != '\0') {
    ++m_At;
    text += Meanings[known];
    return;
  }
  if (!Take('u')) return FailHere("the escape is unknown");
  unsigned value = ReadHex();
  if (value >= 0xD800 && value < 0xDC00 && Take('\\') && Take('u')) {
    const unsigned low = ReadHex();
    value = low >= 0xDC00 && low < 0xE000 ? 0x10000 + ((value - 0xD800) << 10) + (low - 0xDC00)
                                          : 0xD800;
  }
  if (value >= 0xD800 && value < 0xE000) return FailHere("half of a surrogate pair is missing");
  os::AppendUtf8FromWide(text, std::wstring(1, static_cast<wchar_t>(value)));
}

std::string JsonReader::Text(std::size_t maximum) {
  std::string text;
  if (m_Failed) return text;
  Skip();
  m_Value = m_At;
  if (!Take('"')) {
    FailHere("a text in quotes is expected here");
    return text;
  }
  while (!m_Failed && !Take('"')) {
    if (m_At >= m_Text.size()) {
      FailHere("the text is not closed");
    } else if (Take('\\')) {
      ReadEscape(text);
    } else {
      text += m_Text[m_At++];
    }
    if (text.size() > maximum) Fail("the text has more than " + std::to_string(maximum) + " bytes");
  }
  const auto isControl = [](char one) { return static_cast<unsigned char>(one) < 32; };
  if (!m_Failed && (std::ranges::any_of(text, isControl) || !IsWellFormed(text)))
    Fail("the text has control characters, or is not UTF-8");
  return m_Failed ? std::string() : text;
}

void JsonReader::End() {
  if (m_Failed) return;
  Skip();
  if (m_At < m_Text.size()) FailHere("the text goes on after its end");
}

}  // namespace rastrel::cutting
