#include "tests/faults/injector/tracer.h"

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <utility>

#include "tests/faults/injector/call_detail.h"
#include "tests/faults/injector/system_calls.h"
#include "tests/faults/injector/traced_memory.h"

namespace faults {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned long Options = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACESECCOMP |
                                  PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                                  PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
constexpr int CallStop = SIGTRAP | 0x80;
constexpr std::uint64_t Breakpoint = 0xCC;

/// ptrace takes numbers where its declaration has pointers.
template <typename Number>
void* AsPointer(Number number) {
  return reinterpret_cast<void*>(static_cast<std::uintptr_t>(number));  // NOLINT
}

bool ReadRegisters(pid_t task, user_regs_struct& registers) {
  return ::ptrace(PTRACE_GETREGS, task, nullptr, &registers) == 0;
}

[[noreturn]] void BecomeCommand(const std::vector<std::string>& command, int go) {
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  char byte = 0;
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  if (::read(go, &byte, 1) == 1 && StopAtCalls()) ::execv(words[0], words.data());
  ::_exit(127);
}

}  // namespace

Tracer::Tracer(Plan plan) : m_Plan(std::move(plan)), m_Report(m_Plan.report, std::ios::binary) {
  if (!m_Plan.journal.empty())
    m_Journal = std::make_unique<Journal>(m_Plan.changedDirectory, m_Plan.journal);
}

Tracer::~Tracer() { KillAll(); }

bool Tracer::IsOurs(const std::string& program) const {
  return std::ranges::any_of(m_Plan.ours, [&](const std::string& directory) {
    return program.starts_with(directory + "/");
  });
}

bool Tracer::Run() {
  sigset_t children;
  ::sigemptyset(&children);
  ::sigaddset(&children, SIGCHLD);
  ::sigprocmask(SIG_BLOCK, &children, nullptr);
  if (!Start()) return false;
  Follow();
  m_Report.flush();
  return m_Report.good();
}

bool Tracer::Start() {
  std::array<int, 2> go{};
  if (::pipe2(go.data(), O_CLOEXEC) != 0) return false;
  m_First = ::fork();
  if (m_First == 0) BecomeCommand(m_Plan.command, go[0]);
  ::close(go[0]);
  const bool seized =
      m_First > 0 && ::ptrace(PTRACE_SEIZE, m_First, nullptr, AsPointer(Options)) == 0;
  if (seized) {
    Task& task = m_Tasks[m_First];
    task.id = "0";
    task.process = m_First;
  }
  const bool told = seized && ::write(go[1], "g", 1) == 1;
  ::close(go[1]);
  m_Deadline = Clock::now() + m_Plan.limit;
  return told;
}

void Tracer::Follow() {
  sigset_t children;
  ::sigemptyset(&children);
  ::sigaddset(&children, SIGCHLD);
  while (!m_Tasks.empty()) {
    while (TakeOne()) {
    }
    if (m_Tasks.empty()) break;
    if (Clock::now() >= m_Deadline) return GiveUp();
    const timespec pause{0, 20'000'000};
    ::sigtimedwait(&children, nullptr, &pause);
  }
}

// False if nothing has happened.
bool Tracer::TakeOne() {
  int status = 0;
  const pid_t id = ::waitpid(-1, &status, __WALL | WNOHANG);
  if (id <= 0) return false;
  if (WIFSTOPPED(status))
    Stopped(id, status);
  else
    Ended(id, status);
  return true;
}

void Tracer::Stopped(pid_t id, int status) {
  if (!m_Tasks.contains(id)) {
    m_Early[id] = true;
    return;
  }
  const int signal = WSTOPSIG(status);
  const int event = status >> 16;
  if (signal == CallStop) {
    HandleCallEnd(id);
    return Resume(id, 0);
  }
  if (event != 0) return HandleEvent(id, event);
  if (signal == SIGTRAP && HandleEntry(id)) return Resume(id, 0);
  Resume(id, signal);
}

