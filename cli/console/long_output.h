#pragma once

#include <string>
#include <string_view>

namespace rastrel::cli {

/// A buffer in front of standard output for long texts, which are written in pieces of 64 KiB. The
/// destructor writes the rest. For one thread, and no other one may write meanwhile.
class LongOutput {
 public:
  LongOutput() = default;
  ~LongOutput();
  LongOutput(const LongOutput&) = delete;
  LongOutput& operator=(const LongOutput&) = delete;

  void Append(std::string_view text);

 private:
  std::string m_Held;
};

}  // namespace rastrel::cli
