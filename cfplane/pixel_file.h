#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::planes {

/// A file of a page directory that holds pixels, read from the first row to the last: a binary
/// netpbm picture (P5, P6), a TIFF file as pages/plain_tiff.h has it, or another uncompressed gray
/// one, all of 8 bits. Its head is checked
/// when it is opened: from then on the sizes are those that the file has room for. It is read and
/// not mapped, so that a file that is cut short meanwhile is a failure and no signal. Move only.
class PixelFile {
 public:
  /// Opens a file by the native path of its directory. It must be a regular file of the size that
  /// the description lists; a link is refused. Its check sum is not compared. The failure's `where`
  /// is the file.
  [[nodiscard]] static Expected<PixelFile> Open(const std::string& directory,
                                                const pages::PageFile& listed);

  [[nodiscard]] std::uint32_t Width() const { return m_Width; }
  [[nodiscard]] std::uint32_t Height() const { return m_Height; }
  /// Samples of a pixel, side by side: 1 or 3.
  [[nodiscard]] unsigned Samples() const { return m_Samples; }
  [[nodiscard]] std::size_t RowBytes() const { return std::size_t{m_Width} * m_Samples; }

  /// The place of the first sample in the file.
  [[nodiscard]] std::uint64_t FirstSampleAt() const { return m_Runs.front().offset; }
  /// Whether all samples lie one after the other from there on.
  [[nodiscard]] bool IsInOnePiece() const { return m_Runs.size() == 1; }

  /// Fills `bytes` with the next samples. The failure of a file that ends before is EIO.
  /// REQUIRES: as many are left.
  [[nodiscard]] Expected<void> Read(std::span<std::byte> bytes);
  /// Passes the next samples over without reading them.
  /// REQUIRES: as many are left.
  void Skip(std::uint64_t bytes);

 private:
  // Samples that lie one after the other in the file.
  struct Run {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
  };

  explicit PixelFile(os::FileDescriptor file, std::string path)
      : m_File(std::move(file)), m_Path(std::move(path)) {}
  [[nodiscard]] Failure Refuse(std::string why) const;
  [[nodiscard]] Expected<void> CheckSize(const pages::PageFile& listed);
  [[nodiscard]] Expected<void> ReadHead();
  [[nodiscard]] Expected<void> ReadNetpbm(std::string_view head);
  [[nodiscard]] bool TakePlainTiff();
  [[nodiscard]] Expected<void> ReadTiff();
  [[nodiscard]] Expected<void> TakeStrips(const std::vector<std::uint32_t>& offsets,
                                          const std::vector<std::uint32_t>& counts,
                                          std::uint64_t rowsPerStrip);
  [[nodiscard]] Expected<void> ReadAt(std::uint64_t offset, std::span<std::byte> bytes);
  void Take(std::uint64_t bytes);

  os::FileDescriptor m_File;
  std::string m_Path;
  std::uint64_t m_Size = 0;
  std::uint32_t m_Width = 0;
  std::uint32_t m_Height = 0;
  unsigned m_Samples = 1;
  std::vector<Run> m_Runs;
  std::size_t m_Run = 0;       // the one that is read
  std::uint64_t m_Taken = 0;   // bytes of it that were
  std::uint64_t m_Offset = 0;  // of the descriptor
};

}  // namespace rastrel::planes
