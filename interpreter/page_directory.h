#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "interpreter/page_stream.h"
#include "interpreter/preview.h"
#include "pages/page_info.h"
#include "pages/page_sum.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/flush_ahead.h"

/// Page directories: "p0001" and so on below the run's directory.
namespace rastrel::interpreter {

class CutPaths;

/// The common part of a run's pages.
struct RunDescription {
  std::string job;                 ///< title; UTF-8
  std::string printer;             ///< as the prefix selected it
  std::string mode;                ///< "FOLDER/NAME"
  std::optional<unsigned> access;  ///< permission bits of the job, as in PageInfo
  bool keepsTiff = false;          ///< as in RunRequest
  std::function<bool(const std::string& printer)> takesTiff;  ///< as in RunRequest
  unsigned pagesBefore = 0;  ///< of the job, ahead of the run's first
  double xResolution = 72;
  double yResolution = 72;
  /// New samples by the old ones for planes with these names, whose levels the interpreter leaves.
  std::map<std::string, std::array<std::uint8_t, 256>> transfers;
  /// The looks of the spot colors of the page that is made next, by their names.
  std::map<std::string, pages::InkColor> inks;
  CutPaths* cuts = nullptr;  ///< cut paths of the pages, borrowed; null: none
};

/// A page info with the run's description filled in. `page` counts from the run's first.
[[nodiscard]] pages::PageInfo DescribePage(const RunDescription& run, unsigned page);

/// Writes the ".info" file of a finished page, last of all its files.
[[nodiscard]] Expected<void> WritePageInfo(const std::string& directory,
                                           const pages::PageInfo& info);

/// Makes the directory of one page whose pixels come as a stream: "page.tif" where the run keeps
/// TIFF and the page is not too large for it, else "page.ppm" or "page.pgm"; "preview.png" and
/// ".info". Paths are native; everything lies below the guarded run directory.
class PageDirectory {
 public:
  /// Creates directory and pixel file. Of the run, only `keepsTiff` and the resolution count yet.
  [[nodiscard]] static Expected<std::unique_ptr<PageDirectory>> Create(
      const std::string& runDirectory, unsigned page, const PageSize& size,
      const RunDescription& run);

  /// Appends pixels.
  [[nodiscard]] Expected<void> AddPixels(std::span<const std::byte> bytes);
  /// Begins to bring the added pixels to the disk, and waits for none. Does nothing unless the
  /// pixels are kept as TIFF.
  void BeginFlush();
  /// Writes preview and info. Nothing is added afterwards.
  [[nodiscard]] Expected<void> Finish(const RunDescription& run);
  /// Removes the directory. Nothing else may follow.
  [[nodiscard]] Expected<void> Remove();

 private:
  PageDirectory(std::string path, unsigned page, const PageSize& size);
  [[nodiscard]] Expected<void> WriteHead(const RunDescription& run);
  [[nodiscard]] Expected<void> CorrectHead(const RunDescription& run);
  [[nodiscard]] Expected<void> Write(std::span<const std::byte> bytes);
  void FeedPreview(std::span<const std::byte> bytes);

  std::string m_Path;
  unsigned m_Page;
  PageSize m_Size;
  std::string m_PixelName;
  std::string m_Head;  // of the pixel file
  os::FileDescriptor m_Pixels;
  std::uint64_t m_Bytes = 0;
  os::FlushAhead m_FlushAhead;
  pages::PageSum m_Sum;  // of the pixel file, taken while the bytes are in the processor's cache
  std::string m_CorrectedSum;  // in place of it, if the head was written anew
  Preview m_Preview;
  std::vector<std::byte> m_Row;  // the present row, as far as it has come, if the preview wants it
  unsigned m_RowNumber = 0;
  std::size_t m_RowFilled = 0;
};

}  // namespace rastrel::interpreter
