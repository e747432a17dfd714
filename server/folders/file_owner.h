#pragma once

#include <sys/types.h>

#include <string>

#include "server/folders/folder_settings.h"

namespace rastrel::server {

/// The user's name; its number in digits if there is none.
[[nodiscard]] std::string NameOfUser(uid_t user);

/// Whether files of the user are taken from the folder, as FolderSettings::owners has it.
[[nodiscard]] bool IsOwnerAllowed(uid_t user, const std::string& folder,
                                  const FolderSettings& settings);

}  // namespace rastrel::server
