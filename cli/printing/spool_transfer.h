#pragma once

#include <string>

#include "rastrel/job/cfm_file.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Gives pages that are all in a job's staged directory their place in the spool, as one step: a
/// reader of the spool sees the job with all its pages or without any. From another file system
/// they are copied under a hidden name first. On a failure the pages are where they were, and the
/// failure names the place.
[[nodiscard]] Expected<void> PublishJob(const std::string& name);

/// A name in the spool that belongs to one print, although there are no pages yet. It is given back
/// at the end of its life if none came. Move-only; a moved-from one gives nothing back.
class SpoolReservation {
 public:
  /// Takes `name`, or "name-2" and so on if that is taken. The failure is a message for the user.
  [[nodiscard]] static Expected<SpoolReservation> Create(const std::string& name);
  ~SpoolReservation();
  SpoolReservation(SpoolReservation&& other) noexcept;
  SpoolReservation& operator=(SpoolReservation&&) = delete;
  SpoolReservation(const SpoolReservation&) = delete;
  SpoolReservation& operator=(const SpoolReservation&) = delete;

  /// The name that was had.
  [[nodiscard]] const std::string& Name() const { return m_Name; }
  [[nodiscard]] const std::string& Directory() const { return m_Directory; }
  /// Moves the pages that the library has kept to the spool, and has the list say so. On a failure
  /// the name stays taken: the failure says where the pages are.
  [[nodiscard]] Expected<void> Publish(CCFMFile& pages);

 private:
  SpoolReservation(std::string name, std::string directory);

  std::string m_Name;
  std::string m_Directory;
  bool m_Filled = false;
};

/// While it lives the library keeps pages in the jobs' staged directories in place of the spool.
/// One at a time; made before a print's thread, and ended after it.
class StagedSpool {
 public:
  StagedSpool();
  ~StagedSpool();
  StagedSpool(const StagedSpool&) = delete;
  StagedSpool& operator=(const StagedSpool&) = delete;

 private:
  std::wstring m_SpoolRoot;
};

}  // namespace rastrel::cli
