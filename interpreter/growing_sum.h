#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "pages/sha256.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/thread.h"

namespace rastrel::interpreter {

/// The check sum of a file that is being written, computed on a thread of its own, which reads the
/// file after the writer: on its way from the interpreter a page's pixels wait for the disk's cache
/// alone.
class GrowingSum {
 public:
  /// `descriptor` is open for reading, and stays open and the caller's until Finish or the end of
  /// this object; its position neither counts nor changes.
  explicit GrowingSum(int descriptor);
  /// Ends the thread, whatever is left.
  ~GrowingSum();
  GrowingSum(const GrowingSum&) = delete;
  GrowingSum& operator=(const GrowingSum&) = delete;

  /// So many bytes are in the file by now.
  void Grow(std::uint64_t bytes);
  /// Waits for the sum of all bytes of the last Grow. To be called once. The failure has no
  /// `where`; a file that is shorter is one.
  [[nodiscard]] Expected<std::string> Finish();

 private:
  void Follow();
  [[nodiscard]] Expected<void> AddTo(std::uint64_t end);
  void End(bool isWhole);

  int m_Descriptor;
  // Of the thread while there is one.
  pages::Sha256 m_Sum;
  std::uint64_t m_Added = 0;
  Expected<void> m_Result;
  // Of both.
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  std::uint64_t m_Written = 0;
  bool m_IsEnding = false;
  bool m_IsDropped = false;
  std::unique_ptr<os::Thread> m_Thread;  ///< null: Finish computes the sum itself
};

}  // namespace rastrel::interpreter
