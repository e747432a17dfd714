#include "cli/document/preview_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "rastrel/platform/os/number_text.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t BytesPerPixel = 4;
constexpr std::array<std::byte, BytesPerPixel> LineColor{std::byte{255}, std::byte{0},
                                                         std::byte{255}, std::byte{255}};
constexpr int LineWidth = 2;  // pixels

struct Point {
  double x = 0;
  double y = 0;
};

// Takes the next number of a netpbm file's head.
std::optional<int> TakeNumber(std::string_view& bytes) {
  const std::size_t begin = bytes.find_first_not_of(" \t\r\n");
  if (begin == bytes.npos) return std::nullopt;
  const std::size_t end = bytes.find_first_of(" \t\r\n", begin);
  if (end == bytes.npos) return std::nullopt;
  const std::string_view digits = bytes.substr(begin, end - begin);
  const bool isNumber = std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
  if (!isNumber) return std::nullopt;
  bytes.remove_prefix(end);
  return os::Int32FromText(digits);
}

void Dot(host::PreviewPicture& picture, int left, int top) {
  for (int y = std::max(top, 0); y < std::min(top + LineWidth, picture.height); ++y) {
    for (int x = std::max(left, 0); x < std::min(left + LineWidth, picture.width); ++x) {
      const auto at = static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                      static_cast<std::size_t>(x);
      std::ranges::copy(LineColor,
                        picture.bgra.begin() + static_cast<std::ptrdiff_t>(at * BytesPerPixel));
    }
  }
}

// Takes off the part of a line beyond one edge, where `inside` is 0 or more: the larger, the
// further inside. False if nothing is left.
bool ClipAt(Point& from, Point& to, double fromInside, double toInside) {
  if (fromInside < 0 && toInside < 0) return false;
  if (fromInside >= 0 && toInside >= 0) return true;
  const double share = fromInside / (fromInside - toInside);
  const Point edge{.x = from.x + share * (to.x - from.x), .y = from.y + share * (to.y - from.y)};
  (fromInside < 0 ? from : to) = edge;
  return true;
}

bool IsNumber(const Point& point) { return std::isfinite(point.x) && std::isfinite(point.y); }

// A point on each pixel that the line passes.
void DrawLine(host::PreviewPicture& picture, Point from, Point to) {
  const double right = picture.width;
  const double bottom = picture.height;
  if (!IsNumber(from) || !IsNumber(to)) return;
  if (!ClipAt(from, to, from.x, to.x) || !ClipAt(from, to, right - from.x, right - to.x)) return;
  if (!ClipAt(from, to, from.y, to.y) || !ClipAt(from, to, bottom - from.y, bottom - to.y)) return;
  const double length = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y));
  // A number that was too large for the clip.
  if (!(length <= right + bottom)) return;
  const int steps = static_cast<int>(std::ceil(length));
  for (int step = 0; step <= steps; ++step) {
    const double share = steps == 0 ? 0 : static_cast<double>(step) / steps;
    Dot(picture, static_cast<int>(std::floor(from.x + share * (to.x - from.x))),
        static_cast<int>(std::floor(from.y + share * (to.y - from.y))));
  }
}

void DrawSubPoly(const conversion::SubPoly& subPoly, double scale, host::PreviewPicture& picture) {
  const auto& vertices = subPoly.vertices;
  const auto pointAt = [&](std::size_t at) {
    return Point{.x = vertices[at].x * scale, .y = -vertices[at].y * scale};
  };
  for (std::size_t at = 1; at < vertices.size(); ++at)
    DrawLine(picture, pointAt(at - 1), pointAt(at));
  if (subPoly.closed != 0 && vertices.size() > 1)
    DrawLine(picture, pointAt(vertices.size() - 1), pointAt(0));
}

}  // namespace

std::optional<host::PreviewPicture> PictureFromNetpbm(const std::string& bytes) {
  std::string_view rest = bytes;
  if (!rest.starts_with("P6")) return std::nullopt;
  rest.remove_prefix(2);
  const auto width = TakeNumber(rest);
  const auto height = TakeNumber(rest);
  const auto highest = TakeNumber(rest);
  if (!width || !height || highest != 255) return std::nullopt;
  if (*width < 1 || *height < 1 || *width > MaxPreviewSide || *height > MaxPreviewSide)
    return std::nullopt;
  rest.remove_prefix(1);
  const auto pixels = static_cast<std::size_t>(*width) * static_cast<std::size_t>(*height);
  if (rest.size() < pixels * 3) return std::nullopt;
  host::PreviewPicture picture{.width = *width, .height = *height, .bgra = {}, .note = {}};
  picture.bgra.reserve(pixels * BytesPerPixel);
  for (std::size_t at = 0; at < pixels * 3; at += 3) {
    for (const std::size_t part : {2U, 1U, 0U})
      picture.bgra.push_back(static_cast<std::byte>(rest[at + part]));
    picture.bgra.push_back(std::byte{255});
  }
  return picture;
}

void DrawCutLines(const CCutObjects& objects, int resolution, host::PreviewPicture& picture) {
  const double scale = resolution / host::CentimetresPerInch;
  for (const conversion::CutObject& object : objects.m_Objects) {
    if (!object.polygons) continue;
    for (const auto& polygon : object.polygons->polygons) {
      if (!polygon) continue;
      for (const auto& entry : polygon->entries) {
        if (entry.subPoly) DrawSubPoly(*entry.subPoly, scale, picture);
      }
    }
  }
}

}  // namespace rastrel::cli
