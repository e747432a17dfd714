#include <algorithm>

#include "server/printer/byte_file.h"
#include "server/printer/picture_file.h"
#include "server/printer/picture_pdf.h"

namespace rastrel::server {
namespace {

constexpr std::size_t PieceSize = 65536;
constexpr double CentimetersPerInch = 2.54;

Failure Refuse(const std::string& why) {
  return FailureOf("the JPEG file " + why, FailureCode::BadInput);
}

struct JpegHead {
  PictureForm form;
  bool hasFrame = false;
  bool isAdobe = false;  // four inks are stored inverted
};

bool IsFrame(unsigned marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// SOFn: precision 1, height 2, width 2, components 1, then three bytes for each.
Expected<void> TakeFrame(unsigned marker, const std::string& body, JpegHead& head) {
  if (marker > 0xC2) return Refuse("is of a kind that is not printed (lossless or arithmetic)");
  if (head.hasFrame) return Refuse("has two pictures");
  if (body.size() < 6) return Refuse("has a damaged header");
  if (body[0] != 8) return Refuse("has not 8 bits a sample");
  head.hasFrame = true;
  head.form.height = BigEndian(body, 1, 2);
  head.form.width = BigEndian(body, 3, 2);
  head.form.channels = BigEndian(body, 5, 1);
  if (body.size() != 6 + 3 * std::size_t{head.form.channels}) return Refuse("has a damaged header");
  return {};
}

// JFIF: "JFIF\0", version 2, units 1, densities 2 and 2. Units 0 is the shape of a pixel alone.
void TakeDensity(const std::string& body, JpegHead& head) {
  if (body.size() < 12 || body.compare(0, 5, std::string("JFIF\0", 5)) != 0) return;
  const double scale = body[7] == 1 ? 1 : body[7] == 2 ? CentimetersPerInch : 0;
  const double horizontal = BigEndian(body, 8, 2) * scale;
  const double vertical = BigEndian(body, 10, 2) * scale;
  if (horizontal < 1 || vertical < 1) return;
  head.form.horizontalDensity = horizontal;
  head.form.verticalDensity = vertical;
}

Expected<JpegHead> ReadHead(const ByteFile& file) {
  JpegHead head;
  head.form.horizontalDensity = head.form.verticalDensity = UsualDensity;
  std::uint64_t at = 2;
  for (;;) {
    const auto start = file.Read(at, 4);
    if (!start) return start.Error();
    if (static_cast<unsigned char>((*start)[0]) != 0xFF) return Refuse("has a damaged header");
    const unsigned marker = static_cast<unsigned char>((*start)[1]);
    if (marker == 0xFF) {  // a fill byte
      ++at;
      continue;
    }
    const std::size_t length = BigEndian(*start, 2, 2);
    if (marker < 0xC0 || (marker >= 0xD0 && marker <= 0xD9) || length < 2)
      return Refuse("has a damaged header");
    const auto body = file.Read(at + 4, length - 2);
    if (!body) return body.Error();
    if (marker == 0xDA) break;
    if (marker == 0xE0) TakeDensity(*body, head);
    if (marker == 0xEE && body->starts_with("Adobe")) head.isAdobe = true;
    if (IsFrame(marker))
      if (auto fine = TakeFrame(marker, *body, head); !fine) return fine.Error();
    at += 2 + length;
  }
  if (!head.hasFrame) return Refuse("has a damaged header");
  return head;
}

// Whether the mark of the end is there. Some writers put bytes after it.
Expected<void> CheckEnd(const ByteFile& file) {
  const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(file.Size(), 4096));
  const auto tail = file.Read(file.Size() - count, count);
  if (!tail) return tail.Error();
  if (tail->rfind("\xFF\xD9") == tail->npos)
    return FailureOf("the file is cut off", FailureCode::BadInput);
  return {};
}

}  // namespace

Expected<void> PdfFromJpeg(const std::string& path, const std::string& target) {
  const auto file = ByteFile::Open(path);
  if (!file) return file.Error();
  auto head = ReadHead(*file);
  if (!head) return head.Error();
  if (auto fine = CheckEnd(*file); !fine) return fine;
  head->form.coding = "/Filter /DCTDecode";
  if (head->form.channels == 4 && head->isAdobe) head->form.coding += " /Decode [1 0 1 0 1 0 1 0]";
  auto pdf = PicturePdf::Create(target);
  if (!pdf) return pdf.Error();
  if (auto done = (*pdf)->BeginPage(head->form); !done) return done;
  for (std::uint64_t at = 0; at < file->Size(); at += PieceSize) {
    const auto piece = file->Read(
        at, static_cast<std::size_t>(std::min<std::uint64_t>(PieceSize, file->Size() - at)));
    if (!piece) return piece.Error();
    if (auto done = (*pdf)->Add(*piece); !done) return done;
  }
  if (auto done = (*pdf)->EndPage(); !done) return done;
  return (*pdf)->Finish();
}

}  // namespace rastrel::server
