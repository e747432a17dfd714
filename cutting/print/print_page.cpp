#include "cutting/print/print_page.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>

#include "cutting/frame/mark_raster.h"
#include "cutting/frame/mark_shape.h"
#include "cutting/print/deflate.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/hex.h"

namespace rastrel::cutting {
namespace {

constexpr double PointsPerMillimetre = 72 / 25.4;
constexpr double InchMillimetres = 25.4;
constexpr int Decimals = 6;
constexpr char White = '\xFF';

std::string Number(double value) { return os::ShortDecimal(value, Decimals); }
std::string Points(double millimetres) { return Number(millimetres * PointsPerMillimetre); }

// "/Old#20Gold"
std::string NameObject(std::string_view name) {
  std::string object = "/";
  for (const char byte : name) {
    const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                       (byte >= '0' && byte <= '9') || byte == '-' || byte == '_' || byte == '.';
    if (plain) {
      object += byte;
    } else {
      object += '#';
      os::AppendHex(object, static_cast<unsigned char>(byte));
    }
  }
  return object;
}

// A calculator function from all inks to CMYK: each sum is pushed above the operands, and these are
// then rolled up and dropped.
std::string LookFunction(const std::vector<SpotInk>& spots) {
  const std::size_t count = spots.size() + 4;
  std::string text = "{";
  for (std::size_t process = 0; process < 4; ++process) {
    text += " " + std::to_string(count - 1) + " index";
    for (std::size_t spot = 0; spot < spots.size(); ++spot)
      text += " " + std::to_string(spots.size() - spot + process) + " index " +
              Number(spots[spot].look.at(process)) + " mul add";
  }
  text += " " + std::to_string(count + 4) + " 4 roll";
  for (std::size_t i = 0; i < count; ++i) text += " pop";
  return text + " }";
}

std::string FunctionHead(const std::vector<SpotInk>& spots, std::size_t bytes) {
  std::string domain;
  for (std::size_t i = 0; i < spots.size() + 4; ++i) domain += " 0 1";
  return "<< /FunctionType 4 /Domain [" + domain + " ] /Range [ 0 1 0 1 0 1 0 1 ] /Length " +
         std::to_string(bytes) + " >>";
}

// The objects, each with its number; pixels are written as they are read:
//
//     1 Catalog -> 2 Pages -> 3 Page -> 4 content
//                                    -> 5 font of the labels
//                                    -> 6... of each picture: function of its inks' look (or null),
//                                            pixels, and the length of their stream
class PageWriter {
 public:
  PageWriter(const PrintPage& page, const ByteSink& sink) : m_Page(page), m_Sink(sink) {}

  Expected<void> Write() {
    if (auto done = Put("%PDF-1.6\n%\xE2\xE3\xCF\xD3\n"); !done) return done;
    if (auto done = Object("<< /Type /Catalog /Pages 2 0 R >>"); !done) return done;
    if (auto done = Object("<< /Type /Pages /Kids [3 0 R] /Count 1 >>"); !done) return done;
    if (auto done = Object(PageObject()); !done) return done;
    const std::string content = Content();
    if (auto done = Object("<< /Length " + std::to_string(content.size()) + " >>\nstream\n" +
                           content + "\nendstream");
        !done)
      return done;
    if (auto done = Object("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"); !done)
      return done;
    for (const PlacedPixels& picture : m_Page.pictures)
      if (auto done = Picture(picture); !done) return done;
    return Table();
  }

 private:
  static constexpr std::size_t FirstPicture = 6;
  static constexpr std::size_t ObjectsOfPicture = 3;

  Expected<void> Put(std::string_view bytes) {
    m_Offset += bytes.size();
    return m_Sink(bytes);
  }

  Expected<void> Begin() {
    m_Offsets.push_back(m_Offset);
    return Put(std::to_string(m_Offsets.size()) + " 0 obj\n");
  }

  Expected<void> Object(const std::string& body) {
    if (auto done = Begin(); !done) return done;
    return Put(body + "\nendobj\n");
  }

