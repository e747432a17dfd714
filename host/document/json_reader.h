#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

/// Reading JSON strictly: each value is asked for by its place and its kind, and a value of another
/// kind ends the reading with a failure that names the place.
namespace rastrel::document {

/// Runs a reading of JSON, which is all use of JsonValue and ParseJson. Fails at the first value
/// that can't be read: the failure's `where` is a JSON pointer (RFC 6901), empty for the whole; its
/// `why` is the rule that is broken. Lets other exceptions of `reading` pass.
[[nodiscard]] Expected<void> ReadJson(const std::function<void()>& reading);

/// Ends the reading that ReadJson runs, with this failure. REQUIRES: called within it.
[[noreturn]] void EndJsonReading(Failure failure);

/// A value of a JSON text and its place. Every member ends the reading if the value is not of the
/// kind that it asks for. The JSON must outlive it.
class JsonValue {
 public:
  JsonValue(const nlohmann::json& value, std::string where);

  /// Ends the reading with the place of this value.
  [[noreturn]] void Fail(const std::string& why) const;

  /// A member of an object; it must be there.
  [[nodiscard]] JsonValue operator[](const char* name) const;
  [[nodiscard]] bool Has(const char* name) const;
  /// The elements of an array.
  [[nodiscard]] std::size_t Count() const;
  [[nodiscard]] JsonValue At(std::size_t index) const;

  [[nodiscard]] double Number() const;
  [[nodiscard]] double NumberAbove0() const;
  /// A whole number between two, both included.
  [[nodiscard]] std::int64_t Whole(std::int64_t least, std::int64_t most) const;
  [[nodiscard]] int Int() const;
  [[nodiscard]] bool Bool() const;
  [[nodiscard]] std::wstring Text() const;
  [[nodiscard]] const std::string& Utf8() const;
  [[nodiscard]] bool IsText() const;

  /// The value that this text names in a table of values and names.
  template <typename Names>
  [[nodiscard]] auto Named(const Names& names) const {
    const std::string& own = Utf8();
    for (const auto& [value, name] : names) {
      if (name == own) return value;
    }
    Fail("unknown word \"" + own + "\"");
  }

  /// Calls with each element of an array.
  template <typename Visit>
  void Each(Visit visit) const {
    const std::size_t count = Count();
    for (std::size_t i = 0; i < count; ++i) visit(At(i));
  }

 private:
  const nlohmann::json* m_Value;
  std::string m_Where;
};

}  // namespace rastrel::document
