#include "cutting/output/operation_look.h"

#include <array>
#include <cstddef>

namespace rastrel::cutting {
namespace {

// In the order of Operation.
constexpr std::array Looks{OperationLook{"CUT", 1, "#ff0000", "0 1 1 0", "Cut"},
                           OperationLook{"CUT_HALF", 5, "#0000ff", "1 1 0 0", "Cut half"},
                           OperationLook{"CREASE", 3, "#00a000", "1 0 1 0", "Crease"},
                           OperationLook{"ENGRAVE", 6, "#ff00ff", "0 1 0 0", "Engrave"},
                           OperationLook{"PERFORATE", 4, "#00a0c0", "1 0 0 0", "Perforate"},
                           OperationLook{"DRILL", 30, "#ff8000", "0 0.5 1 0", "Drill"},
                           OperationLook{"MARK", 7, "#000000", "0 0 0 1", "Mark"},
                           OperationLook{"PRINT", 7, "#000000", "0 0 0 1", "Print"},
                           OperationLook{"IGNORE", 7, "#000000", "0 0 0 1", "Ignore"}};

}  // namespace

const OperationLook& LookOf(Operation operation) {
  return Looks[static_cast<std::size_t>(operation)];
}

}  // namespace rastrel::cutting