void Tracer::HandleEvent(pid_t id, int event) {
  switch (event) {
    case PTRACE_EVENT_CLONE: HandleNewTask(id, true); break;
    case PTRACE_EVENT_FORK:
    case PTRACE_EVENT_VFORK: HandleNewTask(id, false); break;
    case PTRACE_EVENT_EXEC: HandleExec(id); break;
    case PTRACE_EVENT_SECCOMP: HandleCall(id); break;
    default: break;
  }
  Resume(id, 0);
}

void Tracer::HandleNewTask(pid_t creator, bool thread) {
  unsigned long created = 0;
  if (::ptrace(PTRACE_GETEVENTMSG, creator, nullptr, &created) != 0) return;
  const auto id = static_cast<pid_t>(created);
  Task& parent = m_Tasks.at(creator);
  Task task;
  task.id = parent.id + "." + std::to_string(++parent.started);
  task.program = parent.program;
  task.counted = parent.counted;
  // A clone may be a thread or a process; the system knows.
  task.process = thread ? ProcessOf(id) : id;
  if (task.process == 0) task.process = id;
  m_Tasks[id] = std::move(task);
  if (m_Early.erase(id) != 0) Resume(id, 0);
}

// Its calls count again when its own code begins.
void Tracer::HandleExec(pid_t id) {
  Task& task = m_Tasks.at(id);
  const std::string program = ProgramOf(id);
  task.program = std::filesystem::path(program).filename();
  task.counted = false;
  task.change.reset();
  task.entryPoint.reset();
  if (!IsOurs(program)) return;
  const auto entry = EntryPointOf(id);
  if (!entry) return;
  errno = 0;
  const auto code =
      static_cast<std::uint64_t>(::ptrace(PTRACE_PEEKTEXT, id, AsPointer(*entry), nullptr));
  if (errno != 0) return;
  task.entryCode = code;
  task.entryPoint = entry;
  ::ptrace(PTRACE_POKETEXT, id, AsPointer(*entry), AsPointer((code & ~0xFFULL) | Breakpoint));
}

bool Tracer::HandleEntry(pid_t id) {
  Task& task = m_Tasks.at(id);
  user_regs_struct registers{};
  if (!task.entryPoint || !ReadRegisters(id, registers)) return false;
  if (registers.rip != *task.entryPoint + 1) return false;
  registers.rip = *task.entryPoint;
  ::ptrace(PTRACE_POKETEXT, id, AsPointer(*task.entryPoint), AsPointer(task.entryCode));
  ::ptrace(PTRACE_SETREGS, id, nullptr, &registers);
  task.entryPoint.reset();
  task.counted = true;
  return true;
}

bool Tracer::IsChosen(const Task& task, std::string_view name, int number) const {
  return m_Plan.failing && m_Plan.failing->task == task.id && m_Plan.failing->name == name &&
         m_Plan.failing->number == number;
}

void Tracer::HandleCall(pid_t id) {
  Task& task = m_Tasks.at(id);
  user_regs_struct registers{};
  if (!ReadRegisters(id, registers)) return;
  const auto name = CallName(static_cast<long>(registers.orig_rax));
  if (!name) return;
  if (task.counted) {
    const int number = ++task.numbers[std::string(*name)];
    const bool chosen = IsChosen(task, *name, number);
    if (chosen || m_Plan.listCalls) {
      const std::string line = '\t' + task.id + '\t' + task.program + '\t' + std::string(*name) +
                               '\t' + std::to_string(number) + '\t' +
                               DetailOf(id, *name, registers) + '\n';
      if (m_Plan.listCalls) m_Report << "call" << line;
      if (chosen) return FailCall(task, id, registers, line);
    }
  }
  if (m_Journal && Journal::MayChange(registers)) task.change = Journal::Begin(id, registers);
}

