#include "cli/console/json_line.h"

#include <nlohmann/json.hpp>

#include "cli/console/json_text.h"
#include "cli/console/standard_streams.h"

namespace rastrel::cli {

struct JsonLine::Object {
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
};

JsonLine::JsonLine(std::string_view event) : m_Object(std::make_unique<Object>()) {
  Add("event", event);
}

JsonLine::~JsonLine() = default;

JsonLine& JsonLine::Add(const char* name, std::string_view text) {
  m_Object->json[name] = std::string(text);
  return *this;
}

JsonLine& JsonLine::Add(const char* name, std::int64_t number) {
  m_Object->json[name] = number;
  return *this;
}

JsonLine& JsonLine::AddNumber(const char* name, double number) {
  m_Object->json[name] = number;
  return *this;
}

JsonLine& JsonLine::AddFlag(const char* name, bool flag) {
  m_Object->json[name] = flag;
  return *this;
}

JsonLine& JsonLine::Add(const char* name, const std::vector<std::string>& texts) {
  m_Object->json[name] = texts;
  return *this;
}

JsonLine& JsonLine::Add(const char* name, const std::vector<std::int64_t>& numbers) {
  m_Object->json[name] = numbers;
  return *this;
}

JsonLine& JsonLine::AddJson(const char* name, std::string_view json) {
  m_Object->json[name] = nlohmann::ordered_json::parse(json, nullptr, false);
  return *this;
}

JsonLine& JsonLine::AddIfAny(const char* name, std::string_view text) {
  return text.empty() ? *this : Add(name, text);
}

std::string JsonLine::Text() const { return JsonText(m_Object->json) + "\n"; }

void JsonLine::Write() const { WriteOutLines(Text()); }

}  // namespace rastrel::cli
