// The program `rastrel-draw`: reads and draws foreign files for the programs that open documents,
// so that a file can neither crash nor stop them, nor take more time and memory than it may. It
// gets the file or the document as its standard input, opens no other file but fonts, and writes
// records (host/graphics/drawing_records.h).

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "host/drawing/process_limits.h"
#include "host/drawing/record_writer.h"
#include "host/drawing/tasks.h"
#include "host/text/library_log.h"
#include "rastrel/platform/os/pipe.h"

namespace {

using namespace rastrel;
using graphics::DrawingRecord;

constexpr int LimitArguments = 4;  // the name, and three numbers

void EndWith(const std::string& message) {
  drawing::WriteRecord(DrawingRecord::Broken, message);
  std::_Exit(1);
}

std::string ReadInput() {
  std::string input;
  std::string buffer(1 << 20, '\0');
  const HANDLE source = os::StandardHandle(os::StandardStream::Input);
  while (true) {
    const auto count = os::ReadSome(source, buffer.data(), buffer.size());
    if (!count) EndWith("its bytes can't be read");
    if (*count == 0) return input;
    input.append(buffer, 0, *count);
  }
}

drawing::ProcessLimits LimitsOf(char** arguments) {
  return {std::chrono::seconds(std::strtoll(arguments[1], nullptr, 10)),
          std::chrono::seconds(std::strtoll(arguments[2], nullptr, 10)),
          std::strtoull(arguments[3], nullptr, 10)};
}

}  // namespace

int main(int count, char** arguments) {
  if (count < LimitArguments) return 2;
  text::GuardLibraryLog(EndWith);
  try {
    if (const auto limited = drawing::LimitProcess(LimitsOf(arguments)); !limited)
      EndWith("its walls can't be made: " + Describe(limited.Error()));
    const auto done = drawing::DoTask({arguments + LimitArguments, arguments + count}, ReadInput());
    if (done) {
      drawing::WriteRecord(DrawingRecord::Done);
    } else {
      drawing::WriteRecord(DrawingRecord::Failed, Describe(done.Error()));
    }
    // Nothing is left to be put in order, and libraries take long over it.
    std::_Exit(done ? 0 : 1);
  } catch (const std::bad_alloc&) {
    EndWith("there is not enough memory for it");
  }
}
