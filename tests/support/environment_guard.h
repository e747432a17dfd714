#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace rastrel::test {

/// Sets a variable of the environment for one test, or removes it with a null value, and puts the
/// old state back.
class EnvironmentGuard {
 public:
  EnvironmentGuard(const char* name, const char* value) : m_Name(name) {
    if (const char* old = std::getenv(name)) m_Old = old;
    Set(value);
  }
  EnvironmentGuard(const char* name, const std::string& value)
      : EnvironmentGuard(name, value.c_str()) {}
  ~EnvironmentGuard() { Set(m_Old ? m_Old->c_str() : nullptr); }
  EnvironmentGuard(const EnvironmentGuard&) = delete;
  EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;

 private:
  void Set(const char* value) {
    if (value != nullptr) {
      ::setenv(m_Name.c_str(), value, 1);
    } else {
      ::unsetenv(m_Name.c_str());
    }
  }
  std::string m_Name;
  std::optional<std::string> m_Old;
};

}  // namespace rastrel::test
