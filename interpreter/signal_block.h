#pragma once

#include <csignal>

namespace rastrel::interpreter {

/// Blocks all signals of the calling thread as long as it lives: around a fork, so that no handler
/// of the parent's runs in the child. A forked process inherits the block.
class SignalBlock {
 public:
  SignalBlock() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &m_Before);
  }
  ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &m_Before, nullptr); }
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;

 private:
  sigset_t m_Before{};
};

}  // namespace rastrel::interpreter
