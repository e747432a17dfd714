#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "pages/page_info.h"
#include "pages/plain_tiff.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// One file of pixels in a page directory, read a row at a time. Memory is in proportion to a row
/// or strip, whatever the file claims to hold.
namespace rastrel::odalis {

/// Pixels to a side of a page at most.
inline constexpr unsigned MaximumSide = 2'000'000;
/// Bytes of one row, or one strip of a TIFF file, at most.
inline constexpr std::uint64_t LargestRow = 64u << 20;

class PixelFile {
 public:
  virtual ~PixelFile() = default;

  [[nodiscard]] unsigned Width() const { return m_Width; }
  [[nodiscard]] unsigned Height() const { return m_Height; }
  [[nodiscard]] unsigned Samples() const { return m_Samples; }
  /// Bytes of a row: 8 bits a sample, the samples of a pixel side by side.
  [[nodiscard]] std::size_t RowBytes() const { return std::size_t{m_Width} * m_Samples; }

  /// The next rows, from the top. REQUIRES: the span has a multiple of RowBytes(), and so many rows
  /// are left.
  [[nodiscard]] virtual Expected<void> ReadRows(std::span<std::uint8_t> rows) = 0;

  /// The picture, if the whole file is a plain TIFF of it; and the file, which belongs to this
  /// object.
  [[nodiscard]] virtual std::optional<pages::PlainTiff> AsPlainTiff() const { return std::nullopt; }
  [[nodiscard]] virtual int Descriptor() const { return -1; }

 protected:
  unsigned m_Width = 0;
  unsigned m_Height = 0;
  unsigned m_Samples = 0;
};

/// The size and the check sum that a page's file is to have.
class ContentCheck {
 public:
  /// `descriptor` is open for reading; its position neither counts nor changes.
  ContentCheck(std::shared_ptr<const os::FileDescriptor> descriptor, std::string path,
               pages::PageFile expected);

  /// Reads the whole file. The failure names it. May run beside a reader of the same file.
  [[nodiscard]] Expected<void> Run() const;

 private:
  std::shared_ptr<const os::FileDescriptor> m_Descriptor;
  std::string m_Path;
  pages::PageFile m_Expected;
};

/// A file of pixels whose size is right and whose check sum is not known yet.
struct OpenedPixels {
  std::unique_ptr<PixelFile> file;
  ContentCheck check;
};

/// Opens a file of a page directory (native path): binary gray or RGB netpbm (P5, P6 with 255 as
/// the highest value), or TIFF in strips with 8 bits a sample and no color conversion. The file
/// must be a regular one of that size; links are not followed. The failure names the file; where
/// its content is not as described, that is the failure.
[[nodiscard]] Expected<OpenedPixels> OpenPixelFile(const std::string& directory,
                                                   const pages::PageFile& file);

}  // namespace rastrel::odalis