  [[nodiscard]] std::string PageObject() const {
    std::string images;
    for (std::size_t i = 0; i < m_Page.pictures.size(); ++i)
      images += " /I" + std::to_string(i) + " " +
                std::to_string(FirstPicture + ObjectsOfPicture * i + 1) + " 0 R";
    return "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + Points(m_Page.width) + " " +
           Points(m_Page.height) +
           "] /Contents 4 0 R /Resources << /Font << /F 5 0 R >> /XObject <<" + images +
           " >> >> >>";
  }

  [[nodiscard]] static std::string ClipOf(const std::vector<Contour>& clip) {
    if (clip.empty()) return {};
    std::string text;
    const auto add = [&text](Point point) {
      text += Points(point.x) + " " + Points(point.y) + " ";
    };
    for (const Contour& contour : clip) {
      add(contour.start);
      text += "m\n";
      for (const Segment& segment : contour.segments) {
        if (segment.isCurve) {
          add(segment.first);
          add(segment.second);
        }
        add(segment.end);
        text += segment.isCurve ? "c\n" : "l\n";
      }
      text += "h\n";
    }
    return text + "W* n\n";
  }

  [[nodiscard]] std::string Content() const {
    std::string text;
    for (std::size_t i = 0; i < m_Page.pictures.size(); ++i) {
      const PlacedPixels& picture = m_Page.pictures[i];
      const double width = picture.pixelWidth * static_cast<double>(picture.width);
      const double height = picture.pixelHeight * static_cast<double>(picture.height);
      const Transform& place = picture.place;
      text += "q\n" + ClipOf(picture.clip) + Points(place.a * width) + " " +
              Points(place.b * width) + " " + Points(place.c * height) + " " +
              Points(place.d * height) + " " + Points(place.e) + " " + Points(place.f) + " cm /I" +
              std::to_string(i) + " Do\nQ\n";
    }
    for (const PageLabel& label : m_Page.labels) {
      text += "0 g BT /F " + Points(label.height / 0.72) + " Tf " + Points(label.place.x) + " " +
              Points(label.place.y) + " Td <";
      for (const char letter : label.text) os::AppendHex(text, static_cast<unsigned char>(letter));
      text += "> Tj ET\n";
    }
    return text;
  }

  [[nodiscard]] static std::string ColorSpaceOf(const PixelInks& inks, std::size_t function) {
    if (inks.process == ProcessColors::Gray) return "/DeviceGray";
    if (inks.process == ProcessColors::Rgb) return "/DeviceRGB";
    if (inks.spots.empty()) return "/DeviceCMYK";
    std::string names = "/Cyan /Magenta /Yellow /Black";
    for (const SpotInk& spot : inks.spots) names += " " + NameObject(spot.name);
    return "[/DeviceN [" + names + "] /DeviceCMYK " + std::to_string(function) + " 0 R]";
  }

  Expected<void> Function(const PixelInks& inks) {
    if (inks.spots.empty()) return Object("null");
    const std::string text = LookFunction(inks.spots);
    return Object(FunctionHead(inks.spots, text.size()) + "\nstream\n" + text + "\nendstream");
  }

  Expected<void> Picture(const PlacedPixels& picture) {
    if (picture.width == 0 || picture.height == 0)
      return FailureOf("the picture of the page has no pixels");
    if (auto done = Function(picture.inks); !done) return done;
    const std::size_t function = m_Offsets.size();
    if (auto done = Begin(); !done) return done;
    std::string decode;
    if (picture.inks.process == ProcessColors::Cmyk) {
      decode = " /Decode [";
      for (std::size_t i = 0; i < picture.inks.Samples(); ++i) decode += " 1 0";
      decode += " ]";
    }
    if (auto done =
            Put("<< /Type /XObject /Subtype /Image /Width " + std::to_string(picture.width) +
                " /Height " + std::to_string(picture.height) + " /BitsPerComponent 8 /ColorSpace " +
                ColorSpaceOf(picture.inks, function) + decode + " /Filter /FlateDecode /Length " +
                std::to_string(function + 2) + " 0 R >>\nstream\n");
        !done)
      return done;
    const std::uint64_t begin = m_Offset;
    if (auto done = Pixels(picture); !done) return done;
    const std::uint64_t length = m_Offset - begin;
    if (auto done = Put("\nendstream\nendobj\n"); !done) return done;
    return Object(std::to_string(length));
  }

