#include "interpreter/job_feed.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace rastrel::interpreter {
namespace {

constexpr std::size_t BufferSize = 65536;

}  // namespace

JobFeed::JobFeed(int file, std::uint64_t offset, std::uint64_t length, os::FileDescriptor pipe)
    : JobFeed(file, {{offset, length}}, std::move(pipe)) {}

JobFeed::JobFeed(int file, std::vector<FilePart> parts, os::FileDescriptor pipe)
    : m_File(file), m_Parts(std::move(parts)), m_Length(0), m_Pipe(std::move(pipe)) {
  for (const FilePart& part : m_Parts) m_Length += part.length;
}

Expected<void> JobFeed::Refill() {
  while (m_Parts[m_Part].length == 0) ++m_Part;
  FilePart& part = m_Parts[m_Part];
  m_Buffer.resize(static_cast<std::size_t>(std::min<std::uint64_t>(BufferSize, part.length)));
  ssize_t count = 0;
  do {
    count = pread(m_File, m_Buffer.data(), m_Buffer.size(), static_cast<off_t>(part.offset));
  } while (count < 0 && errno == EINTR);
  if (count < 0) {
    return FailureOf("The job can't be read: " + DescribeError(errno), FailureCode::BadInput);
  }
  if (count == 0) m_Length = m_Read;  // the file has become shorter
  m_Buffer.resize(static_cast<std::size_t>(count));
  part.offset += static_cast<std::uint64_t>(count);
  part.length -= static_cast<std::uint64_t>(count);
  m_Read += static_cast<std::uint64_t>(count);
  m_Sent = 0;
  return {};
}

Expected<void> JobFeed::Send() {
  while (m_Pipe.IsOpen()) {
    if (m_Sent == m_Buffer.size()) {
      if (m_Read < m_Length) {
        if (auto refilled = Refill(); !refilled) return refilled;
      }
      if (m_Sent == m_Buffer.size()) {
        m_Pipe.Reset();
        break;
      }
    }
    const ssize_t count = write(m_Pipe.Get(), m_Buffer.data() + m_Sent, m_Buffer.size() - m_Sent);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) break;
    if (count < 0 && errno == EPIPE) {
      m_Pipe.Reset();  // the job said quit, or has failed; its exit status says which
      break;
    }
    // The interpreter would take the part that it has for the whole job.
    if (count < 0) {
      return FailureOf("The job can't be handed to the interpreter: " + DescribeError(errno));
    }
    m_Sent += static_cast<std::size_t>(count);
  }
  return {};
}

double JobFeed::SentShare() const {
  if (m_Length == 0) return 0;
  const std::uint64_t waiting = m_Buffer.size() - m_Sent;
  return static_cast<double>(m_Read - waiting) / static_cast<double>(m_Length);
}

}  // namespace rastrel::interpreter
