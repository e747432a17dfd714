#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// Keywords and their numbers. Compared whole and by case. Built once, then only read.
class StringMap {
 public:
  StringMap() = default;
  StringMap(const StringMap&) = default;
  StringMap& operator=(const StringMap&) = default;
  virtual ~StringMap();

  /// The number of a keyword; 0 if it is not known.
  [[nodiscard]] std::int32_t Find(std::wstring_view keyword) const;

 protected:
  std::map<std::wstring, std::int32_t, std::less<>> m_Codes;
};

/// The states that a child reports behind "INFO:".
class InfoStringMap : public StringMap {
 public:
  InfoStringMap();
  ~InfoStringMap() override;
};

/// The errors with a number that a child reports behind "ERROR:".
class ErrorStringMap : public StringMap {
 public:
  ErrorStringMap();
  ~ErrorStringMap() override;
};
