#pragma once

#include <sys/stat.h>

namespace rastrel::test {

/// Sets this process's umask, which programs that it starts get, until the end of a test.
class UmaskGuard {
 public:
  explicit UmaskGuard(mode_t mask) : m_Before(::umask(mask)) {}
  ~UmaskGuard() { ::umask(m_Before); }
  UmaskGuard(const UmaskGuard&) = delete;
  UmaskGuard& operator=(const UmaskGuard&) = delete;

 private:
  mode_t m_Before;
};

}  // namespace rastrel::test
