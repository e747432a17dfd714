#include "rastrel/psscan/postscript_start.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "rastrel/platform/os/dos_eps.h"

namespace rastrel::psscan {
namespace {

constexpr std::size_t HeaderSize = 20;
constexpr std::string_view Mark = "%!PS";
// The length that a "%" takes from the search: the four bytes that are compared, and one more.
constexpr std::size_t Group = Mark.size() + 1;

constexpr bool IsLetter(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

// A sliding match would find marks that other programs miss.
bool SearchMark(LineReader& in) {
  for (;;) {
    const std::string_view ahead = in.Ahead(Group);
    if (ahead.size() < Group) return false;
    const std::string_view searched = ahead.substr(0, ahead.size() - Group + 1);
    const std::size_t found = std::min(searched.find('%'), searched.size());
    const bool isMark = found < searched.size() && ahead.substr(found).starts_with(Mark);
    const std::size_t step = isMark || found == searched.size() ? found : found + Group;
    in.Seek(in.Tell() + step);
    if (isMark) return true;
  }
}

}  // namespace

bool FindStart(LineReader& in, Start& start) {
  start = Start();
  const std::string_view header = in.Ahead(HeaderSize).substr(0, HeaderSize);
  if (in.Failed()) return false;
  if (header.starts_with("%!")) return true;
  if (os::IsDosEps(header)) {
    const os::DosEpsPart part = os::ReadDosEpsHead(header).postScript;
    start.dosOffset = part.place;
    start.dosLength = part.size;
    start.offset = start.dosOffset;
    in.Seek(start.offset);
    return true;
  }
  if (!SearchMark(in) || in.Failed()) return false;
  start.offset = in.Tell();
  return true;
}

std::optional<std::uint64_t> LastLetter(LineReader& in) {
  // Most files end in a letter and a line end, so the first look is a small one.
  constexpr std::size_t Largest = std::size_t{64} << 10;
  std::size_t piece = 512;
  std::array<char, Largest> bytes;
  for (std::uint64_t end = in.FileSize(); end > 0; piece = std::min(piece * 4, Largest)) {
    const std::uint64_t begin = end - std::min<std::uint64_t>(end, piece);
    const auto wanted = static_cast<std::size_t>(end - begin);
    // Fewer bytes come where the file has become shorter meanwhile.
    const auto got = in.ReadAt(begin, {bytes.data(), wanted});
    if (!got) return std::nullopt;
    for (std::size_t index = *got; index-- > 0;)
      if (IsLetter(bytes[index])) return begin + index;
    end = begin;
  }
  return 0;
}

}  // namespace rastrel::psscan
