#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/printer/byte_file.h"
#include "server/printer/print_modes.h"
#include "server/queue/job_queue.h"

/// The jobs of the printer on the network, on their way to the queue and back.
namespace rastrel::server {

/// A document as it came.
struct ReceivedDocument {
  std::string device;
  std::string path;   ///< where it was spooled
  std::string title;  ///< as the sender named it
  std::string owner;
  JobOptions options;
  int number = 0;  ///< of the printer's job
};

/// Brings documents into the queue. Any thread.
class ShopPrinter {
 public:
  /// `spool` is a directory for files on their way.
  ShopPrinter(JobQueue& queue, std::string spool, std::int64_t jobLimit);

  /// Puts a document into the queue, once: the same document, at any later time, gives the same
  /// job. Pictures become PDF. Fails, with the reason, for a format that is not printed and for a
  /// file that is too large.
  [[nodiscard]] Expected<JobId> Submit(const ReceivedDocument& document);
  /// Puts a finished file of this program's own into the queue, and removes it. Fails for one that
  /// is too large.
  [[nodiscard]] Expected<JobId> SubmitOwn(const ReceivedDocument& document);

  [[nodiscard]] JobQueue& Queue() { return m_Queue; }
  [[nodiscard]] const std::string& Spool() const { return m_Spool; }

 private:
  [[nodiscard]] bool IsTooLarge(const ByteFile& file) const;
  [[nodiscard]] Failure TooLarge() const;
  [[nodiscard]] Expected<JobId> SubmitOnce(const ReceivedDocument& document);
  [[nodiscard]] Expected<std::string> Convert(const std::string& path, bool jpeg, int number) const;

  JobQueue& m_Queue;
  std::string m_Spool;
  std::int64_t m_JobLimit;  // bytes; 0: none
  std::mutex m_Mutex;       // one document at a time, so that a key is never in two hands
};

}  // namespace rastrel::server
