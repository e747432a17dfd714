#pragma once

#include <string>

#include "interpreter/cut_paths.h"
#include "interpreter/interpreter.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::interpreter {

/// Answers the prolog's questions of which paints are cut paths (asking.ps). It asks one, and waits
/// for a line of digits: 0, or 1 more than the number of the color in the reports of paths.
class CutAnswers {
 public:
  CutAnswers(WantsCut wants, os::FileDescriptor pipe);

  /// Answers "S 2.0 - rgb 1.0 0.0 0.0": kind, line width in pixels, the layer's name in hexadecimal
  /// digits or "-", color. `scale` is points a pixel.
  /// Fails if the interpreter can't be reached or wants too many colors.
  [[nodiscard]] Expected<void> Answer(const std::string& question, double scale, CutPaths& cuts);

 private:
  WantsCut m_Wants;
  os::FileDescriptor m_Pipe;
};

}  // namespace rastrel::interpreter
