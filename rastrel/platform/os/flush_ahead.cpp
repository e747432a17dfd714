#include "rastrel/platform/os/flush_ahead.h"

#include <fcntl.h>

namespace rastrel::os {

void FlushAhead::Begin(int descriptor, std::uint64_t end) {
  end -= end % Part;
  if (end <= m_Begun) return;
  static_cast<void>(::sync_file_range(descriptor, static_cast<off_t>(m_Begun),
                                      static_cast<off_t>(end - m_Begun), SYNC_FILE_RANGE_WRITE));
  m_Begun = end;
}

}  // namespace rastrel::os
