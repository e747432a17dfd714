#include "children/shared/reporter.h"

#include <unistd.h>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::children {
namespace {

constexpr std::size_t LineLimit = 2000;

void WriteLine(std::string_view tag, std::string_view text) {
  os::WriteToStandardError(std::string(tag) + OneLine(text) + "\n");
}

}  // namespace

std::string OneLine(std::string_view text) {
  const std::string_view line = text.substr(0, LineLimit);
  return os::CleanLine(line.substr(0, os::WholeCharacters(line)));
}

void Reporter::Info(std::string_view keyword) { WriteLine("INFO: ", keyword); }

void Reporter::Warning(std::string_view text) { WriteLine("WARNING: ", text); }

void Reporter::Error(std::string_view text) { WriteLine("ERROR: ", text); }

void Reporter::Error(const Failure& failure) { Error(Describe(failure) + "."); }

void Reporter::StateReached(interpreter::RunState state) {
  switch (state) {
    case interpreter::RunState::Interpreting:
      Info("READY");
      Info("INTERPRETING");
      break;
    case interpreter::RunState::Converting: Info("CONVERTING"); break;
    case interpreter::RunState::Spooling: Info("SPOOLING"); break;
  }
}

int Reporter::Pipe() const { return STDERR_FILENO; }

void Reporter::Progress(unsigned percent) {
  if (percent <= m_Percent || percent > 100) return;
  m_Percent = percent;
  WriteLine("PROGRESS: ", std::to_string(percent) + " %");
}

void Reporter::Page(unsigned number) { WriteLine("PAGE: ", std::to_string(number)); }

void Reporter::Note(std::string_view text) { WriteLine("", text); }

void Reporter::Text(std::string_view line) {
  if (m_TextBytes > TextLimit) return;
  m_TextBytes += line.size() + 1;
  if (m_TextBytes > TextLimit) {
    WriteLine("gs: ", "(What the job writes beyond this is not shown.)");
  } else {
    WriteLine("gs: ", line);
  }
}

}  // namespace rastrel::children
