#pragma once

#include <string>

#include "interpreter/guardian.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {

/// The directory of one run's pages: a fresh one below the RIP's "System/c-out", with two work
/// directories in it that are gone when the pages are handed over. Under guard from before it is
/// made.
class RunDirectory {
 public:
  /// Makes it, and clears away empty ones of runs whose pages others have removed.
  [[nodiscard]] static Expected<RunDirectory> Make(const std::string& ripDirectory,
                                                   Guardian& guardian);
  /// Makes one in that directory, which must exist. Native path without a closing slash.
  [[nodiscard]] static Expected<RunDirectory> MakeIn(const std::string& parent, Guardian& guardian);

  /// Native path of the directory that it lies in, without a closing slash.
  [[nodiscard]] const std::string& Parent() const { return m_Parent; }
  /// Native path without a closing slash.
  [[nodiscard]] const std::string& Path() const { return m_Path; }
  /// The one name of it that no other run has: 32 hexadecimal digits.
  [[nodiscard]] const std::string& Name() const { return m_Name; }
  /// The interpreter's private directory for temporary files.
  [[nodiscard]] std::string Temporary() const { return m_Path + "/.tmp"; }
  /// Where the interpreter puts separations before they move to their pages.
  [[nodiscard]] std::string Planes() const { return m_Path + "/.planes"; }
  /// Removes both work directories. The failure names the first one.
  [[nodiscard]] Expected<void> RemoveWork() const;

 private:
  RunDirectory(std::string parent, std::string name);

  std::string m_Parent;
  std::string m_Name;
  std::string m_Path;
};

}  // namespace rastrel::interpreter
