#pragma once

#include <mutex>
#include <string>

namespace rastrel::job {

/// A text that one thread assigns while another reads it. Copies as its text.
class SharedText {
 public:
  SharedText() = default;
  /// The other's present text.
  SharedText(const SharedText& other) : m_Text(other.Get()) {}
  SharedText& operator=(const SharedText& other) {
    if (this != &other) Set(other.Get());
    return *this;
  }

  /// A copy of the present text. Any thread.
  [[nodiscard]] std::wstring Get() const {
    const std::lock_guard<std::mutex> guard(m_Mutex);
    return m_Text;
  }
  /// Replaces the text. Any thread.
  void Set(std::wstring text) {
    const std::lock_guard<std::mutex> guard(m_Mutex);
    m_Text = std::move(text);
  }

 private:
  mutable std::mutex m_Mutex;
  std::wstring m_Text;
};

}  // namespace rastrel::job
