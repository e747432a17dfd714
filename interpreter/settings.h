#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rastrel::interpreter {

/// The box of a PDF's page that becomes the page. Trim and bleed box are the crop box where a page
/// has none, and the crop box the media box.
enum class PdfBox { Media, Crop, Trim, Bleed };

/// Processor cores that this process may use, from 1 to MaximumCores.
[[nodiscard]] std::uint64_t CoreCount();

/// Limits of a run, each a whole number above 0, and its ways with PDF. Each is read from a
/// variable of the environment.
struct Settings {
  std::uint64_t timeSeconds = 1800;       ///< RASTREL_RIP_TIMEOUT: of the clock on the wall
  std::uint64_t processorSeconds = 1800;  ///< RASTREL_RIP_CPU: of Ghostscript's processor time
  std::uint64_t memoryMebibytes = 1024;   ///< RASTREL_RIP_MEMORY: that the interpreter may take
  /// RASTREL_RIP_THREADS: threads of the interpreter that paint the bands of a large page in gray
  /// or RGB at the same time; at most MaximumCores.
  std::uint64_t threads = CoreCount();
  /// RASTREL_RIP_PROCESSES: interpreters that make pages of one job at the same time; at most
  /// MaximumCores.
  std::uint64_t processes = CoreCount();
  /// RASTREL_RIP_PARALLEL_PAGES: "1" lets several interpreters make pages of PostScript whose
  /// comments say which part of it is which page.
  bool parallelPages = false;
  std::uint64_t pagePixels = 1600000000;  ///< RASTREL_RIP_PIXELS: of one page
  std::uint64_t totalMebibytes = 65536;   ///< RASTREL_RIP_SIZE: of all pages of a run
  std::uint64_t workMebibytes = 4096;     ///< RASTREL_RIP_TEMP: of temporary files at a time
  /// RASTREL_SEPARATION_DPI: pixels per inch of a file that is separated and selects none; at most
  /// MaximumSeparationDpi.
  std::uint64_t separationDpi = 300;
  PdfBox pdfBox = PdfBox::Crop;  ///< RASTREL_RIP_BOX: "media", "crop", "trim" or "bleed"
  /// RASTREL_RIP_PAGE: which page of the job counts as the first where a run is of one page, a
  /// picture or a measure; from 1. Of PostScript those that it puts out count, in their order.
  std::uint64_t page = 1;
  /// RASTREL_RIP_PASSWORD_FILE: native path of the file whose first line opens locked PDFs; empty:
  /// none.
  std::string passwordFile;

  /// Reads them. A value of another form is passed over and adds a sentence to `complaints`.
  [[nodiscard]] static Settings FromEnvironment(std::vector<std::string>& complaints);
};

inline constexpr std::uint64_t MaximumSeparationDpi = 4800;

/// Of one job, so that its memory stays within bounds on a machine with many.
inline constexpr std::uint64_t MaximumCores = 16;

/// Temporary files that a run may have at a time. The interpreter's own are a handful.
inline constexpr std::uint64_t WorkFiles = 1000;

/// Pixels that a page may measure at most in either direction, so that a row stays small.
inline constexpr std::uint64_t SidePixels = 400000;

}  // namespace rastrel::interpreter
