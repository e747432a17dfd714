#pragma once

#include <sys/xattr.h>

#include <string>

namespace rastrel::test {

/// Gives a file an access list in the kernel's form, with user 1234 on it. `rights`: 4 read, 2
/// write and 1 execute, of that user and of the mask. `attribute` is another one for the list that
/// a directory hands on to its new files, "system.posix_acl_default". False, with errno, if it
/// can't have one.
///
///   version 4 | entries: tag 2, rights 2, user or group 4 bytes, the lowest byte first
inline bool GiveAccessList(const std::string& path, char rights,
                           const char* attribute = "system.posix_acl_access") {
  std::string list("\2\0\0\0", 4);
  const auto add = [&list](char tag, char bits, const std::string& id) {
    list += {tag, 0, bits, 0};
    list += id;
  };
  const std::string none(4, '\xFF');
  add(0x01, 7, none);                               // the owner
  add(0x02, rights, std::string("\xD2\4\0\0", 4));  // user 1234
  add(0x04, 5, none);                               // the group
  add(0x10, rights, none);                          // the mask
  add(0x20, 5, none);                               // all others
  return ::setxattr(path.c_str(), attribute, list.data(), list.size(), 0) == 0;
}

}  // namespace rastrel::test
