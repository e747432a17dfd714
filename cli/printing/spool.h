#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"

/// The spool: directories "NAME.cfm" that hold the pages of one job each.
namespace rastrel::cli {

/// A page of a spool entry.
struct SpoolPage {
  std::string title;  ///< its directory's name
  std::uint64_t bytes = 0;
  std::optional<pages::PageInfo> info;  ///< nothing if its ".info" can't be read
  std::string problem;                  ///< why not
};

struct SpoolEntry {
  std::string name;       ///< without ".cfm"
  std::string directory;  ///< native path
  std::size_t pages = 0;
  std::uint64_t bytes = 0;
  std::int64_t modified = 0;  ///< seconds since 1970
};

/// All entries, by name. An entry without pages belongs to a print that is under way, or was cut
/// off.
[[nodiscard]] std::vector<SpoolEntry> ListSpool();
/// The entry of exactly that name, or nothing.
[[nodiscard]] std::optional<SpoolEntry> FindSpoolEntry(const std::string& name);
/// The same; fails with a message for the user if there is none.
[[nodiscard]] Expected<SpoolEntry> NeedSpoolEntry(const std::string& name);
/// Its pages in printing order: by the numbers in their ".info", then by name.
[[nodiscard]] std::vector<SpoolPage> PagesOf(const SpoolEntry& entry);

/// A name in the spool that belongs to one print, although there are no pages yet. It is given back
/// at the end of its life if none came. Move-only; a moved-from one gives nothing back.
class SpoolReservation {
 public:
  /// Takes `name`, or "name-2" and so on if that is taken. The failure is a
  /// message for the user.
  [[nodiscard]] static Expected<SpoolReservation> Create(const std::string& name);
  ~SpoolReservation();
  SpoolReservation(SpoolReservation&& other) noexcept;
  SpoolReservation& operator=(SpoolReservation&&) = delete;
  SpoolReservation(const SpoolReservation&) = delete;
  SpoolReservation& operator=(const SpoolReservation&) = delete;

  /// The name that was had.
  [[nodiscard]] const std::string& Name() const { return m_Name; }
  [[nodiscard]] const std::string& Directory() const { return m_Directory; }
  /// The pages are there: the name stays taken.
  void Fill() { m_Filled = true; }

 private:
  SpoolReservation(std::string name, std::string directory);

  std::string m_Name;
  std::string m_Directory;
  bool m_Filled = false;
};

}  // namespace rastrel::cli
