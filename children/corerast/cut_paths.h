#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "children/corerast/page_directory.h"
#include "children/corerast/report_lines.h"

namespace rastrel::corerast {

/// The paths that the prolog takes out of the picture, from its reports to the file "cut-paths" of
/// each page (docs/formats/cut-paths.md). Pages are counted from 1 as the interpreter ends them.
class CutPaths {
 public:
  /// What the paths that wait for their page may take together, in bytes of memory.
  static constexpr std::uint64_t Limit = std::uint64_t{256} << 20;
  static constexpr const char* FileName = "cut-paths";

  /// A page begins. What was drawn since the last page's end is lost with the page it was for.
  void BeginPage();
  /// The present page is put out.
  void EndPage();
  /// Takes a report. Those of other things are passed over. False if the limit was passed.
  [[nodiscard]] bool Add(const Report& report);

  /// Whether that ended page gets the file: a cut colour is set, or was for a path of it.
  [[nodiscard]] bool Wanted(unsigned page) const { return m_Set || m_Pages.contains(page); }
  /// Whether that separation, by its name, is a cut colour.
  [[nodiscard]] bool TakesSeparation(std::string_view name) const;
  /// The file's text for an ended page, whose number, size and resolution are in `info`. Forgets
  /// the page's paths.
  [[nodiscard]] std::string Take(const children::PageInfo& info);

 private:
  struct Path {
    std::string head;      // kind, line width in pixels, colour
    std::string segments;  // of the form "m 1 2 l 3 4 h"; pixels from the top left
  };
  using Page = std::vector<Path>;

  bool m_Set = false;  // a cut colour is
  std::vector<std::string> m_Separations;
  Page m_Present;
  bool m_Open = false;  // the last path still grows
  std::uint64_t m_Bytes = 0;
  unsigned m_Ended = 0;
  std::map<unsigned, Page> m_Pages;  // ended ones that have paths
};

/// Writes the file into a page's directory, if the run looks for cut paths, and adds it to the
/// info's files.
[[nodiscard]] os::Outcome<os::Done> WriteCutPaths(const RunDescription& run,
                                                  const std::string& directory,
                                                  children::PageInfo& info);

}  // namespace rastrel::corerast
