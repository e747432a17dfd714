#include "server/delivery/delivery.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "rastrel/platform/os/file_descriptor.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/wait_until.h"

namespace rastrel::server {
namespace {

using os::FileDescriptor;
using test::ScratchDirectory;

/// Keeps the calls, and runs an action at the first byte or message.
struct Watch : DeliveryProgress {
  Expected<void> OnSending(std::int64_t total) override {
    totals.push_back(total);
    if (isRefused) return FailureOf("job 7 was canceled");
    return {};
  }
  void OnSent(std::int64_t bytes) override {
    sent.push_back(bytes);
    if (atSent) atSent();
  }
  void OnMessage(const std::string& line) override {
    lines.push_back(line);
    if (atMessage) atMessage();
  }
  bool isRefused = false;
  std::vector<std::int64_t> totals;
  std::vector<std::int64_t> sent;
  std::vector<std::string> lines;
  std::function<void()> atSent;
  std::function<void()> atMessage;
};

/// A descriptor that becomes readable and stays so.
class CancelOrder {
 public:
  CancelOrder() {
    int ends[2];
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    m_Read.Reset(ends[0]);
    m_Write.Reset(ends[1]);
  }
  void Give() { EXPECT_EQ(::write(m_Write.Get(), "x", 1), 1); }
  int Descriptor() const { return m_Read.Get(); }

 private:
  FileDescriptor m_Read;
  FileDescriptor m_Write;
};

class DeliveryTest : public testing::Test {
 protected:
  std::string Root() const { return m_Scratch.Path(); }
  std::string Write(const std::string& name, const std::string& bytes) const {
    const std::string path = Root() + "/" + name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  std::string Script(const std::string& text) const {
    const std::string path = Write("program", "#!/bin/sh\n" + text + "\n");
    EXPECT_EQ(::chmod(path.c_str(), 0700), 0);
    return '"' + path + '"';  // a word of a command
  }
  static std::string Content(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }
  std::vector<std::string> NamesIn(const std::string& directory) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
      names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
  }
  DeliveryDevice Device(DeviceKind kind, const std::string& address) const {
    auto device = DeviceWithAddress("Plotter", kind, address);
    EXPECT_TRUE(device);
    device->retries = 0;
    device->pauseSeconds = 0;
    device->timeoutSeconds = 60;
    return *device;
  }
  DeliveryEnd Run(const DeliveryDevice& device, std::vector<std::string> files, int cancel = -1) {
    auto end =
        Deliver(Root(), device,
                {.name = "42-a sign", .title = "a sign", .user = "anna", .files = std::move(files)},
                watch, cancel);
    EXPECT_TRUE(end) << (end ? "" : Describe(end.Error()));
    return end ? *end : DeliveryEnd{};
  }

