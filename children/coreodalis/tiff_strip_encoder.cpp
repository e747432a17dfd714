#include "children/coreodalis/tiff_strip_encoder.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>

#include "children/coreodalis/lzw_encoder.h"
#include "children/coreodalis/pixel_file.h"
#include "children/coreodalis/tiff_form.h"

namespace rastrel::odalis {
namespace {

void InvertInks(std::vector<std::uint8_t>& rows) {
  for (std::uint8_t& sample : rows) sample = static_cast<std::uint8_t>(255 - sample);
}

/// The strips of a band as they are.
class PlainEncoder final : public BandEncoder {
 public:
  explicit PlainEncoder(const ImageShape& shape)
      : m_StripBytes(RowsPerStrip(shape) * shape.RowBytes()), m_HasInks(HasInks(shape)) {}

  Expected<void> Encode(Band& band) override {
    if (m_HasInks) InvertInks(band.rows);
    std::swap(band.rows, band.encoded);
    for (std::size_t at = 0; at < band.encoded.size(); at += m_StripBytes) {
      band.pieces.push_back(std::min(m_StripBytes, band.encoded.size() - at));
    }
    return {};
  }

 private:
  std::size_t m_StripBytes;
  bool m_HasInks;
};

/// Replaces each sample of a row but the first pixel's by its difference to the sample before.
void TakeDifferences(std::span<const std::uint8_t> row, std::size_t samples, std::uint8_t* to) {
  std::copy_n(row.begin(), samples, to);
  for (std::size_t i = samples; i < row.size(); ++i)
    to[i] = static_cast<std::uint8_t>(row[i] - row[i - samples]);
}

/// Strips by LZW with horizontal differences.
class LzwStripEncoder final : public BandEncoder {
 public:
  explicit LzwStripEncoder(const ImageShape& shape)
      : m_RowBytes(shape.RowBytes()),
        m_StripBytes(RowsPerStrip(shape) * shape.RowBytes()),
        m_Samples(shape.planes.size()),
        m_HasInks(HasInks(shape)) {}

  Expected<void> Encode(Band& band) override {
    if (m_HasInks) InvertInks(band.rows);
    band.encoded.clear();
    for (std::size_t at = 0; at < band.rows.size(); at += m_StripBytes) {
      const std::size_t before = band.encoded.size();
      const auto strip =
          std::span(band.rows).subspan(at, std::min(m_StripBytes, band.rows.size() - at));
      m_Differences.resize(strip.size());
      for (std::size_t row = 0; row < strip.size(); row += m_RowBytes)
        TakeDifferences(strip.subspan(row, m_RowBytes), m_Samples, m_Differences.data() + row);
      m_Lzw.Encode(m_Differences, band.encoded);
      band.pieces.push_back(band.encoded.size() - before);
    }
    return {};
  }

 private:
  std::size_t m_RowBytes;
  std::size_t m_StripBytes;
  std::size_t m_Samples;
  bool m_HasInks;
  std::vector<std::uint8_t> m_Differences;
  LzwEncoder m_Lzw;
};

/// A TIFF file of one strip, which is written anew for each strip. Nothing is kept but the bytes
/// that the library writes for the strip.
class StripEncoder final : public BandEncoder {
 public:
  StripEncoder(const ImageShape& shape, devices::Compression compression)
      : m_StripBytes(RowsPerStrip(shape) * shape.RowBytes()), m_HasInks(HasInks(shape)) {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (!options) return;
    TIFFOpenOptionsSetErrorHandlerExtR(options, TakeError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, TakeWarning, this);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(2 * LargestRow));
    m_Tiff.reset(TIFFClientOpenExt("strip", "w", this, Read, Write, Seek, Close, Size, nullptr,
                                   nullptr, options));
    TIFFOpenOptionsFree(options);
    if (m_Tiff) SetStripForm(m_Tiff.get(), shape, compression, RowsPerStrip(shape));
  }
  StripEncoder(const StripEncoder&) = delete;
  StripEncoder& operator=(const StripEncoder&) = delete;

  Expected<void> Encode(Band& band) override {
    if (!m_Tiff || !m_Error.empty()) return Refuse();
    if (m_HasInks) InvertInks(band.rows);
    band.encoded.clear();
    m_Strip = &band.encoded;
    Expected<void> result;
    for (std::size_t at = 0; at < band.rows.size() && result; at += m_StripBytes) {
      const std::size_t before = band.encoded.size();
      const auto count = static_cast<tmsize_t>(std::min(m_StripBytes, band.rows.size() - at));
      if (TIFFWriteEncodedStrip(m_Tiff.get(), 0, band.rows.data() + at, count) != count)
        result = Refuse();
      band.pieces.push_back(band.encoded.size() - before);
    }
    m_Strip = nullptr;
    return result;
  }

 private:
  [[nodiscard]] Failure Refuse() const {
    return FailureOf(m_Error.empty() ? "the TIFF library gives no reason" : m_Error);
  }

  static StripEncoder& Of(thandle_t self) { return *static_cast<StripEncoder*>(self); }
  static tmsize_t Read(thandle_t, void*, tmsize_t) { return 0; }
  static tmsize_t Write(thandle_t self, void* bytes, tmsize_t count) {
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    auto* strip = Of(self).m_Strip;
    if (!strip) return count;
    try {
      strip->insert(strip->end(), from, from + count);
    } catch (const std::exception&) {  // it may not pass through the library
      Of(self).m_Error = "out of memory";
      return -1;
    }
    return count;
  }
  // A strip's bytes come in order, whatever the library takes their place to be.
  static toff_t Seek(thandle_t self, toff_t offset, int whence) {
    toff_t& position = Of(self).m_Position;
    if (whence == SEEK_SET) position = offset;
    return position;
  }
  static int Close(thandle_t) { return 0; }
  static toff_t Size(thandle_t) { return 0; }
  static int TakeError(TIFF*, void* self, const char*, const char* format, va_list list) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, list);
    static_cast<StripEncoder*>(self)->m_Error = text;
    return 1;
  }
  static int TakeWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

  struct Closer {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };

  std::size_t m_StripBytes;
  bool m_HasInks;
  std::vector<std::uint8_t>* m_Strip = nullptr;  ///< where the library's writes go
  toff_t m_Position = 64;                        ///< a file's end after its header
  std::string m_Error;
  std::unique_ptr<TIFF, Closer> m_Tiff;  ///< last: its end writes a directory
};

}  // namespace

std::unique_ptr<BandEncoder> MakeTiffStripEncoder(const ImageShape& shape,
                                                  devices::Compression compression) {
  if (compression == devices::Compression::Lzw) return std::make_unique<LzwStripEncoder>(shape);
  if (compression == devices::Compression::None) return std::make_unique<PlainEncoder>(shape);
  return std::make_unique<StripEncoder>(shape, compression);
}

}  // namespace rastrel::odalis
