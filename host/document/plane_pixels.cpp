#include "host/document/plane_pixels.h"

#include <algorithm>
#include <utility>

namespace rastrel::document {

namespace {

constexpr std::size_t MaximumPiece = 128;
constexpr std::size_t ShortestRun = 3;  // a shorter one ends no piece of single bytes
constexpr unsigned NoPiece = 128;

// Calls `bytes(text)` and `run(byte, count)` for each piece. False for a piece that is cut.
template <typename Bytes, typename Run>
bool Unpack(std::string_view packed, Bytes bytes, Run run) {
  while (!packed.empty()) {
    const auto head = static_cast<unsigned char>(packed.front());
    packed.remove_prefix(1);
    if (head == NoPiece) continue;
    const std::size_t count = head < NoPiece ? head + 1U : 257U - head;
    const std::size_t length = head < NoPiece ? count : 1;
    if (packed.size() < length) return false;
    if (head < NoPiece) {
      bytes(packed.substr(0, length));
    } else {
      run(static_cast<std::uint8_t>(packed.front()), count);
    }
    packed.remove_prefix(length);
  }
  return true;
}

std::size_t RunAt(std::span<const std::uint8_t> pixels) {
  const std::size_t longest = std::min(pixels.size(), MaximumPiece);
  std::size_t length = 1;
  while (length < longest && pixels[length] == pixels[0]) ++length;
  return length;
}

// How many of the first bytes go as they are: up to a run.
std::size_t SingleBytesAt(std::span<const std::uint8_t> pixels) {
  const std::size_t longest = std::min(pixels.size(), MaximumPiece);
  for (std::size_t i = 1; i + ShortestRun <= longest; ++i)
    if (pixels[i] == pixels[i + 1] && pixels[i] == pixels[i + 2]) return i;
  return longest;
}

}  // namespace

Expected<void> PlanePixels::Visit(const Look& look) const {
  const auto pixels = Read();
  if (!pixels) return pixels.Error();
  look(*pixels);
  return {};
}

Expected<double> PlanePixels::MeanInk() const {
  double mean = 0;
  const auto visited = Visit([&](std::span<const std::uint8_t> pixels) {
    std::uint64_t light = 0;
    for (const std::uint8_t pixel : pixels) light += pixel;
    if (!pixels.empty())
      mean = 1 - static_cast<double>(light) / 255 / static_cast<double>(pixels.size());
  });
  if (!visited) return visited.Error();
  return mean;
}

std::string PackPixels(std::span<const std::uint8_t> pixels) {
  std::string packed;
  while (!pixels.empty()) {
    const std::size_t run = RunAt(pixels);
    const std::size_t length = run >= ShortestRun ? run : SingleBytesAt(pixels);
    if (run >= ShortestRun) {
      packed += static_cast<char>(257 - run);
      packed += static_cast<char>(pixels[0]);
    } else {
      packed += static_cast<char>(length - 1);
      packed.append(pixels.begin(), pixels.begin() + static_cast<std::ptrdiff_t>(length));
    }
    pixels = pixels.subspan(length);
  }
  return packed;
}

std::shared_ptr<const KeptPixels> KeptPixels::FromPacked(std::string packed, std::uint64_t count) {
  std::uint64_t found = 0;
  const bool whole = Unpack(
      packed, [&](std::string_view bytes) { found += bytes.size(); },
      [&](std::uint8_t, std::size_t length) { found += length; });
  if (!whole || found != count) return nullptr;
  return std::shared_ptr<const KeptPixels>(new KeptPixels(std::move(packed), count));
}

std::shared_ptr<const KeptPixels> KeptPixels::Of(std::span<const std::uint8_t> pixels) {
  return std::shared_ptr<const KeptPixels>(new KeptPixels(PackPixels(pixels), pixels.size()));
}

Expected<PlaneBytes> KeptPixels::Read() const {
  PlaneBytes pixels;
  pixels.reserve(m_Count);
  Unpack(
      m_Packed,
      [&](std::string_view bytes) { pixels.insert(pixels.end(), bytes.begin(), bytes.end()); },
      [&](std::uint8_t byte, std::size_t length) { pixels.insert(pixels.end(), length, byte); });
  return pixels;
}

}  // namespace rastrel::document
