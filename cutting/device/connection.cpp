#include "cutting/device/connection.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <utility>

#include "rastrel/platform/os/deadline.h"

namespace rastrel::cutting {
namespace {

std::string NameOfHost(const DeviceReach& reach) {
  return reach.host + ":" + std::to_string(reach.port);
}

speed_t SpeedOf(int baud) {
  static constexpr std::array<std::pair<int, speed_t>, 14> Speeds{{{1200, B1200},
                                                                   {2400, B2400},
                                                                   {4800, B4800},
                                                                   {9600, B9600},
                                                                   {19200, B19200},
                                                                   {38400, B38400},
                                                                   {57600, B57600},
                                                                   {115200, B115200},
                                                                   {230400, B230400},
                                                                   {460800, B460800},
                                                                   {500000, B500000},
                                                                   {576000, B576000},
                                                                   {921600, B921600},
                                                                   {1000000, B1000000}}};
  for (const auto& [number, speed] : Speeds) {
    if (number == baud) return speed;
  }
  return B0;
}

/// Each byte as it is, without an echo, and with the flow that the device asks for.
termios SettingsOf(const DeviceReach& reach, termios settings) {
  ::cfmakeraw(&settings);
  settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB | PARODD | CRTSCTS);
  settings.c_cflag |= CREAD | CLOCAL | (reach.dataBits == 7 ? CS7 : CS8);
  if (reach.stopBits == 2) settings.c_cflag |= CSTOPB;
  if (reach.parity != Parity::None) settings.c_cflag |= PARENB;
  if (reach.parity == Parity::Odd) settings.c_cflag |= PARODD;
  if (reach.flow == FlowControl::Hardware) settings.c_cflag |= CRTSCTS;
  settings.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY);
  if (reach.flow == FlowControl::Software) settings.c_iflag |= IXON | IXOFF;
  settings.c_cc[VSTART] = 17;
  settings.c_cc[VSTOP] = 19;
  ::cfsetispeed(&settings, SpeedOf(reach.baud));
  ::cfsetospeed(&settings, SpeedOf(reach.baud));
  return settings;
}

/// Waits until the connection is made, refused or cancelled. ETIMEDOUT after the deadline.
Expected<bool> WaitForConnection(int descriptor, os::Deadline deadline, const SendControl& control,
                                 const std::string& where) {
  for (;;) {
    if (control.order && control.order() == SendOrder::Cancel) return false;
    std::vector<pollfd> entries{{descriptor, POLLOUT, 0}};
    for (const int watched : control.descriptors) entries.push_back({watched, POLLIN, 0});
    const os::Deadline second = os::Deadline::After(std::chrono::seconds(1));
    const int rest = deadline.PollTimeout();
    const int wait = std::min(rest, second.PollTimeout());
    if (::poll(entries.data(), entries.size(), wait) < 0 && errno != EINTR) {
      return Failure{"poll", where, errno};
    }
    if (entries[0].revents != 0) break;
    if (deadline.HasPassed()) return Failure{"connect", where, ETIMEDOUT};
  }
  int error = 0;
  socklen_t size = sizeof error;
  if (::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) != 0) error = errno;
  if (error != 0) return Failure{"connect", where, error};
  return true;
}

}  // namespace

Expected<Connection> ConnectTo(const DeviceReach& reach, const SendControl& control) {
  const std::string where = NameOfHost(reach);
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICSERV;
  addrinfo* found = nullptr;
  const int error =
      ::getaddrinfo(reach.host.c_str(), std::to_string(reach.port).c_str(), &hints, &found);
  if (error != 0) {
    Failure failure{"find", where, 0};
    failure.why = ::gai_strerror(error);
    return failure;
  }
  const std::unique_ptr<addrinfo, void (*)(addrinfo*)> addresses(found, ::freeaddrinfo);
  const os::Deadline deadline = os::Deadline::After(std::chrono::seconds(reach.timeoutSeconds));
  Failure last{"connect", where, ECONNREFUSED};
  for (const addrinfo* address = found; address; address = address->ai_next) {
    Connection made{os::FileDescriptor(::socket(
        address->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, address->ai_protocol))};
    if (!made.descriptor.IsOpen()) {
      last = Failure{"socket", where, errno};
      continue;
    }
    if (::connect(made.descriptor.Get(), address->ai_addr, address->ai_addrlen) != 0 &&
        errno != EINPROGRESS && errno != EINTR) {
      last = Failure{"connect", where, errno};
      continue;
    }
    const auto connected = WaitForConnection(made.descriptor.Get(), deadline, control, where);
    if (connected) {
      made.isCancelled = !*connected;
      return made;
    }
    last = connected.Error();
    if (last.error == ETIMEDOUT) break;
  }
  return last;
}

Expected<Connection> OpenSerial(const DeviceReach& reach) {
  Connection made{
      os::FileDescriptor(::open(reach.path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))};
  if (!made.descriptor.IsOpen()) return Failure{"open", reach.path, errno};
  termios settings{};
  if (::tcgetattr(made.descriptor.Get(), &settings) != 0) {
    Failure failure{"open", reach.path, errno};
    if (failure.error == ENOTTY) failure = FailureOf("'" + reach.path + "' is no serial port");
    return failure;
  }
  const termios wanted = SettingsOf(reach, settings);
  if (::tcsetattr(made.descriptor.Get(), TCSANOW, &wanted) != 0) {
    return Failure{"set the line of", reach.path, errno};
  }
  return made;
}

Expected<Connection> OpenNode(const std::string& path) {
  Connection made{
      os::FileDescriptor(::open(path.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))};
  if (!made.descriptor.IsOpen()) return Failure{"open", path, errno};
  return made;
}

}  // namespace rastrel::cutting
