#include "rastrel/platform/os/signals.h"

#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <new>
#include <utility>

#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::os {
namespace {

sigset_t SignalsToTake() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction present {};
    // Linux queues a masked signal even if it is ignored, so that masking would undo a nohup.
    const bool ignored =
        ::sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
    if (!ignored) sigaddset(&signals, signal);
  }
  return signals;
}

}  // namespace

StopSignals::StopSignals(std::function<void(int)> onSignal) : m_OnSignal(std::move(onSignal)) {}

Expected<std::unique_ptr<StopSignals>> StopSignals::Start(std::function<void(int)> onSignal) {
  std::unique_ptr<StopSignals> signals(new (std::nothrow) StopSignals(std::move(onSignal)));
  if (!signals) return Failure{"malloc", {}, ENOMEM};
  const sigset_t taken = SignalsToTake();
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &taken, &before);
  const auto opened = signals->Open(taken);
  if (opened) return signals;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return opened.Error();
}

Expected<void> StopSignals::Open(const sigset_t& taken) {
  const auto end = CreateSemaphoreHandle(0);
  if (!end) return end.Error();
  m_End.Reset(*end);
  auto descriptor =
      TakeDescriptor(::signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd", {});
  if (!descriptor) return descriptor.Error();
  m_Signals = std::move(*descriptor);
  m_Thread = Thread::Start([this] { Listen(); });
  if (!m_Thread) return Failure{"pthread_create", {}, errno};
  return {};
}

StopSignals::~StopSignals() {
  if (!m_Thread) return;
  static_cast<void>(ReleaseSemaphoreHandle(m_End.Get()));
  m_Thread->Join();
}

void StopSignals::Listen() {
  const std::array<HANDLE, 2> handles = {m_End.Get(), m_Signals.Get()};
  while (WaitForAny(handles) == WaitSignaledBase + 1) {
    signalfd_siginfo information{};
    while (::read(m_Signals.Get(), &information, sizeof information) ==
           static_cast<ssize_t>(sizeof information))
      m_OnSignal(static_cast<int>(information.ssi_signo));
  }
}

}  // namespace rastrel::os
