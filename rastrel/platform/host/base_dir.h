#pragma once

#include <string>

#include "rastrel/export.h"

/// The base directories of a host. The library asks for the programs' one, type 2.
enum path_type : int { PATH_USER = 0, PATH_DATA = 1, PATH_PROGRAMS = 2, PATH_TEMP = 3 };

/// Names a base directory, or a directory below one. Holds its text wide and as UTF-8; no closing
/// separator.
class RASTREL_API CBaseDir {
 public:
  /// The directory of that type.
  explicit CBaseDir(path_type type);
  /// A directory below it, created if `create` is set and it is missing.
  CBaseDir(path_type type, const wchar_t* subdirectory, bool create);
  CBaseDir(const CBaseDir&) = default;
  CBaseDir& operator=(const CBaseDir&) = default;
  ~CBaseDir() = default;

  /// The type that it was made with.
  [[nodiscard]] path_type GetType() const { return m_Type; }
  /// Valid as long as the object.
  operator const wchar_t*() const { return m_Wide.c_str(); }  // NOLINT(google-explicit-constructor)
  operator const char*() const { return m_Narrow.c_str(); }   // NOLINT(google-explicit-constructor)
  operator std::wstring() const { return m_Wide; }            // NOLINT(google-explicit-constructor)
  operator std::string() const { return m_Narrow; }           // NOLINT(google-explicit-constructor)

 private:
  std::wstring m_Wide;
  std::string m_Narrow;
  path_type m_Type;
};
