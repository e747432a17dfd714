#include <zlib.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "rastrel/platform/os/hex.h"
#include "server/printer/byte_file.h"
#include "server/printer/picture_file.h"
#include "server/printer/picture_pdf.h"
#include "server/printer/png_rows.h"

namespace rastrel::server {
namespace {

constexpr std::size_t PieceSize = 65536;
constexpr std::uint32_t ChunkLimit = 0x7FFFFFFF;
constexpr std::uint32_t HeadChunkLimit = 4096;  // of those that are read whole
constexpr double MetersPerInch = 0.0254;

Failure Refuse(const std::string& why) {
  return FailureOf("the PNG file " + why, FailureCode::BadInput);
}

enum ColorType : unsigned { Gray = 0, Rgb = 2, Palette = 3, GrayAlpha = 4, Rgba = 6 };

struct Png {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  unsigned bits = 0;
  unsigned type = 0;
  double horizontalDensity = UsualDensity;
  double verticalDensity = UsualDensity;
  std::string palette;       // three bytes a color
  std::string transparency;  // of a palette: a byte a color; else a color that is clear

  [[nodiscard]] unsigned Channels() const {
    if (type == Rgba) return 4;
    if (type == Rgb) return 3;
    return type == GrayAlpha ? 2 : 1;
  }
  [[nodiscard]] bool HasAlpha() const {
    return type == GrayAlpha || type == Rgba || !transparency.empty();
  }
  [[nodiscard]] std::size_t RowBytes() const {
    return static_cast<std::size_t>((std::uint64_t{width} * Channels() * bits + 7) / 8);
  }
};

Expected<void> TakeHeader(const std::string& body, Png& png) {
  if (body.size() != 13) return Refuse("has a damaged header");
  png.width = BigEndian(body, 0, 4);
  png.height = BigEndian(body, 4, 4);
  png.bits = static_cast<unsigned char>(body[8]);
  png.type = static_cast<unsigned char>(body[9]);
  const bool isWhole = png.bits == 8 || png.bits == 16;
  const bool isSmall = png.bits == 1 || png.bits == 2 || png.bits == 4;
  const bool fits = png.type == Gray      ? isWhole || isSmall
                    : png.type == Palette ? png.bits == 8 || isSmall
                                          : isWhole;
  const bool isKnown = png.type <= Rgba && png.type != 1 && png.type != 5;
  if (!isKnown || !fits || body[10] != 0 || body[11] != 0) return Refuse("has a damaged header");
  if (body[12] != 0) return Refuse("is interlaced; save it without, or print it as PDF");
  if (png.width == 0 || png.height == 0 || png.width > PictureSideLimit ||
      png.height > PictureSideLimit)
    return Refuse("is larger than " + std::to_string(PictureSideLimit) + " pixels, or empty");
  return {};
}

Expected<void> TakeChunk(const std::string& name, const std::string& body, Png& png) {
  if (name == "PLTE") {
    if (body.empty() || body.size() % 3 != 0 || body.size() > 768)
      return Refuse("has a damaged palette");
    png.palette = body;
  } else if (name == "tRNS") {
    const std::size_t size = png.type == Gray ? 2 : png.type == Rgb ? 6 : body.size();
    if (png.type == GrayAlpha || png.type == Rgba || body.size() != size || body.empty() ||
        (png.type == Palette && body.size() > png.palette.size() / 3))
      return Refuse("has damaged transparency");
    png.transparency = body;
  } else if (name == "pHYs" && body.size() == 9 && body[8] == 1) {
    png.horizontalDensity = std::max(1.0, BigEndian(body, 0, 4) * MetersPerInch);
    png.verticalDensity = std::max(1.0, BigEndian(body, 4, 4) * MetersPerInch);
  }
  return {};
}

// Rows with transparency as rows of gray or RGB on white.
class OnWhite {
 public:
  explicit OnWhite(const Png& png) : m_Png(png), m_Maximum((1u << png.bits) - 1) {}

