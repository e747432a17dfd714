#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

#include "rastrel/platform/os/expected.h"
#include "server/web/http/request.h"

namespace rastrel::server::web {

/// Who did what, when and from where: a file of JSON lines, for this user alone. Texts are cleaned.
/// Beyond 10,000,000 bytes it becomes NAME.1, and the one before that goes. Any thread.
class AuditLog {
 public:
  static constexpr std::int64_t SizeLimit = 10'000'000;

  explicit AuditLog(std::string path, std::int64_t sizeLimit = SizeLimit)
      : m_Path(std::move(path)), m_SizeLimit(sizeLimit) {}

  /// Adds a line about a request and its answer's status. Text of the request that is longer than
  /// 1024 bytes is cut.
  ///
  ///     {"time":"2026-03-31T14:05:09Z","user":"ada","role":"print","from":"10.0.0.7",
  ///      "method":"POST","path":"/api/v1/jobs/7/hold","status":200}
  [[nodiscard]] Expected<void> Add(const Request& request, int status);

 private:
  const std::string m_Path;
  const std::int64_t m_SizeLimit;
  std::mutex m_Mutex;
};

}  // namespace rastrel::server::web
