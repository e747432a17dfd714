#pragma once

#include <cstdint>

/// Stands for the output engine's standard output, which nobody reads: the read end is closed at
/// once, so the engine's writes fail with a broken pipe, and the engine must stand that.
class Output {
 public:
  /// Takes the read end over and closes it. The caller forgets its handle.
  explicit Output(std::intptr_t readHandle);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  virtual ~Output();

  bool m_bStopped = false;  ///< the job was aborted; nothing acts on it
};
