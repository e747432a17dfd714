#pragma once

#include <zlib.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::server {

/// Decompresses the data of a PNG picture that is not interlaced, and undoes its filters. Memory is
/// that of two rows.
class PngRows {
 public:
  /// Called with each row, without its filter's byte. A failure ends the reading.
  using OnRow = std::function<Expected<void>(const std::string& row)>;

  /// `pixelBytes` is the distance of a byte to that of the pixel left of it: at least 1.
  PngRows(std::uint32_t height, std::size_t rowBytes, std::size_t pixelBytes, OnRow onRow);
  ~PngRows();
  PngRows(const PngRows&) = delete;
  PngRows& operator=(const PngRows&) = delete;

  /// The next piece of compressed data.
  [[nodiscard]] Expected<void> Add(std::string_view compressed);
  /// Fails unless all rows came, and the compressed data ended with them.
  [[nodiscard]] Expected<void> Finish() const;

 private:
  [[nodiscard]] Expected<void> TakeRow();
  [[nodiscard]] bool Unfilter();

  std::uint32_t m_Left;  // rows that are to come
  std::size_t m_PixelBytes;
  OnRow m_OnRow;
  std::string m_Row;  // the filter's byte, and the row
  std::string m_Above;
  std::size_t m_Filled = 0;
  z_stream m_Inflater{};
  bool m_Ended = false;
};

}  // namespace rastrel::server