  Watch watch;
  ScratchDirectory m_Scratch;
};

// ---- a folder

class FolderDelivery : public DeliveryTest {
 protected:
  FolderDelivery() { std::filesystem::create_directory(Out()); }
  std::string Out() const { return Root() + "/out"; }
  DeliveryDevice Folder() const { return Device(DeviceKind::Folder, Out()); }
};

TEST_F(FolderDelivery, files_get_the_jobs_name_and_their_own_endings) {
  const DeliveryEnd end = Run(Folder(), {Write("p1.tif", "one"), Write("p2.tif", "two")});
  EXPECT_EQ(end.fate, DeliveryFate::Delivered);
  EXPECT_EQ(end.sentBytes, 6);
  EXPECT_EQ(end.totalBytes, 6);
  EXPECT_EQ(end.paths,
            (std::vector<std::string>{Out() + "/42-a sign.tif", Out() + "/42-a sign-2.tif"}));
  EXPECT_EQ(Content(end.paths.at(0)), "one");
  EXPECT_EQ(Content(end.paths.at(1)), "two");
  EXPECT_EQ(watch.totals, std::vector<std::int64_t>{});
}

TEST_F(FolderDelivery, a_delivery_that_is_begun_again_makes_no_file_twice) {
  const std::string page = Write("p.tif", std::string(200000, 'a'));
  Run(Folder(), {page});
  const DeliveryEnd end = Run(Folder(), {page});
  EXPECT_EQ(end.fate, DeliveryFate::Delivered);
  EXPECT_EQ(NamesIn(Out()), std::vector<std::string>{"42-a sign.tif"});
}

TEST_F(FolderDelivery, a_name_that_another_file_has_gets_a_number) {
  std::ofstream(Out() + "/42-a sign.tif") << "foreign";
  const DeliveryEnd end = Run(Folder(), {Write("p.tif", "ours")});
  EXPECT_EQ(end.paths, std::vector<std::string>{Out() + "/42-a sign-2.tif"});
  EXPECT_EQ(Content(Out() + "/42-a sign.tif"), "foreign");
}

TEST_F(FolderDelivery, a_link_in_the_place_is_neither_followed_nor_replaced) {
  const std::string victim = Write("victim", "ours");
  std::filesystem::create_symlink(victim, Out() + "/42-a sign.tif");
  const DeliveryEnd end = Run(Folder(), {Write("p.tif", "ours")});
  EXPECT_EQ(end.paths, std::vector<std::string>{Out() + "/42-a sign-2.tif"});
}

TEST_F(FolderDelivery, a_missing_folder_is_tried_again_and_named) {
  std::filesystem::remove(Out());
  DeliveryDevice device = Folder();
  device.retries = 2;
  int pauses = 0;
  watch.atMessage = [&] {
    if (++pauses == 2) std::filesystem::create_directory(Out());
  };
  const DeliveryEnd end = Run(device, {Write("p.tif", "x")});
  EXPECT_EQ(end.fate, DeliveryFate::Delivered);
  EXPECT_EQ(end.attempts, 3);
  EXPECT_NE(watch.lines.at(0).find(Out()), std::string::npos) << watch.lines.at(0);
  EXPECT_NE(watch.lines.at(0).find("attempt 2 of 3"), std::string::npos) << watch.lines.at(0);
}

TEST_F(FolderDelivery, retries_end_after_as_many_as_were_set) {
  std::filesystem::remove(Out());
  for (const int retries : {0, 1, 2}) {
    DeliveryDevice device = Folder();
    device.retries = retries;
    const DeliveryEnd end = Run(device, {Write("p.tif", "x")});
    EXPECT_EQ(end.fate, DeliveryFate::Failed);
    EXPECT_EQ(end.attempts, retries + 1);
  }
}

TEST_F(FolderDelivery, a_canceled_one_leaves_no_part_of_a_file) {
  CancelOrder order;
  watch.atSent = [&] { order.Give(); };
  const std::string page = Write("p.tif", std::string(3 << 20, 'a'));
  const DeliveryEnd end = Run(Folder(), {page}, order.Descriptor());
  EXPECT_EQ(end.fate, DeliveryFate::Canceled);
  EXPECT_EQ(NamesIn(Out()), std::vector<std::string>{});
}

TEST_F(FolderDelivery, a_file_that_is_not_there_fails_the_call) {
  const auto end = Deliver(Root(), Folder(), {.name = "1", .files = {Root() + "/no"}}, watch, -1);
  ASSERT_FALSE(end);
  EXPECT_EQ(end.Error().where, Root() + "/no");
}

TEST_F(FolderDelivery, a_device_that_another_delivers_to_is_waited_for) {
  const std::string page = Write("p.tif", "x");
  Run(Folder(), {page});
  const std::string path = Root() + "/server/devices/Plotter.lock";
  const FileDescriptor lock(::open(path.c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(::flock(lock.Get(), LOCK_EX), 0);
  CancelOrder order;
  order.Give();
  const DeliveryEnd end = Run(Folder(), {page}, order.Descriptor());
  EXPECT_EQ(end.fate, DeliveryFate::Canceled);
  EXPECT_EQ(end.attempts, 0);
  ::flock(lock.Get(), LOCK_UN);
  EXPECT_EQ(Run(Folder(), {page}).fate, DeliveryFate::Delivered);
}

// ---- a program

class ProgramDelivery : public DeliveryTest {};

TEST_F(ProgramDelivery, a_program_gets_each_file_as_its_input) {
  const std::string out = Root() + "/out";
  const auto device = Device(DeviceKind::Program, Script("cat >> \"$1\"") + " \"" + out + '"');
  const DeliveryEnd end = Run(device, {Write("1", "one"), Write("2", "two")});
  EXPECT_EQ(end.fate, DeliveryFate::Delivered);
  EXPECT_EQ(end.sentBytes, 6);
  EXPECT_EQ(Content(out), "onetwo");
  EXPECT_EQ(watch.totals, std::vector<std::int64_t>{6});
}

TEST_F(ProgramDelivery, one_that_read_nothing_and_failed_is_tried_again) {
  const std::string mark = Root() + "/mark";
  auto device = Device(DeviceKind::Program,
                       Script("test -e \"$1\" || { touch \"$1\"; echo no paper >&2; exit 3; }\n"
                              "cat > /dev/null") +
                           " " + mark);
  device.retries = 1;
  const DeliveryEnd end = Run(device, {Write("1", "one")});
  EXPECT_EQ(end.fate, DeliveryFate::Delivered);
  EXPECT_EQ(end.attempts, 2);
  EXPECT_NE(watch.lines.at(0).find("status 3: no paper"), std::string::npos) << watch.lines.at(0);
}

TEST_F(ProgramDelivery, one_that_died_with_bytes_taken_is_uncertain_and_not_run_again) {
  auto device = Device(DeviceKind::Program, Script("head -c 5 > /dev/null; kill -9 $$"));
  device.retries = 5;
  const DeliveryEnd end = Run(device, {Write("1", std::string(300000, 'a'))});
  EXPECT_EQ(end.fate, DeliveryFate::Uncertain);
  EXPECT_EQ(end.attempts, 1);
  EXPECT_GE(end.sentBytes, 5);
  EXPECT_NE(end.message.find("signal 9"), std::string::npos) << end.message;
}

TEST_F(ProgramDelivery, settings_may_allow_it_again_after_a_cut_off) {
  auto device = Device(DeviceKind::Program, Script("cat > /dev/null; exit 1"));
  device.retries = 1;
  device.againAfterCutOff = true;
  const DeliveryEnd end = Run(device, {Write("1", "one")});
  EXPECT_EQ(end.fate, DeliveryFate::Uncertain);
  EXPECT_EQ(end.attempts, 2);
}

TEST_F(ProgramDelivery, one_that_hangs_is_ended_at_its_time_limit) {
  auto device = Device(DeviceKind::Program, Script("cat > /dev/null; exec sleep 1000"));
  device.timeoutSeconds = 1;
  const DeliveryEnd end = Run(device, {Write("1", "one")});
  EXPECT_EQ(end.fate, DeliveryFate::Uncertain);
  EXPECT_NE(end.message.find("was ended after 1 seconds"), std::string::npos) << end.message;
}

TEST_F(ProgramDelivery, one_that_floods_its_output_is_read_and_cut_to_a_line) {
  const auto device =
      Device(DeviceKind::Program, Script("head -c 3000000 /dev/zero | tr '\\0' 'x'; exit 1"));
  const DeliveryEnd end = Run(device, {Write("1", "one")});
  EXPECT_EQ(end.fate, DeliveryFate::Failed);
  EXPECT_LT(end.message.size(), 1000u);
}

TEST_F(ProgramDelivery, a_canceled_one_is_killed) {
  CancelOrder order;
  watch.atSent = [&] { order.Give(); };
  const auto device = Device(DeviceKind::Program, Script("cat > /dev/null; exec sleep 1000"));
  const DeliveryEnd end = Run(device, {Write("1", "one")}, order.Descriptor());
  EXPECT_EQ(end.fate, DeliveryFate::Uncertain);
  EXPECT_EQ(end.sentBytes, 3);
}

TEST_F(ProgramDelivery, a_refused_start_of_the_sending_runs_nothing) {
  watch.isRefused = true;
  const std::string mark = Root() + "/mark";
  const auto device = Device(DeviceKind::Program, Script("touch \"$1\"") + " \"" + mark + '"');
  const DeliveryEnd end = Run(device, {Write("1", "one")});
  EXPECT_EQ(end.fate, DeliveryFate::Canceled);
  EXPECT_EQ(end.message, "job 7 was canceled");
  EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST_F(ProgramDelivery, a_missing_program_fails_with_its_name) {
  const auto device = Device(DeviceKind::Program, '"' + Root() + "/none\"");
  const DeliveryEnd end = Run(device, {Write("1", "one")});
  EXPECT_EQ(end.fate, DeliveryFate::Failed);
  EXPECT_NE(end.message.find(Root() + "/none"), std::string::npos) << end.message;
}

// ---- a socket

/// A device with a port that does one thing with each of its connections.
class Port {
 public:
  explicit Port(std::function<void(int)> act, int connections = 1) {
    m_Listening.Reset(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::bind(m_Listening.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(m_Listening.Get(), 4), 0);
    socklen_t size = sizeof address;
    ::getsockname(m_Listening.Get(), reinterpret_cast<sockaddr*>(&address), &size);
    m_Address = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    m_Thread = std::thread([this, act, connections] {
      for (int i = 0; i < connections; ++i) {
        const FileDescriptor connection(::accept(m_Listening.Get(), nullptr, nullptr));
        if (!connection.IsOpen()) return;
        ++accepted;
        act(connection.Get());
      }
    });
  }
  ~Port() {
    ::shutdown(m_Listening.Get(), SHUT_RDWR);
    m_Thread.join();
  }
  const std::string& Address() const { return m_Address; }
  std::atomic<int> accepted{0};

 private:
  FileDescriptor m_Listening;
  std::string m_Address;
  std::thread m_Thread;
};

std::string ReadUpTo(int socket, std::size_t limit = ~std::size_t{0}) {
  std::string all;
  char block[4096];
  while (all.size() < limit) {
    const ssize_t count = ::read(socket, block, std::min(sizeof block, limit - all.size()));
    if (count <= 0) break;
    all.append(block, static_cast<std::size_t>(count));
  }
  return all;
}

void Reset(int socket) {
  const linger none{1, 0};
  ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
}

class SocketDelivery : public DeliveryTest {};

TEST_F(SocketDelivery, all_files_go_through_one_connection_in_order) {
  std::string got;
  DeliveryEnd end;
  {
    Port port([&](int socket) { got = ReadUpTo(socket); });
    end = Run(Device(DeviceKind::Socket, port.Address()),
              {Write("1", "one"), Write("0", ""), Write("2", std::string(300000, 'b'))});
  }
  EXPECT_EQ(end.fate, DeliveryFate::Delivered) << end.message;
  EXPECT_EQ(end.sentBytes, 300003);
  EXPECT_EQ(got, "one" + std::string(300000, 'b'));
  EXPECT_EQ(watch.sent.back(), 300003);
  EXPECT_TRUE(std::ranges::is_sorted(watch.sent));
}

TEST_F(SocketDelivery, no_time_limit_is_not_one_of_no_time) {
  std::string got;
  DeliveryEnd end;
  {
    Port port([&](int socket) { got = ReadUpTo(socket); });
    auto device = Device(DeviceKind::Socket, port.Address());
    device.timeoutSeconds = 0;
    end = Run(device, {Write("1", "one")});
  }
  EXPECT_EQ(end.fate, DeliveryFate::Delivered) << end.message;
  EXPECT_EQ(got, "one");
}

TEST_F(SocketDelivery, a_slow_device_gets_all) {
  std::string got;
  DeliveryEnd end;
  {
    Port port([&](int socket) {
      for (int i = 0; i < 20; ++i) {
        got += ReadUpTo(socket, 50);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
      }
    });
    end = Run(Device(DeviceKind::Socket, port.Address()), {Write("1", std::string(1000, 'c'))});
  }
  EXPECT_EQ(end.fate, DeliveryFate::Delivered) << end.message;
  EXPECT_EQ(got, std::string(1000, 'c'));
}

TEST_F(SocketDelivery, a_connection_closed_half_way_is_uncertain_and_not_begun_again) {
  Port port([](int socket) { ReadUpTo(socket, 100000); }, 3);
  auto device = Device(DeviceKind::Socket, port.Address());
  device.retries = 5;
  const DeliveryEnd end = Run(device, {Write("1", std::string(30 << 20, 'd'))});
  EXPECT_EQ(end.fate, DeliveryFate::Uncertain);
  EXPECT_EQ(end.attempts, 1);
  EXPECT_EQ(port.accepted, 1);
  EXPECT_GE(end.sentBytes, 100000);
  EXPECT_LT(end.sentBytes, 30 << 20);
}

TEST_F(SocketDelivery, a_device_that_throws_the_last_bytes_away_is_uncertain) {
  Port port([](int socket) {
    ReadUpTo(socket, 10);
    Reset(socket);
  });
  const DeliveryEnd end =
      Run(Device(DeviceKind::Socket, port.Address()), {Write("1", std::string(1000, 'e'))});
  EXPECT_EQ(end.fate, DeliveryFate::Uncertain) << end.message;
}

TEST_F(SocketDelivery, a_device_that_never_reads_ends_at_the_time_limit) {
  CancelOrder done;
  Port port([&](int) {
    char byte;
    static_cast<void>(!::read(done.Descriptor(), &byte, 1));
  });
  auto device = Device(DeviceKind::Socket, port.Address());
  device.timeoutSeconds = 1;
  const DeliveryEnd end = Run(device, {Write("1", std::string(30 << 20, 'f'))});
  done.Give();
  EXPECT_EQ(end.fate, DeliveryFate::Uncertain);
  EXPECT_NE(end.message.find("it took nothing for 1 seconds"), std::string::npos) << end.message;
}

TEST_F(SocketDelivery, bytes_that_only_lie_in_a_buffer_are_not_delivered) {
  CancelOrder done;
  Port port(
      [&](int) {
        char byte;
        static_cast<void>(!::read(done.Descriptor(), &byte, 1));
      },
      2);
  auto device = Device(DeviceKind::Socket, port.Address());
  device.timeoutSeconds = 1;
  const DeliveryEnd strict = Run(device, {Write("1", "small")});
  done.Give();
  EXPECT_EQ(strict.fate, DeliveryFate::Uncertain);
  EXPECT_EQ(strict.sentBytes, 5);
  EXPECT_NE(strict.message.find("did not close the connection"), std::string::npos);
  device.waitsForClose = false;
  const DeliveryEnd loose = Run(device, {Write("1", "small")});
  done.Give();
  EXPECT_EQ(loose.fate, DeliveryFate::Delivered);
}

TEST_F(SocketDelivery, a_device_that_is_not_there_fails_and_sends_nothing) {
  std::string address;
  {
    const Port gone([](int) {});
    address = gone.Address();
  }
  const DeliveryEnd end = Run(Device(DeviceKind::Socket, address), {Write("1", "one")});
  EXPECT_EQ(end.fate, DeliveryFate::Failed);
  EXPECT_EQ(watch.totals, std::vector<std::int64_t>{});
  EXPECT_NE(end.message.find(address), std::string::npos) << end.message;
}

TEST_F(SocketDelivery, a_cancel_on_the_way_reports_the_bytes_that_went) {
  CancelOrder order;
  CancelOrder done;
  Port port([&](int socket) {
    ReadUpTo(socket, 1000);
    char byte;
    static_cast<void>(!::read(done.Descriptor(), &byte, 1));
  });
  watch.atSent = [&] {
    if (watch.sent.size() == 1) order.Give();
  };
  const DeliveryEnd end = Run(Device(DeviceKind::Socket, port.Address()),
                              {Write("1", std::string(30 << 20, 'g'))}, order.Descriptor());
  done.Give();
  EXPECT_EQ(end.fate, DeliveryFate::Uncertain);
  EXPECT_GT(end.sentBytes, 0);
  EXPECT_EQ(end.message, "canceled on its way");
}

// ---- a queue

TEST_F(DeliveryTest, a_print_system_that_is_not_there_fails_and_sends_nothing) {
  std::string address;
  {
    const Port gone([](int) {});
    address = gone.Address();
  }
  const DeliveryEnd end = Run(Device(DeviceKind::Queue, "sign@" + address), {Write("1", "one")});
  EXPECT_EQ(end.fate, DeliveryFate::Failed);
  EXPECT_NE(end.message.find("the queue 'sign' can't be reached"), std::string::npos)
      << end.message;
  EXPECT_EQ(watch.totals, std::vector<std::int64_t>{});
}

TEST_F(DeliveryTest, a_print_system_that_answers_nonsense_is_no_queue) {
  Port port(
      [](int socket) {
        char block[512];
        static_cast<void>(!::read(socket, block, sizeof block));
        static_cast<void>(!::write(socket, "SSH-2.0-x\r\n\r\n", 13));
      },
      8);
  auto device = Device(DeviceKind::Queue, "sign@" + port.Address());
  device.timeoutSeconds = 1;
  const DeliveryEnd end = Run(device, {Write("1", "one")});
  EXPECT_EQ(end.fate, DeliveryFate::Failed);
  EXPECT_EQ(watch.totals, std::vector<std::int64_t>{});
}

}  // namespace
}  // namespace rastrel::server
