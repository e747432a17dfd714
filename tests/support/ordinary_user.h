#pragma once

#include <unistd.h>

namespace rastrel::test {

/// Lets a test run as a user that permissions bind, where the tests run as the superuser. Files
/// made before belong to the superuser.
class OrdinaryUser {
 public:
  OrdinaryUser() : m_Changed(::geteuid() == 0 && ::seteuid(65534) == 0) {}
  ~OrdinaryUser() {
    if (m_Changed && ::seteuid(0) != 0) ::_exit(99);
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  bool m_Changed;
};

}  // namespace rastrel::test
