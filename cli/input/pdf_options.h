#pragma once

#include <optional>

#include "interpreter/interpreter.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

struct Invocation;

/// The options --box, --password-file and --parallel-pages, in force for the children that this
/// process starts while it lives.
class PdfOptions {
 public:
  /// Reads them, and waits for a password file that is a pipe: so before stop signals are taken. An
  /// option that was not given leaves the environment's value in force. The failure is a message
  /// for the user. REQUIRES: no other thread reads the environment meanwhile.
  [[nodiscard]] static Expected<PdfOptions> Apply(const Invocation& invocation);

 private:
  std::optional<interpreter::SharedPassword> m_Password;
};

}  // namespace rastrel::cli
