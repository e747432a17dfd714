#include "server/web/preview/png_bytes.h"

#include <zlib.h>

#include <cstdint>
#include <string_view>

namespace rastrel::server::web {
namespace {

constexpr char FilterSub = 1;  // each sample less the one of the pixel left of it
constexpr char Gray = 0;
constexpr char Rgb = 2;

void AddNumber(std::string& bytes, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8)
    bytes.push_back(static_cast<char>(number >> shift & 0xFF));
}

const Bytef* ForZlib(std::string_view bytes) {
  return reinterpret_cast<const Bytef*>(bytes.data());  // NOLINT(*-reinterpret-cast)
}

void AddChunk(std::string& file, std::string_view type, std::string_view data) {
  AddNumber(file, static_cast<std::uint32_t>(data.size()));
  const std::size_t summed = file.size();
  file.append(type).append(data);
  const auto sum = crc32(0, ForZlib(file) + summed, static_cast<uInt>(file.size() - summed));
  AddNumber(file, static_cast<std::uint32_t>(sum));
}

std::string Filtered(const Picture& picture) {
  const std::size_t rowBytes = std::size_t{picture.width} * picture.samples;
  std::string filtered;
  filtered.reserve((rowBytes + 1) * picture.height);
  for (std::size_t row = 0; row < picture.height; ++row) {
    const std::string_view samples =
        std::string_view(picture.bytes).substr(row * rowBytes, rowBytes);
    filtered.push_back(FilterSub);
    for (std::size_t i = 0; i < rowBytes; ++i)
      filtered.push_back(
          static_cast<char>(samples[i] - (i < picture.samples ? 0 : samples[i - picture.samples])));
  }
  return filtered;
}

}  // namespace

Expected<std::string> PngBytes(const Picture& picture) {
  const std::string filtered = Filtered(picture);
  uLongf size = compressBound(filtered.size());
  std::string compressed(size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(compressed.data()), &size,  // NOLINT(*-reinterpret-cast)
                ForZlib(filtered), filtered.size(), 3) != Z_OK)
    return FailureOf("there is no memory to compress a picture");
  compressed.resize(size);
  std::string head;
  AddNumber(head, picture.width);
  AddNumber(head, picture.height);
  head.append({8, picture.samples == 1 ? Gray : Rgb, 0, 0, 0});
  std::string file("\x89PNG\r\n\x1a\n");
  AddChunk(file, "IHDR", head);
  AddChunk(file, "IDAT", compressed);
  AddChunk(file, "IEND", {});
  return file;
}

}  // namespace rastrel::server::web
