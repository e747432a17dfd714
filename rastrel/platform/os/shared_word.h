#pragma once

#include <atomic>

namespace rastrel::os {

/// A field that one thread writes while another reads it, with no lock and no order beyond that:
/// it is as large as the value, reads and assigns like the value, and copies as the value. Stores
/// release and loads acquire, so what was written before a flag is seen by who reads the flag.
template <typename Value>
class SharedWord {
 public:
  SharedWord() = default;
  SharedWord(Value value) noexcept : m_Value(value) {}  // NOLINT(google-explicit-constructor)
  /// The other's present value.
  SharedWord(const SharedWord& other) noexcept : m_Value(other.Load()) {}
  SharedWord& operator=(const SharedWord& other) noexcept {
    m_Value.store(other.Load(), std::memory_order_release);
    return *this;
  }
  /// Stores a value; what was written before is seen by who reads it.
  SharedWord& operator=(Value value) noexcept {
    m_Value.store(value, std::memory_order_release);
    return *this;
  }
  operator Value() const noexcept { return Load(); }  // NOLINT(google-explicit-constructor)
  /// The present value.
  [[nodiscard]] Value Load() const noexcept { return m_Value.load(std::memory_order_acquire); }

 private:
  std::atomic<Value> m_Value{};
  static_assert(sizeof(std::atomic<Value>) == sizeof(Value));
};

}  // namespace rastrel::os
