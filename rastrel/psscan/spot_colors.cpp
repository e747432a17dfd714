#include <array>
#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/psscan/keywords.h"
#include "rastrel/psscan/line_reader.h"
#include "rastrel/psscan/ps_parser.h"
#include "rastrel/psscan/scan_from.h"
#include "rastrel/psscan/tokens.h"

namespace psscan = rastrel::psscan;
namespace keyword = rastrel::psscan::keyword;
using psscan::LineReader;

namespace {

// How much of the file's end is searched for a trailer.
constexpr std::int64_t TrailerReach = 0x100000;

// The letters after "%%" in the comments that a header is searched for.
struct HeaderLetters {
  constexpr HeaderLetters() {
    for (const char letter : {'B', 'C', 'D', 'E', 'R'}) is[static_cast<int>(letter)] = true;
  }
  bool is[256]{};
};
constexpr HeaderLetters Letters;

std::string_view OneLine(const char* text) {
  const std::string_view whole(text);
  return whole.substr(0, whole.find_first_of("\r\n"));
}

// Takes a comment's tokens from `offset` of its line on, and those of the lines that continue it.
// Leaves the reader before the first other line, with that line in the buffer.
template <typename TakeTokens>
void FollowContinuations(LineReader& in, char* line, std::size_t offset, const TakeTokens& take) {
  for (;; offset = keyword::Continuation.size()) {
    take(OneLine(line + offset));
    const std::uint64_t next = in.Tell();
    psscan::ReadLine(in, line);
    if (in.AtEnd()) return;
    if (!std::string_view(line).starts_with(keyword::Continuation)) return in.Seek(next);
  }
}

// Takes groups of `Count` numbers and a name until a name is missing.
template <std::size_t Count, typename TakeGroup>
void TakeGroups(std::string_view text, const TakeGroup& take) {
  for (CString token;;) {
    std::array<double, Count> numbers;
    for (double& number : numbers) {
      text.remove_prefix(psscan::TextToken(text, token));
      number = psscan::NumberOf(token);
    }
    text.remove_prefix(psscan::TextToken(text, token));
    if (token.empty()) return;
    take(numbers, token);
  }
}

void Append(CSpotMatchList& list, const CString& name, const CVKColor& color) {
  CSpotMatchItem item;
  item.SetName(name);
  item.SetColor(color);
  item.SetOriginalColor(color);
  list.push_back(item);
}

// A number that is missing repeats the one before.
void ReadBox(std::string_view line, BOUNDS& bounds) {
  line.remove_prefix(keyword::BoundingBox.size());
  int points = 0;
  for (double* const side : {&bounds.xmin, &bounds.ymin, &bounds.xmax, &bounds.ymax}) {
    line.remove_prefix(psscan::IntegerToken(line, points));
    *side = static_cast<float>(points * 2.54 / 72.0);
  }
}

}  // namespace

struct CPSParser::SpotScan {
  std::vector<CString> names;
  CSpotMatchList cmyk;
  CSpotMatchList rgb;
  bool namesDeferred = false;
  bool jumped = false;
  bool withBounds = false;  // asked for
  bool boundsFound = false;
  BOUNDS bounds;
};

bool CPSParser::ParseDocColors(std::vector<CString>* names, LineReader& in, char* line, int offset,
                               bool& atend) {
  if (psscan::IsDeferred(line)) {
    atend = true;
    return true;
  }
  FollowContinuations(in, line, static_cast<std::size_t>(offset), [&](std::string_view text) {
    for (CString name;; names->push_back(std::move(name))) {
      text.remove_prefix(psscan::TextToken(text, name));
      if (name.empty()) break;
    }
  });
  return true;
}

bool CPSParser::ParseCMYK(CSpotMatchList* list, LineReader& in, char* line, int offset) {
  FollowContinuations(in, line, static_cast<std::size_t>(offset), [&](std::string_view text) {
    TakeGroups<4>(text, [&](const std::array<double, 4>& values, const CString& name) {
      CVKColor color;
      color.SetColor(values[0], values[1], values[2], values[3], COLORSPACE_CMYK);
      Append(*list, name, color);
    });
  });
  return true;
}

