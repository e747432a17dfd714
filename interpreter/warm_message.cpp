#include "interpreter/warm_message.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "rastrel/platform/os/hex.h"

namespace rastrel::interpreter {
namespace {

constexpr std::uint32_t Magic = 0x314D5752;  // "RWM1"
constexpr std::uint32_t None = 0xFFFFFFFF;   // a descriptor of -1

class Writer {
 public:
  template <typename Number>
  void Add(Number number) {
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    m_Text.append(bytes, sizeof number);
  }
  void AddText(std::string_view text) {
    Add(static_cast<std::uint32_t>(text.size()));
    m_Text += text;
  }
  void AddTexts(const std::vector<std::string>& texts) {
    Add(static_cast<std::uint32_t>(texts.size()));
    for (const std::string& text : texts) AddText(text);
  }
  // The text with its whole length in the second number.
  [[nodiscard]] std::string Take() {
    const auto length = static_cast<std::uint32_t>(m_Text.size());
    std::memcpy(m_Text.data() + sizeof length, &length, sizeof length);
    return std::move(m_Text);
  }

 private:
  std::string m_Text;
};

// Reads the bytes of a Writer. After the first fault all is empty and HasFailed().
class Reader {
 public:
  explicit Reader(std::string_view text) : m_Rest(text) {}

  [[nodiscard]] bool HasFailed() const { return m_Failed; }
  [[nodiscard]] bool IsAtEnd() const { return m_Rest.empty(); }

  template <typename Number>
  Number Take() {
    Number number{};
    if (m_Rest.size() < sizeof number) {
      Fail();
    } else {
      std::memcpy(&number, m_Rest.data(), sizeof number);
      m_Rest.remove_prefix(sizeof number);
    }
    return number;
  }
  std::string TakeText() {
    const auto length = Take<std::uint32_t>();
    if (length > m_Rest.size()) {
      Fail();
      return {};
    }
    std::string text(m_Rest.substr(0, length));
    m_Rest.remove_prefix(length);
    // Paths and arguments of programs end at a zero byte.
    if (text.find('\0') != text.npos) Fail();
    return text;
  }
  // Of elements that take four bytes at least, so that no more are believed than there can be.
  std::uint32_t TakeCount() {
    const auto count = Take<std::uint32_t>();
    if (count > m_Rest.size() / sizeof count) Fail();
    return m_Failed ? 0 : count;
  }

 private:
  void Fail() {
    m_Failed = true;
    m_Rest = {};
  }

  std::string_view m_Rest;
  bool m_Failed = false;
};

void AddPaths(const std::vector<WallPath>& paths, Writer& writer) {
  writer.Add(static_cast<std::uint32_t>(paths.size()));
  for (const WallPath& path : paths) {
    writer.AddText(path.path);
    writer.Add(static_cast<std::uint32_t>(path.access));
    writer.Add(path.descriptor < 0 ? None : static_cast<std::uint32_t>(path.descriptor));
  }
}

// A number below `end`, or -1.
Expected<int> DescriptorBelow(std::size_t end, Reader& reader) {
  const auto number = reader.Take<std::uint32_t>();
  if (number == None) return -1;
  if (number >= end) return FailureOf("it names a file that is not there");
  return static_cast<int>(number);
}

Expected<void> TakePaths(Reader& reader, WarmJob& job) {
  for (auto count = reader.TakeCount(); count > 0 && !reader.HasFailed(); --count) {
    WallPath path;
    path.path = reader.TakeText();
    const auto access = reader.Take<std::uint32_t>();
    if (access > static_cast<std::uint32_t>(WallAccess::Write)) {
      return FailureOf("it names a right that there is not");
    }
    path.access = static_cast<WallAccess>(access);
    const auto descriptor = DescriptorBelow(job.descriptors.size(), reader);
    if (!descriptor) return descriptor.Error();
    path.descriptor = *descriptor;
    job.paths.push_back(std::move(path));
  }
  return {};
}

Expected<void> TakeDescriptors(std::size_t files, Reader& reader, WarmJob& job) {
  const auto count = reader.TakeCount();
  if (count > MaximumWarmDescriptors) return FailureOf("it has too many descriptors");
  for (std::uint32_t i = 0; i < count && !reader.HasFailed(); ++i) {
    const auto file = DescriptorBelow(files, reader);
    if (!file) return file.Error();
    job.descriptors.push_back(*file);
  }
  return {};
}

// The space for open files beside a message, one more than may come, so that too many are seen.
struct Control {
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int) * (MaximumWarmDescriptors + 1))> bytes{};
};

void TakeFiles(msghdr& head, std::vector<os::FileDescriptor>& files) {
  for (cmsghdr* part = CMSG_FIRSTHDR(&head); part != nullptr; part = CMSG_NXTHDR(&head, part)) {
    if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS) continue;
    const std::size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i) {
      int file = -1;
      std::memcpy(&file, CMSG_DATA(part) + i * sizeof file, sizeof file);
      files.emplace_back(file);
    }
  }
}

std::uint64_t Mixed(std::string_view text, std::uint64_t state) {
  constexpr std::uint64_t prime = 0x100000001B3;
  for (const char byte : text) state = (state ^ static_cast<unsigned char>(byte)) * prime;
  return state;
}

}  // namespace

