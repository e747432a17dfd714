#include "children/coreodalis/pdf_writer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <set>
#include <utility>

#include "children/coreodalis/band_queue.h"
#include "children/coreodalis/deflate_encoder.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/hex.h"

namespace rastrel::odalis {
namespace {

constexpr double MaximumSidePoints = 14400;
constexpr std::size_t InksOfOldVersions = 8;  // version 1.4 and before
constexpr std::size_t MaximumInks = 32;
constexpr std::size_t MaximumInkName = 100;
constexpr std::size_t MaximumOffset = 9'999'999'999u;  // ten digits in the table of offsets

/// A number as the format wants it: no exponent, no locale, at most four digits after the point.
std::string Number(double value) { return os::ShortDecimal(value, 4); }

/// Inks that a viewer without them shows in their own color; all others it shows as black.
constexpr std::array<std::string_view, 4> ProcessInks = {"Cyan", "Magenta", "Yellow", "Black"};
constexpr std::size_t BlackInk = 3;

/// A name as the format writes it: every byte that is no letter or digit as '#' and two digits.
std::string Name(std::string_view text) {
  std::string name = "/";
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    const bool plain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                       (byte >= 'a' && byte <= 'z');
    if (plain) {
      name += character;
    } else {
      name += '#';
      os::AppendHex(name, byte, os::HexCase::Upper);
    }
  }
  return name;
}

/// The inks' names in an array. The format wants each of them once, not empty, and gives two names
/// a meaning of their own.
std::string InkArray(const std::vector<std::string>& inks) {
  std::set<std::string> taken = {"", "All", "None"};
  std::string array = "[";
  for (const std::string& ink : inks) {
    // A zero byte can't be in a name.
    const std::string first = ink.substr(0, std::min(ink.find('\0'), MaximumInkName));
    std::string unique = first;
    for (unsigned i = 2; !taken.insert(unique).second; ++i) {
      unique = first + "_" + std::to_string(i);
    }
    array += (array.size() > 1 ? " " : "") + Name(unique);
  }
  return array + "]";
}

/// How much cyan, magenta, yellow and black a viewer shows for the inks: a process ink as itself,
/// any other as black. The program has the inks on its stack, the last on top; sums above 1 are cut
/// by the function's range.
std::string InkProgram(const std::vector<std::string>& inks) {
  const std::size_t count = inks.size();
  std::string program = "{";
  for (std::size_t process = 0; process < ProcessInks.size(); ++process) {
    program += " 0";
    for (std::size_t ink = 0; ink < count; ++ink) {
      const auto found = std::find(ProcessInks.begin(), ProcessInks.end(), inks[ink]);
      const std::size_t shown = found == ProcessInks.end()
                                    ? BlackInk
                                    : static_cast<std::size_t>(found - ProcessInks.begin());
      if (shown != process) continue;
      // Above the ink lie the ones after it, the results so far, and the sum.
      program += " " + std::to_string(count - ink + process) + " index add";
    }
  }
  program += " " + std::to_string(count + ProcessInks.size()) + " 4 roll";
  for (std::size_t ink = 0; ink < count; ++ink) program += " pop";
  return program + " }";
}

/// Compresses a band's rows, or leaves them as they are. Inks become 255 for all.
class PdfBandEncoder final : public BandEncoder {
 public:
  PdfBandEncoder(const ImageShape& shape, devices::Compression compression)
      : m_HasInks(HasInks(shape)),
        m_IsPlain(compression == devices::Compression::None),
        m_Deflate(compression) {}

  Expected<void> Encode(Band& band) override {
    if (m_HasInks) {
      for (std::uint8_t& sample : band.rows) sample = static_cast<std::uint8_t>(255 - sample);
    }
    if (!m_IsPlain) return m_Deflate.Encode(band.rows, band);
    std::swap(band.rows, band.encoded);
    return {};
  }

 private:
  bool m_HasInks;
  bool m_IsPlain;
  DeflateEncoder m_Deflate;
};

/// The file, in order; the number is the object's.
///
///   %PDF-1.4                  or 1.6
///   1  catalog                -> 2
///   2  pages                  -> 3
///   3  page                   -> 4, 5; its size and perhaps a user unit
///   4  content                draws 5 over the page
///   5  image                  -> 6, 7; pixels, deflated or plain, of a length that is not known
///   yet 6  length of 5 7  function of the inks   for spot inks only xref, trailer             -> 1
class PdfWriter final : public ImageWriter {
 public:
  PdfWriter(const ImageOrder& order, const ImageShape& shape, WorkerPool& pool)
      : m_Descriptor(order.descriptor),
        m_Name(order.name),
        m_Shape(shape),
        m_Compression(order.compression),
        m_Bands(
            pool, FormOf(order, shape),
            [this] { return std::make_unique<PdfBandEncoder>(m_Shape, m_Compression); },
            [this](const Band& band) { return WriteBand(band); }) {}

