#include "server/printer/picture_pdf.h"

#include <zlib.h>

#include <array>
#include <cstdio>
#include <utility>

#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

// The file, whose objects are numbered as they are written. Those of a page:
//
//     N    the picture's stream      /Length N+1 0 R: it is known when its last row came
//     N+1  that length
//     N+2  the page's content        w 0 0 h 0 0 cm /P Do
//     N+3  the page
//
// 1 is the catalog and 2 the list of pages, which come last, before the table of offsets.
namespace rastrel::server {
namespace {

constexpr std::size_t BufferSize = 65536;
constexpr int ObjectsOfPage = 4;
constexpr double PointsPerInch = 72;
constexpr double MaximumDensity = 100000;
// Level 1: a sign's pages are large, and the file is read once.
constexpr int DeflateLevel = 1;

std::string Reference(std::size_t object) { return std::to_string(object) + " 0 R"; }

std::string SpaceOf(const PictureForm& form) {
  if (!form.space.empty()) return form.space;
  if (form.channels == 1) return "/DeviceGray";
  return form.channels == 3 ? "/DeviceRGB" : "/DeviceCMYK";
}

Expected<void> CheckForm(const PictureForm& form) {
  const auto refuse = [](const std::string& why) {
    return FailureOf("the picture " + why, FailureCode::BadInput);
  };
  if (form.width == 0 || form.height == 0) return refuse("has no pixels");
  if (form.width > PictureSideLimit || form.height > PictureSideLimit)
    return refuse("is larger than " + std::to_string(PictureSideLimit) + " pixels");
  if (form.channels != 1 && form.channels != 3 && form.channels != 4)
    return refuse("has " + std::to_string(form.channels) + " samples a pixel");
  if (form.bits != 1 && form.bits != 2 && form.bits != 4 && form.bits != 8 && form.bits != 16)
    return refuse("has " + std::to_string(form.bits) + " bits a sample");
  for (const double density : {form.horizontalDensity, form.verticalDensity})
    if (!(density >= 1 && density <= MaximumDensity))
      return refuse("has no density from 1 to 100000 pixels per inch");
  return {};
}

}  // namespace

std::uint64_t RowBytesOf(const PictureForm& form) {
  return (std::uint64_t{form.width} * form.channels * form.bits + 7) / 8;
}

struct PicturePdf::Parts {
  os::FileDescriptor file;
  std::string path;
  std::string buffer;
  std::uint64_t written = 0;                 // bytes, with those of the buffer
  std::vector<std::uint64_t> offsets{0, 0};  // of objects 1, 2 ...
  std::size_t pages = 0;
  PictureForm form;
  std::uint64_t left = 0;         // bytes of rows that are to come
  std::uint64_t streamBegin = 0;  // of the present picture
  z_stream deflater{};
  bool deflating = false;

  ~Parts() {
    if (deflating) static_cast<void>(::deflateEnd(&deflater));
  }

