#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pages/page_sum.h"
#include "rastrel/platform/os/expected.h"

/// The ".info" file of a page directory: the page's form and the files that hold it. The format is
/// described in docs/formats/page-directory.md; this is its one reader and writer.
namespace rastrel::pages {

/// How a page's pixels are colored.
enum class PageColor { Gray, Rgb, Cmyk, Separations };

/// One file of the page directory.
struct PageFile {
  std::string name;  ///< plain file name, no separator
  std::uint64_t bytes = 0;
  std::string sum;  ///< of either kind (page_sum.h)
};

/// Full ink in cyan, magenta, yellow and black, each from 0 to 1.
using InkColor = std::array<double, 4>;

/// One color plane, in printing order.
struct PagePlane {
  std::string name;      ///< "Red", "Cyan", a spot color's name; UTF-8, any character
  std::string file;      ///< the file that holds it
  unsigned channel = 0;  ///< which sample of each pixel of that file
  /// The look of a spot color where the job says it; nothing of any other plane.
  std::optional<InkColor> ink{};
};

struct PageInfo {
  std::string job;      ///< the prefix's title; UTF-8, any character
  std::string printer;  ///< the printer that the prefix selected, without its colon; may be empty
  std::string mode;     ///< the print mode, "FOLDER/NAME"; may be empty
  /// Permission bits of the job that the page is of, which its output gets: reading and writing
  /// alone, and both for the owner. Nothing if they are not known.
  std::optional<unsigned> access;
  unsigned page = 1;       ///< counted from 1
  unsigned width = 0;      ///< pixels
  unsigned height = 0;     ///< pixels
  double xResolution = 0;  ///< pixels per inch
  double yResolution = 0;  ///< pixels per inch
  unsigned bits = 8;       ///< of one sample
  PageColor color = PageColor::Rgb;
  std::vector<PagePlane> planes;
  std::vector<PageFile> files;
};

/// Name of the file in a page directory.
inline constexpr const char* PageInfoName = ".info";

/// Name of the picture in a page directory, of the cut paths if it has any, and of their layers if
/// one of them is in a layer.
inline constexpr const char* PreviewName = "preview.png";
inline constexpr const char* CutPathsName = "cut-paths";
inline constexpr const char* CutLayersName = "cut-layers";

/// The name of a page's directory: "p0001" for 1. Five and more digits where they are needed.
[[nodiscard]] std::string PageName(unsigned page);

/// Reads a file of a page directory to its end for its size and check sum. `directory` is native.
[[nodiscard]] Expected<PageFile> DescribeFile(const std::string& directory, const std::string& name,
                                              SumKind kind = SumKind::Xxh3);

/// The file's text.
[[nodiscard]] std::string FormatPageInfo(const PageInfo& info);
/// Reads such a text. The Failure of a text that is wrong has the first wrong line and why; its
/// error is EINVAL.
[[nodiscard]] Expected<PageInfo> ParsePageInfo(const std::string& text);
/// Reads the ".info" of a page directory, given by its native path, with or without closing slash.
/// The Failure's `where` is the file; its `line` is 0 if the file could not be read.
[[nodiscard]] Expected<PageInfo> ReadPageInfo(const std::string& directory);

}  // namespace rastrel::pages
