#include <poll.h>
#include <unistd.h>

#include "queue_test_support.h"

namespace rastrel::server {
namespace {

namespace fs = std::filesystem;

class Submission : public QueueTest {};

std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(Submission, AJobHasItsFileAndItsRequest) {
  JobRequest request = Request();
  request.title = "Zunftschild";
  request.options = {{"mode", "Screen/preview"}, {"planar", ""}};
  request.priority = 70;
  const JobId id = Submit(request);
  const Job job = Get(id);
  EXPECT_EQ(job.title, "Zunftschild");
  EXPECT_EQ(job.owner, "ada");
  EXPECT_EQ(job.device, "Plotter");
  EXPECT_EQ(job.options, request.options);
  EXPECT_EQ(job.priority, 70);
  EXPECT_EQ(job.state, JobState::Queued);
  EXPECT_EQ(job.bytes, 14);
  EXPECT_EQ(job.file, Root() + "/server/jobs/1/job.ps");
  EXPECT_EQ(ContentOf(job.file), "%!PS\nshowpage\n");
}

TEST_F(Submission, TheFileIsPrivateWhateverTheOriginalWas) {
  JobRequest request = Request();
  fs::permissions(request.path, fs::perms(0666));
  const Job job = Get(Submit(request));
  EXPECT_EQ(fs::status(job.file).permissions(), fs::perms(0600));
  EXPECT_EQ(fs::status(m_Queue->DirectoryOf(job.id)).permissions(), fs::perms(0700));
}

TEST_F(Submission, AForeignNameIsATitleAndNoPath) {
  JobRequest request = Request();
  request.path = MakeFile("a \"b\" $(c).x;y", "%!");
  const Job job = Get(Submit(request));
  EXPECT_EQ(job.title, "a \"b\" $(c).x;y");
  EXPECT_EQ(fs::path(job.file).filename(), "job");
}

TEST_F(Submission, AMissingFileMakesNoJob) {
  JobRequest request = Request();
  request.path = Root() + "/none.ps";
  const auto id = m_Queue->Submit(request);
  ASSERT_FALSE(id);
  EXPECT_EQ(id.Error().where, request.path);
  EXPECT_EQ(m_Queue->Count({}).ValueOr(-1), 0);
  EXPECT_TRUE(fs::is_empty(Root() + "/server/jobs"));
}

TEST_F(Submission, ADirectoryOrAPipeMakesNoJob) {
  JobRequest request = Request();
  request.path = Root();
  EXPECT_FALSE(m_Queue->Submit(request));
  EXPECT_TRUE(fs::is_empty(Root() + "/server/jobs"));
}

TEST_F(Submission, AFileMayBeAsLargeAsThePolicySays) {
  const auto queue = OpenQueue({.jobBytes = 100});
  JobRequest request = Request();
  for (const std::size_t bytes : {99, 100}) {
    request.path = MakeFile("large.ps", std::string(bytes, '%'));
    EXPECT_TRUE(queue->Submit(request)) << bytes;
  }
  request.path = MakeFile("large.ps", std::string(101, '%'));
  const auto refused = queue->Submit(request);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Error().code, FailureCode::BadInput);
  EXPECT_EQ(Describe(refused.Error()), "'" + request.path +
                                           "' has 101 bytes, and a job of this server may have "
                                           "100");
  EXPECT_EQ(queue->Count({}).ValueOr(-1), 2);
}

TEST_F(Submission, WithoutALimitAFileMayBeOfAnySize) {
  JobRequest request = Request();
  request.path = MakeFile("large.ps", std::string(2'000'000, '%'));
  EXPECT_TRUE(m_Queue->Submit(request));
}

TEST_F(Submission, PrioritiesReachFrom1To100) {
  JobRequest request = Request();
  for (const int priority : {1, 2, 99, 100}) {
    request.priority = priority;
    EXPECT_TRUE(m_Queue->Submit(request)) << priority;
  }
  for (const int priority : {0, 101}) {
    request.priority = priority;
    EXPECT_EQ(WhyOf(m_Queue->Submit(request)),
              "priority " + std::to_string(priority) + " is not from 1 to 100");
  }
}

TEST_F(Submission, NamesHaveAtMost1024Bytes) {
  JobRequest request = Request();
  for (const std::size_t size : {1023, 1024}) {
    request.title = std::string(size, 'x');
    EXPECT_TRUE(m_Queue->Submit(request)) << size;
  }
  request.title = std::string(1025, 'x');
  EXPECT_EQ(WhyOf(m_Queue->Submit(request)), "a name of the job is longer than 1024 bytes");
}

TEST_F(Submission, WithoutADeviceItIsRefused) {
  JobRequest request = Request();
  request.device.clear();
  EXPECT_EQ(WhyOf(m_Queue->Submit(request)), "the job names no device");
}

TEST_F(Submission, TheSameKeyIsTheSameJob) {
  JobRequest request = Request();
  request.key = "folder 7 12 99";
  const JobId id = Submit(request);
  EXPECT_EQ(Submit(request), id);
  request.key = "folder 7 12 100";
  EXPECT_NE(Submit(request), id);
  EXPECT_EQ(m_Queue->Count({}).ValueOr(-1), 2);
}

TEST_F(Submission, NumbersAreNeverUsedTwice) {
  const JobId first = Submit(Request());
  ASSERT_TRUE(m_Queue->Remove(first));
  EXPECT_GT(Submit(Request()), first);
}

TEST_F(Submission, AHeldJobBeginsHeld) {
  JobRequest request = Request();
  request.hold = true;
  EXPECT_EQ(StateName(Submit(request)), "held");
}

TEST_F(Submission, RingsTheBellOfAnotherQueue) {
  const auto other = OpenQueue();
  pollfd bell{other->Bell(), POLLIN, 0};
  ASSERT_GE(bell.fd, 0);
  EXPECT_EQ(::poll(&bell, 1, 0), 0);
  Submit(Request());
  EXPECT_EQ(::poll(&bell, 1, 60000), 1);
  other->RestBell();
  EXPECT_EQ(::poll(&bell, 1, 0), 0);
}

TEST_F(Submission, TitlesAreFoundByAPartIgnoringCase) {
  JobRequest request = Request();
  for (const char* title : {"Shop 100%", "shop 100 x", "Door"}) {
    request.title = title;
    Submit(request);
  }
  JobFilter filter;
  filter.text = "SHOP";
  EXPECT_EQ(m_Queue->Count(filter).ValueOr(-1), 2);
  filter.text = "0%";
  EXPECT_EQ(m_Queue->Count(filter).ValueOr(-1), 1);
}

TEST_F(Submission, ListsAreSortedByKnownColumnsOnly) {
  JobFilter filter;
  for (const char* column :
       {"id", "submitted", "ended", "title", "owner", "device", "state", "priority", "pages"}) {
    filter.orderBy = column;
    EXPECT_TRUE(m_Queue->List(filter)) << column;
  }
  filter.orderBy = "id; DROP TABLE jobs";
  EXPECT_EQ(WhyOf(m_Queue->List(filter)), "jobs can't be sorted by 'id; DROP TABLE jobs'");
}

TEST_F(Submission, AListIsReadInPages) {
  for (int count = 0; count < 5; ++count) Submit(Request());
  JobFilter filter;
  filter.limit = 2;
  filter.offset = 2;
  const auto jobs = m_Queue->List(filter);
  ASSERT_TRUE(jobs);
  ASSERT_EQ(jobs->size(), 2U);
  EXPECT_EQ(jobs->front().id, 3);
  EXPECT_EQ(jobs->back().id, 2);
}

}  // namespace
}  // namespace rastrel::server