  Expected<void> Pixels(const PlacedPixels& picture) {
    auto deflate = Deflate::Start();
    if (!deflate) return deflate.Error();
    std::string row(picture.width * picture.inks.Samples(), White);
    for (std::size_t y = 0; y < picture.height; ++y) {
      if (auto read = picture.read(y, row); !read) return read;
      const auto ready = deflate->Add(row);
      if (!ready) return ready.Error();
      if (auto done = Put(*ready); !done) return done;
    }
    const auto rest = deflate->End();
    if (!rest) return rest.Error();
    return Put(*rest);
  }

  Expected<void> Table() {
    const std::uint64_t table = m_Offset;
    const std::string count = std::to_string(m_Offsets.size() + 1);
    std::string text = "xref\n0 " + count + "\n0000000000 65535 f \n";
    for (const std::uint64_t offset : m_Offsets) {
      const std::string digits = std::to_string(offset);
      text +=
          std::string(digits.size() < 10 ? 10 - digits.size() : 0, '0') + digits + " 00000 n \n";
    }
    return Put(text + "trailer\n<< /Size " + count + " /Root 1 0 R >>\nstartxref\n" +
               std::to_string(table) + "\n%%EOF\n");
  }

  const PrintPage& m_Page;
  const ByteSink& m_Sink;
  std::uint64_t m_Offset = 0;
  std::vector<std::uint64_t> m_Offsets;
};

// The pixels that a mark's ink touches.
PlacedPixels PictureOf(const RegistrationMark& mark, const PixelInks& inks, double pixelWidth,
                       double pixelHeight, bool all) {
  const Box box = BoxOf(mark);
  const double left = std::floor(box.left / pixelWidth) - 1;
  const double bottom = std::floor(box.bottom / pixelHeight) - 1;
  PlacedPixels picture{.inks = inks, .pixelWidth = pixelWidth, .pixelHeight = pixelHeight};
  picture.width = static_cast<std::size_t>(std::ceil(box.right / pixelWidth) + 1 - left);
  picture.height = static_cast<std::size_t>(std::ceil(box.top / pixelHeight) + 1 - bottom);
  picture.place.e = left * pixelWidth;
  picture.place.f = bottom * pixelHeight;
  RegistrationMark moved = mark;
  moved.center.x -= picture.place.e;
  moved.center.y -= picture.place.f;
  const auto raster = std::make_shared<MarkRaster>(
      std::vector{moved}, PixelGrid{picture.width, picture.height, InchMillimetres / pixelWidth,
                                    InchMillimetres / pixelHeight});
  const bool isBlackAlone = inks.process == ProcessColors::Cmyk && !all;
  picture.read = [raster, isBlackAlone, samples = inks.Samples(),
                  coverage = std::vector<std::uint8_t>(picture.width)](
                     std::size_t fromTop, std::span<char> row) mutable -> Expected<void> {
    std::ranges::fill(row, White);
    if (!raster->CoverageOf(fromTop, coverage)) return {};
    constexpr std::size_t Black = 3;
    for (std::size_t x = 0; x < coverage.size(); ++x)
      for (std::size_t i = 0; i < samples; ++i)
        if (!isBlackAlone || i == Black)
          row[x * samples + i] = static_cast<char>(255 - coverage[x]);
    return {};
  };
  return picture;
}

}  // namespace

std::size_t PixelInks::Samples() const {
  if (process == ProcessColors::Gray) return 1;
  return process == ProcessColors::Rgb ? 3 : 4 + spots.size();
}

Expected<void> WritePrintPage(const PrintPage& page, const ByteSink& sink) {
  if (!(page.width > 0) || !(page.height > 0) || !std::isfinite(page.width * page.height))
    return FailureOf("the page that is printed has no extent");
  return PageWriter(page, sink).Write();
}

std::vector<PlacedPixels> PicturesOf(const std::vector<RegistrationMark>& marks,
                                     const PixelInks& inks, double pixelWidth, double pixelHeight,
                                     bool all) {
  std::vector<PlacedPixels> pictures;
  for (const RegistrationMark& mark : marks)
    pictures.push_back(PictureOf(mark, inks, pixelWidth, pixelHeight, all));
  return pictures;
}

}  // namespace rastrel::cutting
