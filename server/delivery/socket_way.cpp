#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <string_view>

#include "cutting/device/connection.h"
#include "cutting/device/sender.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "server/delivery/way.h"

namespace rastrel::server {
namespace {

/// A file's bytes without a copy of them in memory.
class MappedFile {
 public:
  explicit MappedFile(const std::string& path) {
    const os::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    struct stat state {};
    if (!file.IsOpen() || ::fstat(file.Get(), &state) != 0) {
      m_Error = errno;
      return;
    }
    m_Size = static_cast<std::size_t>(state.st_size);
    if (m_Size == 0) return;
    m_Bytes = ::mmap(nullptr, m_Size, PROT_READ, MAP_PRIVATE, file.Get(), 0);
    if (m_Bytes == MAP_FAILED) m_Error = errno;
  }
  ~MappedFile() {
    if (m_Bytes != MAP_FAILED && m_Bytes != nullptr) ::munmap(m_Bytes, m_Size);
  }
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  [[nodiscard]] int Error() const { return m_Error; }
  [[nodiscard]] std::string_view Bytes() const {
    return {m_Size == 0 ? "" : static_cast<const char*>(m_Bytes), m_Size};
  }

 private:
  void* m_Bytes = nullptr;
  std::size_t m_Size = 0;
  int m_Error = 0;
};

/// Ends our half and waits until the device ends its own. Bytes that were acknowledged may still
/// lie in a buffer of the device: a reset means that they were thrown away.
WayEnd WaitForClose(int socket, const WayRequest& request) {
  WayEnd end{.fate = DeliveryFate::Uncertain, .sentBytes = request.totalBytes};
  ::shutdown(socket, SHUT_WR);
  const int seconds = request.device.timeoutSeconds;
  const os::Deadline deadline = os::Deadline::After(std::chrono::seconds(seconds));
  std::array<char, 4096> answer;
  for (;;) {
    if (IsReadable(request.cancel)) {
      end.message = "canceled while the device took the last bytes";
      return end;
    }
    if (deadline.HasPassed()) {
      end.message = "the device took all bytes and did not close the connection within " +
                    std::to_string(seconds) + " seconds";
      return end;
    }
    std::array<pollfd, 2> entries{{{socket, POLLIN, 0}, {request.cancel, POLLIN, 0}}};
    static_cast<void>(::poll(entries.data(), entries.size(), deadline.PollTimeout()));
    if (entries[0].revents == 0) continue;
    const ssize_t count = ::recv(socket, answer.data(), answer.size(), MSG_DONTWAIT);
    if (count == 0) break;
    if (count > 0 || errno == EAGAIN || errno == EINTR) continue;
    end.message =
        "the device closed the connection before it had read all: " + DescribeError(errno);
    return end;
  }
  end.fate = DeliveryFate::Delivered;
  return end;
}

WayEnd SendFiles(int socket, const cutting::DeviceReach& reach, cutting::SendControl& control,
                 const WayRequest& request) {
  WayEnd end{.fate = DeliveryFate::Uncertain};
  std::int64_t before = 0;
  control.onProgress = [&](const cutting::SendProgress& progress) {
    end.sentBytes = before + static_cast<std::int64_t>(progress.taken);
    request.progress.OnSent(end.sentBytes);
  };
  const std::string where = reach.host + ":" + std::to_string(reach.port);
  for (const std::string& path : request.delivery.files) {
    const MappedFile file(path);
    if (file.Error() != 0) {
      end.message = Describe(Failure{"open", path, file.Error()});
      return end;
    }
    const auto sent = cutting::SendThrough(socket, where, file.Bytes(), reach, 0, control);
    if (!sent || sent->isCancelled) {
      end.message = sent ? "canceled on its way" : Describe(sent.Error());
      return end;
    }
    before += static_cast<std::int64_t>(file.Bytes().size());
  }
  end.fate = DeliveryFate::Delivered;
  end.sentBytes = before;
  return end;
}

}  // namespace

WayEnd DeliverToSocket(const WayRequest& request) {
  cutting::DeviceReach reach;
  reach.by = cutting::Reach::Tcp;
  reach.host = request.device.host;
  reach.port = request.device.port;
  reach.timeoutSeconds = request.device.timeoutSeconds;
  cutting::SendControl control;
  if (request.cancel >= 0) control.descriptors.push_back(request.cancel);
  control.order = [&] {
    return IsReadable(request.cancel) ? cutting::SendOrder::Cancel : cutting::SendOrder::Go;
  };
  const auto connection = cutting::ConnectTo(reach, control);
  if (!connection) return {.message = Describe(connection.Error())};
  if (connection->isCancelled) return CanceledEnd();
  if (auto sending = request.progress.OnSending(request.totalBytes); !sending) {
    return CanceledEnd(Describe(sending.Error()));
  }
  const int socket = connection->descriptor.Get();
  WayEnd end = SendFiles(socket, reach, control, request);
  if (end.fate != DeliveryFate::Delivered || !request.device.waitsForClose) return end;
  return WaitForClose(socket, request);
}

}  // namespace rastrel::server