void Tracer::FailCall(Task& task, pid_t id, user_regs_struct registers, const std::string& line) {
  m_Report << "failed" << line;
  // A close that fails has closed all the same; any other call has done nothing.
  if (static_cast<long>(registers.orig_rax) == SYS_close) {
    task.forcedResult = -m_Plan.error;
    return;
  }
  // brk has no error number: one that fails returns the end of memory as it is, as does one for 0.
  if (static_cast<long>(registers.orig_rax) == SYS_brk) {
    task.firstArgument = std::exchange(registers.rdi, 0);
    ::ptrace(PTRACE_SETREGS, id, nullptr, &registers);
    return;
  }
  registers.orig_rax = static_cast<unsigned long long>(-1);
  registers.rax = static_cast<unsigned long long>(-static_cast<long long>(m_Plan.error));
  ::ptrace(PTRACE_SETREGS, id, nullptr, &registers);
}

void Tracer::HandleCallEnd(pid_t id) {
  Task& task = m_Tasks.at(id);
  user_regs_struct registers{};
  if (!ReadRegisters(id, registers)) return;
  if (task.change) m_Journal->End(id, *task.change, static_cast<std::int64_t>(registers.rax));
  task.change.reset();
  if (!task.forcedResult && !task.firstArgument) return;
  if (task.forcedResult) registers.rax = static_cast<unsigned long long>(*task.forcedResult);
  if (task.firstArgument) registers.rdi = *task.firstArgument;
  task.forcedResult.reset();
  task.firstArgument.reset();
  ::ptrace(PTRACE_SETREGS, id, nullptr, &registers);
}

void Tracer::Resume(pid_t id, int signal) {
  const auto task = m_Tasks.find(id);
  const bool wantsEnd =
      task != m_Tasks.end() &&
      (task->second.change || task->second.forcedResult || task->second.firstArgument);
  ::ptrace(wantsEnd ? PTRACE_SYSCALL : PTRACE_CONT, id, nullptr, AsPointer(signal));
}

void Tracer::Ended(pid_t id, int status) {
  m_Early.erase(id);
  const auto found = m_Tasks.find(id);
  if (found == m_Tasks.end()) return;
  const Task task = std::move(found->second);
  m_Tasks.erase(found);
  if (WIFSIGNALED(status) && task.process == id)
    m_Report << "died\t" << task.id << '\t' << task.program << '\t' << WTERMSIG(status) << '\n';
  if (id != m_First || m_FirstEnded) return;
  m_FirstEnded = true;
  if (WIFSIGNALED(status))
    m_Report << "signal\t" << WTERMSIG(status) << '\n';
  else
    m_Report << "exit\t" << WEXITSTATUS(status) << '\n';
  m_Deadline = std::min(m_Deadline, Clock::now() + m_Plan.afterEnd);
}

void Tracer::GiveUp() {
  if (!m_FirstEnded) m_Report << "limit\n";
  for (const auto& [id, task] : m_Tasks)
    if (m_FirstEnded || task.process == id)
      m_Report << "left\t" << task.id << '\t' << task.program << '\n';
  KillAll();
}

void Tracer::KillAll() {
  for (const auto& [id, task] : m_Tasks) ::kill(task.process, SIGKILL);
  for (const auto& [id, early] : m_Early) ::kill(id, SIGKILL);
  m_Early.clear();
  const auto end = Clock::now() + std::chrono::seconds(5);
  while (!m_Tasks.empty() && Clock::now() < end) {
    int status = 0;
    const pid_t id = ::waitpid(-1, &status, __WALL | WNOHANG);
    if (id > 0 && !WIFSTOPPED(status)) m_Tasks.erase(id);
    if (id > 0 && WIFSTOPPED(status)) ::ptrace(PTRACE_CONT, id, nullptr, nullptr);
    if (id < 0) break;
    if (id == 0) ::usleep(1000);
  }
  m_Tasks.clear();
}

}  // namespace faults
