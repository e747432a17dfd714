#include "interpreter/task_place.h"

namespace rastrel::interpreter {

Expected<TaskPlace> TaskPlace::Make(const char* prefix) {
  auto guardian = Guardian::Start(HeldStreams::None);
  if (!guardian) return guardian.Error();
  auto directory = os::PrivateDirectory::Make(
      prefix, [&](const std::string& path) { return guardian->Guard(path); });
  if (!directory) return directory.Error();
  return TaskPlace(std::move(*guardian), std::move(*directory));
}

}  // namespace rastrel::interpreter
