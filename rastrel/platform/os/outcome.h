#pragma once

#include <string>
#include <utility>
#include <variant>

namespace rastrel::os {

/// Why an operation on the machine failed: the call, what it was made on, and the system's error
/// number. Becomes words in one place, Describe.
struct Failure {
  std::string operation;  ///< the call, for instance "open"
  std::string subject;    ///< what it was made on, usually a path; may be empty
  int error = 0;          ///< errno as the call left it
};

/// "open '/a/b': No such file or directory (2)". Independent of the locale.
[[nodiscard]] std::string Describe(const Failure& failure);

/// The system's words for an error number, without a locale. Never empty.
[[nodiscard]] std::string DescribeError(int error);

/// A value, or the reason that stands in its place. Nothing throws.
template <typename Value, typename Reason>
class [[nodiscard]] Expected {
 public:
  Expected(Value value)
      : m_State(std::in_place_index<0>, std::move(value)) {}  // NOLINT(google-explicit-constructor)
  Expected(Reason reason)
      : m_State(std::in_place_index<1>, std::move(reason)) {
  }  // NOLINT(google-explicit-constructor)

  /// True if there is a value.
  explicit operator bool() const { return m_State.index() == 0; }

  /// REQUIRES: there is a value.
  Value& operator*() { return std::get<0>(m_State); }
  const Value& operator*() const { return std::get<0>(m_State); }
  Value* operator->() { return &std::get<0>(m_State); }
  const Value* operator->() const { return &std::get<0>(m_State); }

  /// REQUIRES: there is no value.
  const Reason& Error() const { return std::get<1>(m_State); }

 private:
  std::variant<Value, Reason> m_State;
};

/// A value, or the failure of the machine that kept it from being had.
template <typename Value>
using Outcome = Expected<Value, Failure>;

/// An operation with nothing to return but its success.
struct Done {};

}  // namespace rastrel::os
