#include "server/folders/file_owner.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace rastrel::server {

std::string NameOfUser(uid_t user) {
  std::array<char, 16384> buffer;
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found) == 0 && found) {
    return found->pw_name;
  }
  return std::to_string(user);
}

bool IsOwnerAllowed(uid_t user, const std::string& folder, const FolderSettings& settings) {
  if (settings.owners.empty()) {
    struct stat state {};
    return user == ::geteuid() || (::stat(folder.c_str(), &state) == 0 && state.st_uid == user);
  }
  const std::string name = NameOfUser(user);
  return std::ranges::any_of(settings.owners, [&](const std::string& allowed) {
    return allowed == "*" || allowed == name || allowed == std::to_string(user);
  });
}

}  // namespace rastrel::server
