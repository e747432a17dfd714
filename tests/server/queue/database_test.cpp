#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "queue_test_support.h"
#include "server/queue/database.h"
#include "server/queue/schema.h"

namespace rastrel::server {
namespace {

namespace fs = std::filesystem;

class QueueFile : public QueueTest {
 protected:
  [[nodiscard]] std::string Path() const { return Root() + "/server/queue.db"; }
  std::string WhyNotOpened() {
    const auto queue = JobQueue::Open(Root());
    return queue ? "" : Describe(queue.Error());
  }
  std::int64_t NumberOf(const std::string& statement) {
    auto database = Database::Open(Path(), Database::Safety::Full);
    EXPECT_TRUE(database);
    Query query = (*database)->Prepare(statement);
    return query.Next() ? query.Number(0) : -1;
  }
};

TEST_F(QueueFile, OnlyItsUserMayReadIt) {
  EXPECT_EQ(fs::status(Root() + "/server").permissions(), fs::perms(0700));
}

TEST_F(QueueFile, ItsLogsToo) {
  const mode_t mask = ::umask(0);
  const auto queue = JobQueue::Open(Root());
  ::umask(mask);
  ASSERT_TRUE(queue);
  for (const std::string suffix : {"", "-wal", "-shm"})
    EXPECT_EQ(fs::status(Path() + suffix).permissions(), fs::perms(0600)) << suffix;
}

TEST_F(QueueFile, OfAnOlderVersionBecomesItsUsersOwn) {
  ASSERT_EQ(WhyNotOpened(), "");
  fs::permissions(Path(), fs::perms(0644));
  ASSERT_EQ(WhyNotOpened(), "");
  EXPECT_EQ(fs::status(Path()).permissions(), fs::perms(0600));
}

// Who makes the file and who opens it meanwhile: the change to the write-ahead log asks nobody to
// wait.
TEST_F(QueueFile, MayBeMadeByManyAtTheSameTime) {
  constexpr int Rounds = 25;
  constexpr int Openers = 12;
  for (int round = 0; round < Rounds; ++round) {
    const std::string path = Root() + "/new" + std::to_string(round) + ".db";
    std::latch start(Openers);
    std::vector<std::string> faults(Openers);
    std::vector<std::thread> openers;
    for (std::string& fault : faults)
      openers.emplace_back([&] {
        start.arrive_and_wait();
        const auto database = Database::Open(path, Database::Safety::Full);
        if (!database) fault = Describe(database.Error());
      });
    for (std::thread& opener : openers) opener.join();
    for (const std::string& fault : faults) ASSERT_EQ(fault, "") << round;
  }
}

TEST_F(QueueFile, CommitsReachTheDisk) {
  auto database = Database::Open(Path(), Database::Safety::Full);
  ASSERT_TRUE(database);
  Query safety = (*database)->Prepare("PRAGMA synchronous");
  ASSERT_TRUE(safety.Next());
  EXPECT_EQ(safety.Number(0), 2);  // FULL
  Query journal = (*database)->Prepare("PRAGMA journal_mode");
  ASSERT_TRUE(journal.Next());
  EXPECT_EQ(journal.Text(0), "wal");
}

TEST_F(QueueFile, HasTheVersionOfThisProgram) {
  EXPECT_EQ(NumberOf("PRAGMA user_version"), QueueVersion);
}

TEST_F(QueueFile, ANewerVersionIsRefusedAndLeftAsItIs) {
  const JobId id = Submit(Request());
  m_Queue.reset();
  {
    auto database = Database::Open(Path(), Database::Safety::Full);
    ASSERT_TRUE(database);
    ASSERT_TRUE((*database)->Execute("PRAGMA user_version = " + std::to_string(QueueVersion + 1)));
  }
  EXPECT_EQ(WhyNotOpened(), "the queue is of version " + std::to_string(QueueVersion + 1) +
                                ", which a newer rastrel made; this one knows up to " +
                                std::to_string(QueueVersion));
  EXPECT_EQ(NumberOf("PRAGMA user_version"), QueueVersion + 1);
  EXPECT_EQ(NumberOf("SELECT id FROM jobs"), id);
}

TEST_F(QueueFile, AStepOfTheSchemaThatFailsLeavesTheEarlierVersion) {
  m_Queue.reset();
  fs::remove_all(Root() + "/server");
  fs::create_directories(Root() + "/server/jobs");
  fs::permissions(Root() + "/server", fs::perms(0700));
  {
    auto database = Database::Open(Path(), Database::Safety::Full);
    ASSERT_TRUE(database);
    ASSERT_TRUE((*database)->Execute("CREATE TABLE turns (x)"));  // is in the way of ours
  }
  EXPECT_NE(WhyNotOpened().find("already exists"), std::string::npos);
  EXPECT_EQ(NumberOf("PRAGMA user_version"), 0);
  EXPECT_EQ(NumberOf("SELECT count(*) FROM sqlite_schema WHERE name = 'jobs'"), 0);
}

TEST_F(QueueFile, ACutFileIsNamedAsDamaged) {
  for (int count = 0; count < 20; ++count) Submit(Request());
  m_Queue.reset();
  const auto size = fs::file_size(Path());
  fs::resize_file(Path(), size / 2);
  const std::string why = WhyNotOpened();
  if (why.empty()) {
    const auto queue = OpenQueue();
    const auto jobs = queue->List({});
    EXPECT_FALSE(jobs);
    EXPECT_EQ(WhyOf(jobs), "the queue's database is damaged");
  } else {
    EXPECT_NE(why.find("the queue's database is damaged"), std::string::npos) << why;
  }
}

TEST_F(QueueFile, AFileThatIsNoDatabaseIsRefused) {
  m_Queue.reset();
  fs::remove_all(Root() + "/server");
  fs::create_directories(Root() + "/server/jobs");
  fs::permissions(Root() + "/server", fs::perms(0700));
  std::ofstream(Path()) << std::string(8192, 'x');
  EXPECT_NE(WhyNotOpened().find("the queue's database is damaged"), std::string::npos);
}

TEST_F(QueueFile, AFullDiskRefusesAJobAndKeepsTheOthers) {
  const JobId id = Submit(Request());
  m_Queue.reset();
  const pid_t child = ::fork();
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    const auto queue = JobQueue::Open(Root());
    if (!queue) ::_exit(2);
    // No file may grow beyond a size that the database's log passes soon.
    const rlimit limit{65536, 65536};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) ::_exit(3);
    for (int count = 0; count < 1000; ++count) {
      const auto added = (*queue)->Submit(Request());
      if (!added) ::_exit(Describe(added.Error()).empty() ? 4 : 0);
    }
    ::_exit(5);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  m_Queue = OpenQueue();
  EXPECT_EQ(StateName(id), "queued");
  EXPECT_TRUE(m_Queue->Submit(Request()));
  EXPECT_TRUE(m_Queue->RecoverClaims(true));
  // The directory and the list have the same jobs.
  const auto count = m_Queue->Count({}).ValueOr(-1);
  EXPECT_EQ(std::distance(fs::directory_iterator(Root() + "/server/jobs"), {}), count);
}

TEST_F(QueueFile, ADirectoryThatOthersMayChangeIsRefused) {
  m_Queue.reset();
  fs::permissions(Root() + "/server", fs::perms(0777));
  EXPECT_NE(WhyNotOpened(), "");
}

TEST_F(QueueFile, LeftoversOfKilledSubmissionsGoAtTheStart) {
  const JobId id = Submit(Request());
  const std::string jobs = Root() + "/server/jobs/";
  fs::create_directory(jobs + "99");
  ASSERT_TRUE(m_Queue->RecoverClaims(true));
  EXPECT_FALSE(fs::exists(jobs + "99"));
  EXPECT_TRUE(fs::exists(jobs + std::to_string(id)));
}

}  // namespace
}  // namespace rastrel::server
