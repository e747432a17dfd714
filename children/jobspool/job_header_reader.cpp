#include "children/jobspool/job_header_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>

#include "rastrel/platform/os/whitespace.h"

namespace rastrel::jobspool {
namespace {

constexpr std::string_view Mark = "%#";
constexpr std::string_view Heading = "%#Velumark Header";
constexpr double LargestSide = 1e7;  // points: 3.5 km

// The text up to the next comma, which goes too.
std::string_view TakeField(std::string_view& text) {
  const std::size_t comma = text.find(',');
  const std::string_view field = text.substr(0, comma);
  text.remove_prefix(comma == text.npos ? text.size() : comma + 1);
  return field;
}

std::optional<double> ReadNumber(std::string_view text) {
  text = os::Trim(text);
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  if (!whole || !std::isfinite(number)) return {};
  return number;
}

class Reader {
 public:
  explicit Reader(std::string_view text) : m_Rest(text.substr(0, JobHeaderLimit)) {}

  JobHeader Read() {
    if (!m_Rest.starts_with(Heading)) return {};
    while (m_Rest.starts_with(Mark) && !m_Ended) TakeLine();
    return m_Header;
  }

 private:
  void TakeLine() {
    std::size_t end = m_Rest.find_first_of("\r\n");
    const std::string_view line = m_Rest.substr(0, end);
    if (end == m_Rest.npos) {
      end = m_Rest.size();
    } else {
      end += m_Rest.substr(end).starts_with("\r\n") ? 2 : 1;
      HandleLine(line.substr(Mark.size()));
    }
    m_Header.length += end;
    m_Rest.remove_prefix(end);
  }

  void HandleLine(std::string_view line) {
    if (os::Trim(line) == "End Job") m_Ended = true;
    const std::size_t equals = line.find('=');
    if (equals == line.npos) return;
    const std::string_view key = os::Trim(line.substr(0, equals));
    const std::string_view value = line.substr(equals + 1);
    bool good = true;
    if (key == "PageSize") good = ReadSize(value);
    if (key == "KVI_Res") good = ReadResolution(value);
    if (key == "KVI_CutLine") good = ReadCutLine(value);
    if (key == "KVI_Setflat") good = ReadFlatness(value);
    if (good) return;
    m_Header.complaints.push_back("The job header's line \"%#" + std::string(line.substr(0, 200)) +
                                  "\" can't be used and is passed over.");
  }

  // A size of 0 comes from a host that doesn't know the picture's size.
  bool ReadSize(std::string_view value) {
    TakeField(value);
    const auto width = ReadNumber(TakeField(value));
    const auto height = ReadNumber(TakeField(value));
    if (!width || !height || *width < 0 || *height < 0) return false;
    if (*width > LargestSide || *height > LargestSide) return false;
    m_Header.size.reset();
    if (*width > 0 && *height > 0) m_Header.size = PictureSize{*width, *height};
    return true;
  }

  bool ReadResolution(std::string_view value) {
    value = os::Trim(value);
    int number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc() || end != value.data() + value.size()) return false;
    if (number < 1 || number > JobHeader::ResolutionLimit) return false;
    m_Header.resolution = number;
    return true;
  }

  bool ReadCutLine(std::string_view value) {
    if (m_Header.cutLines.size() == JobHeader::CutLineLimit) return false;
    CutLine line;
    const std::string_view kind = os::Trim(TakeField(value));
    if (kind == "SEP") {
      line.kind = CutLine::Kind::Separation;
      line.name = value.starts_with(' ') ? value.substr(1) : value;
      if (line.name.empty()) return false;
    } else if (kind == "RGB" || kind == "CMYK") {
      line.kind = kind == "RGB" ? CutLine::Kind::Rgb : CutLine::Kind::Cmyk;
      const std::size_t count = kind == "RGB" ? 3 : 4;
      if (!ReadValues(value, std::span(line.values).first(count))) return false;
    } else {
      return false;
    }
    m_Header.cutLines.push_back(std::move(line));
    return true;
  }

  static bool ReadValues(std::string_view text, std::span<double> values) {
    for (double& value : values) {
      const auto number = ReadNumber(TakeField(text));
      if (!number || *number < 0 || *number > 1) return false;
      value = *number;
    }
    return true;
  }

  bool ReadFlatness(std::string_view value) {
    const auto number = ReadNumber(value);
    if (!number || *number <= 0) return false;
    m_Header.flatness = *number;
    return true;
  }

  std::string_view m_Rest;
  JobHeader m_Header;
  bool m_Ended = false;
};

}  // namespace

JobHeader ReadJobHeader(std::string_view text) { return Reader(text).Read(); }

}  // namespace rastrel::jobspool