bool CPSParser::ParseRGB(CSpotMatchList* list, LineReader& in, char* line, int offset) {
  FollowContinuations(in, line, static_cast<std::size_t>(offset), [&](std::string_view text) {
    TakeGroups<3>(text, [&](const std::array<double, 3>& values, const CString& name) {
      CVKColor color;
      color.SetColor(values[0] * 255.0, values[1] * 255.0, values[2] * 255.0, COLORSPACE_RGB);
      Append(*list, name, color);
    });
  });
  return true;
}

// The header is over, and the names are in the trailer. The size is a signed number of 32 bits,
// so a file of 2 to 4 GiB is read through.
void CPSParser::JumpToTrailer(LineReader& in, SpotScan& scan) const {
  const auto stamp = rastrel::os::StampOf(m_Path);
  if (!stamp) return;
  scan.jumped = true;
  const std::int64_t size = static_cast<std::int32_t>(static_cast<std::uint32_t>(stamp->size));
  const std::int64_t trailer = size - TrailerReach;
  if (trailer > 0 && static_cast<std::uint64_t>(trailer) > in.Tell())
    in.Seek(static_cast<std::uint64_t>(trailer));
}

void CPSParser::FollowComments(LineReader& in, SpotScan& scan) {
  const auto lengthOf = [](std::string_view word) { return static_cast<int>(word.size()); };
  for (bool over = false; !over;) {
    if (scan.jumped) {
      in.SkipLinesWithout('%', '%');
    } else {
      in.SkipComments(Letters.is);
      // A file can be all zeros after its header, by the gigabyte.
      if (!scan.namesDeferred && !scan.withBounds) in.SkipEmptyLines();
    }
    std::string_view line = in.NextLine();
    if (in.AtEnd()) return;
    if (line.starts_with(keyword::DocumentColors)) {
      ParseDocColors(&scan.names, in, in.Buffer(), lengthOf(keyword::DocumentColors),
                     scan.namesDeferred);
      line = in.Buffer();
    } else if (line.starts_with(keyword::CmykColor)) {
      ParseCMYK(&scan.cmyk, in, in.Buffer(), lengthOf(keyword::CmykColor));
      line = in.Buffer();
    } else if (line.starts_with(keyword::RgbColor)) {
      ParseRGB(&scan.rgb, in, in.Buffer(), lengthOf(keyword::RgbColor));
      line = in.Buffer();
    } else if (line.starts_with(keyword::EndOfFile)) {
      over = true;
    } else if (scan.withBounds && line.starts_with(keyword::BoundingBox) &&
               !psscan::IsDeferred(line)) {
      ReadBox(line, scan.bounds);
      scan.boundsFound = true;
    }
    // After a comment with colors this is the line after it, which is read once more.
    const bool isComment = line.starts_with('%');
    const bool endsHeader = line.starts_with(keyword::EndComments);
    if (!scan.namesDeferred) {
      // Hosts rely on the difference: an empty line ends the header only for who wants bounds too.
      if (endsHeader || (!isComment && (!line.empty() || scan.withBounds))) return;
    } else if (!scan.jumped && (!isComment || endsHeader)) {
      JumpToTrailer(in, scan);
    }
  }
}

bool CPSParser::ScanSpots(CSpotMatchList* list, SpotScan& scan) {
  return psscan::ScanFrom(m_Path, [&](LineReader& in, const psscan::Start&) {
    FollowComments(in, scan);
    if (in.Failed()) return false;
    if (list == nullptr) return true;
    const std::unordered_set<std::wstring_view> named(scan.names.begin(), scan.names.end());
    for (const CSpotMatchList* defined : {&scan.cmyk, &scan.rgb})
      for (const CSpotMatchItem& item : *defined)
        if (named.contains(item.GetName())) list->push_back(item);
    return true;
  });
}

bool CPSParser::LoadSpotMatchItems(CSpotMatchList* list) {
  SpotScan scan;
  return ScanSpots(list, scan);
}

bool CPSParser::LoadSpotItemsAndBounds(CSpotMatchList* list, BOUNDS& bounds) {
  SpotScan scan;
  scan.withBounds = true;
  if (!ScanSpots(list, scan) || !scan.boundsFound) return false;
  bounds = scan.bounds;
  return true;
}
