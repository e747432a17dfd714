#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "interpreter/page_directory.h"
#include "interpreter/report_lines.h"
#include "interpreter/segment_text.h"

namespace rastrel::interpreter {

/// "stroke", "fill", "eofill" or "text" for the reports' S, F, E and T.
[[nodiscard]] std::string_view CutKindWord(char letter);

/// The paths that the prolog takes out of the picture, from its reports to the file "cut-paths" of
/// each page (docs/formats/cut-paths.md). Pages are counted from 1 as the interpreter ends them.
class CutPaths {
 public:
  /// Memory of all paths that wait for their page, in bytes, at most.
  static constexpr std::uint64_t Limit = std::uint64_t{256} << 20;

  /// A page begins. Paths since the last page's end are lost with the page that they were for.
  void BeginPage();
  /// The present page is put out.
  void EndPage();
  /// The prolog asks which colors are for cutting: each page gets the file, and a color that no
  /// path has is no fault.
  void TakeAskedColors() { m_Set = m_Asked = true; }
  /// The number that paths of a wanted color in a layer have in the reports, the same for the same
  /// texts. Nothing if there are too many.
  [[nodiscard]] std::optional<std::size_t> NumberOf(const std::string& color,
                                                    const std::string& layer);
  /// Takes a report. Those of other things are passed over. False if the limit was passed.
  [[nodiscard]] bool Add(const Report& report);

  /// Whether that ended page gets the file: a cut color is set, or was for a path of it.
  [[nodiscard]] bool Wanted(unsigned page) const { return m_Set || m_Pages.contains(page); }
  /// Whether that separation, by its name, is a cut color. The prolog compares the colors of paths
  /// in the same way (rip.matchesname in match.ps): change both.
  [[nodiscard]] bool TakesSeparation(std::string_view name) const;
  /// The file's text for an ended page, whose number, size and resolution are in `info`. Forgets
  /// the page's paths.
  [[nodiscard]] std::string Take(const pages::PageInfo& info);
  /// The text of the file "cut-layers" for the page that was taken last; empty if none of its paths
  /// is in a layer.
  [[nodiscard]] std::string TakeLayers() { return std::exchange(m_TakenLayers, {}); }
  /// The colors that were set and that no path of a page taken so far has: "separation Cut",
  /// "rgb 1.0 0.0 0.0", each once, UnmetLimit at most. None if a path could not be read, whose
  /// color is not known.
  [[nodiscard]] std::vector<std::string> UnmetColors() const;
  static constexpr std::size_t UnmetLimit = 8;  // a job may set thousands

 private:
  struct Path {
    char kind = 'S';
    double width = 0;       // of the line, in pixels
    std::size_t color = 0;  // its number
    std::size_t clip = 0;   // index of the page's clips
    SegmentList::Mark end;  // of its segments, which begin where those of the path before it end
  };
  struct Page {
    std::vector<Path> paths;
    SegmentList segments;                      // in pixels from the top left
    std::map<std::string, std::size_t> clips;  // segments, with the index
    std::uint64_t bytes = 0;
  };

  void TakeColor(const std::string& text);
  void TakePiece(std::string_view piece);
  void Begin(char letter);
  void Settle();
  [[nodiscard]] std::size_t PresentClip();
  void Append(std::string_view text);
  void Grow(std::uint64_t bytes);

  bool m_Asked = false;                                                  // the colors are asked for
  std::map<std::pair<std::string, std::string>, std::size_t> m_Numbers;  // of the asked ones
  bool m_Set = false;                                                    // a cut color is
  std::vector<std::string> m_Colors;  // all that were set, by their number in the reports
  std::vector<std::string> m_Layers;  // of the asked colors, by the same number
  std::string m_TakenLayers;
  std::set<std::string> m_Met;  // those of them that a path has
  bool m_Lost = false;          // a path could not be read
  Page m_Present;
  char m_Kind = 0;     // of the last path, while it may still get a clip or fail; 0: there is none
  std::string m_Text;  // its text: line width, color's number, segments
  char m_Open = 0;     // the open item: 'P' the last path, 'K' the clip, 0 nothing
  std::string m_Clip;  // segments of the clip in force
  std::optional<std::size_t> m_ClipIndex;  // of the page's clips, once a path has that clip
  std::uint64_t m_Bytes = 0;
  unsigned m_Ended = 0;
  std::map<unsigned, Page> m_Pages;  // ended ones that have paths
};

/// Writes the files into a page's directory, if the run looks for cut paths, and adds them to the
/// info's files.
[[nodiscard]] Expected<void> WriteCutPaths(const RunDescription& run, const std::string& directory,
                                           pages::PageInfo& info);

}  // namespace rastrel::interpreter