std::string WarmIdentity(const WarmOptions& options) {
  Writer writer;
  writer.AddText(options.program);
  struct stat state {};
  if (stat(options.program.c_str(), &state) != 0) state = {};
  writer.Add(static_cast<std::uint64_t>(state.st_dev));
  writer.Add(static_cast<std::uint64_t>(state.st_ino));
  writer.Add(static_cast<std::uint64_t>(state.st_size));
  writer.Add(static_cast<std::int64_t>(state.st_mtim.tv_sec));
  writer.Add(static_cast<std::int64_t>(state.st_mtim.tv_nsec));
  writer.AddTexts(options.arguments);
  writer.AddTexts(options.environment);
  return os::HexFromBytes(writer.Take());
}

std::string WarmName(std::string_view identity) {
  std::string bytes;
  for (const std::uint64_t seed : {0xCBF29CE484222325ULL, 0x9E3779B97F4A7C15ULL}) {
    const std::uint64_t sum = Mixed(identity, seed);
    bytes.append(reinterpret_cast<const char*>(&sum), sizeof sum);
  }
  return os::HexFromBytes(bytes);
}

std::string FormatWarmJob(const WarmJob& job) {
  Writer writer;
  writer.Add(Magic);
  writer.Add(std::uint32_t{0});
  writer.AddText(job.identity);
  writer.AddTexts(job.script);
  writer.AddText(job.directory);
  writer.Add(static_cast<std::uint32_t>(job.descriptors.size()));
  for (const int file : job.descriptors) {
    writer.Add(file < 0 ? None : static_cast<std::uint32_t>(file));
  }
  writer.Add(job.fileBytes);
  writer.Add(job.processorSeconds);
  writer.Add(job.memoryBytes);
  AddPaths(job.paths, writer);
  return writer.Take();
}

Expected<WarmJob> ParseWarmJob(std::string_view message, std::size_t files) {
  Reader reader(message);
  if (reader.Take<std::uint32_t>() != Magic) return FailureOf("it is no job");
  if (reader.Take<std::uint32_t>() != message.size()) return FailureOf("it is not whole");
  WarmJob job;
  job.identity = reader.TakeText();
  for (auto count = reader.TakeCount(); count > 0 && !reader.HasFailed(); --count) {
    job.script.push_back(reader.TakeText());
  }
  job.directory = reader.TakeText();
  if (auto taken = TakeDescriptors(files, reader, job); !taken) return taken.Error();
  job.fileBytes = reader.Take<std::uint64_t>();
  job.processorSeconds = reader.Take<std::uint64_t>();
  job.memoryBytes = reader.Take<std::uint64_t>();
  if (auto taken = TakePaths(reader, job); !taken) return taken.Error();
  if (reader.HasFailed()) return FailureOf("it is damaged");
  if (!reader.IsAtEnd()) return FailureOf("there is more than a job in it");
  if (job.directory.empty() || job.descriptors.size() < 3) {
    return FailureOf("it has no directory, or not the three streams");
  }
  return job;
}

Expected<void> SendWarm(int socket, std::string_view message, std::span<const int> files) {
  if (message.size() > MaximumWarmMessage || files.size() > MaximumWarmDescriptors) {
    return Failure{"sendmsg", "a warm interpreter", EMSGSIZE};
  }
  iovec part{const_cast<char*>(message.data()), message.size()};
  msghdr head{};
  head.msg_iov = &part;
  head.msg_iovlen = 1;
  Control control;
  if (!files.empty()) {
    head.msg_control = control.bytes.data();
    head.msg_controllen = CMSG_SPACE(files.size_bytes());
    cmsghdr* const first = CMSG_FIRSTHDR(&head);
    first->cmsg_level = SOL_SOCKET;
    first->cmsg_type = SCM_RIGHTS;
    first->cmsg_len = CMSG_LEN(files.size_bytes());
    std::memcpy(CMSG_DATA(first), files.data(), files.size_bytes());
  }
  ssize_t sent = 0;
  do {
    sent = sendmsg(socket, &head, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  if (sent >= 0) return {};
  return Failure{"sendmsg", "a warm interpreter", errno};
}

Expected<void> SendWarm(int socket, WarmReply reply, std::span<const int> files) {
  return SendWarm(socket, {reinterpret_cast<const char*>(&reply), sizeof reply}, files);
}

Expected<WarmReceived> ReceiveWarm(int socket) {
  WarmReceived received;
  received.bytes.resize(MaximumWarmMessage);
  iovec part{received.bytes.data(), received.bytes.size()};
  Control control;
  msghdr head{};
  head.msg_iov = &part;
  head.msg_iovlen = 1;
  head.msg_control = control.bytes.data();
  head.msg_controllen = control.bytes.size();
  ssize_t count = 0;
  do {
    count = recvmsg(socket, &head, MSG_CMSG_CLOEXEC);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return Failure{"recvmsg", "a warm interpreter", errno};
  received.bytes.resize(static_cast<std::size_t>(count));
  TakeFiles(head, received.files);
  received.isCut = (head.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0 ||
                   received.files.size() > MaximumWarmDescriptors;
  return received;
}

Expected<WarmReply> WarmReplyOf(const WarmReceived& received) {
  WarmReply reply;
  if (received.isCut || received.bytes.size() != sizeof reply) {
    return FailureOf("a warm interpreter's reply can't be read");
  }
  std::memcpy(&reply, received.bytes.data(), sizeof reply);
  return reply;
}

bool IsOwnPeer(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
         MayTalk(geteuid(), peer.uid);
}

}  // namespace rastrel::interpreter