  Expected<void> WriteHeader() {
    const double width = m_Shape.width * 72.0 / m_Shape.xResolution;
    const double height = m_Shape.height * 72.0 / m_Shape.yResolution;
    // Rounded up to the file's decimals, so that the page keeps its size.
    const double least = std::max({1.0, width / MaximumSidePoints, height / MaximumSidePoints});
    const double unit = std::ceil(least * 1e4) / 1e4;
    const bool isNewer = unit > 1 || m_Shape.planes.size() > InksOfOldVersions;
    Put(isNewer ? "%PDF-1.6\n" : "%PDF-1.4\n");
    Put("%\xE2\xE3\xCF\xD3\n");
    PutObject("<< /Type /Catalog /Pages 2 0 R >>");
    PutObject("<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    const std::string w = Number(width / unit);
    const std::string h = Number(height / unit);
    PutObject("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + w + " " + h + "]" +
              (unit > 1 ? " /UserUnit " + Number(unit) : "") +
              " /Contents 4 0 R /Resources << /XObject << /Page 5 0 R >> >> >>");
    const std::string drawing = "q " + w + " 0 0 " + h + " 0 0 cm /Page Do Q";
    PutObject("<< /Length " + std::to_string(drawing.size()) + " >>\nstream\n" + drawing +
              "\nendstream");
    m_Offsets.push_back(m_Written);
    Put("5 0 obj\n<< /Type /XObject /Subtype /Image /Width " + std::to_string(m_Shape.width) +
        " /Height " + std::to_string(m_Shape.height) + " /ColorSpace " + ColorSpace() +
        " /BitsPerComponent 8" + (IsPlain() ? "" : " /Filter /FlateDecode") +
        " /Length 6 0 R >>\nstream\n");
    m_StreamStart = m_Written;
    return State();
  }

  Expected<std::span<std::uint8_t>> Room() override { return Named(m_Bands.Room()); }
  Expected<void> Take(std::size_t bytes) override { return Named(m_Bands.Take(bytes)); }

  Expected<void> Finish() override {
    if (auto written = Named(m_Bands.Finish()); !written) return written;
    if (!IsPlain()) PutBytes(m_Sum.Bytes());
    const std::uint64_t length = m_Written - m_StreamStart;
    Put("\nendstream\nendobj\n");
    PutObject(std::to_string(length));
    if (m_Shape.model == ColorModel::Inks) PutInkFunction();
    if (m_Written > MaximumOffset) return Refuse("the page is too large for a PDF file");
    const std::uint64_t table = m_Written;
    Put("xref\n0 " + std::to_string(m_Offsets.size() + 1) + "\n0000000000 65535 f \n");
    for (const std::uint64_t offset : m_Offsets) {
      const std::string digits = std::to_string(offset);
      Put(std::string(10 - digits.size(), '0') + digits + " 00000 n \n");
    }
    Put("trailer\n<< /Size " + std::to_string(m_Offsets.size() + 1) +
        " /Root 1 0 R >>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n");
    return State();
  }

 private:
  Failure Refuse(const std::string& why) const {
    return FailureOf("writing '" + m_Name + "': " + why);
  }
  Expected<void> State() const {
    if (m_Error != 0) return Refuse(DescribeError(m_Error));
    return {};
  }
  /// The same result, whose failure has the file's name.
  template <typename Result>
  Result Named(Result result) const {
    if (result) return result;
    return Refuse(Describe(result.Error()));
  }

  [[nodiscard]] bool IsPlain() const { return m_Compression == devices::Compression::None; }

  static BandQueue::Form FormOf(const ImageOrder& order, const ImageShape& shape) {
    BandQueue::Form form = DeflatedForm(shape.RowBytes(), shape.height, order.share);
    form.isEncodedAtOnce = order.compression == devices::Compression::None;
    return form;
  }

  Expected<void> WriteBand(const Band& band) {
    m_Sum.Add(band);
    PutBytes(band.encoded);
    if (m_Error != 0) return FailureOf(DescribeError(m_Error));
    return {};
  }

  std::string ColorSpace() const {
    switch (m_Shape.model) {
      case ColorModel::Gray: return "/DeviceGray";
      case ColorModel::Rgb: return "/DeviceRGB";
      case ColorModel::Cmyk: return "/DeviceCMYK";
      case ColorModel::Inks: break;
    }
    return "[/DeviceN " + InkArray(m_Shape.planes) + " /DeviceCMYK 7 0 R]";
  }

  void PutInkFunction() {
    const std::string program = InkProgram(m_Shape.planes);
    std::string domain;
    for (std::size_t i = 0; i < m_Shape.planes.size(); ++i) domain += "0 1 ";
    PutObject("<< /FunctionType 4 /Domain [" + domain + "] /Range [0 1 0 1 0 1 0 1] /Length " +
              std::to_string(program.size()) + " >>\nstream\n" + program + "\nendstream");
  }

  /// Writes; after the first failure nothing more, and State returns it.
  void Put(std::string_view bytes) {
    if (m_Error != 0) return;
    if (const auto written = os::WriteAll(m_Descriptor, bytes); !written)
      m_Error = written.Error().error;
    m_Written += bytes.size();
  }

  void PutBytes(std::span<const std::uint8_t> bytes) {
    Put(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  }

  void PutObject(const std::string& content) {
    m_Offsets.push_back(m_Written);
    Put(std::to_string(m_Offsets.size()) + " 0 obj\n" + content + "\nendobj\n");
  }

  int m_Descriptor;
  std::string m_Name;
  ImageShape m_Shape;
  devices::Compression m_Compression;
  std::vector<std::uint64_t> m_Offsets;
  std::uint64_t m_Written = 0;
  std::uint64_t m_StreamStart = 0;
  StreamSum m_Sum;
  int m_Error = 0;
  BandQueue m_Bands;  ///< last: it uses the others
};

}  // namespace

Expected<std::unique_ptr<ImageWriter>> MakePdfWriter(const ImageOrder& order,
                                                     const ImageShape& shape, WorkerPool& pool) {
  if (shape.planes.size() > MaximumInks) {
    return FailureOf("writing '" + order.name + "': a PDF file can't hold more than " +
                     std::to_string(MaximumInks) + " inks; use TIFF or planes");
  }
  auto writer = std::make_unique<PdfWriter>(order, shape, pool);
  if (auto written = writer->WriteHeader(); !written) return written.Error();
  return std::unique_ptr<ImageWriter>(std::move(writer));
}

}  // namespace rastrel::odalis
