#pragma once

#include <atomic>

namespace rastrel::os {

/// A field that one thread writes while another reads it, with no lock and no order beyond that:
/// it is as large as the value, reads and assigns like the value, and copies as the value. Stores
/// release and loads acquire, so a thread that reads a flag sees all writes before that flag's.
template <typename Value>
class SharedWord {
 public:
  SharedWord() = default;
  SharedWord(Value value) noexcept : m_Value(value) {}  // NOLINT(google-explicit-constructor)
  /// Copies the other's current value.
  SharedWord(const SharedWord& other) noexcept : m_Value(other.Load()) {}
  SharedWord& operator=(const SharedWord& other) noexcept {
    m_Value.store(other.Load(), std::memory_order_release);
    return *this;
  }
  /// Stores a value. A thread that reads it sees all earlier writes of this one.
  SharedWord& operator=(Value value) noexcept {
    m_Value.store(value, std::memory_order_release);
    return *this;
  }
  operator Value() const noexcept { return Load(); }  // NOLINT(google-explicit-constructor)
  /// The current value.
  [[nodiscard]] Value Load() const noexcept { return m_Value.load(std::memory_order_acquire); }

 private:
  std::atomic<Value> m_Value{};
  static_assert(sizeof(std::atomic<Value>) == sizeof(Value));
};

}  // namespace rastrel::os
