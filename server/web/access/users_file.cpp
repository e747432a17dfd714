#include "server/web/access/users_file.h"

#include <algorithm>
#include <array>

#include "cutting/toml/strict_toml.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "server/web/access/password.h"
#include "server/web/access/secret_file.h"

namespace rastrel::server::web {
namespace {

using cutting::TomlTable;

constexpr std::size_t LongestName = 64;
constexpr std::array<std::string_view, 3> Roles{"see", "print", "manage"};

User UserOf(TomlTable& table) {
  User user;
  user.name = table.Text("name").value_or("");
  if (auto fine = CheckUserName(user.name); !fine) table.Fail("name", fine.Error().why);
  if (!table.Has("role")) table.Fail("role", "the user needs a role");
  const auto role = table.Choice("role", Roles);
  if (role) static_cast<void>(RoleOf(Roles.at(*role), user.role));
  user.hash = table.Text("password").value_or("");
  if (!IsPasswordHash(user.hash))
    table.Fail("password", "the password is to be a hash that `rastrel users add` made");
  table.Finish();
  return user;
}

}  // namespace

Expected<void> CheckUserName(const std::string& name) {
  const auto isLetter = [](char one) {
    return (one >= 'a' && one <= 'z') || (one >= 'A' && one <= 'Z') || (one >= '0' && one <= '9');
  };
  const auto isFine = [&](char one) {
    return isLetter(one) || std::string_view("._-@").find(one) != std::string_view::npos;
  };
  if (name.empty() || name.size() > LongestName || !isLetter(name.front()) ||
      !std::ranges::all_of(name, isFine))
    return FailureOf(
        "a user's name has 1 to 64 letters, digits and . _ - @, and begins with a letter or digit",
        FailureCode::BadInput);
  return {};
}

Expected<std::vector<User>> ReadUsers(std::string_view text, const std::string& name) {
  auto file = cutting::TomlFile::Parse(text, name);
  if (!file) return file.Error();
  std::vector<User> users;
  TomlTable root = file->Root();
  for (TomlTable& table : root.Tables("user", MaximumUsers)) {
    User user = UserOf(table);
    if (std::ranges::find(users, user.name, &User::name) != users.end())
      table.Fail("name", "there is a user of that name already");
    users.push_back(std::move(user));
  }
  root.Finish();
  if (auto fine = file->Check(); !fine) return fine.Error();
  return users;
}

// Names and hashes have no character that TOML would escape.
std::string TextOfUsers(const std::vector<User>& users) {
  std::string text = "# The users of the HTTP interface. `rastrel users` changes them.\n";
  for (const User& user : users)
    text += "\n[[user]]\nname = \"" + user.name + "\"\nrole = \"" + NameOf(user.role) +
            "\"\npassword = \"" + user.hash + "\"\n";
  return text;
}

std::string UsersPath(const std::string& dataRoot) { return dataRoot + "/server/users.toml"; }

Expected<std::vector<User>> UsersOf(const std::string& dataRoot) {
  const std::string path = UsersPath(dataRoot);
  const std::wstring wide = os::FromNative(path);
  if (!os::Exists(wide) && !os::IsLink(wide)) return std::vector<User>();
  const auto text = ReadSecretFile(path, cutting::TomlFileLimit);
  if (!text) return text.Error();
  return ReadUsers(*text, path);
}

Expected<void> WriteUsers(const std::string& dataRoot, const std::vector<User>& users) {
  return os::ReplaceFile(os::FromNative(UsersPath(dataRoot)), TextOfUsers(users),
                         os::Access::Private);
}

}  // namespace rastrel::server::web
