#include "cli/server/users_command.h"

#include <algorithm>
#include <string>
#include <vector>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/installation/installation.h"
#include "cli/server/password_prompt.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_lock.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "server/web/access/password.h"
#include "server/web/access/users_file.h"

namespace rastrel::cli {
namespace {

using server::web::User;

// The users of the data root, while no other command changes them.
class UserList {
 public:
  UserList() : m_Root(os::DataRoot()), m_Lock(Lock(m_Root)) {
    m_Users = OrEnd(ExitStatus::BadInput, server::web::UsersOf(m_Root));
  }

  [[nodiscard]] std::vector<User>& Users() { return m_Users; }
  [[nodiscard]] std::vector<User>::iterator Find(const std::string& name) {
    return std::ranges::find(m_Users, name, &User::name);
  }
  /// Ends the command if there is none.
  [[nodiscard]] std::vector<User>::iterator MustFind(const std::string& name) {
    const auto found = Find(name);
    if (found == m_Users.end())
      throw CommandError(ExitStatus::BadInput, "there is no user '" + name + "'");
    return found;
  }
  void Write() { OrEnd(ExitStatus::JobFailed, server::web::WriteUsers(m_Root, m_Users)); }

 private:
  static os::FileLock Lock(const std::string& root) {
    OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
    OrEnd(ExitStatus::NotInstalled,
          os::MakePath(os::FromNative(root + "/server"), os::Access::Private));
    return OrEnd(ExitStatus::JobFailed,
                 os::FileLock::Acquire(os::FromNative(root + "/server/users.lock")));
  }

  std::string m_Root;
  os::FileLock m_Lock;
  std::vector<User> m_Users;
};

server::web::Role RoleOf(const Invocation& invocation) {
  const std::string name = invocation.ValueOr(OptionId::UserRole, "");
  server::web::Role role{};
  if (!server::web::RoleOf(name, role))
    throw CommandError(ExitStatus::WrongUse, "give the role: --role see, print or manage");
  return role;
}

}  // namespace

ExitStatus ListUsersCommand(const Invocation& invocation) {
  const auto users = OrEnd(ExitStatus::BadInput, server::web::UsersOf(os::DataRoot()));
  const bool json = invocation.Has(OptionId::Json);
  if (!json) WriteOutRow({"user", "role"});
  for (const User& user : users) {
    if (json) {
      JsonLine("user").Add("name", user.name).Add("role", NameOf(user.role)).Write();
    } else {
      WriteOutRow({user.name, NameOf(user.role)});
    }
  }
  return ExitStatus::Done;
}

ExitStatus AddUserCommand(const Invocation& invocation) {
  const std::string& name = invocation.operand;
  OrEnd(ExitStatus::WrongUse, server::web::CheckUserName(name));
  const auto role = RoleOf(invocation);
  const std::string password = OrEnd(
      ExitStatus::BadInput, invocation.Has(OptionId::NewPasswordFile)
                                ? PasswordOfFile(invocation.ValueOr(OptionId::NewPasswordFile, ""))
                                : AskForPassword(name));
  OrEnd(ExitStatus::BadInput, server::web::CheckPassword(password));
  const std::string hash = OrEnd(ExitStatus::JobFailed, server::web::HashOfPassword(password));
  UserList list;
  const auto found = list.Find(name);
  if (found != list.Users().end()) {
    found->role = role;
    found->hash = hash;
  } else {
    if (list.Users().size() >= server::web::MaximumUsers)
      throw CommandError(ExitStatus::JobFailed, "there are 1000 users already");
    list.Users().push_back({name, role, hash});
  }
  list.Write();
  return ExitStatus::Done;
}

ExitStatus ChangeUserCommand(const Invocation& invocation) {
  if (invocation.command == CommandId::UsersRole) {
    const auto role = RoleOf(invocation);
    UserList list;
    list.MustFind(invocation.operand)->role = role;
    list.Write();
    return ExitStatus::Done;
  }
  UserList list;
  for (const std::string& name : invocation.operands) list.Users().erase(list.MustFind(name));
  list.Write();
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
