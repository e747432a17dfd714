#include "host/document/json_stream.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/os/text.h"

namespace rastrel::document {

namespace {

using Json = nlohmann::json;

// The parser's message without its own number for it. It may quote bytes of the text that are no
// UTF-8, which a failure must not hold.
std::string ReasonOf(const Json::exception& fault) {
  const std::string_view message = fault.what();
  const std::size_t end = message.find("] ");
  return os::Utf8FromWide(
      os::WideFromUtf8(end == std::string_view::npos ? message : message.substr(end + 2)));
}

// Makes values of the parser's events; the names of its members are the parser's.
class Builder {
 public:
  explicit Builder(const ElementTaker& taker) : m_Taker(taker) {}

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
    const bool taken = BeginsTaken();
    Open(Json::array());
    m_Open.back().taken = taken;
    return true;
  }
  bool end_array() { return Close(); }
  bool key(std::string& name) {
    m_Open.back().key = std::move(name);
    return true;
  }
  [[noreturn]] bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                                const Json::exception& fault) {
    EndJsonReading(FailureOf(ReasonOf(fault)));
  }

 private:
  // A value that has begun.
  struct Level {
    Json value;
    std::string key;        // of an object: the member that comes next
    bool taken = false;     // an array whose elements are taken
    std::size_t count = 0;  // of those that were taken
  };

  // Whether the array that begins is one whose elements are taken.
  [[nodiscard]] bool BeginsTaken() const {
    if (m_Open.empty() || !m_Open.back().value.is_object()) return false;
    const Level& object = m_Open.back();
    const bool outermost = m_Open.size() == 1;
    const bool element = !outermost && m_Open[m_Open.size() - 2].taken;
    if (!(outermost && object.key == m_Taker.outer) && !(element && object.key == m_Taker.nested)) {
      return false;
    }
    const JsonValue before(object.value, Where());
    if (outermost && !m_Taker.begins(before)) return false;
    if (before.Has(object.key.c_str())) before.Fail("has \"" + object.key + "\" twice");
    return true;
  }

  // The place of the innermost level.
  [[nodiscard]] std::string Where() const {
    std::string where;
    for (std::size_t i = 0; i + 1 < m_Open.size(); ++i) {
      where += '/' + (m_Open[i].taken ? std::to_string(m_Open[i].count) : m_Open[i].key);
    }
    return where;
  }

  bool Open(Json value) {
    if (m_Open.size() == DeepestJson) {
      EndJsonReading(
          FailureOf("values stand more than " + std::to_string(DeepestJson) + " deep in values"));
    }
    m_Open.push_back({std::move(value), {}});
    return true;
  }

  bool Close() {
    Json value = std::move(m_Open.back().value);
    m_Open.pop_back();
    return Put(std::move(value));
  }

  bool Put(Json value) {
    if (m_Open.empty()) {
      m_Result = std::move(value);
      return true;
    }
    Level& level = m_Open.back();
    if (level.taken) {
      const std::string where = Where() + "/" + std::to_string(level.count);
      m_Taker.take(JsonValue(value, where), m_Open.size() / 2 - 1);
      ++level.count;
    } else if (level.value.is_array()) {
      level.value.push_back(std::move(value));
    } else {
      level.value[level.key] = std::move(value);
    }
    return true;
  }

  const ElementTaker& m_Taker;
  std::vector<Level> m_Open;
  Json m_Result;
};

}  // namespace

nlohmann::json ParseJson(std::string_view text, const ElementTaker& taker) {
  Builder builder(taker);
  Json::sax_parse(text, &builder);
  return std::move(builder.Result());
}

}  // namespace rastrel::document
