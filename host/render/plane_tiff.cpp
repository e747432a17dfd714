#include "host/render/plane_tiff.h"

#include <algorithm>
#include <utility>

#include "host/render/tiff_fields.h"

namespace rastrel::render {

namespace {

constexpr std::uint64_t LargestFile = 0xFFFFFFFF;
constexpr std::uint32_t HeaderSize = 8;

constexpr std::uint32_t DirectorySize = TiffFields::Size(15);
constexpr std::uint32_t RationalSize = 8;

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
    head += '\0';
    AppendTiffNumber(head, begin, 4);
  } else if ((m_Offsets[page - 1] + HeadSize(m_Pages[page - 1]) + PixelCount(m_Pages[page - 1])) %
                 2 !=
             0) {
    head += '\0';  // a directory begins at an even offset
  }
  const auto numbers = static_cast<std::uint32_t>(page) | static_cast<std::uint32_t>(m_Pages.size())
                                                              << 16U;
  TiffFields fields;
  fields.Long(254, 2);  // one page of several
  fields.Long(256, own.width);
  fields.Long(257, own.height);
  fields.Short(258, 8);
  fields.Short(259, 1);  // uncompressed
  fields.Short(262, 1);  // 0 is black
  fields.Long(273, pixels);
  fields.Short(277, 1);
  fields.Long(278, own.height);
  fields.Long(279, static_cast<std::uint32_t>(PixelCount(own)));
  fields.Add(282, TiffType::Rational, 1, values);
  fields.Add(283, TiffType::Rational, 1, values + RationalSize);
  fields.Add(285, TiffType::Ascii, NameSize(own), values + 2 * RationalSize);
  fields.Short(296, 2);  // inches
  fields.Add(297, TiffType::Short, 2, numbers);
  head += fields.Bytes(page + 1 < m_Pages.size() ? m_Offsets[page + 1] : 0);
  AppendTiffRational(head, own.xResolution);
  AppendTiffRational(head, own.yResolution);
  head += own.name;
  head.append(Even(NameSize(own)) - own.name.size(), '\0');
  return head;
}

}  // namespace rastrel::render
