#pragma once

#include <string>
#include <string_view>

namespace rastrel::cli {

/// Takes a long text for standard output and hands it on in pieces, so that it is never held whole.
/// What is left goes out with the object. One thread, and no other one writes meanwhile.
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
