#pragma once

/// The host's base directories as the library names them.

#include <string>

#include "rastrel/export.h"

/// The base directories of a host. The library asks for the programs' one, type 2.
enum path_type : int { PATH_USER = 0, PATH_DATA = 1, PATH_PROGRAMS = 2, PATH_TEMP = 3 };

/// The path of a base directory, or of a directory below one: asked of the host once, when the
/// object is made (`Directories::BaseDirectory` of host.h), and then kept. The path is the
/// library's text for it, without a closing separator, wide and as UTF-8. Any thread may make one;
/// an object belongs to one thread at a time.
class RASTREL_API CBaseDir {
 public:
  /// The directory of that type.
  explicit CBaseDir(path_type type);
  /// A directory below the one of that type; with null or an empty text that one itself. With
  /// `create` it is made if it is missing, and its parents with it. A directory that can't be made
  /// is not reported here: its first use fails.
  CBaseDir(path_type type, const wchar_t* subdirectory, bool create);
  CBaseDir(const CBaseDir&) = default;
  CBaseDir& operator=(const CBaseDir&) = default;
  ~CBaseDir() = default;

  /// The type that it was made with.
  [[nodiscard]] path_type GetType() const { return m_Type; }
  /// The path. The two pointers are valid as long as the object, and UTF-8 where narrow.
  operator const wchar_t*() const { return m_Wide.c_str(); }  // NOLINT(google-explicit-constructor)
  operator const char*() const { return m_Narrow.c_str(); }   // NOLINT(google-explicit-constructor)
  operator std::wstring() const { return m_Wide; }            // NOLINT(google-explicit-constructor)
  operator std::string() const { return m_Narrow; }           // NOLINT(google-explicit-constructor)

 private:
  std::wstring m_Wide;
  std::string m_Narrow;
  path_type m_Type;
};
