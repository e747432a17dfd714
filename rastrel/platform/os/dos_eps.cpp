#include "rastrel/platform/os/dos_eps.h"

namespace rastrel::os {
namespace {

std::uint32_t NumberAt(std::string_view bytes, std::size_t place) {
  std::uint32_t number = 0;
  for (std::size_t at = place + 4; at-- > place;)
    number = number << 8 | (at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U);
  return number;
}

}  // namespace

DosEpsHead ReadDosEpsHead(std::string_view bytes) {
  const auto part = [bytes](std::size_t place) {
    return DosEpsPart{.place = NumberAt(bytes, place), .size = NumberAt(bytes, place + 4)};
  };
  return {.postScript = part(4), .metafile = part(12), .tiff = part(20)};
}

}  // namespace rastrel::os
