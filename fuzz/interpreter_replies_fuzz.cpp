// The interpreter's replies, which a job can forge or spoil: lines of its error stream in pieces of
// any size, reports among them, and its pixels. The first byte is the size of the pieces; its
// lowest bit chooses the stream.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

#include "interpreter/page_measure.h"
#include "interpreter/page_stream.h"
#include "interpreter/pdf_job.h"
#include "interpreter/report_lines.h"
#include "interpreter/segment_text.h"
#include "interpreter/separations.h"
#include "interpreter/spot_ink.h"
#include "rastrel/platform/os/text.h"

namespace {

using namespace rastrel::interpreter;

constexpr std::string_view Word = "s3cret";

void Check(bool holds) {
  if (!holds) std::abort();
}

void CheckMeasure(const std::string& text) {
  const auto page = MeasuredPage(text, PageArea{1, 2, 3, 4});
  if (!page) return;
  Check(std::isfinite(page->box.left) && std::isfinite(page->box.top));
  Check(page->box.Width() > 0 && page->box.Height() > 0);
}

void CheckSegments(std::string_view text) {
  SegmentReader reader(text);
  std::size_t count = 0;
  while (const auto segment = reader.Next()) {
    Check(std::string_view("mlch").find(segment->letter) != std::string_view::npos);
    for (const PixelPoint& point : segment->Points()) {
      Check(std::isfinite(point.x) && std::isfinite(point.y));
    }
    Check(++count <= text.size());
  }
}

void CheckInk(std::string_view line) {
  const std::size_t start = FindSpotInk(line);
  if (start == line.npos) return;
  const auto ink = ReadSpotInk(line.substr(start));
  if (!ink) return;
  Check(!ink->name.empty() && rastrel::os::Utf8FromUtf8OrAnsi(ink->name) == ink->name);
  for (const double part : ink->color) Check(part >= 0 && part <= 1);
}

void CheckLine(const std::string& line, PdfMessages& messages) {
  CheckInk(line);
  messages.Take(line);
  const std::string plane = PlaneName(line);
  Check(rastrel::os::Utf8FromUtf8OrAnsi(plane) == plane);
  CheckMeasure(line);
  CheckSegments(line);
  const auto report = ReadReport(line, Word);
  Check(!report || (line.starts_with(Word) && !report->key.empty()));
  if (!report) return;
  CheckMeasure(report->value);
  CheckSegments(report->value);
}

// However the stream is cut, the same text comes out of it.
void CheckLines(std::string_view stream, std::size_t piece) {
  LineCutter lines;
  PdfMessages messages;
  std::string taken;
  for (std::string_view rest = stream; !rest.empty();
       rest.remove_prefix(std::min(piece, rest.size()))) {
    lines.Add(rest.substr(0, piece));
    while (const auto line = lines.Next()) {
      Check(!line->empty() && line->size() <= LineCutter::Limit);
      Check(line->find_first_of("\r\n") == line->npos);
      taken += *line;
      CheckLine(*line, messages);
    }
  }
  taken += lines.Last();
  std::string expected(stream);
  std::erase_if(expected, [](char one) { return one == '\r' || one == '\n'; });
  Check(taken == expected);
  Check(!messages.WhyNoPage().why.empty());
}

// Counts the pixels, and refuses large pages as the RIP does.
class Receiver : public PageReceiver {
 public:
  bool BeginPage(const PageSize& size) override {
    Check(!m_InPage && size.width > 0 && size.height > 0);
    Check(size.channels == 1 || size.channels == 3);
    m_InPage = true;
    m_Rest = size.RowBytes() * size.height;
    return size.width <= 100'000'000 && size.height <= 100'000'000;
  }
  bool AddPixels(std::span<const std::byte> bytes) override {
    Check(m_InPage && !bytes.empty() && bytes.size() <= m_Rest);
    m_Rest -= bytes.size();
    return true;
  }
  bool EndPage() override {
    Check(m_InPage && m_Rest == 0);
    m_InPage = false;
    return true;
  }
  [[nodiscard]] bool InPage() const { return m_InPage; }

 private:
  std::size_t m_Rest = 0;
  bool m_InPage = false;
};

void CheckPixels(std::span<const std::byte> stream, std::size_t piece) {
  Receiver receiver;
  PageStream pages(receiver);
  bool good = true;
  while (good && !stream.empty()) {
    good = pages.Add(stream.first(std::min(piece, stream.size())));
    stream = stream.subspan(std::min(piece, stream.size()));
    Check(pages.PresentShare() >= 0 && pages.PresentShare() <= 1);
  }
  if (good) good = pages.Finish();
  Check(good == pages.Reason().empty());
  Check(!good || !receiver.InPage());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t piece = std::size_t{1} + bytes[0] / 2;
  const auto stream = std::as_bytes(std::span(bytes, size).subspan(1));
  if (bytes[0] % 2 == 0) {
    CheckLines({reinterpret_cast<const char*>(stream.data()), stream.size()}, piece);
  } else {
    CheckPixels(stream, piece);
  }
  return 0;
}