  [[nodiscard]] std::string Flatten(const std::string& row) const {
    std::string flat;
    for (std::uint32_t x = 0; x < m_Png.width; ++x) AppendPixel(row, x, flat);
    return flat;
  }

 private:
  [[nodiscard]] unsigned Sample(const std::string& row, std::size_t index) const {
    if (m_Png.bits == 16) return BigEndian(row, index * 2, 2);
    const std::size_t bit = index * m_Png.bits;
    const unsigned byte = static_cast<unsigned char>(row[bit / 8]);
    return byte >> (8 - m_Png.bits - bit % 8) & m_Maximum;
  }
  void AppendPixel(const std::string& row, std::uint32_t x, std::string& flat) const {
    const std::size_t first = std::size_t{x} * m_Png.Channels();
    if (m_Png.type == Palette) return AppendColor(Sample(row, first), flat);
    const unsigned colors = m_Png.type == Rgb || m_Png.type == Rgba ? 3 : 1;
    unsigned alpha = m_Maximum;
    if (m_Png.Channels() > colors) {
      alpha = Sample(row, first + colors);
    } else {
      bool isClear = true;
      for (unsigned index = 0; index < colors; ++index)
        isClear =
            isClear && Sample(row, first + index) == BigEndian(m_Png.transparency, index * 2, 2);
      if (isClear) alpha = 0;
    }
    for (unsigned index = 0; index < colors; ++index)
      AppendSample(Mix(Sample(row, first + index), alpha, m_Maximum), flat);
  }
  void AppendColor(unsigned index, std::string& flat) const {
    const unsigned alpha = index < m_Png.transparency.size()
                               ? static_cast<unsigned char>(m_Png.transparency[index])
                               : 255;
    for (unsigned channel = 0; channel < 3; ++channel) {
      const std::size_t at = std::size_t{index} * 3 + channel;
      const unsigned color =
          at < m_Png.palette.size() ? static_cast<unsigned char>(m_Png.palette[at]) : 0;
      flat += static_cast<char>(Mix(color, alpha, 255));
    }
  }
  // A sample of less than 8 bits becomes one of 8.
  void AppendSample(unsigned value, std::string& flat) const {
    if (m_Png.bits == 16) flat += static_cast<char>(value >> 8);
    flat += static_cast<char>(m_Png.bits >= 8 ? value & 0xFF : value * 255 / m_Maximum);
  }
  static unsigned Mix(unsigned color, unsigned alpha, unsigned maximum) {
    const std::uint64_t sum =
        std::uint64_t{color} * alpha + std::uint64_t{maximum} * (maximum - alpha);
    return static_cast<unsigned>((sum + maximum / 2) / maximum);
  }

  const Png& m_Png;
  unsigned m_Maximum;
};

PictureForm FormOf(const Png& png) {
  PictureForm form;
  form.width = png.width;
  form.height = png.height;
  form.horizontalDensity = png.horizontalDensity;
  form.verticalDensity = png.verticalDensity;
  form.channels = png.type == Gray || png.type == GrayAlpha ? 1 : 3;
  if (png.HasAlpha()) {
    form.bits = png.bits == 16 ? 16 : 8;
    return form;
  }
  form.bits = png.bits;
  if (png.type == Palette) {
    form.space = "[/Indexed /DeviceRGB " + std::to_string(png.palette.size() / 3 - 1) + " <";
    form.space += os::HexFromBytes(png.palette);
    form.space += ">]";
  }
  form.coding = "/Filter /FlateDecode /DecodeParms << /Predictor 15 /Colors " +
                std::to_string(png.Channels()) + " /BitsPerComponent " + std::to_string(png.bits) +
                " /Columns " + std::to_string(png.width) + " >>";
  return form;
}

class PngReader {
 public:
  PngReader(const ByteFile& file, PicturePdf& pdf) : m_File(file), m_Pdf(pdf) {}

