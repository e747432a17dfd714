// The HTTP interface of the server at its Unix socket: from the last byte of a job to the start of
// its RIP, and a page of a long list of jobs.

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"
#include "bench/require.h"
#include "bench/running_server.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "server/queue/database.h"

namespace {

namespace bench = rastrel::bench;
namespace server = rastrel::server;
using namespace std::chrono_literals;

constexpr const char* Command = RASTREL_BINARY_DIR "/bin/rastrel";

constexpr const char* Page =
    "%!PS\n<< /PageSize [72 72] >> setpagedevice\n0.5 setgray 9 9 54 54 rectfill showpage\n";
constexpr int JobsOfTheList = 100'000;
constexpr int Rounds = 25;
constexpr double LimitOfStart = 4;
constexpr double LimitOfPage = 3;

/// A connection to the HTTP interface, kept for all requests.
class Connection {
 public:
  explicit Connection(const std::string& path)
      : m_Socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    bench::Require(path.size() < sizeof address.sun_path, "the data root's path is too long");
    std::memcpy(address.sun_path, path.data(), path.size());
    for (int tries = 0; tries < 500; ++tries) {
      if (::connect(m_Socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
          0)
        return;
      std::this_thread::sleep_for(20ms);
    }
    bench::Require(false, "the HTTP interface does not answer");
  }

