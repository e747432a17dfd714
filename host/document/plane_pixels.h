#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::document {

/// The pixels of one ink's plane, a byte each, rows from the top without padding: 255 is no ink,
/// 0 full ink.
using PlaneBytes = std::vector<std::uint8_t>;

/// Where the pixels of a plane come from. Shared by the copies of a shape, and never changed.
class PlanePixels {
 public:
  PlanePixels() = default;
  virtual ~PlanePixels() = default;
  PlanePixels(const PlanePixels&) = delete;
  PlanePixels& operator=(const PlanePixels&) = delete;

  /// All pixels: as many as the shape's width times its height. Fails, with a sentence for the
  /// user, if they can't be read any more.
  [[nodiscard]] virtual Expected<PlaneBytes> Read() const = 0;
  /// Shows them to a function where they are, without a copy if it can be. Fails as Read does.
  using Look = std::function<void(std::span<const std::uint8_t>)>;
  [[nodiscard]] virtual Expected<void> Visit(const Look& look) const;
  /// The mean ink, 0 to 1. Reads all pixels. Fails as Read does.
  [[nodiscard]] virtual Expected<double> MeanInk() const;
};

/// Pixels that are in memory, packed: those of a document file.
class KeptPixels : public PlanePixels {
 public:
  /// Packed pixels (PackPixels). Null unless they are exactly so many.
  [[nodiscard]] static std::shared_ptr<const KeptPixels> FromPacked(std::string packed,
                                                                    std::uint64_t count);
  /// A copy of pixels.
  [[nodiscard]] static std::shared_ptr<const KeptPixels> Of(std::span<const std::uint8_t> pixels);

  [[nodiscard]] Expected<PlaneBytes> Read() const override;
  [[nodiscard]] const std::string& Packed() const { return m_Packed; }

 private:
  KeptPixels(std::string packed, std::size_t count) : m_Packed(std::move(packed)), m_Count(count) {}

  std::string m_Packed;
  std::size_t m_Count;
};

/// Packs bytes as TIFF's PackBits does, over the whole of them and not row by row. Each piece is a
/// head and its bytes:
///
///     +---------------+-------------------------+
///     | 0 to 127: n   | n + 1 bytes as they are |
///     +---------------+-------------------------+
///     | 129 to 255: n | one byte, 257 - n times |
///     +---------------+-------------------------+
///     | 128           | nothing; not written    |
///     +---------------+
[[nodiscard]] std::string PackPixels(std::span<const std::uint8_t> pixels);

}  // namespace rastrel::document
