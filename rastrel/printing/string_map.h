#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// Keywords and their codes. A keyword matches as a whole, and case counts. Built once, then only
/// read, by any thread.
class StringMap {
 public:
  StringMap() = default;
  StringMap(const StringMap&) = default;
  StringMap& operator=(const StringMap&) = default;
  virtual ~StringMap();

  /// The code of a keyword; 0 if it is unknown.
  [[nodiscard]] std::int32_t Find(std::wstring_view keyword) const;

 protected:
  std::map<std::wstring, std::int32_t, std::less<>> m_Codes;
};

/// The states that a child reports after "INFO:".
class InfoStringMap : public StringMap {
 public:
  InfoStringMap();
  ~InfoStringMap() override;
};

/// The errors with a code that a child reports after "ERROR:".
class ErrorStringMap : public StringMap {
 public:
  ErrorStringMap();
  ~ErrorStringMap() override;
};