  Expected<void> Flush() {
    if (auto done = os::WriteAll(file.Get(), buffer); !done) return FailureAt(path, done.Error());
    buffer.clear();
    return {};
  }
  Expected<void> Write(std::string_view bytes) {
    buffer += bytes;
    written += bytes.size();
    return buffer.size() < BufferSize ? Expected<void>() : Flush();
  }
  std::size_t BeginObject() {
    offsets.push_back(written);
    return offsets.size();
  }
  Expected<void> WriteObject(const std::string& text) {
    const std::size_t number = BeginObject();
    return Write(std::to_string(number) + " 0 obj\n" + text + "\nendobj\n");
  }
  Expected<void> Compress(std::string_view bytes, int flush);
};

Expected<void> PicturePdf::Parts::Compress(std::string_view bytes, int flush) {
  std::array<char, 16384> out;  // NOLINT(cppcoreguidelines-pro-type-member-init)
  deflater.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  deflater.avail_in = static_cast<uInt>(bytes.size());
  do {
    deflater.next_out = reinterpret_cast<Bytef*>(out.data());
    deflater.avail_out = static_cast<uInt>(out.size());
    static_cast<void>(::deflate(&deflater, flush));
    if (auto done = Write({out.data(), out.size() - deflater.avail_out}); !done) return done;
  } while (deflater.avail_out == 0);
  return {};
}

PicturePdf::PicturePdf(std::unique_ptr<Parts> parts) : m_Parts(std::move(parts)) {}
PicturePdf::~PicturePdf() = default;

std::size_t PicturePdf::Pages() const { return m_Parts->pages; }

Expected<std::unique_ptr<PicturePdf>> PicturePdf::Create(const std::string& path) {
  auto parts = std::make_unique<Parts>();
  auto file = os::CreateForWriting(os::FromNative(path), os::Access::Private);
  if (!file) return file.Error();
  parts->file = *std::move(file);
  parts->path = path;
  if (auto done = parts->Write("%PDF-1.5\n%\xE2\xE3\xCF\xD3\n"); !done) return done.Error();
  return std::unique_ptr<PicturePdf>(new PicturePdf(std::move(parts)));
}

Expected<void> PicturePdf::BeginPage(const PictureForm& form) {
  if (auto fine = CheckForm(form); !fine) return fine;
  Parts& parts = *m_Parts;
  if (parts.pages == PicturePageLimit)
    return FailureOf("there are more than " + std::to_string(PicturePageLimit) + " pages",
                     FailureCode::BadInput);
  parts.form = form;
  const std::size_t number = parts.BeginObject();
  const std::string coding = form.coding.empty() ? "/Filter /FlateDecode" : form.coding;
  if (auto done = parts.Write(
          std::to_string(number) + " 0 obj\n<< /Type /XObject /Subtype /Image /Width " +
          std::to_string(form.width) + " /Height " + std::to_string(form.height) +
          " /BitsPerComponent " + std::to_string(form.bits) + " /ColorSpace " + SpaceOf(form) +
          " " + coding + " /Length " + Reference(number + 1) + " >>\nstream\n");
      !done)
    return done;
  parts.streamBegin = parts.written;
  if (!form.coding.empty()) return {};
  parts.left = RowBytesOf(form) * form.height;
  parts.deflater = {};
  if (::deflateInit(&parts.deflater, DeflateLevel) != Z_OK)
    return FailureOf("there is no memory for a compressor");
  parts.deflating = true;
  return {};
}

Expected<void> PicturePdf::Add(std::string_view bytes) {
  Parts& parts = *m_Parts;
  if (!parts.deflating) return parts.Write(bytes);
  if (bytes.size() > parts.left)
    return FailureOf("the picture has more rows than it says", FailureCode::BadInput);
  parts.left -= bytes.size();
  while (!bytes.empty()) {
    const std::string_view piece = bytes.substr(0, std::size_t{1} << 30);
    if (auto done = parts.Compress(piece, Z_NO_FLUSH); !done) return done;
    bytes.remove_prefix(piece.size());
  }
  return {};
}

Expected<void> PicturePdf::EndPage() {
  Parts& parts = *m_Parts;
  if (parts.deflating) {
    if (parts.left != 0)
      return FailureOf("the picture has fewer rows than it says", FailureCode::BadInput);
    if (auto done = parts.Compress({}, Z_FINISH); !done) return done;
    static_cast<void>(::deflateEnd(&parts.deflater));
    parts.deflating = false;
  }
  const std::uint64_t length = parts.written - parts.streamBegin;
  const std::size_t picture = parts.offsets.size();
  if (auto done = parts.Write("\nendstream\nendobj\n"); !done) return done;
  if (auto done = parts.WriteObject(std::to_string(length)); !done) return done;
  // A sign can be larger than a page of PDF may be in its own units, but not for an interpreter
  // that makes pixels of it.
  const std::string width =
      os::ShortDecimal(parts.form.width * PointsPerInch / parts.form.horizontalDensity, 6);
  const std::string height =
      os::ShortDecimal(parts.form.height * PointsPerInch / parts.form.verticalDensity, 6);
  const std::string content = "q " + width + " 0 0 " + height + " 0 0 cm /P Do Q";
  if (auto done = parts.WriteObject("<< /Length " + std::to_string(content.size()) +
                                    " >>\nstream\n" + content + "\nendstream");
      !done)
    return done;
  ++parts.pages;
  return parts.WriteObject("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + width + " " + height +
                           "] /Resources << /XObject << /P " + Reference(picture) +
                           " >> >> /Contents " + Reference(picture + 2) + " >>");
}

Expected<void> PicturePdf::Finish() {
  Parts& parts = *m_Parts;
  if (parts.pages == 0) return FailureOf("there is no page", FailureCode::BadInput);
  parts.offsets[0] = parts.written;
  if (auto done = parts.Write("1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"); !done)
    return done;
  parts.offsets[1] = parts.written;
  std::string kids;
  for (std::size_t page = 1; page <= parts.pages; ++page)
    kids += Reference(2 + page * ObjectsOfPage) + " ";
  if (auto done = parts.Write("2 0 obj\n<< /Type /Pages /Count " + std::to_string(parts.pages) +
                              " /Kids [ " + kids + "] >>\nendobj\n");
      !done)
    return done;
  const std::uint64_t table = parts.written;
  const std::string size = std::to_string(parts.offsets.size() + 1);
  std::string end = "xref\n0 " + size + "\n0000000000 65535 f \n";
  for (const std::uint64_t offset : parts.offsets) {
    const std::string digits = std::to_string(offset);
    if (digits.size() > 10) return FailureOf("the pictures are too large for one PDF file");
    end += std::string(10 - digits.size(), '0') + digits + " 00000 n \n";
  }
  end += "trailer\n<< /Size " + size + " /Root 1 0 R >>\nstartxref\n" + std::to_string(table) +
         "\n%%EOF\n";
  if (auto done = parts.Write(end); !done) return done;
  return parts.Flush();
}

}  // namespace rastrel::server
