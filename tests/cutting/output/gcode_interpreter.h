#pragma once

#include <string>
#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting::test {

/// A move of a machine that follows a program.
struct Move {
  Point from;  ///< millimetres
  Point to;
  bool rapid = false;
  bool on = false;   ///< the tool
  double power = 0;  ///< S
  double feed = 0;   ///< F, millimetres a minute
};

struct Machine {
  std::vector<Move> moves;
  std::string fault;  ///< the first word that it does not know; empty: none
  bool on = false;    ///< at the end
};

/// Follows G0, G1, G2, G3 (I and J), G20, G21, G90, G91, M2, M3, M4, M5, S and F, as the public
/// description of the language (RS274) has them: a letter with a number each, modal, comments in
/// parentheses and after a semicolon. Arcs become short lines.
[[nodiscard]] Machine Follow(const std::string& program);

}  // namespace rastrel::cutting::test
