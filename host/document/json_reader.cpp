#include "host/document/json_reader.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "rastrel/platform/os/text.h"

namespace rastrel::document {

namespace {

// Unwinds a reading, which may be within the parser's own calls. Never seen outside ReadJson.
struct JsonFault {
  Failure failure;
};

}  // namespace

Expected<void> ReadJson(const std::function<void()>& reading) {
  try {
    reading();
    return {};
  } catch (const JsonFault& fault) {
    return fault.failure;
  }
}

void EndJsonReading(Failure failure) { throw JsonFault{std::move(failure)}; }

JsonValue::JsonValue(const nlohmann::json& value, std::string where)
    : m_Value(&value), m_Where(std::move(where)) {}

void JsonValue::Fail(const std::string& why) const {
  Failure failure = FailureOf(why);
  failure.where = m_Where;
  EndJsonReading(std::move(failure));
}

bool JsonValue::Has(const char* name) const {
  if (!m_Value->is_object()) Fail("is no object");
  return m_Value->contains(name);
}

JsonValue JsonValue::operator[](const char* name) const {
  if (!Has(name)) Fail(std::string("lacks \"") + name + "\"");
  return {(*m_Value)[name], m_Where + "/" + name};
}

std::size_t JsonValue::Count() const {
  if (!m_Value->is_array()) Fail("is no array");
  return m_Value->size();
}

JsonValue JsonValue::At(std::size_t index) const {
  if (index >= Count()) Fail("has only " + std::to_string(Count()) + " elements");
  return {(*m_Value)[index], m_Where + "/" + std::to_string(index)};
}

double JsonValue::Number() const {
  if (!m_Value->is_number()) Fail("is no number");
  const double number = m_Value->get<double>();
  if (!std::isfinite(number)) Fail("is beyond all numbers");
  return number;
}

double JsonValue::NumberAbove0() const {
  const double number = Number();
  if (number <= 0) Fail("is not above 0");
  return number;
}

std::int64_t JsonValue::Whole(std::int64_t least, std::int64_t most) const {
  if (!m_Value->is_number_integer()) Fail("is no whole number");
  const bool tooLarge =
      m_Value->is_number_unsigned() &&
      m_Value->get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
  const std::int64_t number = tooLarge ? most : m_Value->get<std::int64_t>();
  if (tooLarge || number < least || number > most) {
    Fail("is not between " + std::to_string(least) + " and " + std::to_string(most));
  }
  return number;
}

int JsonValue::Int() const {
  return static_cast<int>(Whole(std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

bool JsonValue::Bool() const {
  if (!m_Value->is_boolean()) Fail("is neither true nor false");
  return m_Value->get<bool>();
}

const std::string& JsonValue::Utf8() const {
  if (!m_Value->is_string()) Fail("is no text");
  return m_Value->get_ref<const std::string&>();
}

std::wstring JsonValue::Text() const { return os::WideFromUtf8(Utf8()); }

bool JsonValue::IsText() const { return m_Value->is_string(); }

}  // namespace rastrel::document
