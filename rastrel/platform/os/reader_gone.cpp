#include "rastrel/platform/os/reader_gone.h"

#include <poll.h>

namespace rastrel::os {

bool ReaderIsGone(HANDLE writeEnd) {
  pollfd entry{writeEnd, 0, 0};
  return ::poll(&entry, 1, 0) == 1 && (entry.revents & (POLLERR | POLLHUP)) != 0;
}

}  // namespace rastrel::os
