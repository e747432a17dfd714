#include "tests/cli/command_runner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/wait.h"
#include "tests/support/wait_until.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* UsualRip = R"(
run=$(dirname "$0")/System/c-out/run$$
mkdir -p "$run/p0001" "$run/p0002"
echo "INFO: READY" >&2
echo "PAGE: 1" >&2
echo "PROGRESS: 50 %" >&2
echo "PAGE: 2" >&2
for p in p0001 p0002; do
  printf 'begin := once\n id := x\n dir := %s/\n title := %s\nend :=\n' "$run" "$p"
done
)";

constexpr const char* UsualOdalis = R"(
n=0
while read -r key sign value; do
  if [ "$key" = title ]; then
    n=$((n + 1))
    echo "OUTPUT: ${RASTREL_OUTPUT:-/out}/$value.$n" >&2
    echo "PAGE: $n" >&2
  fi
done
echo "printer is $RASTREL_PRINTER" >&2
)";

// The reading end of a pipe that holds the bytes and ends after them.
Expected<os::FileDescriptor> PipeWith(const std::string& bytes) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return Failure{"pipe2", {}, errno};
  os::FileDescriptor reading(ends[0]);
  const os::FileDescriptor writing(ends[1]);
  if (const auto written = os::WriteAll(writing.Get(), bytes); !written) return written.Error();
  return reading;
}

bool IsReplaced(const std::string& entry, const std::vector<std::string>& variables) {
  const std::string name = entry.substr(0, entry.find('=') + 1);
  return std::ranges::any_of(variables,
                             [&](const std::string& other) { return other.starts_with(name); });
}

}  // namespace

std::vector<std::string> CommandResult::Lines() const {
  std::vector<std::string> lines;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string CommandResult::LastLine() const {
  const auto lines = Lines();
  return lines.empty() ? std::string() : lines.back();
}

CommandRunner::CommandRunner(Children children) {
  Set("RASTREL_HOME", Root());
  Set("RASTREL_RESOURCES", RASTREL_BINARY_DIR);
  Set("RASTREL_OUTPUT", "");
  Set("RASTREL_PRINTER", "");
  if (children == Children::Real) return;
  const fs::path shipped = m_Scratch.Path("shipped");
  fs::create_directories(shipped / "libexec/rastrel");
  fs::create_directories(shipped / "share");
  fs::copy(fs::path(RASTREL_SOURCE_DIR) / "share", shipped / "share/rastrel",
           fs::copy_options::recursive);
  Set("RASTREL_RESOURCES", shipped.string());
}

CommandRunner::~CommandRunner() {
  if (m_Process == INVALID_HANDLE_VALUE) return;
  static_cast<void>(os::Terminate(m_Process));
  os::CloseHandle(m_Process);
}

void CommandRunner::WriteChild(const std::string& name, const std::string& script) const {
  const std::string file = "home/Queue/rip/" + name;
  m_Scratch.Write(file, "#!/bin/sh\n" + script);
  fs::permissions(m_Scratch.Path(file), fs::perms::owner_all);
}

void CommandRunner::WriteUsualChildren() const {
  WriteRip(UsualRip);
  WriteOdalis(UsualOdalis);
}

void CommandRunner::Launch(const std::vector<std::string>& arguments) {
  os::SpawnRequest request;
  request.executable = RASTREL_COMMAND;
  request.arguments = {"rastrel"};
  request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
  // Of several with one name the last counts.
  for (auto one = m_Variables.rbegin(); one != m_Variables.rend(); ++one)
    if (!IsReplaced(*one, request.environment)) request.environment.push_back(*one);
  for (const std::string& entry : os::EnvironmentEntries())
    if (!IsReplaced(entry, m_Variables)) request.environment.push_back(entry);
  request.directory = m_Place.Path();
  const auto input = m_Input ? PipeWith(*m_Input) : os::OpenForReading(L"/dev/null");
  const auto output = os::CreateForWriting(m_Scratch.Wide("output"));
  const auto error = os::CreateForWriting(m_Scratch.Wide("error"));
  ASSERT_TRUE(input && output && error);
  request.standardInput = input->Get();
  request.standardOutput = m_Output != INVALID_HANDLE_VALUE ? m_Output : output->Get();
  request.standardError = error->Get();
  const auto child = os::Spawn(request);
  ASSERT_TRUE(child) << Describe(child.Error());
  m_Process = child->process;
  m_ProcessId = child->id;
}

CommandResult CommandRunner::Run(const std::vector<std::string>& arguments) {
  Launch(arguments);
  return Wait();
}

void CommandRunner::Start(const std::vector<std::string>& arguments, const std::string& text) {
  Launch(arguments);
  const auto hasSaid = [&] {
    const std::string said = m_Scratch.Read("output") + m_Scratch.Read("error");
    return said.find(text) != said.npos;
  };
  if (WaitUntil(hasSaid)) return;
  ADD_FAILURE() << "never said '" << text << "' but: " << m_Scratch.Read("error");
}

void CommandRunner::Signal(int signal) const { ::kill(static_cast<pid_t>(m_ProcessId), signal); }

CommandResult CommandRunner::Wait() {
  CommandResult result;
  const auto limit = os::Deadline::After(WaitLimit);
  const bool ended = os::WaitReadable(std::span(&m_Process, 1), limit) == os::WaitSignaledBase;
  EXPECT_TRUE(ended) << "the command does not end; it is killed";
  if (!ended) {
    static_cast<void>(os::Terminate(m_Process));
  } else {
    if (const auto state = os::TakeExitState(m_Process); state && state->byItself)
      result.status = state->status;
  }
  os::CloseHandle(m_Process);
  result.output = m_Scratch.Read("output");
  result.error = m_Scratch.Read("error");
  return result;
}

std::vector<std::string> CommandRunner::NamesIn(const std::string& directory) const {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(fs::path(Root()) / directory, error))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

int CommandRunner::Processes() const {
  int count = 0;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    std::ifstream file(entry.path() / "environ", std::ios::binary);
    std::ostringstream environment;
    environment << file.rdbuf();
    if (environment.str().find(Root()) != std::string::npos) ++count;
  }
  return count;
}

}  // namespace rastrel::test
