#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "rastrel/job/job_data.h"
#include "tests/children/rip_fixture.h"

/// Tools for tests of the prefix's effect: prefixes with the library's own sections, jobs, and the
/// contents of the pages and cut paths that come of them.
namespace rastrel::corerast::testing {

using Names = std::vector<std::string>;

/// A print mode of 100 pixels per inch.
inline constexpr const char* Mode100 = "3Color 100 100 SetXYResolution";

/// A prefix with these sections, for a print mode of that text; none if it is empty.
[[nodiscard]] std::string PrefixOf(const RipFixture& bench, const std::wstring& sections,
                                   const std::string& mode = "3Color 72 72 SetXYResolution");

/// A job of one page with sides in points.
[[nodiscard]] std::string Page(unsigned width, unsigned height, const std::string& drawing);

/// The directories of the pages, which must be that many and whole.
[[nodiscard]] Names Pages(const ProgramRun& outcome, std::size_t count);
/// The one page that the job's text makes.
[[nodiscard]] std::string OnlyPage(const RipFixture& bench, const std::string& prefix,
                                   const std::string& job);

/// Settings with a cut color.
[[nodiscard]] CJobData CutColor(int model, std::array<std::int32_t, 4> color);
[[nodiscard]] CJobData RedCut();
[[nodiscard]] CJobData NamedCut(const std::wstring& separation);

/// One path of a page's file of cut paths.
struct CutPath {
  std::string kind;
  std::string color;
  double width = 0;
  std::string clip;
  std::string closed;
  std::string letters;         ///< "mlllh"
  std::vector<double> points;  ///< x y x y ...; in points

  /// Whether one of the points is near that place, in points.
  [[nodiscard]] bool Passes(double x, double y, double distance) const;
};
[[nodiscard]] std::vector<CutPath> CutPathsOf(const std::string& page);

/// Whether any pixel is redder than it is green: neither white, black nor blue is.
[[nodiscard]] bool HasRed(const Pixels& pixels);

/// A job that draws the outline of a rectangle of 100 by 50 points at 20, 20 in that color, beside
/// a blue square that stays.
[[nodiscard]] std::string Outline(const std::string& color);
/// Sets the separation CutContour as the color.
inline constexpr const char* Spot =
    "[/Separation /CutContour /DeviceCMYK {0 exch dup 0}] setcolorspace 1 setcolor";
/// The page must have the outline as a cut path and the square in its picture, at 72 pixels per
/// inch.
void ExpectOutlineCut(const std::string& page);

/// A PDF of these objects, the first of which is its catalog.
[[nodiscard]] std::string PdfOf(const std::vector<std::string>& objects);
/// A stream as an object of a PDF.
[[nodiscard]] std::string PdfStream(const std::string& content);

/// Runs a command line in the shell, in silence; whether it ended well.
[[nodiscard]] bool RunCommand(const std::string& command);
/// Whether that program is installed.
[[nodiscard]] bool HaveProgram(const std::string& name);

}  // namespace rastrel::corerast::testing
