#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

/// Commands on the users of the HTTP interface.
namespace rastrel::cli {

/// `rastrel users list`: a row or a JSON line for each user.
[[nodiscard]] ExitStatus ListUsersCommand(const Invocation& invocation);
/// `rastrel users add`: a new user, or another password and role for one that is there.
[[nodiscard]] ExitStatus AddUserCommand(const Invocation& invocation);
/// `rastrel users role` and `rastrel users remove`. BadInput if there is no such user.
[[nodiscard]] ExitStatus ChangeUserCommand(const Invocation& invocation);

}  // namespace rastrel::cli
