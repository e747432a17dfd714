#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// A PDF file of pictures, one a page, written while its rows come in.
namespace rastrel::server {

/// A picture has so many pixels at most in a row, and rows.
inline constexpr std::uint32_t PictureSideLimit = 1000000;
/// A file has so many pages at most.
inline constexpr std::size_t PicturePageLimit = 10000;

/// The pixels of a picture, and its size on the page.
struct PictureForm {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  unsigned channels = 0;         ///< samples of a pixel: 1, 3 or 4; ignored with `space`
  unsigned bits = 8;             ///< of a sample: 1, 2, 4, 8 or 16
  double horizontalDensity = 0;  ///< pixels per inch
  double verticalDensity = 0;
  std::string space{};   ///< color space as PDF spells it; empty: DeviceGray, DeviceRGB, DeviceCMYK
  std::string coding{};  ///< entries of the stream's dictionary that say how its bytes are coded;
                         ///< empty: rows are given, and compressed here
};

/// Bytes of a row of samples, without padding but to a whole byte.
[[nodiscard]] std::uint64_t RowBytesOf(const PictureForm& form);

/// Writes the file. Memory is that of one compressor, and some bytes a page. The pixels are kept as
/// they are: without loss, at the size that their density makes, and without smoothing:
///
///     auto pdf = PicturePdf::Create(path);
///     pdf->BeginPage(form);  pdf->Add(rows);  pdf->EndPage();
///     pdf->Finish();
///
/// After a failure nothing but destruction is allowed. One thread at a time.
class PicturePdf {
 public:
  /// Makes the file, for this user alone; replaces one of that name. `path` is native.
  [[nodiscard]] static Expected<std::unique_ptr<PicturePdf>> Create(const std::string& path);
  ~PicturePdf();
  PicturePdf(const PicturePdf&) = delete;
  PicturePdf& operator=(const PicturePdf&) = delete;

  /// Fails, with the reason, for a form that is out of its ranges, and for a page too many.
  [[nodiscard]] Expected<void> BeginPage(const PictureForm& form);
  /// Rows in order, in pieces of any size; with a coding, bytes that are coded so.
  [[nodiscard]] Expected<void> Add(std::string_view bytes);
  /// Fails if there were fewer or more bytes than the rows have.
  [[nodiscard]] Expected<void> EndPage();
  /// Writes the end of the file. Fails if there is no page.
  [[nodiscard]] Expected<void> Finish();

  [[nodiscard]] std::size_t Pages() const;

 private:
  struct Parts;
  explicit PicturePdf(std::unique_ptr<Parts> parts);
  std::unique_ptr<Parts> m_Parts;
};

}  // namespace rastrel::server
