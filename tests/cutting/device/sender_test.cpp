#include "cutting/device/sender.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <atomic>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>
#include <utility>

#include "cutting/device/connection.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/private_directory.h"

namespace rastrel::cutting {
namespace {

using os::FileDescriptor;

std::string Content(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> NamesIn(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string Bytes(std::size_t size) {
  std::string bytes(size, ' ');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>('a' + i % 23);
  return bytes;
}

/// A pipe that holds something back until it is released.
struct Gate {
  Gate() { EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0); }
  ~Gate() {
    Open();
    ::close(ends[0]);
  }
  void Wait() const {
    char byte;
    static_cast<void>(!::read(ends[0], &byte, 1));
  }
  void Open() {
    if (ends[1] >= 0) ::close(std::exchange(ends[1], -1));
  }
  int ends[2];
};

/// A device with a network port, which does one thing with its one connection.
class NetworkDevice {
 public:
  /// `held` is opened before the device's end is waited for.
  explicit NetworkDevice(std::function<void(int)> act, int buffer = 0, Gate* held = nullptr)
      : m_Held(held) {
    m_Listening.Reset(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (buffer > 0) ::setsockopt(m_Listening.Get(), SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::bind(m_Listening.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(m_Listening.Get(), 1), 0);
    socklen_t size = sizeof address;
    ::getsockname(m_Listening.Get(), reinterpret_cast<sockaddr*>(&address), &size);
    m_Port = ntohs(address.sin_port);
    m_Thread = std::thread([this, act] {
      const FileDescriptor connection(::accept(m_Listening.Get(), nullptr, nullptr));
      if (connection.IsOpen()) act(connection.Get());
    });
  }
  ~NetworkDevice() {
    if (m_Held) m_Held->Open();
    ::shutdown(m_Listening.Get(), SHUT_RDWR);
    m_Thread.join();
  }

  Device AsDevice(int timeoutSeconds = 60) const {
    Device device;
    device.name = "net";
    device.format = "hpgl";
    device.reach.by = Reach::Tcp;
    device.reach.host = "127.0.0.1";
    device.reach.port = m_Port;
    device.reach.timeoutSeconds = timeoutSeconds;
    return device;
  }
  std::string Where() const { return "127.0.0.1:" + std::to_string(m_Port); }

 private:
  Gate* m_Held;
  FileDescriptor m_Listening;
  int m_Port = 0;
  std::thread m_Thread;
};

/// Reads until the end or so many bytes.
std::string ReadFrom(int descriptor, std::size_t limit = ~std::size_t{0}) {
  std::string all;
  char block[4096];
  while (all.size() < limit) {
    const ssize_t count = ::read(descriptor, block, std::min(sizeof block, limit - all.size()));
    if (count <= 0) break;
    all.append(block, static_cast<std::size_t>(count));
  }
  return all;
}

class SenderTest : public testing::Test {
 protected:
  SenderTest() : m_Directory(*os::PrivateDirectory::Make("sender-")) {}
  std::string In(const std::string& name) const { return m_Directory.Path() + "/" + name; }

  Device FileDevice(const std::string& path) const {
    Device device;
    device.name = "file";
    device.format = "hpgl";
    device.reach.by = Reach::File;
    device.reach.path = path;
    return device;
  }
  Device DirectoryDevice() const {
    Device device = FileDevice(m_Directory.Path());
    device.reach.by = Reach::Directory;
    return device;
  }

  os::PrivateDirectory m_Directory;
};

std::string Reason(const Expected<SendResult>& result) {
  return result ? "" : Describe(result.Error());
}

TEST_F(SenderTest, a_file_takes_the_place_of_the_one_before) {
  std::ofstream(In("job.plt")) << "old";
  const auto result = Send(FileDevice(In("job.plt")), "new", "a", {});
  ASSERT_TRUE(result) << Reason(result);
  EXPECT_EQ(result->progress.taken, 3u);
  EXPECT_EQ(result->path, In("job.plt"));
  EXPECT_EQ(Content(In("job.plt")), "new");
  EXPECT_EQ(NamesIn(m_Directory.Path()), std::vector<std::string>{"job.plt"});
}

TEST_F(SenderTest, a_link_in_the_files_place_is_replaced_and_not_followed) {
  std::ofstream(In("precious")) << "kept";
  std::filesystem::create_symlink(In("precious"), In("job.plt"));
  ASSERT_TRUE(Send(FileDevice(In("job.plt")), "new", "a", {}));
  EXPECT_EQ(Content(In("precious")), "kept");
  EXPECT_FALSE(std::filesystem::is_symlink(In("job.plt")));
}

TEST_F(SenderTest, a_cancelled_job_leaves_the_old_file_whole) {
  std::ofstream(In("job.plt")) << "old";
  int asked = 0;
  SendControl control;
  control.order = [&] { return ++asked == 2 ? SendOrder::Cancel : SendOrder::Go; };
  const auto result = Send(FileDevice(In("job.plt")), Bytes(3 << 20), "a", control);
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->isCancelled);
  EXPECT_EQ(result->progress.taken, std::uint64_t{1} << 20);
  EXPECT_EQ(Content(In("job.plt")), "old");
  EXPECT_EQ(NamesIn(m_Directory.Path()), std::vector<std::string>{"job.plt"});
}

/// Whether a sender in a process of its own came to be killed at this report of its progress.
bool IsKilledAfter(int reports, const Device& device, const std::string& bytes) {
  const pid_t child = ::fork();
  if (child == 0) {
    int seen = 0;
    SendControl control;
    control.onProgress = [&](const SendProgress&) {
      if (++seen == reports) ::raise(SIGKILL);
    };
    static_cast<void>(Send(device, bytes, "sign", control));
    ::_exit(0);
  }
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

TEST_F(SenderTest, a_killed_sender_leaves_the_file_before_or_a_whole_one) {
  const std::string bytes = Bytes((3 << 20) + 1);
  for (int reports = 1; reports <= 5; ++reports) {
    std::ofstream(In("job.plt")) << "old";
    // The fourth report is that of the last byte, ahead of the file's new name.
    EXPECT_EQ(IsKilledAfter(reports, FileDevice(In("job.plt")), bytes), reports <= 4);
    EXPECT_EQ(Content(In("job.plt")) == "old", reports <= 4) << reports;
    EXPECT_EQ(Content(In("job.plt")) == bytes, reports > 4) << reports;
  }
}

TEST_F(SenderTest, a_killed_sender_leaves_no_file_in_a_directory_or_a_whole_one) {
  const std::string bytes = Bytes((3 << 20) + 1);
  for (int reports = 1; reports <= 5; ++reports) {
    EXPECT_EQ(IsKilledAfter(reports, DirectoryDevice(), bytes), reports <= 4);
    EXPECT_EQ(std::filesystem::exists(In("sign.plt")), reports > 4) << reports;
  }
  EXPECT_EQ(Content(In("sign.plt")), bytes);
}

TEST_F(SenderTest, a_directory_gets_a_new_file_for_each_job) {
  ASSERT_TRUE(Send(DirectoryDevice(), "1", "/x/sign.pdf", {}));
  const auto second = Send(DirectoryDevice(), "2", "/x/sign.pdf", {});
  ASSERT_TRUE(second);
  EXPECT_EQ(second->path, In("sign-2.plt"));
  EXPECT_EQ(Content(In("sign.plt")), "1");
  EXPECT_EQ(Content(In("sign-2.plt")), "2");
}

TEST_F(SenderTest, a_jobs_name_never_leaves_the_directory) {
  EXPECT_EQ(DeviceFileName("../../etc/passwd", "dxf"), "passwd.dxf");
  EXPECT_EQ(DeviceFileName("..", "dxf").find('/'), std::string::npos);
  EXPECT_EQ(DeviceFileName("", "gcode"), "untitled.nc");
  EXPECT_EQ(DeviceFileName("a\nb.pdf", "hpgl"), "a_b.plt");
}

TEST_F(SenderTest, an_absent_directory_is_named) {
  Device device = DirectoryDevice();
  device.reach.path = In("none");
  const auto result = Send(device, "x", "a", {});
  ASSERT_FALSE(result);
  EXPECT_NE(Reason(result).find("none"), std::string::npos) << Reason(result);
}

TEST_F(SenderTest, a_full_disk_is_told_and_has_no_file) {
  // The node takes nothing, as a full disk does.
  const auto result = Send(FileDevice("/dev/full"), "x", "a", {});
  ASSERT_FALSE(result);
  EXPECT_EQ(Reason(result), "'/dev/full' took 0 of 1 bytes: No space left on device");
}

TEST_F(SenderTest, a_pipe_without_a_reader_is_refused_at_once) {
  ASSERT_EQ(::mkfifo(In("pipe").c_str(), 0600), 0);
  const auto result = Send(FileDevice(In("pipe")), "x", "a", {});
  ASSERT_FALSE(result);
  EXPECT_EQ(result.Error().error, ENXIO);
}

TEST_F(SenderTest, a_pipe_gets_the_bytes) {
  ASSERT_EQ(::mkfifo(In("pipe").c_str(), 0600), 0);
  const FileDescriptor reader(::open(In("pipe").c_str(), O_RDONLY | O_NONBLOCK));
  ASSERT_TRUE(Send(FileDevice(In("pipe")), "IN;", "a", {}));
  EXPECT_EQ(ReadFrom(reader.Get()), "IN;");
}

TEST_F(SenderTest, a_device_that_is_not_reached_is_refused) {
  Device device;
  device.name = "drawing";
  EXPECT_EQ(Reason(Send(device, "x", "a", {})), "'drawing' has no way that bytes can be sent by");
}

TEST(NetworkSender, a_device_gets_every_byte_and_progress_grows) {
  std::string got;
  const std::string bytes = Bytes(3000000);
  std::vector<std::uint64_t> steps;
  {
    NetworkDevice device([&](int connection) { got = ReadFrom(connection); });
    SendControl control;
    control.onProgress = [&](const SendProgress& progress) { steps.push_back(progress.taken); };
    const auto result = Send(device.AsDevice(), bytes, "a", control);
    ASSERT_TRUE(result) << Reason(result);
    EXPECT_EQ(result->progress.taken, bytes.size());
  }
  EXPECT_EQ(got, bytes);
  ASSERT_FALSE(steps.empty());
  EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
  EXPECT_EQ(steps.back(), bytes.size());
}

TEST(NetworkSender, an_empty_job_is_sent) {
  NetworkDevice device([](int connection) { ReadFrom(connection); });
  const auto result = Send(device.AsDevice(), "", "a", {});
  ASSERT_TRUE(result) << Reason(result);
  EXPECT_EQ(result->progress.taken, 0u);
}

TEST(NetworkSender, a_small_chunk_gets_through_whole) {
  std::string got;
  const std::string bytes = Bytes(20000);
  {
    NetworkDevice net([&](int connection) { got = ReadFrom(connection); });
    Device device = net.AsDevice();
    device.limits.chunk = 1000;
    ASSERT_TRUE(Send(device, bytes, "a", {}));
  }
  EXPECT_EQ(got, bytes);
}

TEST(NetworkSender, a_device_that_never_reads_is_told_with_its_bytes) {
  Gate gate;
  NetworkDevice device([&](int) { gate.Wait(); }, 4096, &gate);
  const std::string bytes = Bytes(30000000);
  std::uint64_t last = 0;
  SendControl control;
  control.onProgress = [&](const SendProgress& progress) { last = progress.taken; };
  const auto result = Send(device.AsDevice(1), bytes, "a", control);
  ASSERT_FALSE(result);
  EXPECT_LT(last, bytes.size());
  EXPECT_EQ(Reason(result), "'" + device.Where() + "' took " + std::to_string(last) +
                                " of 30000000 bytes: it took nothing for 1 seconds");
}

TEST(NetworkSender, a_device_that_closes_half_way_is_told_with_its_bytes) {
  std::atomic<std::size_t> read = 0;
  NetworkDevice device([&](int connection) { read = ReadFrom(connection, 100000).size(); }, 4096);
  const std::string bytes = Bytes(30000000);
  std::uint64_t last = 0;
  SendControl control;
  control.onProgress = [&](const SendProgress& progress) { last = progress.taken; };
  const auto result = Send(device.AsDevice(), bytes, "a", control);
  ASSERT_FALSE(result);
  EXPECT_EQ(read.load(), 100000u);  // its system has taken that, and some more
  EXPECT_GE(last, read.load());
  EXPECT_LT(last, bytes.size());
  EXPECT_THAT(Reason(result), testing::StartsWith("'" + device.Where() + "' took " +
                                                  std::to_string(last) + " of 30000000 bytes: "));
}

TEST(NetworkSender, a_killed_sender_ends_the_connection_after_a_part_in_order) {
  const std::string bytes = Bytes(30000000);
  for (const int reports : {1, 3}) {
    std::string got;
    {
      NetworkDevice device([&](int connection) { got = ReadFrom(connection); }, 4096);
      EXPECT_TRUE(IsKilledAfter(reports, device.AsDevice(), bytes));
    }
    EXPECT_LT(got.size(), bytes.size());
    EXPECT_EQ(got, bytes.substr(0, got.size()));
  }
}

TEST(NetworkSender, a_device_that_resets_is_told_with_its_bytes) {
  NetworkDevice device([&](int connection) {
    ReadFrom(connection, 10);
    const linger none{1, 0};
    ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &none, sizeof none);
  });
  const auto result = Send(device.AsDevice(), Bytes(30000000), "a", {});
  ASSERT_FALSE(result);
  EXPECT_NE(Reason(result).find(" of 30000000 bytes: "), std::string::npos) << Reason(result);
}

TEST(NetworkSender, a_port_without_a_device_is_refused) {
  int port = 0;
  {
    const FileDescriptor socket(::socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::bind(socket.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    socklen_t size = sizeof address;
    ::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin_port);
  }
  Device device;
  device.reach.by = Reach::Tcp;
  device.reach.host = "127.0.0.1";
  device.reach.port = port;
  const auto result = Send(device, "x", "a", {});
  ASSERT_FALSE(result);
  EXPECT_EQ(Reason(result),
            "connect '127.0.0.1:" + std::to_string(port) + "': Connection refused (111)");
}

TEST(NetworkSender, a_name_that_is_no_host_is_told) {
  Device device;
  device.reach.by = Reach::Tcp;
  device.reach.host = "no such host";
  const auto result = Send(device, "x", "a", {});
  ASSERT_FALSE(result);
  EXPECT_EQ(Reason(result).find("find 'no such host:9100': "), 0u) << Reason(result);
}

TEST(NetworkSender, answers_of_the_device_do_not_stop_it) {
  std::string got;
  const std::string bytes = Bytes(2000000);
  {
    NetworkDevice device([&](int connection) {
      const std::string answer(1000, 'A');
      for (int i = 0; i < 2000; ++i) {
        got += ReadFrom(connection, 1000);
        static_cast<void>(!::send(connection, answer.data(), answer.size(), MSG_NOSIGNAL));
      }
      got += ReadFrom(connection);
    });
    ASSERT_TRUE(Send(device.AsDevice(), bytes, "a", {}));
  }
  EXPECT_EQ(got, bytes);
}

TEST(NetworkSender, a_cancelled_job_is_not_sent_on) {
  std::string got;
  Gate gate;
  const std::string bytes = Bytes(30000000);
  {
    NetworkDevice device(
        [&](int connection) {
          gate.Wait();
          got = ReadFrom(connection);
        },
        4096, &gate);
    int asked = 0;
    SendControl control;
    control.order = [&] { return ++asked > 4 ? SendOrder::Cancel : SendOrder::Go; };
    const auto result = Send(device.AsDevice(), bytes, "a", control);
    ASSERT_TRUE(result) << Reason(result);
    EXPECT_TRUE(result->isCancelled);
    gate.Open();
  }
  EXPECT_LT(got.size(), bytes.size());
}

TEST(NetworkSender, a_paused_job_outlasts_the_timeout_and_goes_on) {
  std::string got;
  const std::string bytes = Bytes(1000000);
  bool wasPaused = false;
  {
    NetworkDevice device([&](int connection) { got = ReadFrom(connection); });
    int asked = 0;
    std::uint64_t atPause = 0;
    SendControl control;
    control.order = [&] {
      ++asked;
      return asked == 3 || asked == 4 || asked == 5 ? SendOrder::Pause : SendOrder::Go;
    };
    control.onProgress = [&](const SendProgress& progress) {
      if (progress.isPaused && !wasPaused) atPause = progress.taken;
      wasPaused = wasPaused || progress.isPaused;
    };
    const auto result = Send(device.AsDevice(1), bytes, "a", control);
    ASSERT_TRUE(result) << Reason(result);
    EXPECT_LT(atPause, bytes.size());
  }
  EXPECT_TRUE(wasPaused);
  EXPECT_EQ(got, bytes);
}

TEST(NetworkSender, an_order_comes_by_its_descriptor) {
  Gate order;
  Gate held;
  NetworkDevice device([&](int) { held.Wait(); }, 4096, &held);
  SendControl control;
  control.descriptors = {order.ends[0]};
  int asked = 0;
  control.order = [&] {
    if (++asked == 2) order.Open();  // the pipe's end makes it readable from now on
    return asked > 2 ? SendOrder::Cancel : SendOrder::Go;
  };
  const auto result = Send(device.AsDevice(), Bytes(30000000), "a", control);
  ASSERT_TRUE(result) << Reason(result);
  EXPECT_TRUE(result->isCancelled);
}

/// Both ends of a serial line that is no hardware.
struct Line {
  Line() {
    int first = -1;
    int second = -1;
    char name[128];
    EXPECT_EQ(::openpty(&first, &second, name, nullptr, nullptr), 0);
    device.Reset(first);
    port.Reset(second);
    path = name;
  }
  Device AsDevice(FlowControl flow, int timeoutSeconds = 60) const {
    Device made;
    made.name = "line";
    made.format = "hpgl";
    made.reach.by = Reach::Serial;
    made.reach.path = path;
    made.reach.flow = flow;
    made.reach.timeoutSeconds = timeoutSeconds;
    return made;
  }
  FileDescriptor device;  // the cutter's end
  FileDescriptor port;    // keeps the line from hanging up
  std::string path;
};

TEST(SerialSender, every_byte_arrives_as_it_is) {
  Line line;
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  bytes += "\n\r\x03\x04\x1a";
  const auto result = Send(line.AsDevice(FlowControl::None), bytes, "a", {});
  ASSERT_TRUE(result) << Reason(result);
  EXPECT_EQ(ReadFrom(line.device.Get(), bytes.size()), bytes);
}

TEST(SerialSender, the_line_gets_the_devices_settings) {
  Line line;
  Device device = line.AsDevice(FlowControl::Software);
  device.reach.baud = 19200;
  device.reach.dataBits = 7;
  device.reach.stopBits = 2;
  device.reach.parity = Parity::Odd;
  const auto connection = OpenSerial(device.reach);
  ASSERT_TRUE(connection);
  termios settings{};
  ASSERT_EQ(::tcgetattr(connection->descriptor.Get(), &settings), 0);
  EXPECT_EQ(::cfgetospeed(&settings), static_cast<speed_t>(B19200));
  EXPECT_NE(settings.c_cflag & CSTOPB, 0u);
  EXPECT_NE(settings.c_cflag & PARODD, 0u);
  EXPECT_EQ(settings.c_iflag & (IXON | IXOFF), static_cast<tcflag_t>(IXON | IXOFF));
  EXPECT_EQ(settings.c_lflag & (ECHO | ICANON | ISIG), 0u);
  EXPECT_EQ(settings.c_oflag & OPOST, 0u);
}

TEST(SerialSender, a_device_that_stops_for_ever_is_told_with_its_bytes) {
  Line line;
  const auto settled = OpenSerial(line.AsDevice(FlowControl::Software).reach);
  ASSERT_TRUE(settled);
  // XOFF. The system may see to it a moment later, when some of the job is in the line's buffer.
  ASSERT_EQ(::write(line.device.Get(), "\x13", 1), 1);
  const auto result = Send(line.AsDevice(FlowControl::Software, 1), Bytes(100000), "a", {});
  ASSERT_FALSE(result);
  const std::string reason = Reason(result);
  EXPECT_TRUE(reason.starts_with("'" + line.path + "' took ")) << reason;
  EXPECT_TRUE(reason.ends_with(" of 100000 bytes: it took nothing for 1 seconds")) << reason;
}

TEST(SerialSender, a_device_that_stops_and_goes_on_gets_every_byte) {
  Line line;
  const std::string bytes = Bytes(200000);
  std::string got;
  std::thread cutter([&] {
    while (got.size() < bytes.size()) {
      static_cast<void>(!::write(line.device.Get(), "\x13", 1));
      static_cast<void>(!::write(line.device.Get(), "\x11", 1));
      const std::string more =
          ReadFrom(line.device.Get(), std::min<std::size_t>(10000, bytes.size() - got.size()));
      if (more.empty()) break;
      got += more;
    }
  });
  const auto result = Send(line.AsDevice(FlowControl::Software), bytes, "a", {});
  line.port.Reset();
  cutter.join();
  ASSERT_TRUE(result) << Reason(result);
  EXPECT_EQ(got, bytes);
}

TEST(SerialSender, a_line_that_hangs_up_is_told) {
  Line line;
  std::thread cutter([&] {
    ReadFrom(line.device.Get(), 1000);
    line.device.Reset();
  });
  const auto result = Send(line.AsDevice(FlowControl::None), Bytes(5000000), "a", {});
  cutter.join();
  ASSERT_FALSE(result);
  EXPECT_NE(Reason(result).find(" of 5000000 bytes: "), std::string::npos) << Reason(result);
}

TEST(SerialSender, a_file_is_no_serial_port) {
  const auto directory = os::PrivateDirectory::Make("line-");
  const std::string path = directory->Path() + "/file";
  std::ofstream(path) << "kept";
  DeviceReach reach;
  reach.path = path;
  const auto opened = OpenSerial(reach);
  ASSERT_FALSE(opened);
  EXPECT_EQ(Describe(opened.Error()), "'" + path + "' is no serial port");
  EXPECT_EQ(Content(path), "kept");
}

TEST(SerialSender, an_absent_port_is_named) {
  DeviceReach reach;
  reach.path = "/dev/no-such-port";
  const auto opened = OpenSerial(reach);
  ASSERT_FALSE(opened);
  EXPECT_EQ(Describe(opened.Error()), "open '/dev/no-such-port': No such file or directory (2)");
}

}  // namespace
}  // namespace rastrel::cutting
