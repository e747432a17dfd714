#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/scratch_directory.h"

namespace rastrel::bench {

/// A directory of the benchmark's own that is the data root of this process and of its children, so
/// that nobody's settings count. Removed at the end.
class DataRoot : public test::ScratchDirectory {
 public:
  DataRoot() { ::setenv("RASTREL_HOME", Path().c_str(), 1); }

  /// Makes a file and returns its path.
  [[nodiscard]] std::string File(const std::string& name, const std::string& content) const {
    Write(name, content);
    return Path(name);
  }

  /// Puts a child program of this build tree in, `name` its place below the queue's directory, and
  /// the RIP's files, without which none works. Returns the program's path.
  [[nodiscard]] std::string InstallChild(const std::filesystem::path& name) const {
    namespace fs = std::filesystem;
    const fs::path queue = Path("Queue");
    fs::create_directories(queue);
    fs::copy(RASTREL_SOURCE_DIR "/share/rip", queue / "rip", fs::copy_options::recursive);
    fs::copy_file(fs::path(RASTREL_BINARY_DIR "/libexec/rastrel") / name.filename(), queue / name);
    return queue / name;
  }
};

}  // namespace rastrel::bench
