#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "children/coreodalis/image.h"
#include "children/coreodalis/pixel_file.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::odalis {

/// The pixels of a page directory as rows of all its planes, wherever they lie.
class PageSource {
 public:
  /// Opens every file that holds a plane and checks sizes and dimensions. `directory` is a native
  /// path. The failure names the file or the value of the description that is wrong.
  [[nodiscard]] static Expected<PageSource> Open(const std::string& directory,
                                                 const pages::PageInfo& info);

  /// The rows' layout: 8 bits a sample, a pixel's planes side by side in printing order. In ink
  /// planes 255 is no ink.
  [[nodiscard]] const ImageShape& Shape() const { return m_Shape; }

  /// The next rows, from the top. REQUIRES: the span has a multiple of Shape().RowBytes(), and so
  /// many rows are left.
  [[nodiscard]] Expected<void> ReadRows(std::span<std::uint8_t> rows);

  /// The page's only file, if it has the very bytes that a TIFF device without compression gets;
  /// its descriptor is open for reading and belongs to this object. -1: it has another form.
  [[nodiscard]] int FileAsTiff() const;

  /// No file of the page was changed since its description was written, by the file system's times
  /// of the last change: the bytes are those that their sums were taken of. False if that can't be
  /// known, as of files that were changed in the same instant. Linking a file is a change.
  [[nodiscard]] bool IsUnchanged() const;

  /// The check sums of the files, which nothing else looks at: who uses the rows runs all of them
  /// before, after or while it reads.
  [[nodiscard]] const std::vector<ContentCheck>& Checks() const { return m_Checks; }

 private:
  struct Part {
    std::string name;
    std::unique_ptr<PixelFile> file;
    std::vector<std::uint8_t> row;
  };
  struct PlanePlace {
    std::size_t part = 0;
    unsigned channel = 0;
  };

  PageSource() = default;
  [[nodiscard]] Expected<void> OpenParts(const std::string& directory, const pages::PageInfo& info);
  [[nodiscard]] Expected<std::size_t> PartOf(const std::string& directory,
                                             const pages::PageInfo& info, const std::string& name);
  [[nodiscard]] Expected<void> ReadRow(std::span<std::uint8_t> row);

  ImageShape m_Shape;
  std::vector<Part> m_Parts;
  std::vector<ContentCheck> m_Checks;
  std::vector<PlanePlace> m_Planes;
  std::optional<timespec> m_Described;  ///< when the description was changed last
  bool m_Straight = false;              ///< one file whose rows are the page's rows
};

}  // namespace rastrel::odalis
