#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace rastrel::cli {

/// One JSON object of one line, with its members in the order in which they are added. Text is
/// UTF-8; see JsonText for its escapes.
class JsonLine {
 public:
  /// Begins with the member "event".
  explicit JsonLine(std::string_view event);
  ~JsonLine();
  JsonLine(const JsonLine&) = delete;
  JsonLine& operator=(const JsonLine&) = delete;

  JsonLine& Add(const char* name, std::string_view text);
  JsonLine& Add(const char* name, std::int64_t number);
  JsonLine& AddNumber(const char* name, double number);
  JsonLine& AddFlag(const char* name, bool flag);
  JsonLine& Add(const char* name, const std::vector<std::string>& texts);
  JsonLine& Add(const char* name, const std::vector<std::int64_t>& numbers);
  /// Adds a value that is JSON already. REQUIRES: it is well formed.
  JsonLine& AddJson(const char* name, std::string_view json);
  /// Adds the text unless it is empty.
  JsonLine& AddIfAny(const char* name, std::string_view text);

  /// The object with a line feed at its end.
  [[nodiscard]] std::string Text() const;
  /// Writes it to standard output.
  void Write() const;

 private:
  struct Object;
  std::unique_ptr<Object> m_Object;
};

}  // namespace rastrel::cli