  void Send(std::string_view bytes) const {
    bench::Require(::send(m_Socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
                       static_cast<ssize_t>(bytes.size()),
                   "the request can't be sent");
  }

  /// The whole answer, whose length its head says.
  std::string Answer() const {
    std::string answer;
    std::array<char, 65536> buffer;
    for (std::size_t end = answer.npos; end == answer.npos || answer.size() < end;) {
      const ssize_t count = ::recv(m_Socket.Get(), buffer.data(), buffer.size(), 0);
      bench::Require(count > 0, "the connection ended");
      answer.append(buffer.data(), static_cast<std::size_t>(count));
      const std::size_t head = answer.find("\r\n\r\n");
      const std::size_t field = answer.find("Content-Length: ");
      if (head == answer.npos || field > head) continue;
      end = head + 4 + std::stoul(answer.substr(field + 16));
    }
    return answer;
  }

 private:
  rastrel::os::FileDescriptor m_Socket;
};

std::string UploadOfPage() {
  const auto part = [](const std::string& name, const std::string& value) {
    return "--part\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value +
           "\r\n";
  };
  const std::string body = part("device", "*") + part("mode", "Screen/preview") +
                           part("file\"; filename=\"page.ps", Page) + "--part--\r\n";
  return "POST /api/v1/jobs HTTP/1.1\r\nHost: localhost\r\n"
         "Content-Type: multipart/form-data; boundary=part\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// Sees when a program is begun: its file is opened then.
class StartWatch {
 public:
  explicit StartWatch(const std::string& program)
      : m_Watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    bench::Require(::inotify_add_watch(m_Watch.Get(), program.c_str(), IN_OPEN) >= 0,
                   "the RIP can't be watched");
  }
  void Forget() const {
    std::array<char, 4096> events;
    while (::read(m_Watch.Get(), events.data(), events.size()) > 0) {
    }
  }
  void Await() const {
    pollfd wanted{m_Watch.Get(), POLLIN, 0};
    bench::Require(::poll(&wanted, 1, 30'000) == 1, "no RIP was started");
  }

 private:
  rastrel::os::FileDescriptor m_Watch;
};

struct BareStart {
  double toOpening = 0;  ///< of the program's file
  double toWord = 0;     ///< on its standard error
};

/// Milliseconds of a start of the RIP without a job.
BareStart StartBare(const std::string& rip, const StartWatch& watch) {
  std::array<int, 2> ends{};
  bench::Require(::pipe2(ends.data(), O_CLOEXEC) == 0, "no pipe");
  const rastrel::os::FileDescriptor reading(ends[0]);
  rastrel::os::FileDescriptor writing(ends[1]);
  BareStart start;
  pid_t child = -1;
  watch.Forget();
  const double begin = bench::Now(bench::Clock::Wall);
  child = ::vfork();
  if (child == 0) {
    ::dup2(ends[1], STDERR_FILENO);
    ::execl(rip.c_str(), rip.c_str(), nullptr);
    ::_exit(1);
  }
  watch.Await();
  start.toOpening = bench::Now(bench::Clock::Wall) - begin;
  char word = 0;
  bench::Require(::read(ends[0], &word, 1) == 1, "the RIP says nothing");
  start.toWord = bench::Now(bench::Clock::Wall) - begin;
  ::waitpid(child, nullptr, 0);
  return start;
}

/// A job's RIP speaks to the library alone: its start is seen, and from there to its first word it
/// takes as long as a bare one.
void MeasureStart(const bench::DataRoot& root, const Connection& connection) {
  const std::string rip = root.Path("Queue/rip/corerast.exe");
  const StartWatch watch(rip);
  const std::string upload = UploadOfPage();
  std::vector<double> ours;
  std::vector<double> bare;
  for (int round = 0; round < Rounds; ++round) {
    connection.Send(std::string_view(upload).substr(0, upload.size() - 1));
    std::this_thread::sleep_for(300ms);  // all before it is there, and the last job is done
    watch.Forget();
    const double toOpening = bench::Milliseconds(bench::Clock::Wall, [&] {
      connection.Send(std::string_view(upload).substr(upload.size() - 1));
      watch.Await();
    });
    bench::Require(connection.Answer().starts_with("HTTP/1.1 201"), "the job was refused");
    std::this_thread::sleep_for(300ms);
    const BareStart start = StartBare(rip, watch);
    ours.push_back(toOpening + start.toWord - start.toOpening);
    bare.push_back(start.toWord);
  }
  bench::Print({"from the last byte of a job to its RIP's first word", bench::Median(ours), "ms",
                "a bare start of the RIP", bench::Median(bare), LimitOfStart});
}

void MakeList(const bench::DataRoot& root) {
  const auto rows =
      server::Database::Open(root.Path("server/queue.db"), server::Database::Safety::Normal);
  bench::Require(rows && (*rows)->Execute(
                             "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE "
                             "i < " +
                             std::to_string(JobsOfTheList) +
                             ") INSERT INTO jobs (title, owner, source, device, work, options, "
                             "priority, state, file, bytes, submitted) SELECT 'sign ' || (i * 7919 "
                             "% 100003), 'owner' || (i % 7), 'web', 'Plotter', 'print', '{}', 50, "
                             "CASE WHEN i % 10 = 0 THEN 'canceled' ELSE 'done' END, '', 1000, i "
                             "FROM n"),
                 "the rows can't be made");
}

/// The rows of a page, and the number of all, as any program would ask the database for them.
void Ask(server::Database& rows) {
  server::Query page = rows.Prepare(
      "SELECT * FROM jobs WHERE state = 'done' AND owner = 'owner3' ORDER BY title, id LIMIT 100");
  std::size_t bytes = 0;
  int count = 0;
  for (; page.Next(); ++count)
    for (int column = 0; column < 20; ++column) bytes += page.Text(column).size();
  bench::Require(count == 100 && bytes > 0, "the page is not whole");
  server::Query all =
      rows.Prepare("SELECT count(*) FROM jobs WHERE state = 'done' AND owner = 'owner3'");
  bench::Require(all.Next() && all.Number(0) > 100, "the list is not whole");
}

void MeasurePage(const bench::DataRoot& root, const Connection& connection) {
  const auto rows =
      server::Database::Open(root.Path("server/queue.db"), server::Database::Safety::Normal);
  bench::Require(static_cast<bool>(rows), "the queue can't be opened");
  bench::Compare(
      {.name = "a page of 100 out of 100,000 jobs, filtered and sorted, by HTTP",
       .peerName = "the database's query alone",
       .rounds = Rounds,
       .limit = LimitOfPage},
      [] {},
      [&] {
        connection.Send(
            "GET /api/v1/jobs?state=done&owner=owner3&order=title&limit=100 HTTP/1.1\r\n"
            "Host: localhost\r\n\r\n");
        const std::string answer = connection.Answer();
        bench::Require(answer.starts_with("HTTP/1.1 200") && answer.size() > 20'000,
                       "the page was refused");
      },
      [&] { Ask(**rows); });
}

}  // namespace

int main() {
  const bench::DataRoot root;
  static_cast<void>(bench::Run({Command, "printers"}));
  // A port of its own, since a server of another run may still end.
  root.Write("server.toml", "[web]\nport = " + std::to_string(20'000 + ::getpid() % 20'000) + "\n");
  // One job lays the RIP and the queue.
  static_cast<void>(
      bench::Run({Command, "print", root.File("page.ps", Page), "--mode", "Screen/preview"}));
  const bench::RunningServer running;
  const Connection connection(root.Path("server/web.sock"));
  MeasureStart(root, connection);
  MakeList(root);
  MeasurePage(root, connection);
  return 0;
}
