#include "cli/console/error_message.h"

#include <string>
#include <string_view>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"

namespace rastrel::cli {

void WriteErrorMessage(const CommandError& error, bool json) {
  if (!json) return WriteErrorLine(std::string("rastrel: ") + error.what());
  JsonLine line("failed");
  line.Add("originator", "system").Add("text", std::string_view(error.what()));
  line.Add("exit", static_cast<int>(error.Status()));
  line.Add("stage", error.Status() == ExitStatus::WrongUse ? "command-line" : "preparation");
  line.Write();
}

}  // namespace rastrel::cli
