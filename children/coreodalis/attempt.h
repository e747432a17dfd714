#pragma once

#include <string>
#include <utility>
#include <variant>

namespace rastrel::odalis {

/// Why something was given up, in words for the person who reads the job's log. One line of UTF-8
/// that says what failed, on what, and why.
struct Problem {
  std::string text;
};

/// "OPERATION 'SUBJECT': words of the error number".
[[nodiscard]] Problem SystemProblem(const std::string& operation, const std::string& subject,
                                    int error);

/// A value, or the problem that stands in its place. Nothing throws.
template <typename Value>
class [[nodiscard]] Attempt {
 public:
  Attempt(Value value)
      : m_State(std::in_place_index<0>, std::move(value)) {}  // NOLINT(google-explicit-constructor)
  Attempt(Problem problem)
      : m_State(std::in_place_index<1>, std::move(problem)) {
  }  // NOLINT(google-explicit-constructor)

  /// True if there is a value.
  explicit operator bool() const { return m_State.index() == 0; }

  /// REQUIRES: there is a value.
  Value& operator*() { return std::get<0>(m_State); }
  const Value& operator*() const { return std::get<0>(m_State); }
  Value* operator->() { return &std::get<0>(m_State); }
  const Value* operator->() const { return &std::get<0>(m_State); }

  /// REQUIRES: there is no value.
  [[nodiscard]] const Problem& Error() const { return std::get<1>(m_State); }

 private:
  std::variant<Value, Problem> m_State;
};

/// An attempt at something that gives nothing but its success.
struct Success {};

}  // namespace rastrel::odalis
