#pragma once

#include <utility>
#include <variant>

namespace rastrel::os {

/// A value, or a reason of another type than Failure.
template <typename Value, typename Reason>
class [[nodiscard]] ExpectedOr {
 public:
  ExpectedOr(Value value)
      : m_State(std::in_place_index<0>, std::move(value)) {}  // NOLINT(google-explicit-constructor)
  ExpectedOr(Reason reason)
      : m_State(std::in_place_index<1>, std::move(reason)) {
  }  // NOLINT(google-explicit-constructor)

  explicit operator bool() const { return m_State.index() == 0; }
  Value& operator*() { return std::get<0>(m_State); }
  const Value& operator*() const { return std::get<0>(m_State); }
  Value* operator->() { return &std::get<0>(m_State); }
  const Value* operator->() const { return &std::get<0>(m_State); }
  const Reason& Error() const { return std::get<1>(m_State); }

 private:
  std::variant<Value, Reason> m_State;
};

}  // namespace rastrel::os
