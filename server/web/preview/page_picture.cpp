#include "server/web/preview/page_picture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "server/web/preview/page_rows.h"

namespace rastrel::server::web {
namespace {

constexpr unsigned SamplesPerSide = 4;  // of a pixel of the picture, in either direction

// A step that is a fraction may miss the whole number that is meant by a hair.
constexpr double Hair = 1e-6;

unsigned CellsOf(unsigned extent, double step) {
  return static_cast<unsigned>(std::ceil(extent / step - Hair));
}

// One direction of a part: which of the page's rows or columns count, and for which of the
// picture's.
class Axis {
 public:
  Axis(unsigned first, unsigned extent, double step)
      : m_First(first), m_Extent(extent), m_Step(step) {
    m_Cells = CellsOf(extent, step);
    for (unsigned cell = 0; cell < m_Cells; ++cell) AddCell(cell);
  }
  [[nodiscard]] unsigned Cells() const { return m_Cells; }
  [[nodiscard]] const std::vector<unsigned>& Places() const { return m_Places; }
  [[nodiscard]] const std::vector<unsigned>& CellOfPlace() const { return m_CellOfPlace; }

 private:
  void AddCell(unsigned cell) {
    const unsigned start = Start(cell);
    const unsigned end = std::max(start + 1, Start(cell + 1));
    const unsigned apart = std::max(1U, (end - start + SamplesPerSide - 1) / SamplesPerSide);
    for (unsigned at = start; at < end; at += apart) {
      m_Places.push_back(m_First + at);
      m_CellOfPlace.push_back(cell);
    }
  }
  [[nodiscard]] unsigned Start(unsigned cell) const {
    return std::min(m_Extent, static_cast<unsigned>(cell * m_Step + Hair));
  }

  unsigned m_First;
  unsigned m_Extent;
  double m_Step;
  unsigned m_Cells = 0;
  std::vector<unsigned> m_Places;
  std::vector<unsigned> m_CellOfPlace;
};

bool IsOnPage(const pages::PageInfo& page, const PictureRequest& request) {
  return request.width > 0 && request.height > 0 && request.left < page.width &&
         request.top < page.height && request.width <= page.width - request.left &&
         request.height <= page.height - request.top;
}

// Sums of a row of the picture.
class RowSums {
 public:
  RowSums(const Axis& columns, unsigned samples)
      : m_Columns(columns),
        m_Samples(samples),
        m_Sums(std::size_t{columns.Cells()} * samples),
        m_Counts(columns.Cells()) {}

  void Add(std::span<const std::uint8_t> row) {
    for (std::size_t i = 0; i < m_Columns.CellOfPlace().size(); ++i) {
      const std::size_t cell = m_Columns.CellOfPlace()[i];
      for (std::size_t sample = 0; sample < m_Samples; ++sample)
        m_Sums[cell * m_Samples + sample] += row[i * m_Samples + sample];
      ++m_Counts[cell];
    }
  }
  // Appends the means, and begins again.
  void Finish(std::string& bytes) {
    for (std::size_t i = 0; i < m_Sums.size(); ++i) {
      const std::uint32_t count = m_Counts[i / m_Samples];
      bytes.push_back(static_cast<char>((m_Sums[i] + count / 2) / count));
    }
    std::ranges::fill(m_Sums, 0);
    std::ranges::fill(m_Counts, 0);
  }

 private:
  const Axis& m_Columns;
  std::size_t m_Samples;
  std::vector<std::uint32_t> m_Sums;
  std::vector<std::uint32_t> m_Counts;
};

}  // namespace

Expected<Picture> DrawPart(const std::string& directory, const pages::PageInfo& page,
                           const PictureRequest& request) {
  if (!IsOnPage(page, request))
    return FailureOf("the part does not lie on the page", FailureCode::BadInput);
  if (!(request.xStep >= 1) || !(request.yStep >= 1) ||
      CellsOf(request.width, request.xStep) > MaximumPictureSide ||
      CellsOf(request.height, request.yStep) > MaximumPictureSide)
    return FailureOf("a picture has at most " + std::to_string(MaximumPictureSide) +
                         " pixels a side, and none of less than a pixel of the page",
                     FailureCode::BadInput);
  auto rows = PageRows::Open(directory, page, request.plane, request.isTinted);
  if (!rows) return rows.Error();
  const Axis columns(request.left, request.width, request.xStep);
  const Axis lines(request.top, request.height, request.yStep);
  Picture picture{columns.Cells(), lines.Cells(), rows->Samples(), {}};
  picture.bytes.reserve(std::size_t{picture.width} * picture.height * picture.samples);
  RowSums sums(columns, picture.samples);
  for (std::size_t i = 0; i < lines.Places().size(); ++i) {
    const auto row = rows->Read(lines.Places()[i], columns.Places());
    if (!row) return row.Error();
    sums.Add(*row);
    const bool isLast =
        i + 1 == lines.Places().size() || lines.CellOfPlace()[i + 1] != lines.CellOfPlace()[i];
    if (isLast) sums.Finish(picture.bytes);
  }
  return picture;
}

PictureRequest WholePage(const pages::PageInfo& page, unsigned width) {
  PictureRequest request;
  request.width = page.width;
  request.height = page.height;
  // Pixels of the picture are square, those of the page need not be.
  const double tall =
      page.yResolution > 0 && page.xResolution > 0 ? page.xResolution / page.yResolution : 1.0;
  double wide = std::min({width, page.width, MaximumPictureSide});
  const double high = page.height * tall / page.width * wide;
  if (high > MaximumPictureSide) wide *= MaximumPictureSide / high;
  wide = std::max(1.0, std::floor(wide));
  request.xStep = page.width / wide;
  request.yStep =
      page.height / std::clamp(std::round(page.height * tall / request.xStep), 1.0,
                               static_cast<double>(std::min(page.height, MaximumPictureSide)));
  return request;
}

unsigned TileLevels(const pages::PageInfo& page) {
  unsigned levels = 1;
  while ((std::uint64_t{TileSide} << (levels - 1)) < std::max(page.width, page.height)) ++levels;
  return levels;
}

std::optional<PictureRequest> Tile(const pages::PageInfo& page, unsigned level, unsigned column,
                                   unsigned row) {
  if (level >= TileLevels(page)) return std::nullopt;
  const std::uint64_t side = std::uint64_t{TileSide} << level;
  const std::uint64_t left = column * side;
  const std::uint64_t top = row * side;
  if (left >= page.width || top >= page.height) return std::nullopt;
  PictureRequest request;
  request.left = static_cast<unsigned>(left);
  request.top = static_cast<unsigned>(top);
  request.width = static_cast<unsigned>(std::min(side, page.width - left));
  request.height = static_cast<unsigned>(std::min(side, page.height - top));
  request.xStep = static_cast<double>(std::uint64_t{1} << level);
  request.yStep = request.xStep;
  return request;
}

}  // namespace rastrel::server::web
