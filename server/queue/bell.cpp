#include "server/queue/bell.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace rastrel::server {

Expected<Bell> Bell::Open(const std::string& path) {
  os::FileDescriptor file(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, 0600));
  if (!file.IsOpen()) return Failure{"open", path, errno};
  return Bell(path, std::move(file));
}

void Bell::Ring() {
  // A full disk keeps a bell from ringing only at its first time. The server looks now and then by
  // itself.
  [[maybe_unused]] const ssize_t rung = ::pwrite(m_File.Get(), "!", 1, 0);
}

int Bell::Descriptor() {
  const std::lock_guard lock(m_Mutex);
  if (m_Watch.IsOpen()) return m_Watch.Get();
  os::FileDescriptor watch(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  if (!watch.IsOpen() || ::inotify_add_watch(watch.Get(), m_Path.c_str(), IN_MODIFY) < 0) return -1;
  m_Watch = std::move(watch);
  return m_Watch.Get();
}

void Bell::Rest() {
  const std::lock_guard lock(m_Mutex);
  if (!m_Watch.IsOpen()) return;
  std::array<char, 4096> events{};
  while (::read(m_Watch.Get(), events.data(), events.size()) > 0) {
  }
}

}  // namespace rastrel::server
