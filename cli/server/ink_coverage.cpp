#include "cli/server/ink_coverage.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>

#include "cfplane/pixel_file.h"
#include "pages/page_info.h"

namespace rastrel::cli {
namespace {

// Samples are added in lanes side by side, which one instruction adds at a time. Their number is
// that of the lanes of whole pixels, of one sample and of three.
constexpr std::size_t Lanes = 48;
// So many samples of 8 bits fit into a lane of 16.
constexpr std::size_t TurnsOfLane = 256;
constexpr std::size_t PieceBytes = Lanes * TurnsOfLane * 16;
constexpr double FullSample = 255.0;
constexpr unsigned MaximumSamples = 3;

using Sums = std::array<std::uint64_t, MaximumSamples>;

// At most Lanes * TurnsOfLane samples, from the first sample of a pixel on.
void AddTurns(std::span<const std::byte> bytes, unsigned samples, Sums& sums) {
  std::array<std::uint16_t, Lanes> lanes{};
  std::size_t at = 0;
  for (; at + Lanes <= bytes.size(); at += Lanes)
    for (std::size_t lane = 0; lane < Lanes; ++lane)
      lanes[lane] = static_cast<std::uint16_t>(lanes[lane] +
                                               std::to_integer<std::uint16_t>(bytes[at + lane]));
  for (std::size_t lane = 0; lane < Lanes; ++lane) sums[lane % samples] += lanes[lane];
  for (; at < bytes.size(); ++at) sums[at % samples] += std::to_integer<std::uint64_t>(bytes[at]);
}

// The mean of each sample of a file's pixels, from 0 to 1.
Expected<std::array<double, MaximumSamples>> MeanSamples(const std::string& directory,
                                                         const pages::PageFile& listed) {
  auto file = planes::PixelFile::Open(directory, listed);
  if (!file) return file.Error();
  const std::uint64_t pixels = std::uint64_t{file->Width()} * file->Height();
  std::vector<std::byte> piece(PieceBytes);
  Sums sums{};
  for (std::uint64_t left = pixels * file->Samples(); left > 0;) {
    const auto bytes = std::span(piece).first(std::min<std::uint64_t>(left, PieceBytes));
    if (auto read = file->Read(bytes); !read) return read.Error();
    left -= bytes.size();
    for (std::size_t at = 0; at < bytes.size(); at += Lanes * TurnsOfLane)
      AddTurns(bytes.subspan(at, std::min(Lanes * TurnsOfLane, bytes.size() - at)), file->Samples(),
               sums);
  }
  std::array<double, MaximumSamples> means{};
  for (std::size_t sample = 0; sample < means.size(); ++sample)
    means[sample] = static_cast<double>(sums[sample]) / (static_cast<double>(pixels) * FullSample);
  return means;
}

std::string InkOf(const pages::PageInfo& page, const pages::PagePlane& plane) {
  constexpr std::array Complements{"Cyan", "Magenta", "Yellow"};
  if (page.color == pages::PageColor::Gray) return "Black";
  if (page.color == pages::PageColor::Rgb && plane.channel < Complements.size())
    return Complements[plane.channel];
  return plane.name;
}

}  // namespace

Expected<PageInk> MeasureInk(const std::string& directory) {
  const auto page = pages::ReadPageInfo(directory);
  if (!page) return page.Error();
  std::map<std::string, std::array<double, MaximumSamples>> means;
  PageInk inks;
  for (const pages::PagePlane& plane : page->planes) {
    if (!means.contains(plane.file)) {
      const auto listed = std::ranges::find(page->files, plane.file, &pages::PageFile::name);
      if (listed == page->files.end()) return FailureOf("a plane's file is not listed");
      const auto read = MeanSamples(directory, *listed);
      if (!read) return read.Error();
      means[plane.file] = *read;
    }
    if (plane.channel >= MaximumSamples) return FailureOf("a plane's channel is not in its file");
    inks.emplace_back(InkOf(*page, plane), 1.0 - means[plane.file][plane.channel]);
  }
  return inks;
}

}  // namespace rastrel::cli
