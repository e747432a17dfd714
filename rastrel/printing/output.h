#pragma once

#include <cstdint>

/// The output engine's standard output, which nobody reads: the read end is closed at once, so the
/// engine's writes fail with a broken pipe, and the engine must go on.
class Output {
 public:
  /// Takes ownership of the read end and closes it.
  explicit Output(std::intptr_t readHandle);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  virtual ~Output();

  bool m_bStopped = false;  ///< the job was aborted; nothing acts on it
};
