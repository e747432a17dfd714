#include "children/coreodalis/page_source.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <tuple>
#include <utility>

#include "children/coreodalis/plain_tiff_file.h"

namespace rastrel::odalis {
namespace {

constexpr std::size_t MaximumPlanes = 64;
constexpr double HighestResolution = 100'000;
constexpr std::array<std::string_view, 4> ProcessInks = {"Cyan", "Magenta", "Yellow", "Black"};

/// Planes that are the four process inks in their order are a CMYK picture to every format.
bool AreProcessInks(const std::vector<std::string>& planes) {
  return std::equal(planes.begin(), planes.end(), ProcessInks.begin(), ProcessInks.end());
}

Expected<ColorModel> ModelOf(const pages::PageInfo& info, const std::vector<std::string>& planes) {
  const std::size_t count = planes.size();
  switch (info.color) {
    case pages::PageColor::Gray:
      if (count == 1) return ColorModel::Gray;
      break;
    case pages::PageColor::Rgb:
      if (count == 3) return ColorModel::Rgb;
      break;
    case pages::PageColor::Cmyk:
      if (count == 4) return ColorModel::Cmyk;
      break;
    case pages::PageColor::Separations:
      if (count == 0 || count > MaximumPlanes) break;
      return AreProcessInks(planes) ? ColorModel::Cmyk : ColorModel::Inks;
  }
  return FailureOf("the page's description has " + std::to_string(count) +
                   " planes, which its colour can't have");
}

bool IsResolution(double value) {
  return std::isfinite(value) && value > 0 && value <= HighestResolution;
}

Expected<ImageShape> ShapeOf(const pages::PageInfo& info) {
  if (info.bits != 8) {
    return FailureOf("the page has " + std::to_string(info.bits) +
                     " bits a sample; 8 can be printed");
  }
  if (info.width == 0 || info.height == 0 || info.width > MaximumSide ||
      info.height > MaximumSide) {
    return FailureOf("a page of " + std::to_string(info.width) + " by " +
                     std::to_string(info.height) + " pixels can't be printed");
  }
  if (!IsResolution(info.xResolution) || !IsResolution(info.yResolution)) {
    return FailureOf("the page's description has no usable resolution");
  }
  ImageShape shape;
  shape.width = info.width;
  shape.height = info.height;
  shape.xResolution = info.xResolution;
  shape.yResolution = info.yResolution;
  for (const auto& plane : info.planes) shape.planes.push_back(plane.name);
  auto model = ModelOf(info, shape.planes);
  if (!model) return model.Error();
  shape.model = *model;
  if (shape.RowBytes() > LargestRow) return FailureOf("the page has rows of more than 64 MiB");
  return shape;
}

std::optional<timespec> TimeOfChange(const std::string& path) {
  struct stat state {};
  if (::lstat(path.c_str(), &state) != 0) return std::nullopt;
  return state.st_ctim;
}

bool IsBefore(const timespec& left, const timespec& right) {
  return std::tie(left.tv_sec, left.tv_nsec) < std::tie(right.tv_sec, right.tv_nsec);
}

}  // namespace

Expected<PageSource> PageSource::Open(const std::string& directory, const pages::PageInfo& info) {
  PageSource source;
  auto shape = ShapeOf(info);
  if (!shape) return shape.Error();
  source.m_Shape = std::move(*shape);
  source.m_Described = TimeOfChange(directory + "/" + pages::PageInfoName);
  if (auto opened = source.OpenParts(directory, info); !opened) return opened.Error();
  return source;
}

Expected<void> PageSource::OpenParts(const std::string& directory, const pages::PageInfo& info) {
  for (const auto& plane : info.planes) {
    auto part = PartOf(directory, info, plane.file);
    if (!part) return part.Error();
    if (plane.channel >= m_Parts[*part].file->Samples()) {
      return FailureOf("'" + directory + "/" + plane.file + "' has no channel " +
                       std::to_string(plane.channel) + " for the plane '" + plane.name + "'");
    }
    m_Planes.push_back({*part, plane.channel});
  }
  m_Straight = m_Parts.size() == 1 && m_Parts.front().file->Samples() == m_Planes.size();
  for (unsigned i = 0; i < m_Planes.size(); ++i) {
    if (m_Planes[i].channel != i) m_Straight = false;
  }
  return {};
}

Expected<std::size_t> PageSource::PartOf(const std::string& directory, const pages::PageInfo& info,
                                         const std::string& name) {
  for (std::size_t i = 0; i < m_Parts.size(); ++i) {
    if (m_Parts[i].name == name) return i;
  }
  const auto listed = std::find_if(info.files.begin(), info.files.end(),
                                   [&](const auto& file) { return file.name == name; });
  if (listed == info.files.end()) {
    return FailureOf("the page's description has no file '" + name + "' but a plane in it");
  }
  auto opened = OpenPixelFile(directory, *listed);
  if (!opened) return opened.Error();
  std::unique_ptr<PixelFile> file = std::move(opened->file);
  if (file->Width() != m_Shape.width || file->Height() != m_Shape.height) {
    if (auto checked = opened->check.Run(); !checked) return checked.Error();
    return FailureOf("'" + directory + "/" + name + "' has not the page's width and height");
  }
  std::size_t held = file->RowBytes();
  for (const Part& part : m_Parts) held += part.row.size();
  if (held > LargestRow)
    return FailureOf("the page's files have rows of more than 64 MiB together");
  std::vector<std::uint8_t> row(file->RowBytes());
  m_Parts.push_back({name, std::move(file), std::move(row)});
  m_Checks.push_back(std::move(opened->check));
  return m_Parts.size() - 1;
}

int PageSource::FileAsTiff() const {
  if (!m_Straight) return -1;
  const auto wanted = PlainTiffOf(m_Shape);
  const PixelFile& file = *m_Parts.front().file;
  return wanted && file.AsPlainTiff() == wanted ? file.Descriptor() : -1;
}

bool PageSource::IsUnchanged() const {
  return m_Described && std::ranges::all_of(m_Parts, [this](const Part& part) {
           struct stat state {};
           return ::fstat(part.file->Descriptor(), &state) == 0 &&
                  IsBefore(state.st_ctim, *m_Described);
         });
}

Expected<void> PageSource::ReadRows(std::span<std::uint8_t> rows) {
  if (m_Straight) return m_Parts.front().file->ReadRows(rows);
  const std::size_t rowBytes = m_Shape.RowBytes();
  for (std::size_t at = 0; at < rows.size(); at += rowBytes) {
    if (auto read = ReadRow(rows.subspan(at, rowBytes)); !read) return read;
  }
  return {};
}

/// From files that hold the planes otherwise than the page has them.
Expected<void> PageSource::ReadRow(std::span<std::uint8_t> row) {
  for (Part& part : m_Parts) {
    if (auto read = part.file->ReadRows(part.row); !read) return read;
  }
  const std::size_t planes = m_Planes.size();
  for (std::size_t plane = 0; plane < planes; ++plane) {
    const Part& part = m_Parts[m_Planes[plane].part];
    const std::size_t step = part.file->Samples();
    const std::uint8_t* from = part.row.data() + m_Planes[plane].channel;
    std::uint8_t* to = row.data() + plane;
    for (unsigned x = 0; x < m_Shape.width; ++x, from += step, to += planes) *to = *from;
  }
  return {};
}

}  // namespace rastrel::odalis
