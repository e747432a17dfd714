#include "server/printer/printer_service.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <utility>

#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/thread.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::server {
namespace {

using std::chrono::seconds;

constexpr seconds FirstPause{1};
constexpr seconds LongestPause{60};
constexpr seconds GoodRun{60};
constexpr seconds EndLimit{10};

Expected<os::ChildProcess> StartProgram(const std::string& program) {
  os::SpawnRequest request;
  request.executable = program;
  request.arguments = {program.substr(program.rfind('/') + 1),
                       std::to_string(os::CurrentProcessId())};
  request.environment = os::EnvironmentEntries();
  return os::Spawn(request);
}

std::string EndOf(HANDLE process) {
  const auto end = os::TakeExitState(process);
  if (!end) return Describe(end.Error());
  return (end->byItself ? "status " : "signal ") + std::to_string(end->status);
}

}  // namespace

seconds NextPause(seconds last, seconds ran) {
  if (last == seconds(0) || ran >= GoodRun) return FirstPause;
  return std::min(last * 2, LongestPause);
}

PrinterService::PrinterService(std::string program, OnMessage onMessage, std::string name)
    : m_Program(std::move(program)), m_Name(std::move(name)), m_OnMessage(std::move(onMessage)) {}

PrinterService::~PrinterService() { Stop(); }

Expected<void> PrinterService::Start() {
  const auto stop = os::CreateSemaphoreHandle(0);
  if (!stop) return stop.Error();
  m_Stop = *stop;
  m_Thread = os::Thread::Start([this] { Keep(); });
  if (m_Thread) return {};
  os::CloseHandle(m_Stop);
  return FailureOf("there is no thread for " + m_Name);
}

void PrinterService::Stop() {
  if (!m_Thread) return;
  static_cast<void>(os::ReleaseSemaphoreHandle(m_Stop));
  m_Thread->Join();
  m_Thread.reset();
  os::CloseHandle(m_Stop);
}

// The count stays, so that each later wait sees it too.
bool PrinterService::WaitsForStop(std::chrono::nanoseconds time) const {
  return os::WaitReadable(std::array{m_Stop}, os::Deadline::After(time)) == os::WaitSignaledBase;
}

void PrinterService::Keep() {
  seconds pause{0};
  do {
    const auto began = std::chrono::steady_clock::now();
    auto child = StartProgram(m_Program);
    if (!child) {
      m_OnMessage(m_Name + " can't be started: " + Describe(child.Error()));
    } else {
      const std::array handles{m_Stop, child->process};
      if (os::WaitReadable(handles, os::Deadline::Never()) == os::WaitSignaledBase) {
        EndProgram(child->process);
        os::CloseHandle(child->process);
        return;
      }
      m_OnMessage(m_Name + " ended: " + EndOf(child->process));
      os::CloseHandle(child->process);
    }
    pause = NextPause(
        pause, std::chrono::duration_cast<seconds>(std::chrono::steady_clock::now() - began));
  } while (!WaitsForStop(pause));
}

void PrinterService::EndProgram(HANDLE process) const {
  static_cast<void>(os::SendSignal(process, SIGTERM));
  static_cast<void>(os::WaitReadable(std::array{process}, os::Deadline::After(EndLimit)));
  static_cast<void>(os::Terminate(process));
}

}  // namespace rastrel::server
