#include "host/document/json_stream.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace rastrel::document {

namespace {

using Json = nlohmann::json;

// The parser's words without its own number for them.
std::string ReasonOf(const Json::exception& fault) {
  const std::string_view words = fault.what();
  const std::size_t end = words.find("] ");
  return std::string(end == std::string_view::npos ? words : words.substr(end + 2));
}

// Makes values of the parser's events; the names of its members are the parser's.
class Builder {
 public:
  Builder(std::string_view streamed, const ElementTaker& taker)
      : m_Streamed(streamed), m_Taker(taker) {}

  [[nodiscard]] Json& Result() { return m_Result; }

  bool null() { return Put(nullptr); }
  bool boolean(bool value) { return Put(value); }
  bool number_integer(Json::number_integer_t value) { return Put(value); }
  bool number_unsigned(Json::number_unsigned_t value) { return Put(value); }
  bool number_float(Json::number_float_t value, const std::string& /*text*/) { return Put(value); }
  bool string(std::string& value) { return Put(std::move(value)); }
  bool binary(Json::binary_t& value) { return Put(std::move(value)); }
  bool start_object(std::size_t /*count*/) { return Open(Json::object()); }
  bool end_object() { return Close(); }
  bool start_array(std::size_t /*count*/) {
    const bool streams = m_Open.size() == 1 && m_Open.back().value.is_object() &&
                         m_Open.back().key == m_Streamed &&
                         m_Taker.begins(JsonValue(m_Open.back().value, ""));
    if (streams) m_Count = 0;
    m_Streams = m_Streams || streams;
    return Open(Json::array());
  }
  bool end_array() { return Close(); }
  bool key(std::string& name) {
    m_Open.back().key = std::move(name);
    return true;
  }
  [[noreturn]] bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                                const Json::exception& fault) {
    throw JsonFault{"", ReasonOf(fault)};
  }

 private:
  // A value that has begun.
  struct Level {
    Json value;
    std::string key;  // of an object: the member that comes next
  };

  bool Open(Json value) {
    if (m_Open.size() == DeepestJson) {
      throw JsonFault{"",
                      "values stand more than " + std::to_string(DeepestJson) + " deep in values"};
    }
    m_Open.push_back({std::move(value), {}});
    return true;
  }

  bool Close() {
    Json value = std::move(m_Open.back().value);
    m_Open.pop_back();
    if (m_Streams && m_Open.size() == 1) {
      m_Streams = false;
      return true;
    }
    return Put(std::move(value));
  }

  bool Put(Json value) {
    if (m_Open.empty()) {
      m_Result = std::move(value);
    } else if (m_Streams && m_Open.size() == 2) {
      const std::string where = "/" + m_Open.front().key + "/" + std::to_string(m_Count++);
      m_Taker.take(JsonValue(value, where));
    } else if (m_Open.back().value.is_array()) {
      m_Open.back().value.push_back(std::move(value));
    } else {
      m_Open.back().value[m_Open.back().key] = std::move(value);
    }
    return true;
  }

  std::string_view m_Streamed;
  const ElementTaker& m_Taker;
  std::vector<Level> m_Open;
  bool m_Streams = false;   // the second level is the array whose elements are taken
  std::size_t m_Count = 0;  // of its elements that were taken
  Json m_Result;
};

}  // namespace

nlohmann::json ParseJson(std::string_view text, std::string_view streamed,
                         const ElementTaker& taker) {
  Builder builder(streamed, taker);
  Json::sax_parse(text, &builder);
  return std::move(builder.Result());
}

}  // namespace rastrel::document
