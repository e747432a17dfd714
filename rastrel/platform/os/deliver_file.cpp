#include "rastrel/platform/os/deliver_file.h"

namespace rastrel::os {

Expected<void> DeliverFile(const std::string& source, const std::string& target,
                           const OnHiddenFile& onHidden) {
  auto file = OutputFile::Take(source, target, Existing::Followed, onHidden);
  if (!file) return file.Error();
  return file->Commit();
}

}  // namespace rastrel::os
