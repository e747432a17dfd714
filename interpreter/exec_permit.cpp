#include "interpreter/exec_permit.h"

#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <vector>

namespace rastrel::interpreter {
namespace {

// A message's data is an error number, 0 beside a listener. A descriptor travels beside it.
struct Message {
  int error = 0;
  iovec part{&error, sizeof error};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  msghdr head{};

  Message() noexcept {
    head.msg_iov = &part;
    head.msg_iovlen = 1;
    head.msg_control = control;
    head.msg_controllen = sizeof control;
  }
};

// A kernel may be younger than the headers, and its records longer.
template <typename Record>
std::vector<std::byte> RoomFor(std::size_t kernelSize) {
  return std::vector<std::byte>(std::max(kernelSize, sizeof(Record)));
}

}  // namespace

bool SendListener(int socket, int listener) noexcept {
  Message message;
  cmsghdr* const first = CMSG_FIRSTHDR(&message.head);
  first->cmsg_level = SOL_SOCKET;
  first->cmsg_type = SCM_RIGHTS;
  first->cmsg_len = CMSG_LEN(sizeof listener);
  std::memcpy(CMSG_DATA(first), &listener, sizeof listener);
  return sendmsg(socket, &message.head, MSG_NOSIGNAL) == static_cast<ssize_t>(sizeof message.error);
}

StartMessage ReceiveStart(int socket) {
  Message message;
  ssize_t count = 0;
  do {
    count = recvmsg(socket, &message.head, MSG_CMSG_CLOEXEC);
  } while (count < 0 && errno == EINTR);
  StartMessage received;
  if (count < 0) received.error = errno;
  if (count <= 0) return received;
  received.error = message.error;
  const cmsghdr* const first = CMSG_FIRSTHDR(&message.head);
  if (first != nullptr && first->cmsg_type == SCM_RIGHTS) {
    int listener = -1;
    std::memcpy(&listener, CMSG_DATA(first), sizeof listener);
    received.listener.Reset(listener);
  } else if (received.error == 0) {
    // A listener was sent, and this process had no number left for it.
    received.error = EMFILE;
  }
  return received;
}

int PermitExec(const os::FileDescriptor& listener, int socket) {
  pollfd entries[] = {{listener.Get(), POLLIN, 0}, {socket, POLLIN, 0}};
  while (poll(entries, 2, -1) < 0) {
    if (errno != EINTR) return errno;
  }
  if ((entries[0].revents & POLLIN) == 0) return 0;
  seccomp_notif_sizes sizes{};
  if (syscall(SYS_seccomp, SECCOMP_GET_NOTIF_SIZES, 0, &sizes) != 0) return errno;
  auto request = RoomFor<seccomp_notif>(sizes.seccomp_notif);
  // ENOENT: the process was killed meanwhile.
  while (ioctl(listener.Get(), SECCOMP_IOCTL_NOTIF_RECV, request.data()) != 0) {
    if (errno != EINTR) return errno == ENOENT ? 0 : errno;
  }
  auto answer = RoomFor<seccomp_notif_resp>(sizes.seccomp_notif_resp);
  seccomp_notif_resp permit{};
  std::memcpy(&permit.id, request.data() + offsetof(seccomp_notif, id), sizeof permit.id);
  permit.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
  std::memcpy(answer.data(), &permit, sizeof permit);
  if (ioctl(listener.Get(), SECCOMP_IOCTL_NOTIF_SEND, answer.data()) == 0) return 0;
  return errno == ENOENT ? 0 : errno;
}

}  // namespace rastrel::interpreter
