#include "interpreter/file_rules.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "interpreter/wall.h"

namespace rastrel::interpreter {
namespace {

// Rights and fields of versions that are younger than the headers.
constexpr std::uint64_t Truncate = std::uint64_t{1} << 14;       // version 3
constexpr std::uint64_t DeviceControl = std::uint64_t{1} << 15;  // version 5

// Of each version, how many of the rights on files it knows, counted from the lowest bit.
constexpr std::uint64_t RightsOf(int version) {
  const int count = version >= 5 ? 16 : version >= 3 ? 15 : version >= 2 ? 14 : 13;
  return (std::uint64_t{1} << count) - 1;
}

// As the kernel reads it; older versions have the first field, or the first two.
struct Attributes {
  std::uint64_t files;
  std::uint64_t network;  // version 4: to bind and to connect TCP
  std::uint64_t scopes;   // version 6: sockets without a path, and signals
};

constexpr std::size_t SizeOf(int version) {
  return sizeof(std::uint64_t) * (version >= 6 ? 3 : version >= 4 ? 2 : 1);
}

constexpr std::uint64_t ReadRights = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t ExecuteRights = ReadRights | LANDLOCK_ACCESS_FS_EXECUTE;
constexpr std::uint64_t WriteRights = ReadRights | LANDLOCK_ACCESS_FS_WRITE_FILE | Truncate |
                                      LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REMOVE_FILE;
// Those that a rule on a file may have; the others are about a directory's entries.
constexpr std::uint64_t RightsOnFiles = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_EXECUTE |
                                        LANDLOCK_ACCESS_FS_WRITE_FILE | Truncate | DeviceControl;

std::uint64_t RightsFor(WallAccess access) {
  switch (access) {
    case WallAccess::Read: return ReadRights;
    case WallAccess::Execute: return ExecuteRights;
    case WallAccess::Write: return WriteRights;
  }
  return 0;
}

// False if there is no memory for it, or the place can't be looked at: an interpreter that it was
// closed to would take it for one that is not there. A place that no rule can name, such as a pipe,
// needs none, and one that the kernel refuses to name stays closed.
bool AddRule(int rules, int place, std::uint64_t rights) {
  struct stat state {};
  if (fstat(place, &state) != 0) return false;
  if (!S_ISDIR(state.st_mode)) rights &= RightsOnFiles;
  const landlock_path_beneath_attr rule{rights, place};
  return syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0 ||
         errno != ENOMEM;
}

Expected<void> AddPath(int rules, const WallPath& path, std::uint64_t known) {
  const std::uint64_t rights = RightsFor(path.access) & known;
  if (path.descriptor >= 0) {
    if (AddRule(rules, path.descriptor, rights)) return {};
    return Failure{"landlock_add_rule", "descriptor " + std::to_string(path.descriptor), errno};
  }
  const os::FileDescriptor place(open(path.path.c_str(), O_PATH | O_CLOEXEC));
  if (!place.IsOpen()) {
    // Whatever can't be reached from here can't be reached from within either.
    if (errno != EMFILE && errno != ENFILE && errno != ENOMEM) return {};
    return Failure{"open", path.path, errno};
  }
  if (AddRule(rules, place.Get(), rights)) return {};
  return Failure{"landlock_add_rule", path.path, errno};
}

}  // namespace

int FileRulesVersion() {
  const long version =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  return static_cast<int>(std::max(version, 0L));
}

Expected<os::FileDescriptor> MakeFileRules(const std::vector<WallPath>& paths) {
  const int version = FileRulesVersion();
  if (version == 0) return os::FileDescriptor();
  const std::uint64_t known = RightsOf(version);
  const Attributes attributes{known, 3, 3};
  os::FileDescriptor rules(
      static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, SizeOf(version), 0)));
  if (!rules.IsOpen()) return Failure{"landlock_create_ruleset", {}, errno};
  for (const WallPath& path : paths) {
    if (const auto added = AddPath(rules.Get(), path, known); !added) return added.Error();
  }
  return rules;
}

void EnterFileRules(int rules) noexcept {
  if (rules >= 0) syscall(SYS_landlock_restrict_self, rules, 0);
}

}  // namespace rastrel::interpreter
