#include "interpreter/growing_sum.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

namespace rastrel::interpreter {
namespace {

constexpr std::size_t BlockBytes = std::size_t{64} << 10;
/// A thread that is woken for less than this costs more than it takes off the writer.
constexpr std::uint64_t WakingBytes = std::uint64_t{1} << 20;

}  // namespace

GrowingSum::GrowingSum(int descriptor)
    : m_Descriptor(descriptor), m_Thread(os::Thread::Start([this] { Follow(); })) {}

GrowingSum::~GrowingSum() { End(false); }

void GrowingSum::Grow(std::uint64_t bytes) {
  const std::lock_guard lock(m_Mutex);
  const bool isWorthIt = bytes / WakingBytes != m_Written / WakingBytes;
  m_Written = bytes;
  if (isWorthIt) m_Changed.notify_one();
}

Expected<std::string> GrowingSum::Finish() {
  End(true);
  if (m_Result) m_Result = AddTo(m_Written);
  if (!m_Result) return m_Result.Error();
  return m_Sum.Finish();
}

void GrowingSum::End(bool isWhole) {
  if (!m_Thread) return;
  {
    const std::lock_guard lock(m_Mutex);
    m_IsEnding = true;
    m_IsDropped = !isWhole;
  }
  m_Changed.notify_one();
  m_Thread->Join();
  m_Thread.reset();
}

void GrowingSum::Follow() {
  std::unique_lock lock(m_Mutex);
  while (m_Result && !m_IsDropped) {
    m_Changed.wait(lock, [this] { return m_IsEnding || m_Written >= m_Added + WakingBytes; });
    const std::uint64_t end = m_Written;
    if (m_IsDropped || (m_IsEnding && end == m_Added)) return;
    lock.unlock();
    auto added = AddTo(end);
    lock.lock();
    m_Result = std::move(added);
  }
}

Expected<void> GrowingSum::AddTo(std::uint64_t end) {
  std::array<std::byte, BlockBytes> block;
  while (m_Added < end) {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), end - m_Added));
    const ssize_t count = ::pread(m_Descriptor, block.data(), wanted, static_cast<off_t>(m_Added));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Failure{"read", {}, errno};
    if (count == 0) return FailureOf("the file became shorter while it was written");
    m_Sum.Add(std::span(block).first(static_cast<std::size_t>(count)));
    m_Added += static_cast<std::uint64_t>(count);
  }
  return {};
}

}  // namespace rastrel::interpreter
