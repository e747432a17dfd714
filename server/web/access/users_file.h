#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/web/http/request.h"

/// The people who may use the HTTP interface from other machines: "server/users.toml" of the data
/// root. `rastrel users` writes it; docs/formats/http-interface.md has its keys.
namespace rastrel::server::web {

inline constexpr std::size_t MaximumUsers = 1000;

struct User {
  std::string name;  ///< the owner of the user's jobs
  Role role = Role::See;
  std::string hash;  ///< of the password
};

/// Fails for a name that is empty, longer than 64 bytes, or has other than letters, digits, and
/// ". _ - @" from the second place on.
[[nodiscard]] Expected<void> CheckUserName(const std::string& name);

/// Reads the file's text; `name` is the file's name in failures, which have line and column.
[[nodiscard]] Expected<std::vector<User>> ReadUsers(std::string_view text, const std::string& name);
/// The file's text of these users.
[[nodiscard]] std::string TextOfUsers(const std::vector<User>& users);

/// The path of the users' file of a data root.
[[nodiscard]] std::string UsersPath(const std::string& dataRoot);
/// Those of the data root; none without the file. Refuses a file that others may read.
[[nodiscard]] Expected<std::vector<User>> UsersOf(const std::string& dataRoot);
/// Writes them as a whole (0600). The folder `server` of the data root must be there.
[[nodiscard]] Expected<void> WriteUsers(const std::string& dataRoot,
                                        const std::vector<User>& users);

}  // namespace rastrel::server::web
