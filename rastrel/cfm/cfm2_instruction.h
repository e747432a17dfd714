#pragma once

#include <cstdint>

namespace rastrel::cfm {

/// Codes of the instruction keywords.
enum Instruction : std::int32_t {
  InstructionBegin = 1,
  InstructionId = 2,
  InstructionDirectory = 3,
  InstructionTitle = 4,
  InstructionCopies = 5,
  InstructionEnd = 6,
};

}  // namespace rastrel::cfm
