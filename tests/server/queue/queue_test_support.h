#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "rastrel/platform/os/private_directory.h"
#include "server/queue/database.h"
#include "server/queue/job_queue.h"

namespace rastrel::server {

/// A data root of its own with an empty queue.
class QueueTest : public testing::Test {
 protected:
  QueueTest() : m_Place(*os::PrivateDirectory::Make("rastrel-queue-")) { m_Queue = OpenQueue(); }

  std::unique_ptr<JobQueue> OpenQueue(QueuePolicy policy = {}) {
    auto queue = JobQueue::Open(Root(), std::move(policy));
    EXPECT_TRUE(queue) << (queue ? "" : Describe(queue.Error()));
    return queue ? *std::move(queue) : nullptr;
  }

  [[nodiscard]] const std::string& Root() const { return m_Place.Path(); }

  /// A file to submit.
  [[nodiscard]] std::string MakeFile(const std::string& name, const std::string& content) const {
    const std::string path = Root() + "/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  [[nodiscard]] JobRequest Request(const std::string& owner = "ada") const {
    JobRequest request;
    request.path = MakeFile("sign.ps", "%!PS\nshowpage\n");
    request.owner = owner;
    request.source = "command";
    request.device = "Plotter";
    return request;
  }

  JobId Submit(const JobRequest& request) {
    const auto id = m_Queue->Submit(request);
    EXPECT_TRUE(id) << (id ? "" : Describe(id.Error()));
    return id.ValueOr(0);
  }

  [[nodiscard]] Job Get(JobId id) {
    const auto job = m_Queue->Find(id);
    EXPECT_TRUE(job && *job);
    return job && *job ? **job : Job();
  }

  /// An empty queue again.
  void Clear() {
    const auto database = Database::Open(Root() + "/server/queue.db", Database::Safety::Normal);
    ASSERT_TRUE(database);
    ASSERT_TRUE((*database)->Execute("DELETE FROM jobs"));
  }

  [[nodiscard]] std::string StateName(JobId id) { return NameOf(Get(id).state); }

  os::PrivateDirectory m_Place;
  std::unique_ptr<JobQueue> m_Queue;
};

/// The reason of a call that failed; "" if it did not.
template <typename T>
std::string WhyOf(const Expected<T>& result) {
  return result ? std::string() : result.Error().why;
}

}  // namespace rastrel::server
