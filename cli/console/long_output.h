#pragma once

#include <string>
#include <string_view>

namespace rastrel::cli {

/// A buffer in front of standard output for long data that the user asked for, which is written in
/// pieces of 64 KiB (WriteOutData: cleaned on a terminal). The destructor writes the rest. For one
/// thread, and no other one may write meanwhile.
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
