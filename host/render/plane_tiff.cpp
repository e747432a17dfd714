#include "host/render/plane_tiff.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace rastrel::render {

namespace {

constexpr std::uint64_t LargestFile = 0xFFFFFFFF;
constexpr std::uint32_t HeaderSize = 8;

// Field types (TIFF 6.0, section 2).
constexpr std::uint16_t Ascii = 2;
constexpr std::uint16_t Short = 3;
constexpr std::uint16_t Long = 4;
constexpr std::uint16_t Rational = 5;
constexpr std::uint16_t FieldCount = 15;
constexpr std::uint32_t DirectorySize = 2 + FieldCount * 12 + 4;
constexpr std::uint32_t RationalSize = 8;

void Append(std::string& bytes, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
}

// Values begin at even offsets.
std::uint32_t Even(std::uint64_t size) { return static_cast<std::uint32_t>(size + size % 2); }

std::uint32_t NameSize(const TiffPage& page) {
  return std::max<std::uint32_t>(5, static_cast<std::uint32_t>(page.name.size()) + 1);
}

std::uint64_t HeadSize(const TiffPage& page) {
  return DirectorySize + 2 * RationalSize + Even(NameSize(page));
}

std::uint64_t PixelCount(const TiffPage& page) {
  return static_cast<std::uint64_t>(page.width) * page.height;
}

// A page directory, its fields in the order of their tags.
class Fields {
 public:
  void Add(std::uint16_t tag, std::uint16_t type, std::uint32_t count, std::uint32_t value) {
    Append(m_Bytes, tag, 2);
    Append(m_Bytes, type, 2);
    Append(m_Bytes, count, 4);
    Append(m_Bytes, value, 4);
  }
  [[nodiscard]] const std::string& Bytes() const { return m_Bytes; }

 private:
  std::string m_Bytes;
};

void AppendRational(std::string& bytes, double value) {
  constexpr double parts = 10'000;
  const double most = static_cast<double>(LargestFile) / parts;
  Append(bytes, static_cast<std::uint32_t>(std::llround(std::min(value, most) * parts)), 4);
  Append(bytes, static_cast<std::uint32_t>(parts), 4);
}

}  // namespace

Expected<PlaneTiff> PlaneTiff::Of(std::vector<TiffPage> pages) {
  if (pages.empty()) return FailureOf("a TIFF file of no planes");
  PlaneTiff tiff;
  std::uint64_t end = HeaderSize;
  for (const TiffPage& page : pages) {
    tiff.m_Offsets.push_back(static_cast<std::uint32_t>(end));
    end += HeadSize(page) + PixelCount(page);
    end += end % 2;
    if (end > LargestFile)
      return FailureOf("the planes are more than the 4 GiB that a TIFF file can hold");
  }
  tiff.m_Pages = std::move(pages);
  return tiff;
}

std::string PlaneTiff::Head(std::size_t page) const {
  const TiffPage& own = m_Pages[page];
  const std::uint32_t begin = m_Offsets[page];
  const std::uint32_t values = begin + DirectorySize;
  const auto pixels = static_cast<std::uint32_t>(begin + HeadSize(own));
  std::string head;
  if (page == 0) {
    head = "II*";
    Append(head, 0, 1);
    Append(head, begin, 4);
  } else if ((m_Offsets[page - 1] + HeadSize(m_Pages[page - 1]) + PixelCount(m_Pages[page - 1])) %
                 2 !=
             0) {
    Append(head, 0, 1);  // a directory begins at an even offset
  }
  const auto numbers = static_cast<std::uint32_t>(page) | static_cast<std::uint32_t>(m_Pages.size())
                                                              << 16U;
  Fields fields;
  fields.Add(254, Long, 1, 2);  // one page of several
  fields.Add(256, Long, 1, own.width);
  fields.Add(257, Long, 1, own.height);
  fields.Add(258, Short, 1, 8);
  fields.Add(259, Short, 1, 1);  // uncompressed
  fields.Add(262, Short, 1, 1);  // 0 is black
  fields.Add(273, Long, 1, pixels);
  fields.Add(277, Short, 1, 1);
  fields.Add(278, Long, 1, own.height);
  fields.Add(279, Long, 1, static_cast<std::uint32_t>(PixelCount(own)));
  fields.Add(282, Rational, 1, values);
  fields.Add(283, Rational, 1, values + RationalSize);
  fields.Add(285, Ascii, NameSize(own), values + 2 * RationalSize);
  fields.Add(296, Short, 1, 2);  // inches
  fields.Add(297, Short, 2, numbers);
  Append(head, FieldCount, 2);
  head += fields.Bytes();
  Append(head, page + 1 < m_Pages.size() ? m_Offsets[page + 1] : 0, 4);
  AppendRational(head, own.xResolution);
  AppendRational(head, own.yResolution);
  head += own.name;
  head.append(Even(NameSize(own)) - own.name.size(), '\0');
  return head;
}

}  // namespace rastrel::render