  Expected<void> Run() {
    for (;;) {
      const auto start = m_File.Read(m_At, 8);
      if (!start) return start.Error();
      const std::uint32_t length = BigEndian(*start, 0, 4);
      const std::string name = start->substr(4);
      if (length > ChunkLimit || (m_At == 8) != (name == "IHDR"))
        return Refuse("has a damaged header");
      if (auto done = TakeAny(name, length); !done) return done;
      if (name == "IEND") return Finish();
      m_At += std::uint64_t{12} + length;
    }
  }

 private:
  Expected<void> TakeAny(const std::string& name, std::uint32_t length) {
    // A capital first letter means that the picture can't be understood without it.
    const bool isKnown = name == "IHDR" || name == "PLTE" || name == "IDAT" || name == "IEND";
    if (!isKnown && (name[0] & 0x20) == 0) return Refuse("has a part of an unknown kind");
    const bool isHead = name == "IHDR" || name == "PLTE" || name == "tRNS" || name == "pHYs";
    if (isHead && (length > HeadChunkLimit || m_Rows)) return Refuse("has a damaged header");
    if (name == "IDAT" && !m_Rows)
      if (auto begun = Begin(); !begun) return begun;
    std::string body;
    if (auto read = ReadChunk(name, length, isHead ? &body : nullptr); !read) return read;
    if (name == "IHDR") return TakeHeader(body, m_Png);
    return isHead ? TakeChunk(name, body, m_Png) : Expected<void>();
  }

  // Reads a chunk in pieces and checks its sum. Its bytes go to `whole`, or to the rows.
  Expected<void> ReadChunk(const std::string& name, std::uint32_t length, std::string* whole) {
    uLong sum = ::crc32(0, reinterpret_cast<const Bytef*>(name.data()), 4);
    for (std::uint32_t done = 0; done < length;) {
      const std::size_t count = std::min<std::size_t>(PieceSize, length - done);
      const auto piece = m_File.Read(m_At + 8 + done, count);
      if (!piece) return piece.Error();
      sum = ::crc32(sum, reinterpret_cast<const Bytef*>(piece->data()), static_cast<uInt>(count));
      if (whole) *whole += *piece;
      if (name == "IDAT")
        if (auto taken = TakeData(*piece); !taken) return taken;
      done += static_cast<std::uint32_t>(count);
    }
    const auto stored = m_File.Read(m_At + 8 + length, 4);
    if (!stored) return stored.Error();
    if (BigEndian(*stored, 0, 4) != sum) return Refuse("has a wrong check sum");
    return {};
  }

  Expected<void> TakeData(const std::string& piece) {
    if (auto read = m_Rows->Add(piece); !read) return read;
    return m_Png.HasAlpha() ? Expected<void>() : m_Pdf.Add(piece);
  }

  Expected<void> Begin() {
    if (m_Png.type == Palette && m_Png.palette.empty()) return Refuse("has no palette");
    if (auto begun = m_Pdf.BeginPage(FormOf(m_Png)); !begun) return begun;
    const std::size_t pixelBytes = std::max(1u, m_Png.Channels() * m_Png.bits / 8);
    m_Rows = std::make_unique<PngRows>(
        m_Png.height, m_Png.RowBytes(), pixelBytes, [this](const std::string& row) {
          return m_Png.HasAlpha() ? m_Pdf.Add(OnWhite(m_Png).Flatten(row)) : Expected<void>();
        });
    return {};
  }

  Expected<void> Finish() {
    if (!m_Rows) return Refuse("has no picture");
    if (auto whole = m_Rows->Finish(); !whole) return whole;
    if (auto ended = m_Pdf.EndPage(); !ended) return ended;
    return m_Pdf.Finish();
  }

  const ByteFile& m_File;
  PicturePdf& m_Pdf;
  Png m_Png;
  std::unique_ptr<PngRows> m_Rows;
  std::uint64_t m_At = 8;
};

}  // namespace

Expected<void> PdfFromPng(const std::string& path, const std::string& target) {
  const auto file = ByteFile::Open(path);
  if (!file) return file.Error();
  auto pdf = PicturePdf::Create(target);
  if (!pdf) return pdf.Error();
  return PngReader(*file, **pdf).Run();
}

}  // namespace rastrel::server
