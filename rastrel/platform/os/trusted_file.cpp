#include "rastrel/platform/os/trusted_file.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <vector>

namespace rastrel::os {
namespace {

// Of one entry of the user database; a larger one counts as none.
constexpr std::size_t EntryBytes = std::size_t{64} << 10;

std::optional<std::string> NameOfUser(uid_t user) {
  std::vector<char> space(EntryBytes);
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(user, &entry, space.data(), space.size(), &found) != 0 || found == nullptr)
    return {};
  return found->pw_name;
}

// A group of the user's name that has nobody else in it.
bool IsOwnGroup(gid_t group) {
  const auto user = NameOfUser(::geteuid());
  std::vector<char> space(EntryBytes);
  ::group entry{};
  ::group* found = nullptr;
  if (!user || ::getgrgid_r(group, &entry, space.data(), space.size(), &found) != 0 ||
      found == nullptr || *user != found->gr_name)
    return false;
  for (char** member = found->gr_mem; *member != nullptr; ++member)
    if (*user != *member) return false;
  return true;
}

// With a list of further users and groups, the group's bits say how much any of them may do.
bool HasAccessList(const std::string& path) {
  return ::getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
}

Expected<void> Check(const std::string& path, bool isDirectory) {
  struct stat state {};
  if (::stat(path.c_str(), &state) != 0) return Failure{"stat", path, errno};
  const auto refused = [&path](const char* why) {
    return Failure{.what = "trust", .where = path, .error = EPERM, .why = why};
  };
  if (state.st_uid != ::geteuid() && state.st_uid != 0) return refused("it is another user's");
  if (isDirectory && (state.st_mode & S_ISVTX) != 0) return {};
  if ((state.st_mode & S_IWOTH) != 0) return refused("every user may write to it");
  if ((state.st_mode & S_IWGRP) != 0 && (!IsOwnGroup(state.st_gid) || HasAccessList(path)))
    return refused("other users of its group may write to it");
  return {};
}

std::string ParentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

Expected<void> CheckTrusted(const std::string& path, const std::string& top) {
  if (auto file = Check(path, false); !file) return file;
  std::string directory = ParentOf(path);
  while (directory.starts_with(top + "/")) {
    if (auto checked = Check(directory, true); !checked) return checked;
    directory = ParentOf(directory);
  }
  return Check(directory, true);
}

Expected<void> CheckTrustedFile(const std::string& path) { return Check(path, false); }

}  // namespace rastrel::os
