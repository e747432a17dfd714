#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

#include "interpreter/disk_use.h"

namespace rastrel::interpreter {

/// The resources that an interpreter takes at a moment.
struct RunUse {
  DiskUse work;                   ///< its temporary files
  DiskUse planes;                 ///< separations that wait for their pages
  std::uint64_t memory = 0;       ///< bytes of its own memory
  std::uint64_t nanoseconds = 0;  ///< of processor time so far, of all its threads
};

/// The resources that all interpreters of one job take together, so that a limit of the job holds
/// for their sum. Any thread may use it.
class JobUse {
 public:
  /// `memoryLimit`: bytes of memory that all may take.
  explicit JobUse(std::uint64_t memoryLimit) : m_MemoryLimit(memoryLimit) {}
  [[nodiscard]] std::uint64_t MemoryLimit() const { return m_MemoryLimit; }
  /// A further interpreter takes part. Returns its number here.
  [[nodiscard]] std::size_t Join();
  /// The number's present use. Returns the sum of all.
  RunUse Report(std::size_t number, const RunUse& use);
  /// Pixels of pages, in bytes, that have come from it.
  void AddPages(std::size_t number, std::uint64_t bytes);
  /// Bytes of pages that have come from it, and from all.
  [[nodiscard]] std::uint64_t PagesOf(std::size_t number);
  [[nodiscard]] std::uint64_t PagesOfAll();
  /// It has ended, and nothing of it is left but the processor time that it took.
  void Drop(std::size_t number);

 private:
  struct Member {
    RunUse use;
    std::uint64_t pages = 0;
  };

  const std::uint64_t m_MemoryLimit;
  std::mutex m_Mutex;
  std::vector<Member> m_Members;
};

/// Bytes of memory that are the process's own, and the processor time of all its threads; 0 where
/// the system does not say.
[[nodiscard]] std::uint64_t OwnMemoryOf(pid_t process);
[[nodiscard]] std::uint64_t ProcessorTimeOf(pid_t process);

}  // namespace rastrel::interpreter
