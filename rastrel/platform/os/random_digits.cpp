#include "rastrel/platform/os/random_digits.h"

#include <cerrno>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::os {

Expected<std::string> RandomDigits(std::size_t bytes) {
  std::string random(bytes, '\0');
  std::size_t filled = 0;
  while (filled < bytes) {
    const ssize_t count = Calls().random(random.data() + filled, bytes - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return Failure{"getrandom", {}, errno};
    filled += static_cast<std::size_t>(count);
  }
  return HexFromBytes(random);
}

}  // namespace rastrel::os
