// Cut jobs of any numbers, checked, drawn and healed.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "cutting/clean/fault_picture.h"
#include "cutting/clean/heal.h"

namespace {

using namespace rastrel::cutting;

// Two bytes a coordinate are tenths of a millimeter, so that lines meet; after a byte of 255 comes
// a double as it is.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : m_Data(data), m_Left(size) {}

  [[nodiscard]] bool IsEmpty() const { return m_Left == 0; }

  std::uint8_t Byte() {
    if (m_Left == 0) return 0;
    --m_Left;
    return *m_Data++;
  }

  double Number() {
    const std::uint8_t first = Byte();
    if (first != 255 || m_Left < sizeof(double)) return first + Byte() / 100.0;
    double number = 0;
    std::memcpy(&number, m_Data, sizeof(double));
    m_Data += sizeof(double);
    m_Left -= sizeof(double);
    return number;
  }

  Point Place() {
    const double x = Number();
    return {x, Number()};
  }

 private:
  const std::uint8_t* m_Data;
  std::size_t m_Left;
};

Contour ReadContour(Bytes& bytes, std::uint8_t form) {
  Contour contour{.start = bytes.Place(), .segments = {}, .closed = (form & 64U) != 0};
  for (int count = bytes.Byte() % 16; count > 0 && !bytes.IsEmpty(); --count) {
    if ((form & 128U) == 0) {
      contour.segments.push_back(LineTo(bytes.Place()));
    } else {
      const Point first = bytes.Place();
      const Point second = bytes.Place();
      contour.segments.push_back(CurveTo(first, second, bytes.Place()));
    }
  }
  return contour;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  CutJob job{.width = 200, .height = bytes.Number(), .paths = {}};
  while (!bytes.IsEmpty()) {
    const std::uint8_t form = bytes.Byte();
    if (job.paths.empty() || (form & 32U) != 0) {
      job.paths.emplace_back();
      job.paths.back().operation = static_cast<Operation>(form % 9);
      job.paths.back().paint.kind = static_cast<Paint::Kind>((form / 9) % 4);
    }
    job.paths.back().contours.push_back(ReadContour(bytes, form));
  }
  const CheckReport report = Check(job);
  if (FaultPicture(job, report).empty()) std::abort();
  for (const bool unite : {false, true}) {
    const HealResult healed = Heal(job, {.faults = {}, .unite = unite});
    for (const Fault& fault : Check(healed.job).faults)
      if (fault.kind == FaultKind::Unusable) std::abort();
  }
  return 0;
}
