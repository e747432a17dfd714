#include "server/web/preview/page_rows.h"

#include <algorithm>
#include <utility>

namespace rastrel::server::web {
namespace {

Failure Refuse(const std::string& directory, std::string why) {
  return Failure{
      .what = {}, .where = directory, .why = std::move(why), .code = FailureCode::BadInput};
}

}  // namespace

Expected<PageRows> PageRows::Open(const std::string& directory, const pages::PageInfo& page,
                                  std::optional<std::size_t> plane, bool isTinted) {
  if (page.bits != 8) return Refuse(directory, "the page has not 8 bits a sample");
  if (plane && *plane >= page.planes.size()) return Refuse(directory, "the page has no such ink");
  PageRows rows(page);
  const bool isGray = page.color == pages::PageColor::Gray || (plane && !isTinted);
  rows.m_Samples = isGray ? 1 : 3;
  for (std::size_t i = 0; i < page.planes.size(); ++i) {
    if (plane && *plane != i) continue;
    if (auto added = rows.Add(directory, page.planes[i]); !added) return added.Error();
  }
  return rows;
}

Expected<void> PageRows::Add(const std::string& directory, const pages::PagePlane& plane) {
  const auto file = FileOf(directory, plane.file);
  if (!file) return file.Error();
  if (plane.channel >= m_Files[*file].pixels.Samples())
    return Refuse(directory, "the file of a plane has too few samples");
  Plane added{*file, plane.channel, {}};
  if (IsInk(m_Page->color) && m_Samples == 3) added.ink = InkTable(FullStrength(*m_Page, plane));
  m_Planes.push_back(std::move(added));
  return {};
}

Expected<std::size_t> PageRows::FileOf(const std::string& directory, const std::string& name) {
  for (std::size_t i = 0; i < m_Files.size(); ++i)
    if (m_Files[i].name == name) return i;
  const auto listed = std::ranges::find(m_Page->files, name, &pages::PageFile::name);
  if (listed == m_Page->files.end()) return Refuse(directory, "the file of a plane is not listed");
  auto pixels = planes::PixelFile::Open(directory, *listed);
  if (!pixels) return pixels.Error();
  if (pixels->Width() != m_Page->width || pixels->Height() != m_Page->height)
    return Refuse(directory, "a plane has not the page's size");
  m_Files.push_back({std::move(*pixels), name});
  return m_Files.size() - 1;
}

Expected<std::span<const std::uint8_t>> PageRows::Read(unsigned row,
                                                       std::span<const unsigned> columns) {
  // White, of which inks take away, and black for light.
  m_Row.assign(columns.size() * m_Samples, IsInk(m_Page->color) ? 255 : 0);
  for (std::size_t i = 0; i < m_Files.size(); ++i) {
    File& file = m_Files[i];
    const std::uint64_t samples = file.pixels.Samples();
    const std::uint64_t first =
        std::uint64_t{row} * file.pixels.RowBytes() + columns.front() * samples;
    m_Read.resize((columns.back() - columns.front() + 1) * samples);
    file.pixels.Skip(first - file.place);
    if (auto read = file.pixels.Read(m_Read); !read) return read.Error();
    file.place = first + m_Read.size();
    for (std::size_t plane = 0; plane < m_Planes.size(); ++plane)
      if (m_Planes[plane].file == i) LayOver(m_Planes[plane], plane, m_Read, columns);
  }
  return std::span<const std::uint8_t>(m_Row);
}

void PageRows::LayOver(const Plane& plane, std::size_t index, std::span<const std::byte> samples,
                       std::span<const unsigned> columns) {
  const std::size_t apart = m_Files[plane.file].pixels.Samples();
  std::uint8_t* pixel = m_Row.data();
  for (const unsigned column : columns) {
    const auto sample =
        std::to_integer<std::uint8_t>(samples[(column - columns.front()) * apart + plane.channel]);
    if (m_Samples == 1) {
      *pixel = sample;
    } else if (plane.ink) {
      const Light& rest = plane.ink->Of(sample);
      for (std::size_t color = 0; color < rest.size(); ++color)
        pixel[color] = Share(pixel[color], rest[color]);
    } else {
      // Of one plane by itself its own place among red, green and blue; of all their order.
      const std::size_t color = m_Planes.size() == 1 ? plane.channel : index;
      pixel[std::min<std::size_t>(color, 2)] = sample;
    }
    pixel += m_Samples;
  }
}

}  // namespace rastrel::server::web
