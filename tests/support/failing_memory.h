#pragma once

#include <cstddef>

#include "rastrel/printing/environment_block.h"

namespace rastrel::test {

/// No block of arguments gets memory while this lives.
class FailingMemory {
 public:
  FailingMemory() : m_Old(PrintingThread::Args::s_Reallocate) {
    PrintingThread::Args::s_Reallocate = [](void*, std::size_t) -> void* { return nullptr; };
  }
  ~FailingMemory() { PrintingThread::Args::s_Reallocate = m_Old; }
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;

 private:
  void* (*m_Old)(void*, std::size_t);
};

}  // namespace rastrel::test
